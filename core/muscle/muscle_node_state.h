#pragma once
// What a muscle node keeps beside its solver for the solver's life: the mesh
// topology of the last initialisation, the closest-point query on it, and the
// painted maps as float arrays, so that repainting reaches the solver without
// a rebuild.

#include <cstdint>
#include <vector>

#include "core/mesh/closest_point_query.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

// The tendon map diffused over the edges, with what it was diffused from: the
// map and the two ends of every edge. The diffusion reads nothing else, so a
// later build with the same map and edges takes the values as they are.
struct DiffusedTendons {
  std::vector<float> tendons;  // N, the map
  std::vector<int32_t> starts; // E
  std::vector<int32_t> ends;   // E
  std::vector<float> values;   // N, the diffused map
};

struct MuscleNodeState {
  // Topology of the mesh at initialisation.
  std::vector<int32_t> vertex_neighbor_offsets_;  // N+1
  std::vector<int32_t> vertex_neighbor_counts_;   // N
  std::vector<int32_t> vertex_neighbors_;         // points across the connected edges, in the host's edge order
  std::vector<int32_t> triangle_vertices_;        // 3T
  std::vector<int32_t> polygon_triangle_counts_;  // P when the triangulation is whole
  std::vector<int32_t> polygon_first_triangles_;  // P, running sums of the counts
  ClosestPointQuery reference_mesh_query_;        // on the mesh of the last initialisation
  std::vector<float> query_points_;               // 3N, the points the query was built on

  // Derive the fibers from the tendons instead of reading "fibersList".
  bool consolidate_fibers_ = false;
  DiffusedTendons diffused_tendons_;  // of the last derivation, for the next build

  // Painted maps, N values each (sets times N for the maps over sets).
  std::vector<float> masses_map_;
  std::vector<float> compression_map_;
  std::vector<float> stretching_map_;
  std::vector<float> shape_map_;
  std::vector<float> attachment_map_;
  std::vector<float> slide_on_segment_map_;
  std::vector<float> attachment_to_geo_map_;
  std::vector<float> slide_on_geometry_map_;
  std::vector<float> max_sliding_map_;

  // Longest world bounding-box diagonal among the target meshes of the last
  // build; -1 before any build.
  float largest_target_size_ = -1.0f;
};

// Takes the triangulation, the neighbour lists and the closest-point query
// from the mesh, as every initialisation does before the tables are built.
void ReadMeshTopology(const MeshData& mesh, MuscleNodeState& node);

}  // namespace myo_core
