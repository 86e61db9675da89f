#pragma once
// Field lists of the constraint groups and target meshes, for saving and
// restoring a solver's state (core/state/state_archive.h). Scratch that a
// step prepares afresh (the row frames of the length and shape rows, row
// directions, the volume gradients and terms) or rebuilds when its size does
// not match its lists (the candidate slots of the slides on geometry, the
// prepared triangles of the sliding searches, the volume row's first
// corners) is left out: a restored solver prepares it again with the same
// result.

#include "core/kernels/attachment_constraints.h"
#include "core/kernels/distance_constraints.h"
#include "core/kernels/edge_constraints.h"
#include "core/kernels/geometry_constraints.h"
#include "core/kernels/shape_constraints.h"
#include "core/kernels/slide_collision_constraints.h"
#include "core/kernels/slide_on_segment_constraints.h"
#include "core/kernels/target_mesh.h"
#include "core/kernels/uber_constraints.h"
#include "core/kernels/volume_constraint.h"
#include "core/solver/solver_state_fields.h"

namespace myo_core {

template <class Archive>
void TargetMeshFields(Archive& a, ArchiveRecord<Archive, TargetMesh>& t) {
  a.Array(t.vertices_);
  a.Array(t.polygon_normals_);
  a.Array(t.vertex_normals_);
  a.Array(t.vertex_polygons_);
  a.Array(t.vertex_polygon_counts_);
  a.Array(t.vertex_polygon_offsets_);
  a.Array(t.polygon_triangles_);
  a.Array(t.polygon_triangle_counts_);
  a.Array(t.polygon_triangle_offsets_);
  a.Array(t.polygon_vertices_);
  a.Array(t.polygon_vertex_counts_);
  a.Array(t.polygon_vertex_offsets_);
  a.Array(t.triangle_vertices_);
  a.Value(t.world_matrix_);
  a.Value(t.world_matrix_inverse_);
  a.Value(t.vertex_count_);
  a.Value(t.polygon_count_);
  a.Value(t.normal_count_);
  a.Value(t.has_transform_);
}

template <class Archive>
void EdgeConstraintsFields(Archive& a, ArchiveRecord<Archive, EdgeConstraints>& e) {
  a.Section("edge constraints");
  ConstraintGroupFields(a, e);
  a.Array(e.rest_lengths_);
  a.Array(e.rest_vectors_);
  a.Array(e.edge_fibers_);
  a.Array(e.edge_tendons_);
  a.Array(e.tendons_);
  a.Array(e.fibers_);
  a.Array(e.fiber_bary_u_);
  a.Array(e.fiber_bary_v_);
  a.Array(e.edge_compression_);
  a.Array(e.edge_stretching_);
  a.Array(e.edge_start_);
  a.Array(e.edge_end_);
  a.Array(e.fiber_triangles_);
  a.Value(e.activation_);
  a.Value(e.rest_activation_);
  a.Value(e.rest_length_multiplier_);
  a.Value(e.compression_multiplier_);
  a.Value(e.stretching_multiplier_);
  a.Value(e.min_edge_length_);
  a.Value(e.fibers_scale_);
  a.Array(e.schedule_);
  a.Array(e.schedule_levels_);
}

template <class Archive>
void ShapeConstraintsFields(Archive& a, ArchiveRecord<Archive, ShapeConstraints>& s) {
  a.Section("shape constraints");
  ConstraintGroupFields(a, s);
  a.Value(s.group_compliance_);
  a.Value(s.disabled_);
  a.Array(s.rest_distances_);
  a.Array(s.first_points_);
  a.Array(s.centre_points_);
  a.Array(s.third_points_);
  a.Array(s.schedule_);
  a.Array(s.schedule_levels_);
}

template <class Archive>
void AttachmentConstraintsFields(Archive& a, ArchiveRecord<Archive, AttachmentConstraints>& g) {
  a.Section("attachment constraints");
  ConstraintGroupFields(a, g);
  a.Array(g.matrices_);
  a.Array(g.row_flags_);
  a.Array(g.local_positions_);
  a.Value(g.hard_);
}

template <class Archive>
void SlideOnSegmentConstraintsFields(Archive& a, ArchiveRecord<Archive, SlideOnSegmentConstraints>& g) {
  a.Section("slide on segment constraints");
  ConstraintGroupFields(a, g);
  a.Array(g.matrices_);
  a.Array(g.radii_);
  a.Array(g.closest_points_);
  a.Array(g.reference_directions_);
  a.Array(g.rotations_);
  a.Value(g.initialised_);
}

template <class Archive>
void AttachmentToGeoConstraintsFields(Archive& a, ArchiveRecord<Archive, AttachmentToGeoConstraints>& g) {
  a.Section("attachment to geometry constraints");
  ConstraintGroupFields(a, g);
  a.Array(g.faces_);
  a.Array(g.triangle_vertices_);
  a.Array(g.bary_u_);
  a.Array(g.bary_v_);
  a.Array(g.distances_);
  a.Array(g.local_offsets_);
  a.Array(g.anchors_);
  a.Value(g.hard_);
}

template <class Archive>
void SlideOnGeometryConstraintsFields(Archive& a, ArchiveRecord<Archive, SlideOnGeometryConstraints>& g) {
  a.Section("slide on geometry constraints");
  ConstraintGroupFields(a, g);
  a.Array(g.triangle_vertices_);
  a.Array(g.faces_);
  a.Array(g.distances_);
  a.Array(g.closest_points_);
  a.Array(g.candidates_);
  a.Array(g.candidate_counts_);
  a.Array(g.candidate_offsets_);
  a.Array(g.row_flags_);
}

template <class Archive>
void VolumeConstraintFields(Archive& a, ArchiveRecord<Archive, VolumeConstraint>& v) {
  a.Section("volume constraint");
  ConstraintGroupFields(a, v);
  a.Value(v.rest_volume_);
  a.Value(v.volume_preservation_);
  a.Value(v.volume_ratio_);
  a.Array(v.triangles_);
  // What the threaded row derives from the triangles is derived again.
  if constexpr (Archive::kLoading) {
    v.point_first_corners_.clear();
    v.late_triangles_team_ = 0;
  }
}

template <class Archive>
void DistanceConstraintsFields(Archive& a, ArchiveRecord<Archive, DistanceConstraints>& d) {
  a.Section("distance constraints");
  ConstraintGroupFields(a, d);
  a.Array(d.rest_lengths_);
  a.Array(d.edge_vertices_a_);
  a.Array(d.edge_vertices_b_);
  a.Array(d.compression_weights_);
  a.Array(d.stretching_weights_);
  a.Value(d.rest_length_multiplier_);
  a.Value(d.compression_multiplier_);
  a.Value(d.stretching_multiplier_);
  a.Array(d.schedule_);
  a.Array(d.schedule_levels_);
}

template <class Archive>
void UberConstraintsFields(Archive& a, ArchiveRecord<Archive, UberConstraints>& u) {
  a.Section("binding constraints");
  ConstraintGroupFields(a, u);
  a.Array(u.triangle_vertices_);
  a.Array(u.polygon_indices_);
  a.Array(u.reference_triangles_);
  a.Array(u.reference_positions_);
  a.Array(u.polygon_normals_);
  a.Array(u.barycentric_u_);
  a.Array(u.barycentric_v_);
  a.Array(u.surface_distances_);
  a.Array(u.local_offsets_);
  a.Array(u.sliding_points_);
  a.Array(u.hard_weights_);
  a.Array(u.soft_weights_);
  a.Array(u.slide_weights_);
  a.Array(u.sliding_triangles_);
  a.Array(u.sliding_counts_);
  a.Array(u.sliding_offsets_);
  a.Array(u.sliding_inactive_);
  a.Array(u.sliding_edges_);
  TargetMeshFields(a, u.reference_mesh_);
}

template <class Archive>
void SlideCollisionConstraintsFields(Archive& a, ArchiveRecord<Archive, SlideCollisionConstraints>& c) {
  a.Section("slide collision constraints");
  ConstraintGroupFields(a, c);
  a.Array(c.collider_triangles_);
  a.Array(c.collider_positions_);
  a.Array(c.collision_distances_);
  a.Array(c.closest_points_);
  a.Array(c.sliding_triangles_);
  a.Array(c.sliding_counts_);
  a.Array(c.sliding_offsets_);
  a.Array(c.sliding_inactive_);
  a.Array(c.sliding_edges_);
  a.Value(c.keep_orientation_);
  a.Array(c.threshold_multipliers_);
  a.Array(c.closest_triangles_);
  a.Array(c.collider_normals_);
  a.Array(c.inside_flags_);
}

}  // namespace myo_core
