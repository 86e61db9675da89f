// Target meshes: the world-space record built from a mesh and its matrix, the
// triangle frame, and the per-frame refresh.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "core/kernels/target_mesh.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

MeshData GridData(uint32_t nx, uint32_t nz, float size) {
  return myo_test::BuildMesh(myo_scenes::MakeGrid(nx, nz, size, size));
}

const std::string kUnexpectedPolygons =
    "[MyoForge][Warning] Unexpected number of polygons during target mesh processing";

}  // namespace

TEST(TargetMeshTest, BuildTakesTheHostsWorldSpaceAndOrdersWithTheTopology) {
  const Matrix matrix = TranslationMatrix(1.0f, 2.0f, 3.0f);
  MeshData grid = myo_test::Placed(GridData(2, 1, 2.0f), matrix);  // 6 points, 2 quads, 4 triangles
  TargetMesh target;
  ASSERT_TRUE(BuildTargetMesh(grid, matrix, target));
  EXPECT_TRUE(target.has_transform_);
  EXPECT_EQ(target.vertices_, grid.world_points);
  myo_test::ExpectVec(TransformPoint({1.0f, 2.0f, 3.0f}, target.world_matrix_inverse_), {0.0f, 0.0f, 0.0f}, 1e-6f);
  // The grid faces +y, and so do the vertex normals.
  for (uint32_t v = 0; v < 6; ++v) myo_test::ExpectVec(Load3(target.vertex_normals_.data(), v), {0.0f, 1.0f, 0.0f}, 0.0f);

  // Points and normals are the host's, not derived from the matrix: a host
  // whose normals lean (as a smoothing host's might) is read as it is.
  grid.world_polygon_normals = {0.0f, 0.6f, 0.8f, 0.6f, 0.8f, 0.0f};
  grid.world_points[0] = 7.0f;
  TargetMesh handed;
  ASSERT_TRUE(BuildTargetMesh(grid, IdentityMatrix(), handed));
  EXPECT_FALSE(handed.has_transform_);
  EXPECT_EQ(handed.polygon_normals_, grid.world_polygon_normals);
  EXPECT_EQ(handed.vertices_[0], 7.0f);

  // Without world space there is nothing to place the target with.
  MeshData bare = GridData(2, 1, 2.0f);
  EXPECT_FALSE(BuildTargetMesh(bare, IdentityMatrix(), handed));
  EXPECT_EQ(handed.vertex_count_, 0u);
}

TEST(TargetMeshTest, BuildRefusesEmptyAndInconsistentMeshes) {
  myo_test::LogCapture log;
  TargetMesh target;
  ASSERT_TRUE(BuildTargetMesh(myo_test::Placed(GridData(1, 1, 1.0f), IdentityMatrix()), IdentityMatrix(), target));
  EXPECT_FALSE(BuildTargetMesh(MeshData{}, IdentityMatrix(), target));
  EXPECT_TRUE(target.triangle_vertices_.empty());
  EXPECT_TRUE(log.lines().empty());

  MeshData missing_triangulation = myo_test::Placed(GridData(2, 2, 1.0f), IdentityMatrix());
  missing_triangulation.polygon_triangle_counts.pop_back();
  EXPECT_FALSE(BuildTargetMesh(missing_triangulation, IdentityMatrix(), target));
  EXPECT_EQ(log.Count(kUnexpectedPolygons), 1u);

  MeshData bad_index = myo_test::Placed(GridData(2, 2, 1.0f), IdentityMatrix());
  bad_index.triangle_vertices[4] = 99;
  EXPECT_FALSE(BuildTargetMesh(bad_index, IdentityMatrix(), target));
  EXPECT_EQ(log.Count(kUnexpectedPolygons), 2u);
  EXPECT_TRUE(target.vertices_.empty());
}

