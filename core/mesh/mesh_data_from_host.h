#pragma once
// MeshData as a host's own mesh functions give it: the host keeps its edge
// ids, its triangulation and, when it hands them over, its per-point orders
// and world space; what it leaves out is derived exactly as BuildMeshData
// derives it.

#include <cstdint>
#include <string>
#include <vector>

#include "core/mesh/mesh_data.h"

namespace myo_core {

struct HostMeshArrays {
  // N points, P polygons, T triangles, E edges.
  std::vector<float> points;                     // 3N, object space
  std::vector<int32_t> polygon_vertex_counts;    // P
  std::vector<int32_t> polygon_vertices;         // each polygon's loop, concatenated
  std::vector<int32_t> polygon_triangle_counts;  // P, triangles of each polygon
  std::vector<int32_t> triangle_vertices;        // 3T, in polygon order
  std::vector<int32_t> edge_vertices;            // 2E, in the host's edge id order

  // The host's per-point orders, each list concatenated point after point.
  // Empty counts: derived in ascending id instead.
  std::vector<int32_t> vertex_edge_counts;  // N, connected edges of each point
  std::vector<int32_t> vertex_edges;        // those edges
  std::vector<int32_t> vertex_connected;    // the connected points, one per connected edge, in their own order
  std::vector<int32_t> vertex_face_counts;  // N, polygons around each point
  std::vector<int32_t> vertex_faces;        // those polygons

  // World space, when the host hands it over: else left empty.
  std::vector<float> world_points;           // 3N
  std::vector<float> world_polygon_normals;  // 3P
};

// Builds the whole record from the host's arrays (moved in). Returns false
// with one message in `error` and `mesh` untouched for faults of the points
// or polygons (those of BuildMeshData), triangle counts that are not one per
// polygon or do not cover the triangle list, a negative triangle count, a
// triangle or edge vertex outside the points, per-point lists that do not
// describe the mesh's own edges and polygons, or world arrays of the wrong
// size.
bool BuildMeshDataFromHost(HostMeshArrays arrays, MeshData& mesh, std::string& error);

}  // namespace myo_core
