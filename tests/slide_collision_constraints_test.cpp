// The slide collision row and its block pass, the search of closest collider
// points with their triangles, triangle normals and the per-frame collider
// refresh.

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "core/kernels/slide_collision_constraints.h"
#include "core/solver/point_blocks.h"
#include "scenes/muscle_meshes.h"
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

TEST(SlideCollisionKernel, OnItsOwnSideAPointIsPushedOutOnlyWithinTheThreshold) {
  OneRow far({0.2f, 1.5f, 0.1f});
  ExpectVec(far.Solve(), {0.2f, 1.5f, 0.1f}, 0.0f);
  EXPECT_EQ(far.lambdas[0], 0.0f);

  OneRow near({0.0f, 0.5f, 0.0f});
  ExpectVec(near.Solve(), {0.0f, 1.0f, 0.0f}, 1e-6f);
  EXPECT_NEAR(near.lambdas[0], -0.5f, 1e-6f);

  // Pushed along d, not along the normal: (0.3, 0.4) of length 0.5 doubles.
  OneRow aside({0.3f, 0.4f, 0.0f});
  ExpectVec(aside.Solve(), {0.6f, 0.8f, 0.0f}, 1e-6f);

  // A point bound inside is held inside: below the surface is its own side.
  OneRow held({0.0f, -0.5f, 0.0f});
  held.inside = true;
  ExpectVec(held.Solve(), {0.0f, -1.0f, 0.0f}, 1e-6f);
  OneRow deep({0.0f, -1.5f, 0.0f});
  deep.inside = true;
  ExpectVec(deep.Solve(), {0.0f, -1.5f, 0.0f}, 0.0f);
}

TEST(SlideCollisionKernel, ACrossedPointIsMirroredBackOnlyWhenItsOrientationIsKept) {
  OneRow kept({0.0f, -0.2f, 0.0f});
  ExpectVec(kept.Solve(), {0.0f, 1.0f, 0.0f}, 1e-6f);

  OneRow free({0.0f, -0.2f, 0.0f});
  free.keep = false;
  ExpectVec(free.Solve(), {0.0f, -1.0f, 0.0f}, 1e-6f);

  // Mirrored beyond the threshold, it stays at its mirror image.
  OneRow beyond({0.5f, -1.5f, 0.0f});
  ExpectVec(beyond.Solve(), {0.5f, 1.5f, 0.0f}, 1e-6f);
  // Not mirrored, it is its own target: no correction (with a compliance,
  // for a zero correction at compliance 0 divides 0 by 0).
  OneRow beyond_free({0.5f, -1.5f, 0.0f});
  beyond_free.keep = false;
  beyond_free.compliance = 0.001f;
  ExpectVec(beyond_free.Solve(), {0.5f, -1.5f, 0.0f}, 0.0f);
  EXPECT_EQ(beyond_free.lambdas[0], 0.0f);

  // Bound inside and now above the surface: mirrored back in.
  OneRow escaped({0.0f, 0.3f, 0.0f});
  escaped.inside = true;
  ExpectVec(escaped.Solve(), {0.0f, -1.0f, 0.0f}, 1e-6f);
}

TEST(SlideCollisionKernel, TheMultiplierScalesTheThreshold) {
  // Multiplier 0: nothing on the own side, however close.
  OneRow touching({0.0f, 0.01f, 0.0f});
  touching.multiplier = 0.0f;
  ExpectVec(touching.Solve(), {0.0f, 0.01f, 0.0f}, 0.0f);
  // Sitting on q, with a compliance: no direction, no move.
  OneRow on_surface({0.0f, 0.0f, 0.0f});
  on_surface.multiplier = 0.0f;
  on_surface.compliance = 0.01f;
  ExpectVec(on_surface.Solve(), {0.0f, 0.0f, 0.0f}, 0.0f);
  EXPECT_EQ(on_surface.lambdas[0], 0.0f);
  // A crossed point with its orientation kept is still mirrored.
  OneRow crossed({0.1f, -0.3f, 0.0f});
  crossed.multiplier = 0.0f;
  ExpectVec(crossed.Solve(), {0.1f, 0.3f, 0.0f}, 1e-6f);

  // Multiplier 2 with a start distance of 1: a point at 1.5 goes out to 2.
  OneRow doubled({0.0f, 1.5f, 0.0f});
  doubled.multiplier = 2.0f;
  ExpectVec(doubled.Solve(), {0.0f, 2.0f, 0.0f}, 1e-6f);
}

