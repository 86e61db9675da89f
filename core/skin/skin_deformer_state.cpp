// The state a skin carries from one evaluation to the next: the last
// evaluated time, the node's maps and topology of the last build, and the
// whole solver with its binding to the reference mesh.

#include "core/kernels/constraint_state_fields.h"
#include "core/skin/skin_deformer.h"

namespace myo_core {

namespace {

template <class Archive>
void SkinNodeStateFields(Archive& a, ArchiveRecord<Archive, SkinNodeState>& node) {
  a.Section("skin node");
  a.Array(node.masses_map_);
  a.Array(node.compression_map_);
  a.Array(node.stretching_map_);
  a.Array(node.shape_map_);
  a.Array(node.max_sliding_map_);
  a.Array(node.vertex_neighbor_offsets_);
  a.Array(node.vertex_neighbor_counts_);
  a.Array(node.vertex_neighbors_);
}

template <class Archive>
void SkinSolverFields(Archive& a, ArchiveRecord<Archive, SkinSolver>& s) {
  SolverDataFields(a, s);
  a.Section("skin solver");
  DistanceConstraintsFields(a, *s.distance_constraints_);
  ShapeConstraintsFields(a, *s.shape_constraints_);
  UberConstraintsFields(a, *s.uber_constraints_);
  PointBlocksFields(a, s.point_blocks_);
  a.Value(s.sliding_constraints_mode_);
  DebugDataFields(a, s.debug_data_);
}

}  // namespace

template <class Archive, class Self>
void SkinDeformer::StateFields(Archive& a, Self& self) {
  a.Section("skin");
  a.Value(self.last_time_);
  a.Value(self.mesh_diagonal_);
  a.Value(self.reference_warned_);
  SkinNodeStateFields(a, self.node_);
  SkinSolverFields(a, *self.solver_);
}

void SkinDeformer::SaveState(StateWriter& writer) const { StateFields(writer, *this); }

void SkinDeformer::LoadState(StateReader& reader) {
  if (!solver_) solver_ = std::make_unique<SkinSolver>();
  StateFields(reader, *this);
}

}  // namespace myo_core
