// Mesh data assembled from a host's own edges and triangulation.

#include <gtest/gtest.h>

#include <string>

#include "core/mesh/mesh_data.h"
#include "core/mesh/mesh_data_from_host.h"
#include "scenes/muscle_meshes.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

HostMeshArrays ArraysOf(const MeshData& mesh) {
  HostMeshArrays arrays;
  arrays.points = mesh.points;
  arrays.polygon_vertex_counts = mesh.polygon_vertex_counts;
  arrays.polygon_vertices = mesh.polygon_vertices;
  arrays.polygon_triangle_counts = mesh.polygon_triangle_counts;
  arrays.triangle_vertices = mesh.triangle_vertices;
  arrays.edge_vertices = mesh.edge_vertices;
  return arrays;
}

void ExpectSameMesh(const MeshData& a, const MeshData& b) {
  EXPECT_EQ(a.points, b.points);
  EXPECT_EQ(a.polygon_vertex_counts, b.polygon_vertex_counts);
  EXPECT_EQ(a.polygon_vertex_offsets, b.polygon_vertex_offsets);
  EXPECT_EQ(a.polygon_vertices, b.polygon_vertices);
  EXPECT_EQ(a.polygon_triangle_counts, b.polygon_triangle_counts);
  EXPECT_EQ(a.triangle_vertices, b.triangle_vertices);
  EXPECT_EQ(a.edge_vertices, b.edge_vertices);
  EXPECT_EQ(a.vertex_edge_offsets, b.vertex_edge_offsets);
  EXPECT_EQ(a.vertex_edges, b.vertex_edges);
  EXPECT_EQ(a.vertex_neighbors, b.vertex_neighbors);
  EXPECT_EQ(a.vertex_face_offsets, b.vertex_face_offsets);
  EXPECT_EQ(a.vertex_faces, b.vertex_faces);
}

// Two quads and a concave pentagon sharing edges, and a point no polygon uses.
PolygonMesh MixedMesh() {
  PolygonMesh mesh;
  mesh.points = {0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0, 1, 0.5f, 0, 2, 2, 0, 9, 9, 9};
  mesh.vertex_counts = {4, 4, 5};
  mesh.vertices = {0, 1, 4, 3, 1, 2, 5, 4, 3, 4, 5, 7, 6};
  return mesh;
}

}  // namespace

TEST(MeshDataFromHostTest, MatchesBuildMeshDataOnItsOwnEdgesAndTriangles) {
  for (const PolygonMesh& polygons : {myo_scenes::MakeSpindle(6, 8, 4.0f, 1.0f),
                                      myo_scenes::MakeGrid(3, 2, 2.0f, 1.0f), MixedMesh()}) {
    const MeshData reference = myo_test::BuildMesh(polygons);
    MeshData from_host;
    std::string error;
    ASSERT_TRUE(BuildMeshDataFromHost(ArraysOf(reference), from_host, error)) << error;
    ExpectSameMesh(from_host, reference);
  }
}

TEST(MeshDataFromHostTest, KeepsTheHostsEdgeIdsAndTriangulation) {
  const MeshData reference = myo_test::BuildMesh(MixedMesh());
  HostMeshArrays arrays = ArraysOf(reference);
  // The host numbers the edges backwards, turns every edge around and fans
  // the first quad the other way.
  std::vector<int32_t> reversed;
  for (uint32_t e = reference.EdgeCount(); e-- > 0;) {
    reversed.push_back(reference.edge_vertices[2 * e + 1]);
    reversed.push_back(reference.edge_vertices[2 * e]);
  }
  arrays.edge_vertices = reversed;
  arrays.triangle_vertices[0] = 0, arrays.triangle_vertices[1] = 1, arrays.triangle_vertices[2] = 3;
  arrays.triangle_vertices[3] = 1, arrays.triangle_vertices[4] = 4, arrays.triangle_vertices[5] = 3;

  MeshData mesh;
  std::string error;
  ASSERT_TRUE(BuildMeshDataFromHost(arrays, mesh, error)) << error;
  EXPECT_EQ(mesh.edge_vertices, reversed);
  EXPECT_EQ(mesh.triangle_vertices[4], 4);
  const int32_t last = static_cast<int32_t>(mesh.EdgeCount()) - 1;
  // Point 0 has the edges 0-1 and 0-3; with the ids reversed they are the last
  // two, still listed in ascending id with the opposite ends beside them.
  const int32_t begin = mesh.vertex_edge_offsets[0];
  ASSERT_EQ(mesh.vertex_edge_offsets[1] - begin, 2);
  EXPECT_LT(mesh.vertex_edges[begin], mesh.vertex_edges[begin + 1]);
  EXPECT_EQ(mesh.vertex_edges[begin + 1], last);
  for (int32_t k = begin; k < begin + 2; ++k) {
    const int32_t e = mesh.vertex_edges[k];
    const int32_t other = mesh.edge_vertices[2 * e] == 0 ? mesh.edge_vertices[2 * e + 1] : mesh.edge_vertices[2 * e];
    EXPECT_EQ(mesh.vertex_neighbors[k], other);
  }
  // The unused point has empty ranges.
  EXPECT_EQ(mesh.vertex_edge_offsets[9], mesh.vertex_edge_offsets[8]);
  EXPECT_EQ(mesh.vertex_face_offsets[9], mesh.vertex_face_offsets[8]);
}

TEST(MeshDataFromHostTest, RejectsInconsistentArraysWithOneMessage) {
  const MeshData reference = myo_test::BuildMesh(MixedMesh());
  const MeshData untouched = myo_test::BuildMesh(myo_scenes::MakeGrid(1, 1, 1.0f, 1.0f));
  struct Case {
    const char* what;
    void (*spoil)(HostMeshArrays&);
    const char* message_part;
  };
  const Case cases[] = {
      {"polygon", [](HostMeshArrays& a) { a.polygon_vertices[2] = 40; }, "outside the 9 points"},
      {"counts", [](HostMeshArrays& a) { a.polygon_triangle_counts.pop_back(); }, "counts for 2 polygons"},
      {"cover", [](HostMeshArrays& a) { a.polygon_triangle_counts[0] = 3; }, "cover 8 triangles"},
      {"negative", [](HostMeshArrays& a) { a.polygon_triangle_counts[0] = -1; }, "negative triangle count"},
      {"triangle", [](HostMeshArrays& a) { a.triangle_vertices[4] = -2; }, "Triangle 1 refers to vertex -2"},
      {"edge", [](HostMeshArrays& a) { a.edge_vertices[3] = 9; }, "Edge 1 refers to vertex 9"},
      {"odd", [](HostMeshArrays& a) { a.edge_vertices.pop_back(); }, "not a multiple of 2"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    HostMeshArrays arrays = ArraysOf(reference);
    c.spoil(arrays);
    MeshData mesh = untouched;
    std::string error;
    EXPECT_FALSE(BuildMeshDataFromHost(arrays, mesh, error));
    EXPECT_NE(error.find(c.message_part), std::string::npos) << error;
    EXPECT_EQ(mesh.points, untouched.points);
  }
}
