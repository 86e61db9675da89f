#include "core/mesh/mesh_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace myo_core {
namespace {

MeshData Build(const std::vector<float>& points, const std::vector<int32_t>& counts,
               const std::vector<int32_t>& vertices) {
  MeshData mesh;
  std::string error;
  EXPECT_TRUE(BuildMeshData(points, counts, vertices, mesh, error)) << error;
  return mesh;
}

std::vector<int32_t> Range(const std::vector<int32_t>& offsets, const std::vector<int32_t>& values,
                           int32_t v) {
  return std::vector<int32_t>(values.begin() + offsets[v], values.begin() + offsets[v + 1]);
}

// Twice the signed area of a triangle of the xy plane.
double SignedArea2(const MeshData& mesh, const int32_t* tri) {
  const float* a = &mesh.points[3 * tri[0]];
  const float* b = &mesh.points[3 * tri[1]];
  const float* c = &mesh.points[3 * tri[2]];
  return (static_cast<double>(b[0]) - a[0]) * (static_cast<double>(c[1]) - a[1]) -
         (static_cast<double>(b[1]) - a[1]) * (static_cast<double>(c[0]) - a[0]);
}

// Two unit quads side by side, sharing the edge 1-4:
//   3 -- 4 -- 5
//   |    |    |
//   0 -- 1 -- 2
TEST(MeshDataTest, TwoQuadsNumberEdgesByFirstAppearance) {
  const std::vector<float> points = {0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0};
  const MeshData mesh = Build(points, {4, 4}, {0, 1, 4, 3, 1, 2, 5, 4});
  // Second quad walks 1-2, 2-5, 5-4 (new) and 4-1, which is edge 1 (1-4).
  EXPECT_EQ(mesh.edge_vertices,
            (std::vector<int32_t>{0, 1, 1, 4, 4, 3, 3, 0, 1, 2, 2, 5, 5, 4}));
  EXPECT_EQ(mesh.vertex_edge_offsets, (std::vector<int32_t>{0, 2, 5, 7, 9, 12, 14}));
  EXPECT_EQ(Range(mesh.vertex_edge_offsets, mesh.vertex_edges, 1), (std::vector<int32_t>{0, 1, 4}));
  EXPECT_EQ(Range(mesh.vertex_edge_offsets, mesh.vertex_neighbors, 1),
            (std::vector<int32_t>{0, 4, 2}));
  EXPECT_EQ(Range(mesh.vertex_face_offsets, mesh.vertex_faces, 1), (std::vector<int32_t>{0, 1}));
  // Convex quads become the fan from their first vertex.
  EXPECT_EQ(mesh.polygon_triangle_counts, (std::vector<int32_t>{2, 2}));
  EXPECT_EQ(mesh.triangle_vertices, (std::vector<int32_t>{0, 1, 4, 0, 4, 3, 1, 2, 5, 1, 5, 4}));
}

// Concave polygons: the triangles must keep the polygon's winding and sum to
// its area, so that none reaches outside it.
TEST(MeshDataTest, ConcavePolygonsAreTriangulatedInside) {
  struct Shape {
    const char* name;
    std::vector<float> xy;
  };
  const std::vector<Shape> shapes = {
      // Reflex vertex at position 1: a fan from vertex 0 would leave the polygon.
      {"arrow", {0, 0, 2, 1, 4, 0, 2, 4}},
      {"L", {0, 0, 3, 0, 3, 1, 1, 1, 1, 3, 0, 3}},
      {"star", {0, 3, 1, 1, 3, 1, 1.5f, -0.5f, 2, -3, 0, -1.5f, -2, -3, -1.5f, -0.5f, -3, 1, -1, 1}},
  };
  for (const Shape& shape : shapes) {
    for (bool reversed : {false, true}) {
      SCOPED_TRACE(std::string(shape.name) + (reversed ? " clockwise" : " counter-clockwise"));
      const int32_t n = static_cast<int32_t>(shape.xy.size() / 2);
      std::vector<float> points;
      for (int32_t i = 0; i < n; ++i) points.insert(points.end(), {shape.xy[2 * i], shape.xy[2 * i + 1], 0.0f});
      std::vector<int32_t> loop(n);
      for (int32_t i = 0; i < n; ++i) loop[i] = reversed ? n - 1 - i : i;
      const MeshData mesh = Build(points, {n}, loop);

      ASSERT_EQ(mesh.polygon_triangle_counts, (std::vector<int32_t>{n - 2}));
      double polygon_area2 = 0.0;
      for (int32_t i = 0; i < n; ++i) {
        const int32_t a = loop[i], b = loop[(i + 1) % n];
        polygon_area2 += static_cast<double>(points[3 * a]) * points[3 * b + 1] -
                         static_cast<double>(points[3 * b]) * points[3 * a + 1];
      }
      double total2 = 0.0;
      for (uint32_t t = 0; t < mesh.TriangleCount(); ++t) {
        const int32_t* tri = &mesh.triangle_vertices[3 * t];
        const double area2 = SignedArea2(mesh, tri);
        EXPECT_GT(area2 * polygon_area2, 0.0) << "triangle " << t << " flips the winding";
        total2 += area2;
      }
      EXPECT_NEAR(total2, polygon_area2, 1e-9 * std::fabs(polygon_area2));
    }
  }
}

TEST(MeshDataTest, DegenerateLoopsFallBackToFan) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  // All points on one line (no plane), and non-finite coordinates, which
  // are accepted.
  const std::vector<std::vector<float>> loops = {{0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0},
                                                 {0, 0, 0, inf, 0, 0, nan, 1, 0, 1, 2, 0, 0, 1, 0}};
  for (size_t i = 0; i < loops.size(); ++i)
    EXPECT_EQ(Build(loops[i], {5}, {0, 1, 2, 3, 4}).triangle_vertices,
              (std::vector<int32_t>{0, 1, 2, 0, 2, 3, 0, 3, 4})) << "loop " << i;
}

TEST(MeshDataTest, RejectsBadInputWithOneMessageAndLeavesMeshAlone) {
  const std::vector<float> square = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
  struct Case {
    std::vector<float> points;
    std::vector<int32_t> counts;
    std::vector<int32_t> vertices;
    std::string message;
  };
  const std::vector<Case> cases = {
      {{0, 0, 0, 1}, {}, {}, "The point array holds 4 floats, which is not a multiple of 3."},
      {square, {3, 2}, {0, 1, 2, 0, 1}, "Polygon 1 has 2 vertices; a polygon needs at least 3."},
      {square, {3, 4}, {0, 1, 2, 0, 1, 2},
       "Polygon 1 needs vertex list entries 3 to 6, but the vertex list holds only 6 indices."},
      {square, {3, 3}, {0, 1, 2, 0, 2, 4},
       "Polygon 1 refers to vertex 4, outside the 4 points of the mesh."},
      {square, {3, 4}, {0, 1, 2, 0, 2, 3, 2}, "Polygon 1 lists vertex 2 twice."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    MeshData mesh = Build(square, {4}, {0, 1, 2, 3});
    const MeshData before = mesh;
    std::string error;
    EXPECT_FALSE(BuildMeshData(c.points, c.counts, c.vertices, mesh, error));
    EXPECT_EQ(error, c.message);
    EXPECT_EQ(mesh.triangle_vertices, before.triangle_vertices);
  }
}

}  // namespace
}  // namespace myo_core
