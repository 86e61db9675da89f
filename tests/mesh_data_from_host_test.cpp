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

// Two quads and a concave pentagon sharing edges, and a point no polygon uses.
PolygonMesh MixedMesh() {
  PolygonMesh mesh;
  mesh.points = {0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0, 1, 0.5f, 0, 2, 2, 0, 9, 9, 9};
  mesh.vertex_counts = {4, 4, 5};
  mesh.vertices = {0, 1, 4, 3, 1, 2, 5, 4, 3, 4, 5, 7, 6};
  return mesh;
}

// The per-point lists of a host whose vertex iterator walks every point's
// edges and polygons backwards and its connected points from the second
// one on: orders unlike the ascending ones derived without them.
HostMeshArrays WithHostOrders(const MeshData& mesh) {
  HostMeshArrays arrays = ArraysOf(mesh);
  for (uint32_t v = 0; v < mesh.PointCount(); ++v) {
    const int32_t begin = mesh.vertex_edge_offsets[v], end = mesh.vertex_edge_offsets[v + 1];
    arrays.vertex_edge_counts.push_back(end - begin);
    for (int32_t k = end; k-- > begin;) arrays.vertex_edges.push_back(mesh.vertex_edges[k]);
    for (int32_t k = begin; k < end; ++k)
      arrays.vertex_connected.push_back(mesh.vertex_neighbors[begin + (k - begin + 1) % (end - begin)]);
    const int32_t first = mesh.vertex_face_offsets[v], last = mesh.vertex_face_offsets[v + 1];
    arrays.vertex_face_counts.push_back(last - first);
    for (int32_t k = last; k-- > first;) arrays.vertex_faces.push_back(mesh.vertex_faces[k]);
  }
  return arrays;
}

}  // namespace

TEST(MeshDataFromHostTest, MatchesBuildMeshDataOnItsOwnEdgesAndTriangles) {
  for (const PolygonMesh& polygons : {myo_scenes::MakeSpindle(6, 8, 4.0f, 1.0f), MixedMesh()}) {
    const MeshData reference = myo_test::BuildMesh(polygons);
    MeshData from_host;
    std::string error;
    ASSERT_TRUE(BuildMeshDataFromHost(ArraysOf(reference), from_host, error)) << error;
    // The tables derived from the host's arrays; the rest is copied over.
    EXPECT_EQ(from_host.vertex_edges, reference.vertex_edges);
    EXPECT_EQ(from_host.vertex_neighbors, reference.vertex_neighbors);
    EXPECT_EQ(from_host.vertex_connected, reference.vertex_connected);
    EXPECT_EQ(from_host.vertex_faces, reference.vertex_faces);
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
  EXPECT_EQ(mesh.triangle_vertices, arrays.triangle_vertices);
}

TEST(MeshDataFromHostTest, KeepsTheHostsPerPointOrdersAndWorldSpace) {
  const MeshData reference = myo_test::BuildMesh(MixedMesh());
  HostMeshArrays arrays = WithHostOrders(reference);
  arrays.world_points.assign(reference.points.size(), 2.0f);
  const HostMeshArrays handed = arrays;
  MeshData mesh;
  std::string error;
  ASSERT_TRUE(BuildMeshDataFromHost(arrays, mesh, error)) << error;
  EXPECT_EQ(mesh.vertex_edges, handed.vertex_edges);
  EXPECT_EQ(mesh.vertex_connected, handed.vertex_connected);
  EXPECT_EQ(mesh.vertex_faces, handed.vertex_faces);
  EXPECT_EQ(mesh.world_points, handed.world_points);
  // The neighbour across each edge, in the host's order of the edges: point
  // 4 has three, in the reverse of the ascending order.
  const int32_t begin = reference.vertex_edge_offsets[4];
  ASSERT_EQ(reference.vertex_edge_offsets[5] - begin, 3);
  for (int32_t k = 0; k < 3; ++k)
    EXPECT_EQ(mesh.vertex_neighbors[begin + k], reference.vertex_neighbors[begin + 2 - k]);
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
      {"cover", [](HostMeshArrays& a) { a.polygon_triangle_counts[0] = 3; }, "cover 8 triangles"},
      {"edge", [](HostMeshArrays& a) { a.edge_vertices[3] = 9; }, "Edge 1 refers to vertex 9"},
      {"foreign edge", [](HostMeshArrays& a) { std::swap(a.vertex_edges[0], a.vertex_edges[2]); },
       "which does not end at it"},
      {"connected", [](HostMeshArrays& a) { a.vertex_connected[0] = 8; }, "no edge joins them"},
      {"world", [](HostMeshArrays& a) { a.world_points.assign(3, 0.0f); }, "world-space points hold 3 floats"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    HostMeshArrays arrays = WithHostOrders(reference);
    c.spoil(arrays);
    MeshData mesh = untouched;
    std::string error;
    EXPECT_FALSE(BuildMeshDataFromHost(arrays, mesh, error));
    EXPECT_NE(error.find(c.message_part), std::string::npos) << error;
    EXPECT_EQ(mesh.points, untouched.points);
  }
}
