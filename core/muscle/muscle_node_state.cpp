#include "core/muscle/muscle_node_state.h"

namespace myo_core {

void ReadMeshTopology(const MeshData& mesh, MuscleNodeState& node) {
  // The query depends on the points and the triangulation alone: a rebuild
  // on the same mesh (the start frame after a preroll) keeps it.
  const bool same_mesh = node.query_points_ == mesh.points && node.triangle_vertices_ == mesh.triangle_vertices &&
                         node.polygon_triangle_counts_ == mesh.polygon_triangle_counts;
  node.triangle_vertices_ = mesh.triangle_vertices;
  node.polygon_triangle_counts_ = mesh.polygon_triangle_counts;
  const uint32_t n = mesh.PointCount();
  node.vertex_neighbor_offsets_.assign(n + 1, 0);
  node.vertex_neighbor_counts_.assign(n, 0);
  if (mesh.vertex_edge_offsets.size() == n + 1 &&
      mesh.vertex_connected.size() == mesh.vertex_neighbors.size()) {
    node.vertex_neighbor_offsets_ = mesh.vertex_edge_offsets;
    for (uint32_t i = 0; i < n; ++i)
      node.vertex_neighbor_counts_[i] = mesh.vertex_edge_offsets[i + 1] - mesh.vertex_edge_offsets[i];
    node.vertex_neighbors_ = mesh.vertex_neighbors;
  } else {
    node.vertex_neighbors_.clear();
  }
  if (same_mesh) return;
  node.reference_mesh_query_.Build(mesh.points, mesh.triangle_vertices, mesh.polygon_triangle_counts);
  node.query_points_ = mesh.points;
}

}  // namespace myo_core
