#include "core/mesh/closest_point_query.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "core/mesh/mesh_data.h"
#include "core/mesh/point_triangle_closest.h"
#include "scenes/muscle_meshes.h"
#include "support/test_geometry.h"

namespace myo_core {
namespace {

struct TriangleSoup {
  std::vector<float> points;           // 3V
  std::vector<int32_t> triangles;      // 3T
  std::vector<int32_t> counts;         // P
};

struct Reference {
  bool found = false;
  int32_t triangle = -1;
  TriangleClosestPoint closest;
};

// Every triangle in index order; the first at the smallest distance wins.
Reference BruteForce(const TriangleSoup& mesh, const float p[3], float max_distance) {
  const double query[3] = {p[0], p[1], p[2]};
  double best = max_distance >= 0.0f ? static_cast<double>(max_distance) * max_distance
                                     : std::numeric_limits<double>::infinity();
  Reference result;
  for (size_t t = 0; t < mesh.triangles.size() / 3; ++t) {
    const float* corners[3];
    bool finite = true;
    for (int k = 0; k < 3; ++k) {
      corners[k] = &mesh.points[3 * mesh.triangles[3 * t + k]];
      for (int axis = 0; axis < 3; ++axis) finite = finite && std::isfinite(corners[k][axis]);
    }
    if (!finite) continue;
    const TriangleClosestPoint c = ExactClosestPointOnTriangle(query, corners[0], corners[1], corners[2]);
    if (c.distance2 < best || (!result.found && c.distance2 == best)) {
      best = c.distance2;
      result = {true, static_cast<int32_t>(t), c};
    }
  }
  return result;
}

void ExpectSameAsBruteForce(const ClosestPointQuery& query, const TriangleSoup& mesh,
                            const float p[3], float max_distance) {
  const Reference expected = BruteForce(mesh, p, max_distance);
  ClosestPointHit hit;
  const bool found = query.Closest(p, max_distance, hit);
  ASSERT_EQ(found, expected.found) << "at " << p[0] << " " << p[1] << " " << p[2];
  if (!found) return;
  EXPECT_EQ(hit.triangle, expected.triangle);
  // The polygon that holds the triangle, and the triangle's place in it.
  int32_t polygon = 0, first = 0;
  while (first + mesh.counts[polygon] <= hit.triangle) first += mesh.counts[polygon++];
  EXPECT_EQ(hit.polygon, polygon);
  EXPECT_EQ(hit.triangle_in_polygon, hit.triangle - first);
  EXPECT_EQ(hit.distance, static_cast<float>(std::sqrt(expected.closest.distance2)));
  for (int k = 0; k < 3; ++k) EXPECT_EQ(hit.point[k], static_cast<float>(expected.closest.point[k]));
  // The weights rebuild the point.
  const float* a = &mesh.points[3 * mesh.triangles[3 * hit.triangle]];
  const float* b = &mesh.points[3 * mesh.triangles[3 * hit.triangle + 1]];
  const float* c = &mesh.points[3 * mesh.triangles[3 * hit.triangle + 2]];
  const float w = 1.0f - hit.bary_u - hit.bary_v;
  for (int k = 0; k < 3; ++k) {
    const float scale = 1.0f + std::fabs(a[k]) + std::fabs(b[k]) + std::fabs(c[k]);
    EXPECT_NEAR(hit.bary_u * a[k] + hit.bary_v * b[k] + w * c[k], hit.point[k], 1e-5f * scale);
  }
}

TriangleSoup FromPolygons(const myo_scenes::PolygonMesh& polygons) {
  const MeshData mesh = myo_test::BuildMesh(polygons);
  return {mesh.points, mesh.triangle_vertices, mesh.polygon_triangle_counts};
}

// Random points: near the surface, in the box, far away, and exactly on
// corners and edge midpoints (exact ties on the grid and the spindle).
std::vector<float> QueryPoints(std::mt19937& random, const TriangleSoup& mesh, int count) {
  std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
  std::uniform_int_distribution<size_t> pick_triangle(0, mesh.triangles.size() / 3 - 1);
  std::vector<float> points;
  for (int i = 0; i < count; ++i) {
    const size_t t = pick_triangle(random);
    const float* a = &mesh.points[3 * mesh.triangles[3 * t]];
    const float* b = &mesh.points[3 * mesh.triangles[3 * t + 1]];
    const float spread[3] = {0.05f, 3.0f, 1000.0f};  // near a corner, around the mesh, far away
    for (int k = 0; k < 3; ++k) {
      if (i % 5 < 3) points.push_back((i % 5 == 0 ? a[k] : 0.0f) + spread[i % 5] * unit(random));
      else points.push_back(i % 5 == 3 ? a[k] : 0.5f * (a[k] + b[k]));  // on a corner, on an edge midpoint
    }
  }
  return points;
}

TEST(ClosestPointQueryTest, AgreesWithBruteForceOnRandomMeshes) {
  std::mt19937 random(1234);
  std::vector<std::pair<const char*, TriangleSoup>> meshes;
  meshes.emplace_back("spindle", FromPolygons(myo_scenes::MakeSpindle(12, 16, 4.0f, 1.0f)));
  meshes.emplace_back("grid", FromPolygons(myo_scenes::MakeGrid(20, 15, 3.0f, 2.0f)));
  for (const auto& [name, mesh] : meshes) {
    SCOPED_TRACE(name);
    ClosestPointQuery query;
    query.Build(mesh.points, mesh.triangles, mesh.counts);
    ASSERT_FALSE(query.Empty());
    const std::vector<float> points = QueryPoints(random, mesh, 1000);
    for (size_t i = 0; i < points.size(); i += 3) {
      ExpectSameAsBruteForce(query, mesh, &points[i], -1.0f);
      ExpectSameAsBruteForce(query, mesh, &points[i], 0.1f);
    }
  }
}

TEST(ClosestPointQueryTest, ReachDegenerateNonFiniteAndInconsistentInput) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const TriangleSoup grid = FromPolygons(myo_scenes::MakeGrid(4, 4, 2.0f, 2.0f));
  ClosestPointQuery query;
  query.Build(grid.points, grid.triangles, grid.counts);
  ClosestPointHit hit;
  const float above[3] = {0.1f, 0.5f, 0.2f};
  EXPECT_TRUE(query.Closest(above, 0.5f, hit));
  EXPECT_FALSE(query.Closest(above, std::nextafter(0.5f, 0.0f), hit));

