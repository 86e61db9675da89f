// The skin's blended hard / soft / slide row, the sliding point search and
// the sliding edges.

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "core/kernels/uber_constraints.h"
#include "scenes/muscle_meshes.h"
#include "tests/support/test_geometry.h"

namespace {

using myo_core::Matrix;
using myo_core::UberConstraints;
using myo_core::Vec3;
using myo_test::ExpectVec;

// One reference triangle in the plane y = 0, A = (0,0,0), B = (0,0,2),
// C = (2,0,0), polygon normal +y, and one skin point bound at q = (0.5, 0,
// 0.5) (u = 0.5, v = 0.25, so 0.25 of C) at distance 1 straight above q. In
// the frame at q (e towards A, n = +y) the offset p - q = (0, 1, 0) reads
// (0, 1, 0), the middle column being n.
struct OnePointScene {
  UberConstraints uber;
  std::vector<float> positions = {0.5f, 1.0f, 0.5f};
  std::vector<float> lambdas = {0.0f};

  OnePointScene() {
    uber.inverse_masses_ = {1.0f};
    uber.triangle_vertices_ = {0, 1, 2};
    uber.polygon_indices_ = {0};
    uber.reference_triangles_ = {0, 1, 2};
    uber.reference_positions_ = {0, 0, 0, 0, 0, 2, 2, 0, 0};
    uber.polygon_normals_ = {0, 1, 0};
    uber.barycentric_u_ = {0.5f};
    uber.barycentric_v_ = {0.25f};
    uber.surface_distances_ = {1.0f};
    uber.local_offsets_ = {0.0f, 1.0f, 0.0f};
    uber.sliding_points_ = {0.5f, 0.0f, 0.5f};
    uber.hard_weights_ = {1.0f};
    uber.soft_weights_ = {0.0f};
    uber.slide_weights_ = {0.0f};
    uber.sliding_inactive_ = {1};
  }
  void Weights(float hard, float soft, float slide) {
    uber.hard_weights_ = {hard};
    uber.soft_weights_ = {soft};
    uber.slide_weights_ = {slide};
  }
  void Solve(float compliance, const Matrix& world = myo_core::IdentityMatrix()) {
    myo_core::SolveUberRows(uber, 0, 1, compliance, !myo_core::IsIdentity(world), world,
                            myo_core::InvertMatrix(world), positions.data(), lambdas.data());
  }
  Vec3 Point() const { return myo_core::Load3(positions.data(), 0); }
};

// The reference turned a quarter about z: A, B, C and the normal rotate,
// +y becoming -x.
void TurnReference(OnePointScene& scene) {
  scene.uber.reference_positions_ = {0, 0, 0, 0, 0, 2, 0, 2, 0};
  scene.uber.polygon_normals_ = {-1, 0, 0};
}

// A state in which all three terms are present and different: the turned
// reference (hard), the point off its distance (soft), a sliding point aside
// (slide), a prior multiplier and a soft compliance.
OnePointScene MixedScene() {
  OnePointScene scene;
  TurnReference(scene);
  scene.positions = {0.3f, 1.7f, 0.9f};
  scene.uber.sliding_points_ = {1.0f, 0.2f, -0.4f};
  scene.uber.sliding_inactive_ = {0};
  scene.uber.inverse_masses_ = {0.5f};
  scene.lambdas = {0.25f};
  return scene;
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

TEST(UberConstraintsKernel, WeightsAboveOneAreClampedHardThenSlideThenSoft) {
  auto run = [](float hard, float soft, float slide) {
    OnePointScene scene = MixedScene();
    scene.Weights(hard, soft, slide);
    scene.Solve(0.01f);
    return scene;
  };
  const OnePointScene all_one = run(1.0f, 1.0f, 1.0f), hard_only = run(1.0f, 0.0f, 0.0f);
  EXPECT_TRUE(SameBits(all_one.positions, hard_only.positions));
  EXPECT_TRUE(SameBits(all_one.lambdas, hard_only.lambdas));

  // Slide is served before soft, whatever the painted order.
  const OnePointScene mixed = run(0.7f, 0.2f, 0.3f), without_soft = run(0.7f, 0.0f, 0.3f);
  EXPECT_TRUE(SameBits(mixed.positions, without_soft.positions));
  EXPECT_TRUE(SameBits(mixed.lambdas, without_soft.lambdas));

  // Soft gets what hard and slide leave: 1 - (0.4 + 0.5) = 0.1.
  const OnePointScene partial = run(0.5f, 0.6f, 0.4f), by_hand = run(0.5f, 0.1f, 0.4f);
  ExpectVec(partial.Point(), by_hand.Point(), 1e-6f);
  EXPECT_NEAR(partial.lambdas[0], by_hand.lambdas[0], 1e-6f);

  // A sum of at most 1 is used as painted.
  const OnePointScene below = run(0.3f, 0.3f, 0.3f), other = run(0.3f, 0.0f, 0.3f);
  EXPECT_FALSE(SameBits(below.positions, other.positions));
}

TEST(UberConstraintsKernel, NoWeightOrNoMassLeavesThePointAndItsMultiplier) {
  OnePointScene scene = MixedScene();
  scene.lambdas = {0.0f};
  const std::vector<float> before = scene.positions;
  scene.Weights(0.0f, 0.0f, 0.0f);
  scene.Solve(0.0f);
  EXPECT_TRUE(SameBits(scene.positions, before));
  EXPECT_EQ(scene.lambdas[0], 0.0f);

  scene.Weights(1.0f, 0.0f, 0.0f);
  scene.uber.inverse_masses_ = {0.0000005f};
  scene.Solve(0.0f);
  EXPECT_TRUE(SameBits(scene.positions, before));
  EXPECT_EQ(scene.lambdas[0], 0.0f);
}

TEST(UberConstraintsKernel, HardFollowsItsTriangleFrameAtHighStiffness) {
  OnePointScene scene;
  scene.Solve(1e-6f);
  ExpectVec(scene.Point(), {0.5f, 1.0f, 0.5f}, 1e-6f);  // at rest the point stays
  EXPECT_EQ(scene.lambdas[0], 0.0f);

  // The surface point turns to (0, 0.5, 0.5) and its normal to -x: the point
  // follows to one unit along -x from there.
  TurnReference(scene);
  scene.Solve(0.0f);
  ExpectVec(scene.Point(), {-1.0f, 0.5f, 0.5f}, 1e-5f);
  EXPECT_NEAR(scene.lambdas[0], -std::sqrt(1.5f * 1.5f + 0.5f * 0.5f), 1e-5f);

  // The same in the skin's object space, the skin moved by (5, 0, 0).
  OnePointScene moved;
  moved.positions = {-4.5f, 1.0f, 0.5f};
  TurnReference(moved);
  moved.Solve(0.0f, myo_test::Affine(5.0f, 0.0f, 0.0f));
  ExpectVec(moved.Point(), {-6.0f, 0.5f, 0.5f}, 1e-5f);
}

TEST(UberConstraintsKernel, SoftKeepsTheDistanceButLetsThePointSwing) {
  OnePointScene scene;
  scene.Weights(0.0f, 1.0f, 0.0f);
  scene.positions = {0.5f, 3.0f, 0.5f};
  scene.Solve(0.0f);
  ExpectVec(scene.Point(), {0.5f, 1.0f, 0.5f}, 1e-6f);

  // At its distance in another direction the point has nothing to correct.
  scene.positions = {1.5f, 0.0f, 0.5f};
  scene.lambdas = {0.0f};
  scene.Solve(1e-4f);
  ExpectVec(scene.Point(), {1.5f, 0.0f, 0.5f}, 0.0f);

  // On its surface point the direction is zero and so is the correction.
  scene.uber.surface_distances_ = {0.0f};
  scene.positions = {0.5f, 0.0f, 0.5f};
  scene.Solve(1e-4f);
  ExpectVec(scene.Point(), {0.5f, 0.0f, 0.5f}, 0.0f);
  EXPECT_EQ(scene.lambdas[0], 0.0f);
}

TEST(UberConstraintsKernel, SlideKeepsTheDistanceFromTheSlidingPointOnlyWhenActive) {
  OnePointScene scene;
  scene.Weights(0.0f, 0.0f, 1.0f);
  scene.uber.sliding_points_ = {1.0f, 0.0f, 0.2f};
  scene.positions = {1.0f, 0.0f, 2.2f};  // 2 from the sliding point, 1 to keep

  scene.uber.sliding_inactive_ = {1};
  scene.Solve(1e-4f);
  ExpectVec(scene.Point(), {1.0f, 0.0f, 2.2f}, 0.0f);

  scene.uber.sliding_inactive_ = {0};
  scene.Solve(0.0f);
  ExpectVec(scene.Point(), {1.0f, 0.0f, 1.2f}, 1e-6f);
}

// ---- Sliding points -------------------------------------------------------

// A reference of loose triangles: triangle k uses vertices 3k to 3k + 2.
struct LooseTriangles {
  std::vector<float> positions;
  std::vector<uint32_t> triangles;
  uint32_t Add(Vec3 a, Vec3 b, Vec3 c) {
    const uint32_t first = static_cast<uint32_t>(positions.size() / 3);
    for (Vec3 v : {a, b, c}) positions.insert(positions.end(), {v.x, v.y, v.z});
    triangles.insert(triangles.end(), {first, first + 1, first + 2});
    return first / 3;
  }
};

// One point at the origin with the given candidate list.
UberConstraints OnePointSearch(const LooseTriangles& mesh, const std::vector<uint32_t>& list) {
  UberConstraints uber;
  uber.reference_positions_ = mesh.positions;
  uber.reference_triangles_ = mesh.triangles;
  uber.slide_weights_ = {1.0f};
  uber.sliding_triangles_ = list;
  uber.sliding_counts_ = {static_cast<uint32_t>(list.size())};
  uber.sliding_offsets_ = {0};
  uber.sliding_points_ = {7.0f, 7.0f, 7.0f};
  return uber;
}

TEST(UberSlidingPoints, EqualDistancesGoToTheCandidateFirstInTheList) {
  // Two triangles exactly 1 above and 1 below the origin, and far ones.
  LooseTriangles mesh;
  const uint32_t above = mesh.Add({-1, 1, -1}, {1, 1, -1}, {0, 1, 2});
  const uint32_t below = mesh.Add({-1, -1, -1}, {1, -1, -1}, {0, -1, 2});
  std::vector<uint32_t> far;
  for (int k = 0; k < 6; ++k)
    far.push_back(mesh.Add({10.0f + k, 0, 0}, {11.0f + k, 0, 0}, {10.0f + k, 1, 0}));
  const std::vector<float> origin = {0.0f, 0.0f, 0.0f};

  // The tied pair in different lanes of the four-wide search, in both
  // orders, and in the same lane.
  const std::vector<std::vector<uint32_t>> lists = {
      {far[0], far[1], below, far[2], far[3], above, far[4]},
      {far[0], far[1], above, far[2], far[3], below, far[4]},
      {far[0], above, far[1], far[2], far[3], below},
      {below, above},
  };
  const float expected_y[] = {-1.0f, 1.0f, 1.0f, -1.0f};
  for (std::size_t l = 0; l < lists.size(); ++l) {
    UberConstraints uber = OnePointSearch(mesh, lists[l]);
    myo_core::UpdateSlidingPoints(false, origin, myo_core::IdentityMatrix(), uber);
    ASSERT_EQ(uber.sliding_inactive_[0], 0) << "list " << l;
    ExpectVec(myo_core::Load3(uber.sliding_points_.data(), 0), {0.0f, expected_y[l], 0.0f}, 0.0f);
  }
}

TEST(UberSlidingPoints, DegenerateTrianglesAreAnsweredByTheirEdges) {
  LooseTriangles mesh;
  const uint32_t line = mesh.Add({0, 0, 0}, {2, 0, 0}, {1, 0, 0});        // no area
  const uint32_t dot = mesh.Add({3, 3, 3}, {3, 3, 3}, {3, 3, 3});         // a single point
  const std::vector<float> point = {1.0f, 1.0f, 0.0f};
  UberConstraints uber = OnePointSearch(mesh, {line});
  myo_core::UpdateSlidingPoints(false, point, myo_core::IdentityMatrix(), uber);
  ExpectVec(myo_core::Load3(uber.sliding_points_.data(), 0), {1.0f, 0.0f, 0.0f}, 1e-6f);

  uber = OnePointSearch(mesh, {dot});
  myo_core::UpdateSlidingPoints(false, point, myo_core::IdentityMatrix(), uber);
  ExpectVec(myo_core::Load3(uber.sliding_points_.data(), 0), {3.0f, 3.0f, 3.0f}, 0.0f);
}

TEST(UberSlidingPoints, PointsWithoutWeightOrListStayInactiveWithTheirOldPoint) {
  LooseTriangles mesh;
  const uint32_t flat = mesh.Add({-1, 0, -1}, {-1, 0, 3}, {3, 0, -1});
  UberConstraints uber = OnePointSearch(mesh, {flat});
  const std::vector<float> point = {0.0f, 2.0f, 0.0f};

  uber.slide_weights_ = {0.0000009f};
  myo_core::UpdateSlidingPoints(false, point, myo_core::IdentityMatrix(), uber);
  EXPECT_EQ(uber.sliding_inactive_[0], 1);
  ExpectVec(myo_core::Load3(uber.sliding_points_.data(), 0), {7.0f, 7.0f, 7.0f}, 0.0f);

  uber.slide_weights_ = {1.0f};
  uber.sliding_counts_ = {0};
  myo_core::UpdateSlidingPoints(false, point, myo_core::IdentityMatrix(), uber);
  EXPECT_EQ(uber.sliding_inactive_[0], 1);

  // Through the skin's world matrix: the point sits at (0, 2, 0) + (1, 0, 1).
  uber.sliding_counts_ = {1};
  myo_core::UpdateSlidingPoints(true, point, myo_test::Affine(1.0f, 0.0f, 1.0f), uber);
  EXPECT_EQ(uber.sliding_inactive_[0], 0);
  ExpectVec(myo_core::Load3(uber.sliding_points_.data(), 0), {1.0f, 0.0f, 1.0f}, 1e-6f);
}

TEST(UberSlidingPoints, MatchesAnOrderedScanOnAnyThreadCount) {
  // Points of a small spindle against the triangles of a larger one, each
  // point with a window of triangles around a different start.
  const myo_core::MeshData reference = myo_test::BuildMesh(myo_scenes::MakeSpindle(12, 16, 6.0f, 1.2f));
  const myo_core::MeshData skin = myo_test::BuildMesh(myo_scenes::MakeSpindle(10, 12, 5.0f, 1.0f));
  UberConstraints uber;
  uber.reference_positions_ = reference.points;
  uber.reference_triangles_.assign(reference.triangle_vertices.begin(), reference.triangle_vertices.end());
  const uint32_t n = skin.PointCount(), g = reference.TriangleCount();
  for (uint32_t i = 0; i < n; ++i) {
    uber.sliding_offsets_.push_back(static_cast<uint32_t>(uber.sliding_triangles_.size()));
    const uint32_t count = 1 + (i * 7) % 40;
    for (uint32_t k = 0; k < count; ++k) uber.sliding_triangles_.push_back((i * 13 + k * 5) % g);
    uber.sliding_counts_.push_back(count);
  }
  uber.slide_weights_.assign(n, 1.0f);
  uber.slide_weights_[3] = 0.0f;
  uber.sliding_points_.assign(3 * n, 0.0f);

  auto run = [&](int threads) {
    UberConstraints copy = uber;
    const int previous = omp_get_max_threads();
    omp_set_num_threads(threads);
    myo_core::UpdateSlidingPoints(false, skin.points, myo_core::IdentityMatrix(), copy);
    omp_set_num_threads(previous);
    return copy;
  };
  const UberConstraints one = run(1), two = run(2);
  EXPECT_TRUE(SameBits(one.sliding_points_, two.sliding_points_));
  EXPECT_EQ(one.sliding_inactive_, two.sliding_inactive_);

  for (uint32_t i = 0; i < n; ++i) {
    if (i == 3) {
      EXPECT_EQ(one.sliding_inactive_[i], 1);
      continue;
    }
    const Vec3 p = myo_core::Load3(skin.points.data(), i);
    Vec3 best{};
    float best_distance = 0.0f;
    for (uint32_t k = 0; k < uber.sliding_counts_[i]; ++k) {
      const uint32_t* abc = &uber.reference_triangles_[3 * uber.sliding_triangles_[uber.sliding_offsets_[i] + k]];
      const Vec3 c = myo_core::ClosestPointOnTriangle(p, myo_core::Load3(reference.points.data(), abc[0]),
                                                      myo_core::Load3(reference.points.data(), abc[1]),
                                                      myo_core::Load3(reference.points.data(), abc[2]));
      const float distance = myo_core::Length(c - p);
      if (k == 0 || distance < best_distance) best = c, best_distance = distance;
    }
    ASSERT_EQ(one.sliding_inactive_[i], 0);
    const Vec3 found = myo_core::Load3(one.sliding_points_.data(), i);
    EXPECT_TRUE(std::memcmp(&found, &best, sizeof(Vec3)) == 0) << "point " << i;
  }
}

TEST(UberSlidingEdges, EachEdgeOnceAsASortedPair) {
  // Triangles (0, 1, 2) and (2, 1, 3) sharing the edge 1-2; the first listed twice.
  const std::vector<uint32_t> reference = {0, 1, 2, 2, 1, 3};
  std::vector<uint32_t> edges = {99};
  myo_core::BuildSlidingEdges({1, 0, 1}, reference, edges);
  EXPECT_EQ(edges, (std::vector<uint32_t>{0, 1, 0, 2, 1, 2, 1, 3, 2, 3}));
  myo_core::BuildSlidingEdges({}, reference, edges);
  EXPECT_TRUE(edges.empty());
}

}  // namespace
