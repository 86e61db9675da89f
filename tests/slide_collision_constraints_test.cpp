// The slide collision row and its block pass, and the triangle normals of a
// collider with an invalid triangulation. The per-frame collider refresh is
// seen through the shape deformer.

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "core/kernels/slide_collision_constraints.h"
#include "core/solver/point_blocks.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_geometry.h"

namespace {

using myo_core::Matrix;
using myo_core::SlideCollisionConstraints;
using myo_core::Vec3;
using myo_test::ExpectVec;

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// One point whose closest collider point is the origin, on a triangle of the
// plane y = 0 with normal +y, bound at distance 1.
struct OneRow {
  std::vector<float> positions;
  std::vector<float> lambdas = {0.0f};
  std::vector<float> closest = {0.0f, 0.0f, 0.0f};
  std::vector<float> normals = {0.0f, 1.0f, 0.0f};
  float w = 1.0f;
  float compliance = 0.0f;
  float distance = 1.0f;
  float multiplier = 1.0f;
  bool inside = false;
  bool keep = true;
  uint16_t inactive = 0;

  explicit OneRow(Vec3 p) : positions{p.x, p.y, p.z} {}
  Vec3 Solve(const Matrix& world = myo_core::IdentityMatrix()) {
    myo_core::SolveSlideCollisionConstraint(0, 0, 0, inactive, w, compliance, distance, multiplier,
                                            !myo_core::IsIdentity(world), keep, inside, world,
                                            myo_core::InvertMatrix(world), closest.data(), normals.data(),
                                            positions.data(), lambdas.data());
    return myo_core::Load3(positions.data(), 0);
  }
};

// ---- The row ---------------------------------------------------------------

// A multiplier that a case does not check.
const float kAny = std::numeric_limits<float>::quiet_NaN();

TEST(SlideCollisionKernel, EachCaseMovesThePointWhereItBelongs) {
  struct Case {
    const char* name;
    Vec3 point, expected;
    float lambda = kAny;
    bool inside = false, keep = true;
    float multiplier = 1.0f, compliance = 0.0f, w = 1.0f, normal_y = 1.0f;
    uint16_t inactive = 0;
  };
  const Case cases[] = {
      {"beyond the threshold", {0.2f, 1.5f, 0.1f}, {0.2f, 1.5f, 0.1f}, 0.0f},
      {"pushed along d, not the normal", {0.3f, 0.4f, 0.0f}, {0.6f, 0.8f, 0.0f}},
      {"held inside", {0.0f, -0.5f, 0.0f}, {0.0f, -1.0f, 0.0f}, kAny, true},
      {"crossed, mirrored back", {0.0f, -0.2f, 0.0f}, {0.0f, 1.0f, 0.0f}},
      {"crossed, orientation free", {0.0f, -0.2f, 0.0f}, {0.0f, -1.0f, 0.0f}, kAny, false, false},
      {"crossed beyond, at its mirror", {0.5f, -1.5f, 0.0f}, {0.5f, 1.5f, 0.0f}},
      // Its own target: no correction (a compliance, for 0 / 0 at compliance 0).
      {"crossed beyond, free", {0.5f, -1.5f, 0.0f}, {0.5f, -1.5f, 0.0f}, 0.0f, false, false, 1.0f, 0.001f},
      {"escaped from inside", {0.0f, 0.3f, 0.0f}, {0.0f, -1.0f, 0.0f}, kAny, true},
      {"multiplier 0", {0.0f, 0.01f, 0.0f}, {0.0f, 0.01f, 0.0f}, kAny, false, true, 0.0f},
      {"no weight", {0.0f, 0.5f, 0.0f}, {0.0f, 0.5f, 0.0f}, 0.0f, false, true, 1.0f, 0.0f, 0.0000009f},
      {"inactive", {0.0f, 0.5f, 0.0f}, {0.0f, 0.5f, 0.0f}, 0.0f, false, true, 1.0f, 0.0f, 1.0f, 1.0f, 1},
      {"compliance 1: half the way", {0.0f, 0.5f, 0.0f}, {0.0f, 0.75f, 0.0f}, -0.25f, false, true, 1.0f, 1.0f},
      {"zero normal", {0.0f, 0.5f, 0.0f}, {0.0f, 1.0f, 0.0f}, kAny, false, true, 1.0f, 0.0f, 1.0f, 0.0f},
  };
  for (const Case& c : cases) {
    OneRow row(c.point);
    row.inside = c.inside;
    row.keep = c.keep;
    row.multiplier = c.multiplier;
    row.compliance = c.compliance;
    row.w = c.w;
    row.normals = {0.0f, c.normal_y, 0.0f};
    row.inactive = c.inactive;
    SCOPED_TRACE(c.name);
    const bool stays = c.expected.x == c.point.x && c.expected.y == c.point.y && c.expected.z == c.point.z;
    ExpectVec(row.Solve(), c.expected, stays ? 0.0f : 1e-6f);
    if (!std::isnan(c.lambda)) {
      EXPECT_NEAR(row.lambdas[0], c.lambda, 1e-6f);
    }
  }

  // The same row in a solver whose object space sits 3 below the world.
  OneRow placed({0.0f, 3.5f, 0.0f});
  ExpectVec(placed.Solve(myo_test::Affine(0.0f, -3.0f, 0.0f)), {0.0f, 4.0f, 0.0f}, 1e-6f);
}

// ---- The block pass --------------------------------------------------------

// Eight points over the plane y = 0, each bound at distance 1 above its own
// closest point (x, 0, 0) and now at height 0.25 - or beyond, for some.
SlideCollisionConstraints EightRows(std::vector<float>& positions) {
  SlideCollisionConstraints group;
  const uint32_t n = 8;
  for (uint32_t i = 0; i < n; ++i) {
    const float x = static_cast<float>(i);
    positions.insert(positions.end(), {x, i == 5 ? 3.0f : 0.25f, 0.1f * x});
    group.closest_points_.insert(group.closest_points_.end(), {x, 0.0f, 0.1f * x});
  }
  group.collider_normals_ = {0.0f, 1.0f, 0.0f, 0.0f, 2.0f, 0.0f};
  group.closest_triangles_ = {0, 1, 0, 1, 0, 1, 0, 1};
  group.inverse_masses_.assign(n, 1.0f);
  group.collision_distances_.assign(n, 1.0f);
  group.threshold_multipliers_.assign(n, 1.0f);
  group.sliding_inactive_.assign(n, 0);
  group.inside_flags_.assign(n, false);
  group.lambda_base_ = 2;
  return group;
}

TEST(SlideCollisionRows, BlocksOnTwoThreadsGiveTheBitsOfOnePassAndFullyAttractedPointsStay) {
  std::vector<float> positions;
  SlideCollisionConstraints group = EightRows(positions);
  group.inside_flags_[6] = true;  // crossed
  group.keep_orientation_ = false;
  group.threshold_multipliers_[7] = 2.5f;
  const std::vector<float> attraction(8, 0.25f);
  const Matrix world = myo_test::RotationZ(0.4f, {0.5f, 1.0f, -2.0f});
  const Matrix inverse = myo_core::InvertMatrix(world);
  std::vector<float> one_pass = positions, one_lambdas(10, 0.0f);
  myo_core::SolveSlideCollisionRows(group, 0, 8, attraction, 0.01f, true, world, inverse, one_pass.data(),
                                    one_lambdas.data());
  myo_core::PointBlocks blocks;
  myo_core::BuildPointBlocks(8, 3, blocks);
  std::vector<float> in_blocks = positions, block_lambdas(10, 0.0f);
  const int previous = omp_get_max_threads();
  omp_set_num_threads(2);
  myo_core::ForEachBlock(blocks, [&](uint32_t first, uint32_t count) {
    myo_core::SolveSlideCollisionRows(group, first, count, attraction, 0.01f, true, world, inverse,
                                      in_blocks.data(), block_lambdas.data());
  });
  omp_set_num_threads(previous);
  EXPECT_TRUE(SameBits(one_pass, in_blocks));
  EXPECT_TRUE(SameBits(one_lambdas, block_lambdas));
  EXPECT_FALSE(SameBits(one_pass, positions));

  // A fully attracted point is left alone; one just below is pushed out.
  std::vector<float> attracted(8, 0.0f), lambdas(10, 0.0f);
  attracted[2] = 1.0f;
  attracted[4] = 0.999f;
  const Matrix identity = myo_core::IdentityMatrix();
  one_pass = positions;
  myo_core::SolveSlideCollisionRows(group, 0, 8, attracted, 0.0f, false, identity, identity, one_pass.data(),
                                    lambdas.data());
  EXPECT_EQ(one_pass[7], 0.25f);
  EXPECT_NEAR(one_pass[13], 1.0f, 1e-6f);
}

// ---- Triangle normals ------------------------------------------------------

// A quad (two triangles) facing +y beside a triangle facing +z.
myo_core::MeshData QuadAndTriangle() {
  myo_core::PolygonMesh polygons;
  polygons.points = {0, 0, 0, 0, 0, 1, 1, 0, 1, 1, 0, 0, 2, 0, 0, 3, 0, 0, 2, 1, 0};
  polygons.vertex_counts = {4, 3};
  polygons.vertices = {0, 1, 2, 3, 4, 5, 6};
  return myo_test::Placed(myo_test::BuildMesh(polygons), myo_core::IdentityMatrix());
}

TEST(ColliderTriangleNormals, PolygonsWithoutAValidTriangulationGetTheDefaultWithOneWarning) {
  myo_test::LogCapture log;
  // The quad triangulated into one triangle only, and the triangle into none.
  myo_core::MeshData mesh = QuadAndTriangle();
  mesh.polygon_triangle_counts = {1, 0};
  mesh.triangle_vertices.resize(3);
  mesh.world_polygon_normals = {0.0f, 0.0f, 1.0f, 1.0f, 0.0f, 0.0f};
  std::vector<float> normals;
  ASSERT_TRUE(myo_core::ReadTriangleNormals(mesh, true, normals));
  EXPECT_EQ(normals, (std::vector<float>{0, 1, 0}));
  EXPECT_EQ(log.Count("[MyoForge][Warning] Some triangle normals have been defaulted to (0.0, 1.0, 0.0) due to an "
                      "invalid face triangulation. Number of defaulted triangle normals: 2"),
            1u);
  EXPECT_EQ(log.lines().size(), 1u);
}

}  // namespace
