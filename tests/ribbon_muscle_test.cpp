// The ribbon muscle: the muscle without its volume row.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/maps/map_store.h"
#include "core/muscle/muscle_assembly.h"
#include "core/muscle/muscle_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/test_host.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

constexpr float kFrame = 1.0f / 24.0f;

// Runs a deformer over frames 1 to `frames` with gravity and both ends held
// hard by two attachments; returns the final solver positions.
template <class Deformer>
std::vector<float> RunHeld(Deformer& deformer, const MeshData& mesh, MuscleFrameValues frame, int frames) {
  myo_test::TestHost host(mesh);
  MapStore maps;
  const uint32_t n = mesh.PointCount();
  std::vector<float> left(n, 0.0f), right(n, 0.0f);
  for (uint32_t i = 0; i < n; ++i) {
    if (mesh.points[3 * i] < -4.0f) left[i] = 1.0f;
    if (mesh.points[3 * i] > 4.0f) right[i] = 1.0f;
  }
  maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 0, left);
  maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 1, right);
  host.attachments.indices = {0, 1};
  host.attachments.matrices = {IdentityMatrix(), IdentityMatrix()};
  frame.start_time = frame.preroll_start_time = kFrame;
  frame.gravity = 980.0f;
  const std::vector<double> input(mesh.points.begin(), mesh.points.end());
  std::vector<double> output;
  for (int f = 1; f <= frames; ++f) {
    frame.current_time = f * kFrame;
    deformer.Evaluate(frame, input, host, maps, output);
  }
  return deformer.solver().positions_;
}

}  // namespace

TEST(RibbonMuscleTest, WithoutVolumeAndUniformMassesTheRibbonIsTheMuscle) {
  const MeshData mesh = myo_test::BuildMesh(myo_scenes::MakeSpindle(10, 8, 10.0f, 2.0f));
  MuscleFrameValues frame;
  frame.volume_preservation = 0.0f;  // the muscle's volume row moves nothing
  MuscleDeformer muscle;
  RibbonMuscleDeformer ribbon;
  const std::vector<float> a = RunHeld(muscle, mesh, frame, 12);
  const std::vector<float> b = RunHeld(ribbon, mesh, frame, 12);
  EXPECT_EQ(a, b);
  // The ribbon has every row of the muscle but the volume's.
  EXPECT_EQ(ribbon.solver().lambdas_.size() + 1, muscle.solver().lambdas_.size());
  EXPECT_EQ(ribbon.solver().mesh_dimension_, 1);
}

TEST(RibbonMuscleTest, MassesByDensityComeFromTheArea) {
  const MeshData sheet = myo_test::BuildMesh(myo_scenes::MakeGrid(10, 4, 10.0f, 4.0f));
  MuscleFrameValues frame;
  frame.point_mass_mode = 0;
  frame.density = 1000.0f;  // 1 per unit of area once converted
  RibbonMuscleDeformer ribbon;
  const std::vector<float> positions = RunHeld(ribbon, sheet, frame, 3);
  EXPECT_FLOAT_EQ(ribbon.solver().mesh_measure_, 40.0f);
  float total = 0.0f;
  for (float m : ribbon.solver().masses_) total += m;
  EXPECT_NEAR(total, 40.0f, 1e-3f);
  // The open sheet hangs between its held ends without a volume row.
  float lowest = 0.0f;
  for (std::size_t k = 1; k < positions.size(); k += 3) lowest = std::fmin(lowest, positions[k]);
  EXPECT_LT(lowest, -0.01f);
  for (float p : positions) ASSERT_TRUE(std::isfinite(p));
}

TEST(RibbonMuscleTest, TheMassWarningNamesTheRibbon) {
  myo_test::LogCapture log;
  const MeshData sheet = myo_test::BuildMesh(myo_scenes::MakeGrid(2, 2, 1.0f, 1.0f));
  MapStore maps;
  maps.SetAll("massList", "mass", 0, std::vector<float>(sheet.PointCount(), 0.0f));
  RibbonMuscleSolver solver;
  MuscleNodeState node;
  InitializeSolver(sheet, maps, MuscleAssemblyInputs{}, node, solver);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Mass values lower than 1e-06 are not supported by the Ribbon Muscle "
                      "solver. Non supported mass values are replaced with 1e-06 minimum mass values."),
            1u);
}

TEST(MuscleAssemblyProgressTest, AFirstBuildShowsOneUnitPerTable) {
  struct CountingHost : myo_test::TestHost {
    using TestHost::TestHost;
    void BeginProgress(int count, const std::string& status) override {
      range = count;
      text = status;
    }
    void AdvanceProgress() override { ++advanced; }
    void EndProgress() override { ended = true; }
    int range = 0, advanced = 0;
    bool ended = false;
    std::string text;
  };
  const MeshData mesh = myo_test::BuildMesh(myo_scenes::MakeSpindle(4, 6, 10.0f, 2.0f));
  CountingHost host(mesh);
  MapStore maps;
  MuscleAssemblyInputs inputs;
  inputs.progress = &host;
  MuscleSolver muscle;
  MuscleNodeState node;
  InitializeSolver(mesh, maps, inputs, node, muscle);
  EXPECT_EQ(host.text, "[MyoForge] Initializing MyoMuscle...");
  EXPECT_EQ(host.range, 7);
  EXPECT_EQ(host.advanced, 7);
  EXPECT_TRUE(host.ended);
  // A later build shows nothing.
  host.advanced = 0;
  InitializeSolver(mesh, maps, inputs, node, muscle);
  EXPECT_EQ(host.advanced, 0);

  CountingHost ribbon_host(mesh);
  inputs.progress = &ribbon_host;
  RibbonMuscleSolver ribbon;
  InitializeSolver(mesh, maps, inputs, node, ribbon);
  EXPECT_EQ(ribbon_host.range, 6);
  EXPECT_EQ(ribbon_host.advanced, 6);
}
