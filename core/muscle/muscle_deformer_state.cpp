// The state a muscle or ribbon muscle carries from one evaluation to the
// next: the last evaluated time, what the node keeps beside its solver (the
// topology, the points of its closest-point query and the painted maps of
// the last build) and the whole solver, its rest tables, targets and
// multipliers included. The query itself is built again from its points and
// triangulation, which give the same hierarchy; the diffused tendons kept
// for the next build are a cache that build fills again with the same
// values.

#include "core/kernels/constraint_state_fields.h"
#include "core/muscle/muscle_deformer.h"

namespace myo_core {

namespace {

template <class Archive>
void MuscleNodeStateFields(Archive& a, ArchiveRecord<Archive, MuscleNodeState>& node) {
  a.Section("muscle node");
  a.Array(node.vertex_neighbor_offsets_);
  a.Array(node.vertex_neighbor_counts_);
  a.Array(node.vertex_neighbors_);
  a.Array(node.triangle_vertices_);
  a.Array(node.polygon_triangle_counts_);
  a.Array(node.polygon_first_triangles_);
  a.Array(node.query_points_);
  a.Value(node.consolidate_fibers_);
  a.Array(node.masses_map_);
  a.Array(node.compression_map_);
  a.Array(node.stretching_map_);
  a.Array(node.shape_map_);
  a.Array(node.attachment_map_);
  a.Array(node.slide_on_segment_map_);
  a.Array(node.attachment_to_geo_map_);
  a.Array(node.slide_on_geometry_map_);
  a.Array(node.max_sliding_map_);
  a.Value(node.largest_target_size_);
}

// The family's solver; the closed muscle adds its volume row.
template <class Archive, class Solver>
void MuscleSolverFields(Archive& a, Solver& s) {
  SolverDataFields(a, s);
  a.Section("muscle solver");
  a.Records(s.targets_, [&a](auto& target) { TargetMeshFields(a, target); });
  EdgeConstraintsFields(a, *s.edge_constraints_);
  ShapeConstraintsFields(a, *s.shape_constraints_);
  AttachmentConstraintsFields(a, *s.attachment_constraints_);
  SlideOnSegmentConstraintsFields(a, *s.slide_on_segment_constraints_);
  AttachmentToGeoConstraintsFields(a, *s.attachment_to_geo_constraints_);
  SlideOnGeometryConstraintsFields(a, *s.slide_on_geometry_constraints_);
  a.Value(s.sliding_constraints_mode_);
  DebugDataFields(a, s.debug_data_);
  a.Value(s.debug_fibers_scale_);
  a.Array(s.fiber_line_offsets_);
  if constexpr (std::is_same_v<std::remove_const_t<Solver>, MuscleSolver>)
    VolumeConstraintFields(a, *s.volume_constraint_);
}

}  // namespace

template <class Solver>
template <class Archive, class Self>
void MuscleFamilyDeformer<Solver>::StateFields(Archive& a, Self& self) {
  a.Section(std::is_same_v<Solver, MuscleSolver> ? "muscle" : "ribbon muscle");
  a.Value(self.last_time_);
  MuscleNodeStateFields(a, self.node_);
  MuscleSolverFields(a, *self.solver_);
}

template <class Solver>
void MuscleFamilyDeformer<Solver>::SaveState(StateWriter& writer) const {
  StateFields(writer, *this);
}

template <class Solver>
void MuscleFamilyDeformer<Solver>::LoadState(StateReader& reader) {
  if (!solver_) solver_ = std::make_unique<Solver>();
  StateFields(reader, *this);
  if (reader.ok())
    node_.reference_mesh_query_.Build(node_.query_points_, node_.triangle_vertices_, node_.polygon_triangle_counts_);
}

template class MuscleFamilyDeformer<MuscleSolver>;
template class MuscleFamilyDeformer<RibbonMuscleSolver>;

}  // namespace myo_core
