// The state a shape carries from one evaluation to the next: the last
// evaluated time, the node's maps, triangulation and activation display of
// the last build, and the whole solver with its activation record and, when
// a collider was bound, its collision rows. The plug activations the node
// reads are read afresh before every use and are not kept.

#include "core/activation/patches_state_fields.h"
#include "core/kernels/constraint_state_fields.h"
#include "core/shape/shape_deformer.h"

namespace myo_core {

namespace {

template <class Archive>
void ShapeNodeStateFields(Archive& a, ArchiveRecord<Archive, ShapeNodeState>& node) {
  a.Section("shape node");
  a.Array(node.masses_map_);
  a.Array(node.shape_map_);
  a.Array(node.collision_map_);
  a.Array(node.triangle_vertices_);
  a.Array(node.polygon_triangle_counts_);
  a.Array(node.polygon_triangle_offsets_);
  a.Value(node.draw_activation_);
  a.Value(node.colors_showing_);
  a.Array(node.colors_);
  a.Value(node.activation_mode_);
  a.Value(node.has_collider_);
  a.Value(node.mesh_diagonal_);
}

template <class Archive>
void SimshapeSolverFields(Archive& a, ArchiveRecord<Archive, SimshapeSolver>& s) {
  SolverDataFields(a, s);
  MusclePatchesDataFields(a, s);
  a.Section("shape solver");
  DistanceConstraintsFields(a, *s.distance_constraints_);
  ShapeConstraintsFields(a, *s.shape_constraints_);
  a.Optional(s.slide_collision_constraints_, [&a](auto& collisions) { SlideCollisionConstraintsFields(a, collisions); });
  a.Array(s.attraction_targets_);
  a.Array(s.attract_forces_);
  a.Array(s.attraction_);
  a.Value(s.attraction_multiplier_);
  a.Value(s.attraction_remap_mode_);
  PointBlocksFields(a, s.point_blocks_);
  a.Value(s.compute_collisions_);
  DebugDataFields(a, s.debug_data_);
}

}  // namespace

template <class Archive, class Self>
void ShapeDeformer::StateFields(Archive& a, Self& self) {
  a.Section("shape");
  a.Value(self.last_time_);
  ShapeNodeStateFields(a, self.node_);
  SimshapeSolverFields(a, *self.solver_);
}

void ShapeDeformer::SaveState(StateWriter& writer) const { StateFields(writer, *this); }

void ShapeDeformer::LoadState(StateReader& reader) {
  if (!solver_) solver_ = std::make_unique<SimshapeSolver>();
  StateFields(reader, *this);
}

}  // namespace myo_core