TEST(TargetMeshTest, TriangleFrameHasUnitAxesTowardsTheFirstCornerAndAlongTheNormal) {
  const float vertices[9] = {2.0f, 0.0f, 0.0f, 0.0f, 2.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  const float normals[6] = {9.0f, 9.0f, 9.0f, 0.0f, 0.0f, 1.0f};  // polygon 1 is read
  const Vec3 point = {0.5f, 0.5f, 0.0f};
  const Matrix frame = TriangleFrame(point, vertices, normals, 1, 0, 1);
  const Vec3 e = NormalizeSafe(Vec3{1.5f, -0.5f, 0.0f});
  const Vec3 n = {0.0f, 0.0f, 1.0f};
  myo_test::ExpectVec(TransformColumn(frame, {1.0f, 0.0f, 0.0f}), NormalizeSafe(Cross(e, n)), 1e-6f);
  myo_test::ExpectVec(TransformColumn(frame, {0.0f, 1.0f, 0.0f}), n, 0.0f);
  myo_test::ExpectVec(TransformColumn(frame, {0.0f, 0.0f, 1.0f}), e, 1e-6f);

  // On the first corner (within 0.001) the frame looks at the second instead.
  const Matrix on_corner = TriangleFrame({1.9995f, 0.0f, 0.0f}, vertices, normals, 1, 0, 1);
  myo_test::ExpectVec(TransformColumn(on_corner, {0.0f, 0.0f, 1.0f}), NormalizeSafe(Vec3{-1.9995f, 2.0f, 0.0f}), 1e-6f);
}

TEST(TargetMeshTest, AMissingOrEmptyTargetIsClearedUntilTheNextBuild) {
  myo_test::LogCapture log;
  const MeshData grid = myo_test::Placed(GridData(2, 2, 2.0f), IdentityMatrix());
  for (const bool null_mesh : {true, false}) {
    SCOPED_TRACE(null_mesh);
    std::vector<TargetMesh> targets(1);
    ASSERT_TRUE(BuildTargetMesh(grid, IdentityMatrix(), targets[0]));
    const MeshData empty;
    UpdateTargets(targets, {TargetInput{"grid", 0, null_mesh ? nullptr : &empty, IdentityMatrix()}}, true);
    EXPECT_TRUE(targets[0].triangle_vertices_.empty());
    // Its mesh coming back does not bring the record back: its rows stay inert.
    UpdateTargets(targets, {TargetInput{"grid", 0, &grid, IdentityMatrix()}}, true);
    EXPECT_EQ(targets[0].vertex_count_, 0u);
  }
  EXPECT_TRUE(log.lines().empty());
}

TEST(TargetMeshTest, UpdateTargetsWarnsOnlyWhileNotPlaying) {
  myo_test::LogCapture log;
  const MeshData grid = myo_test::Placed(GridData(2, 2, 2.0f), IdentityMatrix());
  std::vector<TargetMesh> targets(1);
  ASSERT_TRUE(BuildTargetMesh(grid, IdentityMatrix(), targets[0]));
  const std::vector<TargetInput> two = {{"a", 0, &grid, TranslationMatrix(1, 0, 0)}, {"b", 1, &grid, IdentityMatrix()}};
  const std::string mismatch =
      "[MyoForge][Warning] Inconsistency between the solver data and the number of the targets connected. "
      "Please, stop the simulation and go to the start frame to reinitialize the system.";
  UpdateTargets(targets, two, false);
  EXPECT_TRUE(log.lines().empty());
  UpdateTargets(targets, two, true);
  EXPECT_EQ(log.Count(mismatch), 1u);
  // Nothing was refreshed.
  EXPECT_FALSE(targets[0].has_transform_);

  // A mesh whose vertex count changed would have the frozen triangles index
  // past its points: it is ignored instead, with a warning while not
  // playing, and comes back once its count is that of the build again.
  const MeshData bigger = myo_test::Placed(GridData(3, 2, 2.0f), IdentityMatrix());
  UpdateTargets(targets, {TargetInput{"a", 0, &bigger, IdentityMatrix()}}, false);
  EXPECT_EQ(targets[0].vertex_count_, 0u);
  EXPECT_EQ(log.lines().size(), 1u);
  UpdateTargets(targets, {TargetInput{"a", 0, &bigger, IdentityMatrix()}}, true);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Target a has 12 vertices instead of the 9 it was initialized with. "
                      "This target is ignored while its vertex count differs."),
            1u);
  UpdateTargets(targets, {TargetInput{"a", 0, &grid, IdentityMatrix()}}, true);
  EXPECT_EQ(targets[0].vertex_count_, 9u);
}
