// Between two builds a deformer reads only the points of its reference and
// target meshes, whose topology it froze at the build: it asks its host for
// whole meshes at a build and for points alone otherwise. These tests run
// each deformer twice over the same time line, once with a host that always
// hands whole meshes and once with one that hands what is asked, and require
// the same points; the deformer asks for whole meshes exactly when it builds.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/muscle/muscle_deformer.h"
#include "core/skin/skin_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

// Preroll, start, a scrub back before the preroll and a jump forward, so that
// the time line rebuilds more than once.
const std::vector<float> kTimeLine = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 3, 4, 5, 9, 10, 11, 12};

// The mesh moved and swollen with the frame (new points, same topology),
// with the world space of a host that places it by `matrix`.
MeshData Moved(const MeshData& mesh, float frame, const Matrix& matrix) {
  MeshData moved = mesh;
  const float scale = 1.0f + 0.01f * std::sin(0.3f * frame);
  for (size_t i = 0; i < moved.points.size(); i += 3) {
    moved.points[i] = moved.points[i] * scale + 0.05f * frame;
    moved.points[i + 1] = moved.points[i + 1] * scale;
    moved.points[i + 2] = moved.points[i + 2] * scale - 0.02f * frame;
  }
  return myo_test::Placed(moved, matrix);
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

// The same deformer twice over kTimeLine, fed whole meshes and fed what it
// asks for; `connect(f, host)` hands a host the moving meshes of frame f.
template <class Deformer, class FrameValues>
struct FedAndWhole {
  explicit FedAndWhole(const MeshData& mesh) : whole(mesh), fed(mesh) {}
  void Paint(const char* list, const char* element, const std::vector<float>& values) {
    whole.maps.SetAll(list, element, 0, values);
    fed.maps.SetAll(list, element, 0, values);
  }
  template <class Connect>
  void Run(Connect connect) {
    whole.frame.preroll_start_time = 3 * myo_test::kFrame;
    whole.frame.start_time = 5 * myo_test::kFrame;
    whole.frame.gravity = 980.0f;
    fed.frame = whole.frame;
    int builds = 0;
    for (float f : kTimeLine) {
      SCOPED_TRACE(f);
      connect(f, whole.host);
      connect(f, fed.host);
      const int whole_reads = fed.host.whole_reads;
      const bool initialize = whole.At(f).decision.initialize;
      fed.At(f);
      EXPECT_EQ(fed.host.whole_reads - whole_reads, initialize ? 1 : 0);
      builds += initialize ? 1 : 0;
      ASSERT_EQ(fed.output, whole.output);
    }
    EXPECT_GE(builds, 3);
  }
  myo_test::TimeLine<Deformer, FrameValues> whole;
  myo_test::TimeLine<Deformer, FrameValues, FeedingHost> fed;
};

}  // namespace

TEST(FrozenTopologyFramesTest, SkinNeedsOnlyTheReferencePointsBetweenBuilds) {
  const MeshData body = myo_test::BuildMesh(myo_scenes::MakeSpindle(10, 10, 10.0f, 2.0f));
  FedAndWhole<SkinDeformer, SkinFrameValues> run(myo_test::BuildMesh(myo_scenes::MakeSpindle(10, 10, 11.0f, 2.5f)));
  const uint32_t n = run.whole.mesh.PointCount();
  run.Paint("slideConstraintsList", "slideConstraints", std::vector<float>(n, 0.5f));
  run.Paint("hardConstraintsList", "hardConstraints", std::vector<float>(n, 0.5f));
  run.whole.frame.max_sliding_distance = 1.0f;
  MeshData reference;
  run.Run([&](float f, myo_test::TestHost& host) {
    reference = Moved(body, f, IdentityMatrix());
    host.reference = &reference;
  });
}

TEST(FrozenTopologyFramesTest, MuscleNeedsOnlyTheTargetPointsBetweenBuilds) {
  const MeshData floor = myo_test::BuildMesh(myo_scenes::MakeGrid(10, 6, 40.0f, 20.0f));
  FedAndWhole<MuscleDeformer, MuscleFrameValues> run(
      myo_test::BuildMesh(myo_scenes::MakeSpindle(12, 10, 20.0f, 3.0f)));
  const MeshData& muscle = run.whole.mesh;
  const uint32_t n = muscle.PointCount();
  std::vector<float> glued(n, 0.0f), slide(n, 0.0f);
  for (uint32_t i = 0; i < n; ++i) {
    const float x = muscle.points[3 * i];
    if (std::fabs(x) > 8.0f) glued[i] = 1.0f;
    if (std::fabs(x) < 5.0f) slide[i] = 1.0f;
  }
  run.Paint("targets", "attachmentToGeoConstraints", glued);
  run.Paint("targets", "slideOnGeometryConstraints", slide);
  run.whole.frame.max_sliding_distance = 5.0f;
  const Matrix floor_matrix = TranslationMatrix(0.0f, -4.0f, 0.0f);
  MeshData target;
  run.Run([&](float f, myo_test::TestHost& host) {
    target = Moved(floor, f, floor_matrix);
    host.targets = {TargetInput{"floor", 0, &target, floor_matrix}};
  });
}
