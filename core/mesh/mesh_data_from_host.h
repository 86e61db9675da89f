#pragma once
// MeshData as a host's own mesh functions give it: the host keeps its edge
// ids and its triangulation, and the per-vertex tables are derived from them
// exactly as BuildMeshData derives them from its own.

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
};

// Builds the whole record from the host's arrays (moved in). Returns false
// with one message in `error` and `mesh` untouched for faults of the points
// or polygons (those of BuildMeshData), triangle counts that are not one per
// polygon or do not cover the triangle list, a negative triangle count, or a
// triangle or edge vertex outside the points.
bool BuildMeshDataFromHost(HostMeshArrays arrays, MeshData& mesh, std::string& error);

}  // namespace myo_core