TEST(SlideCollisionKernel, WithoutWeightOrWhenInactiveNothingMoves) {
  OneRow unweighted({0.0f, 0.5f, 0.0f});
  unweighted.w = 0.0000009f;
  ExpectVec(unweighted.Solve(), {0.0f, 0.5f, 0.0f}, 0.0f);
  EXPECT_EQ(unweighted.lambdas[0], 0.0f);

  OneRow inactive({0.0f, 0.5f, 0.0f});
  inactive.inactive = 1;
  ExpectVec(inactive.Solve(), {0.0f, 0.5f, 0.0f}, 0.0f);
  EXPECT_EQ(inactive.lambdas[0], 0.0f);
}

TEST(SlideCollisionKernel, ComplianceWeightAndWorldMatrixEnterTheUpdate) {
  // A compliance of 1 with weight 1 goes half the way, and the multiplier
  // it leaves holds the point there when the row is solved again.
  OneRow soft({0.0f, 0.5f, 0.0f});
  soft.compliance = 1.0f;
  ExpectVec(soft.Solve(), {0.0f, 0.75f, 0.0f}, 1e-6f);
  EXPECT_NEAR(soft.lambdas[0], -0.25f, 1e-6f);
  ExpectVec(soft.Solve(), {0.0f, 0.75f, 0.0f}, 1e-6f);
  EXPECT_NEAR(soft.lambdas[0], -0.25f, 1e-6f);

  // The normal is normalised; its length does not matter.
  OneRow long_normal({0.0f, -0.2f, 0.0f});
  long_normal.normals = {0.0f, 5.0f, 0.0f};
  ExpectVec(long_normal.Solve(), {0.0f, 1.0f, 0.0f}, 1e-6f);

  // The same row in a solver whose object space sits 3 below the world.
  OneRow placed({0.0f, 3.5f, 0.0f});
  ExpectVec(placed.Solve(myo_test::Affine(0.0f, -3.0f, 0.0f)), {0.0f, 4.0f, 0.0f}, 1e-6f);
}