  // Collinear, repeated, single-point and non-finite triangles.
  TriangleSoup mesh;
  mesh.points = {0, 0, 0, 2, 0, 0, 4, 0, 0, 0, 3, 0, 0, 3, 0, 0, 5, 0, 7, 7, 7, nan, 0, 0, 9, 9, 9};
  mesh.triangles = {0, 1, 2, 3, 4, 5, 6, 6, 6, 7, 8, 8};
  mesh.counts = {1, 1, 1, 1};
  query.Build(mesh.points, mesh.triangles, mesh.counts);
  std::mt19937 random(5);
  std::uniform_real_distribution<float> unit(-10.0f, 10.0f);
  for (int i = 0; i < 300; ++i) {
    const float p[3] = {unit(random), unit(random), unit(random)};
    ExpectSameAsBruteForce(query, mesh, p, -1.0f);
  }
  const float nan_point[3] = {nan, 0.0f, 0.0f};
  EXPECT_FALSE(query.Closest(nan_point, -1.0f, hit));

  // Counts beyond the triangles, an index out of range, nothing finite.
  const std::vector<float> points = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  query.Build(points, {0, 1, 2}, {2});
  EXPECT_TRUE(query.Empty());
  EXPECT_FALSE(query.Closest(above, -1.0f, hit));
  query.Build(points, {0, 1, 3}, {1});
  EXPECT_TRUE(query.Empty());
  query.Build({nan, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}, {1});
  EXPECT_TRUE(query.Empty());
}

}  // namespace
}  // namespace myo_core
