// Closest point of a triangle and the point-in-triangle test shared by the
// constraints that meet other meshes.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "core/kernels/triangle_queries.h"
#include "core/mesh/point_triangle_closest.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

const Vec3 kA = {0.0f, 0.0f, 0.0f}, kB = {1.0f, 0.0f, 0.0f}, kC = {0.0f, 1.0f, 0.0f};

void ExpectPoint(Vec3 actual, Vec3 expected) { myo_test::ExpectVec(actual, expected, 1e-6f); }

}  // namespace

TEST(TriangleQueriesTest, PointInTriangleCountsTheBoundaryAndHasNoInsideForSmallOrDegenerateTriangles) {
  EXPECT_TRUE(PointInTriangle(kA, kA, kB, kC));
  EXPECT_TRUE(PointInTriangle({0.5f, 0.5f, 0.0f}, kA, kB, kC));
  EXPECT_FALSE(PointInTriangle({0.6f, 0.6f, 0.0f}, kA, kB, kC));
  EXPECT_FALSE(PointInTriangle({-0.01f, 0.5f, 0.0f}, kA, kB, kC));
  // A point off the plane is tested by its place along the two edges only.
  EXPECT_TRUE(PointInTriangle({0.25f, 0.25f, 3.0f}, kA, kB, kC));
  // Collinear corners, repeated corners, and a proper triangle whose
  // Gram determinant (edge lengths 0.02) is below 1e-6.
  EXPECT_FALSE(PointInTriangle({0.5f, 0.0f, 0.0f}, kA, kB, {2.0f, 0.0f, 0.0f}));
  EXPECT_FALSE(PointInTriangle(kA, kA, kA, kB));
  EXPECT_FALSE(PointInTriangle({0.005f, 0.005f, 0.0f}, kA, {0.02f, 0.0f, 0.0f}, {0.0f, 0.02f, 0.0f}));
  EXPECT_TRUE(PointInTriangle({0.05f, 0.05f, 0.0f}, kA, {0.2f, 0.0f, 0.0f}, {0.0f, 0.2f, 0.0f}));
}

TEST(TriangleQueriesTest, EqualEdgesGoToAbFirstThenBc) {
  // Small triangles have no inside, so a point above them is answered by the
  // edges. Mirror-symmetric set-ups give exactly equal distances to two edges
  // at two different points.
  const Vec3 b = {0.02f, 0.0f, 0.0f}, c = {0.0f, 0.02f, 0.0f};
  const Vec3 on_ab = ClosestPointOnTriangle({0.002f, 0.002f, 1.0f}, kA, b, c);
  EXPECT_EQ(on_ab.y, 0.0f);  // on AB, not on AC
  EXPECT_NEAR(on_ab.x, 0.002f, 1e-6f);

  const Vec3 a2 = {-0.01f, 0.0f, 0.0f}, b2 = {0.01f, 0.0f, 0.0f}, c2 = {0.0f, 0.01f, 0.0f};
  const Vec3 on_bc = ClosestPointOnTriangle({0.0f, 0.008f, 1.0f}, a2, b2, c2);
  EXPECT_GT(on_bc.x, 0.0f);  // on BC, not on its mirror AC
  EXPECT_NEAR(on_bc.x, 0.001f, 1e-6f);
  EXPECT_NEAR(on_bc.y, 0.009f, 1e-6f);
}

TEST(TriangleQueriesTest, DegenerateTrianglesAnswerThroughTheirEdges) {
  // Collinear corners: the closest point on the segment they span.
  ExpectPoint(ClosestPointOnTriangle({0.5f, 1.0f, 0.0f}, kA, kB, {2.0f, 0.0f, 0.0f}), {0.5f, 0.0f, 0.0f});
  ExpectPoint(ClosestPointOnTriangle({3.0f, 1.0f, 0.0f}, kA, kB, {2.0f, 0.0f, 0.0f}), {2.0f, 0.0f, 0.0f});
  // All corners in one point.
  ExpectPoint(ClosestPointOnTriangle({1.0f, 2.0f, 3.0f}, kB, kB, kB), kB);
  // A small triangle: a point above its inside lands on the nearest edge, AC.
  const Vec3 on_edge = ClosestPointOnTriangle({0.005f, 0.006f, 1.0f}, kA, {0.02f, 0.0f, 0.0f}, {0.0f, 0.02f, 0.0f});
  EXPECT_EQ(on_edge.x, 0.0f);
  EXPECT_NEAR(on_edge.y, 0.006f, 1e-6f);
}

TEST(TriangleQueriesTest, DistanceMatchesTheExactClosestPointOnWellShapedTriangles) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> coordinate(-1.0f, 1.0f);
  auto draw = [&] { return Vec3{coordinate(random), coordinate(random), coordinate(random)}; };
  int tested = 0;
  while (tested < 2000) {
    const Vec3 a = draw(), b = draw(), c = draw();
    if (Length(Cross(b - a, c - a)) < 0.05f) continue;
    const Vec3 p = draw() * 2.0f;
    const PreparedTriangle prepared = PrepareTriangle(a, b, c);
    const TrianglePoint found = ClosestPointOnTriangle(p, prepared);
    const double query[3] = {p.x, p.y, p.z};
    const float fa[3] = {a.x, a.y, a.z}, fb[3] = {b.x, b.y, b.z}, fc[3] = {c.x, c.y, c.z};
    const TriangleClosestPoint exact = ExactClosestPointOnTriangle(query, fa, fb, fc);
    ASSERT_NEAR(found.distance, std::sqrt(exact.distance2), 2e-5f) << tested;
    ASSERT_NEAR(found.point.x, exact.point[0], 1e-4f);
    ASSERT_NEAR(found.point.y, exact.point[1], 1e-4f);
    ASSERT_NEAR(found.point.z, exact.point[2], 1e-4f);
    // The distance returned is that of the point returned.
    ASSERT_EQ(found.distance, Length(found.point - p));
    ++tested;
  }
}
