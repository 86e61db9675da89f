// The ribbon muscle: the muscle without its volume row.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/muscle/muscle_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

template <class Deformer>
using MuscleTimeLine = myo_test::TimeLine<Deformer, MuscleFrameValues>;

// Runs a deformer over frames 1 to `frames` with gravity and both ends held
// hard by two attachments; returns the final solver positions.
template <class Deformer>
std::vector<float> RunHeld(MuscleTimeLine<Deformer>& t, int frames) {
  const uint32_t n = t.mesh.PointCount();
  std::vector<float> left(n, 0.0f), right(n, 0.0f);
  for (uint32_t i = 0; i < n; ++i) {
    if (t.mesh.points[3 * i] < -4.0f) left[i] = 1.0f;
    if (t.mesh.points[3 * i] > 4.0f) right[i] = 1.0f;
  }
  t.maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 0, left);
  t.maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 1, right);
  t.host.attachments.indices = {0, 1};
  t.host.attachments.matrices = {IdentityMatrix(), IdentityMatrix()};
  t.frame.start_time = t.frame.preroll_start_time = myo_test::kFrame;
  t.frame.gravity = 980.0f;
  for (int f = 1; f <= frames; ++f) t.At(static_cast<float>(f));
  return t.solver().positions_;
}

}  // namespace

TEST(RibbonMuscleTest, WithoutVolumeAndUniformMassesTheRibbonIsTheMuscle) {
  const MeshData mesh = myo_test::BuildMesh(myo_scenes::MakeSpindle(10, 8, 10.0f, 2.0f));
  MuscleTimeLine<MuscleDeformer> muscle(mesh);
  MuscleTimeLine<RibbonMuscleDeformer> ribbon(mesh);
  muscle.frame.volume_preservation = 0.0f;  // the muscle's volume row moves nothing
  EXPECT_EQ(RunHeld(muscle, 12), RunHeld(ribbon, 12));
  // The ribbon has every row of the muscle but the volume's.
  EXPECT_EQ(ribbon.solver().lambdas_.size() + 1, muscle.solver().lambdas_.size());
}

TEST(RibbonMuscleTest, MassesByDensityComeFromTheArea) {
  MuscleTimeLine<RibbonMuscleDeformer> ribbon(myo_test::BuildMesh(myo_scenes::MakeGrid(10, 4, 10.0f, 4.0f)));
  ribbon.frame.point_mass_mode = 0;
  ribbon.frame.density = 1000.0f;  // 1 per unit of area once converted
  const std::vector<float> positions = RunHeld(ribbon, 3);
  EXPECT_FLOAT_EQ(ribbon.solver().mesh_measure_, 40.0f);
  float total = 0.0f;
  for (float m : ribbon.solver().masses_) total += m;
  EXPECT_NEAR(total, 40.0f, 1e-3f);
  // The open sheet hangs between its held ends without a volume row.
  float lowest = 0.0f;
  for (std::size_t k = 1; k < positions.size(); k += 3) lowest = std::fmin(lowest, positions[k]);
  EXPECT_LT(lowest, -0.01f);
}