TEST(SlideCollisionKernel, AZeroNormalLeavesDAsItIs) {
  // Bound outside: like any point on its side, pushed out along d.
  OneRow outside({0.0f, 0.5f, 0.0f});
  outside.normals = {0.0f, 0.0f, 0.0f};
  ExpectVec(outside.Solve(), {0.0f, 1.0f, 0.0f}, 1e-6f);
  // Bound inside: the crossed path, with nothing to mirror.
  OneRow inside({0.0f, 0.5f, 0.0f});
  inside.normals = {0.0f, 0.0f, 0.0f};
  inside.inside = true;
  ExpectVec(inside.Solve(), {0.0f, 1.0f, 0.0f}, 1e-6f);
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

TEST(SlideCollisionRows, FullyAttractedPointsAndOtherBlocksAreLeftAlone) {
  std::vector<float> positions;
  SlideCollisionConstraints group = EightRows(positions);
  std::vector<float> attraction(8, 0.0f);
  attraction[1] = 1.0f;
  attraction[2] = 0.999f;
  group.sliding_inactive_[3] = 1;
  std::vector<float> lambdas(10, 0.0f);
  const std::vector<float> before = positions;
  const Matrix identity = myo_core::IdentityMatrix();
  myo_core::SolveSlideCollisionRows(group, 1, 6, attraction, 0.0f, false, identity, identity, positions.data(),
                                    lambdas.data());
  for (uint32_t i = 0; i < 8; ++i) {
    const Vec3 was = myo_core::Load3(before.data(), i);
    const bool moves = i == 2 || i == 4 || i == 6;  // in the block, attraction below 1, active, within reach
    ExpectVec(myo_core::Load3(positions.data(), i), moves ? Vec3{was.x, 1.0f, was.z} : was, moves ? 1e-6f : 0.0f);
    EXPECT_EQ(lambdas[2 + i] != 0.0f, moves) << "point " << i;
  }
  EXPECT_EQ(lambdas[0], 0.0f);
  EXPECT_EQ(lambdas[1], 0.0f);
}

TEST(SlideCollisionRows, TablesThatDoNotFitRunNothing) {
  std::vector<float> positions;
  SlideCollisionConstraints group = EightRows(positions);
  std::vector<float> lambdas(10, 0.0f);
  const std::vector<float> before = positions;
  const Matrix identity = myo_core::IdentityMatrix();
  // An attraction array short of the block.
  myo_core::SolveSlideCollisionRows(group, 0, 8, std::vector<float>(7, 0.0f), 0.0f, false, identity, identity,
                                    positions.data(), lambdas.data());
  EXPECT_TRUE(SameBits(positions, before));
  // A table of seven points.
  group.inside_flags_.resize(7);
  myo_core::SolveSlideCollisionRows(group, 0, 8, std::vector<float>(8, 0.0f), 0.0f, false, identity, identity,
                                    positions.data(), lambdas.data());
  EXPECT_TRUE(SameBits(positions, before));
  // A triangle past the normals: that row alone is skipped.
  group.inside_flags_.resize(8);
  group.closest_triangles_[4] = 2;
  myo_core::SolveSlideCollisionRows(group, 0, 8, std::vector<float>(8, 0.0f), 0.0f, false, identity, identity,
                                    positions.data(), lambdas.data());
  ExpectVec(myo_core::Load3(positions.data(), 4), myo_core::Load3(before.data(), 4), 0.0f);
  ExpectVec(myo_core::Load3(positions.data(), 3), {3.0f, 1.0f, 0.3f}, 1e-6f);
}

TEST(SlideCollisionRows, BlocksOnTwoThreadsGiveTheBitsOfOnePass) {
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
}

// ---- The search ------------------------------------------------------------

// The search written the plain way: every candidate measured in list order,
// the first of the least distance kept, with its triangle.
void PlainScan(const std::vector<float>& positions, const Matrix& world, SlideCollisionConstraints& group) {
  const std::size_t n = positions.size() / 3;
  group.sliding_inactive_.assign(n, 1);
  group.closest_triangles_.assign(n, 0);
  const float* v = group.collider_positions_.data();
  for (std::size_t i = 0; i < n; ++i) {
    if (group.inverse_masses_[i] < myo_core::kEpsilon) continue;
    Vec3 p = myo_core::Load3(positions.data(), static_cast<uint32_t>(i));
    if (!myo_core::IsIdentity(world)) p = myo_core::TransformPoint(p, world);
    bool found = false;
    float best_distance = 0.0f;
    for (uint32_t k = 0; k < group.sliding_counts_[i]; ++k) {
      const uint32_t t = group.sliding_triangles_[group.sliding_offsets_[i] + k];
      const uint32_t* abc = &group.collider_triangles_[3 * t];
      const Vec3 c = myo_core::ClosestPointOnTriangle(p, myo_core::Load3(v, abc[0]), myo_core::Load3(v, abc[1]),
                                                      myo_core::Load3(v, abc[2]));
      const float distance = myo_core::Length(c - p);
      if (found && !(distance < best_distance)) continue;
      found = true;
      best_distance = distance;
      myo_core::Store3(group.closest_points_.data(), static_cast<uint32_t>(i), c);
      group.closest_triangles_[i] = t;
    }
    if (found) group.sliding_inactive_[i] = 0;
  }
}

// Points of a small spindle against the triangles of a larger one, each with
// a window of triangles of its own; some without weight or list.
struct SearchScene {
  myo_core::MeshData collider = myo_test::BuildMesh(myo_scenes::MakeSpindle(12, 16, 6.0f, 1.2f));
  myo_core::MeshData points = myo_test::BuildMesh(myo_scenes::MakeSpindle(10, 12, 5.0f, 1.0f));
  SlideCollisionConstraints group;

  SearchScene() {
    group.collider_positions_ = collider.points;
    group.collider_triangles_.assign(collider.triangle_vertices.begin(), collider.triangle_vertices.end());
    const uint32_t n = points.PointCount(), g = collider.TriangleCount();
    for (uint32_t i = 0; i < n; ++i) {
      group.sliding_offsets_.push_back(static_cast<uint32_t>(group.sliding_triangles_.size()));
      const uint32_t count = i % 17 == 9 ? 0 : 1 + (i * 7) % 40;
      for (uint32_t k = 0; k < count; ++k) group.sliding_triangles_.push_back((i * 13 + k * 5) % g);
      group.sliding_counts_.push_back(count);
    }
    group.inverse_masses_.assign(n, 0.5f);
    group.inverse_masses_[3] = 0.0000009f;
    group.closest_points_.assign(3 * n, 7.0f);
    group.closest_triangles_.assign(n, 99);
  }
};

TEST(CollisionSlidingPoints, MatchesAPlainScanOnOneAndTwoThreads) {
  for (const Matrix& world : {myo_core::IdentityMatrix(), myo_test::RotationZ(0.3f, {0.2f, -0.1f, 0.4f})}) {
    SearchScene scene;
    SlideCollisionConstraints scanned = scene.group;
    PlainScan(scene.points.points, world, scanned);
    for (int threads : {1, 2}) {
      SlideCollisionConstraints searched = scene.group;
      const int previous = omp_get_max_threads();
      omp_set_num_threads(threads);
      myo_core::UpdateCollisionSlidingPoints(!myo_core::IsIdentity(world), scene.points.points, world, searched);
      omp_set_num_threads(previous);
      EXPECT_TRUE(SameBits(scanned.closest_points_, searched.closest_points_)) << threads << " threads";
      EXPECT_EQ(scanned.closest_triangles_, searched.closest_triangles_);
      EXPECT_EQ(scanned.sliding_inactive_, searched.sliding_inactive_);
    }
    // Points without weight or list are inactive, with triangle 0 and their
    // old closest point.
    for (uint32_t i : {3u, 9u, 26u}) {
      EXPECT_EQ(scanned.sliding_inactive_[i], 1);
      EXPECT_EQ(scanned.closest_triangles_[i], 0u);
      ExpectVec(myo_core::Load3(scanned.closest_points_.data(), i), {7.0f, 7.0f, 7.0f}, 0.0f);
    }
  }
}

TEST(CollisionSlidingPoints, OfEquallyNearTrianglesTheFirstInTheListIsRecorded) {
  // Two triangles exactly 1 above and 1 below the origin, and far ones
  // around them in the list so that the pair meets in different lanes.
  SlideCollisionConstraints group;
  auto add = [&](Vec3 a, Vec3 b, Vec3 c) {
    const uint32_t first = static_cast<uint32_t>(group.collider_positions_.size() / 3);
    for (Vec3 v : {a, b, c}) group.collider_positions_.insert(group.collider_positions_.end(), {v.x, v.y, v.z});
    group.collider_triangles_.insert(group.collider_triangles_.end(), {first, first + 1, first + 2});
    return first / 3;
  };
  const uint32_t above = add({-1, 1, -1}, {1, 1, -1}, {0, 1, 2});
  const uint32_t below = add({-1, -1, -1}, {1, -1, -1}, {0, -1, 2});
  std::vector<uint32_t> far;
  for (int k = 0; k < 5; ++k) far.push_back(add({10.0f + k, 0, 0}, {11.0f + k, 0, 0}, {10.0f + k, 1, 0}));
  const std::vector<std::vector<uint32_t>> lists = {{far[0], far[1], below, far[2], far[3], above, far[4]},
                                                     {far[0], above, far[1], far[2], far[3], below},
                                                     {below, above}};
  const uint32_t expected[] = {below, above, below};
  for (std::size_t l = 0; l < lists.size(); ++l) {
    group.sliding_triangles_ = lists[l];
    group.sliding_counts_ = {static_cast<uint32_t>(lists[l].size())};
    group.sliding_offsets_ = {0};
    group.inverse_masses_ = {1.0f};
    group.closest_points_ = {0.0f, 0.0f, 0.0f};
    group.sliding_search_ = myo_core::SlidingSearchScratch();
    myo_core::UpdateCollisionSlidingPoints(false, {0.0f, 0.0f, 0.0f}, myo_core::IdentityMatrix(), group);
    ASSERT_EQ(group.sliding_inactive_[0], 0);
    EXPECT_EQ(group.closest_triangles_[0], expected[l]) << "list " << l;
    EXPECT_EQ(group.closest_points_[1], expected[l] == above ? 1.0f : -1.0f);
  }
}

// ---- Triangle normals and the collider refresh -----------------------------

// A quad (two triangles) facing +y beside a triangle facing +z.
myo_core::MeshData QuadAndTriangle() {
  myo_core::PolygonMesh polygons;
  polygons.points = {0, 0, 0, 0, 0, 1, 1, 0, 1, 1, 0, 0, 2, 0, 0, 3, 0, 0, 2, 1, 0};
  polygons.vertex_counts = {4, 3};
  polygons.vertices = {0, 1, 2, 3, 4, 5, 6};
  return myo_test::Placed(myo_test::BuildMesh(polygons), myo_core::IdentityMatrix());
}

TEST(ColliderTriangleNormals, EachTriangleTakesItsPolygonsNormal) {
  myo_test::LogCapture log;
  const myo_core::MeshData mesh = QuadAndTriangle();
  std::vector<float> normals;
  ASSERT_TRUE(myo_core::ReadTriangleNormals(mesh, true, normals));
  EXPECT_EQ(normals, (std::vector<float>{0, 1, 0, 0, 1, 0, 0, 0, 1}));
  EXPECT_TRUE(log.lines().empty());

  // The host's normals are taken as they are, world space and all.
  myo_core::MeshData placed = myo_test::Placed(mesh, myo_test::RotationZ(1.5707964f, {0.0f, 0.0f, 0.0f}));
  ASSERT_TRUE(myo_core::ReadTriangleNormals(placed, true, normals));
  ExpectVec(myo_core::Load3(normals.data(), 0), {-1.0f, 0.0f, 0.0f}, 1e-6f);
  ExpectVec(myo_core::Load3(normals.data(), 1), {-1.0f, 0.0f, 0.0f}, 1e-6f);
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

  log.Clear();
  ASSERT_TRUE(myo_core::ReadTriangleNormals(mesh, false, normals));
  EXPECT_TRUE(log.lines().empty());
}

TEST(ColliderTriangleNormals, AMeshWithoutNormalsOrWithAnUnmatchedTableIsNotRead) {
  myo_test::LogCapture log;
  const myo_core::MeshData good = QuadAndTriangle();
  std::vector<float> normals = {5.0f};
  myo_core::MeshData mesh = good;
  mesh.world_polygon_normals.clear();
  EXPECT_FALSE(myo_core::ReadTriangleNormals(mesh, true, normals));
  mesh = good;
  mesh.polygon_triangle_counts.pop_back();
  EXPECT_FALSE(myo_core::ReadTriangleNormals(mesh, true, normals));
  mesh = good;
  mesh.polygon_triangle_counts[1] = 2;  // counts beyond the triangles
  EXPECT_FALSE(myo_core::ReadTriangleNormals(mesh, true, normals));
  EXPECT_EQ(normals, std::vector<float>{5.0f});
  EXPECT_TRUE(log.lines().empty());
}

TEST(ColliderRefresh, TakesTheCollidersWorldSpaceOnlyWhenItFitsTheBinding) {
  const myo_core::MeshData mesh = QuadAndTriangle();
  SlideCollisionConstraints group;
  group.collider_positions_.assign(mesh.points.size(), 0.0f);
  group.collider_triangles_.assign(mesh.triangle_vertices.begin(), mesh.triangle_vertices.end());
  const myo_core::MeshData moved = myo_test::Placed(mesh, myo_test::RotationZ(0.5f, {1.0f, 2.0f, 3.0f}));
  ASSERT_TRUE(myo_core::ReadColliderMesh(moved, true, group));
  EXPECT_EQ(group.collider_positions_, moved.world_points);
  ExpectVec(myo_core::Load3(group.collider_normals_.data(), 1), myo_core::Load3(moved.world_polygon_normals.data(), 0),
            0.0f);
  const std::vector<float> positions = group.collider_positions_, normals = group.collider_normals_;

  // Another vertex count, no vertices, another triangle count, no world space.
  const myo_core::MeshData grid =
      myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeGrid(2, 2, 1.0f, 1.0f)), myo_core::IdentityMatrix());
  myo_core::MeshData empty;
  myo_core::MeshData rewired = mesh;
  rewired.polygon_triangle_counts = {1, 1};
  rewired.triangle_vertices.resize(6);
  myo_core::MeshData without_world = mesh;
  without_world.world_points.clear();
  for (const myo_core::MeshData* bad : std::vector<const myo_core::MeshData*>{&grid, &empty, &rewired, &without_world}) {
    EXPECT_FALSE(myo_core::ReadColliderMesh(*bad, true, group));
    EXPECT_EQ(group.collider_positions_, positions);
    EXPECT_EQ(group.collider_normals_, normals);
  }
}

}  // namespace
