// Between two builds a deformer reads only the points of its reference and
// target meshes, whose topology it froze at the build: it asks its host for
// whole meshes at a build and for points alone otherwise. These tests run
// each deformer twice over the same time line, once with a host that always
// hands whole meshes and once with one that hands what is asked, and require
// the same points; the deformer asks for whole meshes exactly when it builds.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/maps/map_store.h"
#include "core/muscle/muscle_deformer.h"
#include "core/skin/skin_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/test_geometry.h"
#include "support/test_host.h"

using namespace myo_core;

namespace {

constexpr float kFrame = 1.0f / 24.0f;

// Preroll, start, a scrub back before the preroll and a jump forward, so that
// the time line rebuilds more than once.
const std::vector<float> kTimeLine = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 3, 4, 5, 9, 10, 11, 12};

// The mesh moved and swollen with the frame: new points, same topology.
MeshData Moved(const MeshData& mesh, float frame) {
  MeshData moved = mesh;
  const float scale = 1.0f + 0.01f * std::sin(0.3f * frame);
  for (size_t i = 0; i < moved.points.size(); i += 3) {
    moved.points[i] = moved.points[i] * scale + 0.05f * frame;
    moved.points[i + 1] = moved.points[i + 1] * scale;
    moved.points[i + 2] = moved.points[i + 2] * scale - 0.02f * frame;
  }
  return moved;
}

// The mesh moved for the frame, with the world space of a host that places
// it by `matrix`.
MeshData MovedAndPlaced(const MeshData& mesh, float frame, const Matrix& matrix) {
  return myo_test::Placed(Moved(mesh, frame), matrix);
}

// What a host hands when asked for points only: object and world space,
// no topology.
MeshData PointsOnly(const MeshData& mesh) {
  MeshData points;
  points.points = mesh.points;
  points.world_points = mesh.world_points;
  points.world_polygon_normals = mesh.world_polygon_normals;
  return points;
}

// A host that hands the whole mesh only when it is asked for it.
class FeedingHost : public myo_test::TestHost {
 public:
  using TestHost::TestHost;
  void ReadTargets(bool whole, std::vector<TargetInput>& out) override {
    TestHost::ReadTargets(whole, out);
    handed_ = whole ? *out[0].mesh : PointsOnly(*out[0].mesh);
    out[0].mesh = &handed_;
  }
  MeshInput ReadMesh(const std::string& attribute, MeshRead what, const MeshData*& mesh) override {
    const MeshInput found = TestHost::ReadMesh(attribute, what, mesh);
    handed_ = what == MeshRead::kWhole ? *mesh : PointsOnly(*mesh);
    mesh = &handed_;
    return found;
  }

 private:
  MeshData handed_;
};

}  // namespace

TEST(FrozenTopologyFramesTest, SkinNeedsOnlyTheReferencePointsBetweenBuilds) {
  const MeshData body = myo_test::BuildMesh(myo_scenes::MakeSpindle(10, 10, 10.0f, 2.0f));
  const MeshData skin = myo_test::BuildMesh(myo_scenes::MakeSpindle(10, 10, 11.0f, 2.5f));
  const std::vector<double> input(skin.points.begin(), skin.points.end());
  myo_test::TestHost whole_host(skin);
  FeedingHost fed_host(skin);
  MapStore maps;
  maps.SetAll("slideConstraintsList", "slideConstraints", 0, std::vector<float>(skin.PointCount(), 0.5f));
  maps.SetAll("hardConstraintsList", "hardConstraints", 0, std::vector<float>(skin.PointCount(), 0.5f));
  SkinDeformer whole, fed;
  SkinFrameValues frame;
  frame.preroll_start_time = 3 * kFrame;
  frame.start_time = 5 * kFrame;
  frame.gravity = 980.0f;
  frame.max_sliding_distance = 1.0f;

  int builds = 0, steps = 0;
  for (float f : kTimeLine) {
    SCOPED_TRACE(f);
    frame.current_time = f * kFrame;
    const MeshData reference = MovedAndPlaced(body, f, IdentityMatrix());
    whole_host.reference = fed_host.reference = &reference;
    const int whole_reads = fed_host.whole_reads;

    std::vector<double> whole_output, fed_output;
    const SkinEvaluation a = whole.Evaluate(frame, input, whole_host, maps, whole_output);
    const SkinEvaluation b = fed.Evaluate(frame, input, fed_host, maps, fed_output);
    ASSERT_TRUE(a.succeeded && b.succeeded);
    EXPECT_EQ(fed_host.whole_reads - whole_reads, a.decision.initialize ? 1 : 0);
    builds += a.decision.initialize ? 1 : 0;
    steps += a.stepped ? 1 : 0;
    ASSERT_EQ(fed_output, whole_output);
  }
  EXPECT_GE(builds, 3);
  EXPECT_GE(steps, 10);
}

TEST(FrozenTopologyFramesTest, MuscleNeedsOnlyTheTargetPointsBetweenBuilds) {
  const MeshData muscle = myo_test::BuildMesh(myo_scenes::MakeSpindle(12, 10, 20.0f, 3.0f));
  const MeshData floor = myo_test::BuildMesh(myo_scenes::MakeGrid(10, 6, 40.0f, 20.0f));
  const uint32_t n = muscle.PointCount();
  const std::vector<double> input(muscle.points.begin(), muscle.points.end());
  myo_test::TestHost whole_host(muscle);
  FeedingHost fed_host(muscle);
  MapStore maps;
  std::vector<float> glued(n, 0.0f), slide(n, 0.0f);
  for (uint32_t i = 0; i < n; ++i) {
    const float x = muscle.points[3 * i];
    if (std::fabs(x) > 8.0f) glued[i] = 1.0f;
    if (std::fabs(x) < 5.0f) slide[i] = 1.0f;
  }
  maps.SetAll("targets", "attachmentToGeoConstraints", 0, glued);
  maps.SetAll("targets", "slideOnGeometryConstraints", 0, slide);
  MuscleDeformer whole, fed;
  MuscleFrameValues frame;
  frame.preroll_start_time = 3 * kFrame;
  frame.start_time = 5 * kFrame;
  frame.gravity = 980.0f;
  frame.max_sliding_distance = 5.0f;
  const Matrix floor_matrix = TranslationMatrix(0.0f, -4.0f, 0.0f);

  int builds = 0, steps = 0;
  for (float f : kTimeLine) {
    SCOPED_TRACE(f);
    frame.current_time = f * kFrame;
    const MeshData target = MovedAndPlaced(floor, f, floor_matrix);
    whole_host.targets = fed_host.targets = {TargetInput{"floor", 0, &target, floor_matrix}};
    const int whole_reads = fed_host.whole_reads;

    std::vector<double> whole_output, fed_output;
    const MuscleEvaluation a = whole.Evaluate(frame, input, whole_host, maps, whole_output);
    fed.Evaluate(frame, input, fed_host, maps, fed_output);
    EXPECT_EQ(fed_host.whole_reads - whole_reads, a.decision.initialize ? 1 : 0);
    builds += a.decision.initialize ? 1 : 0;
    steps += a.stepped ? 1 : 0;
    ASSERT_EQ(whole.solver().targets_.size(), 1u);
    ASSERT_EQ(fed_output, whole_output);
  }
  EXPECT_GE(builds, 3);
  EXPECT_GE(steps, 10);
}
