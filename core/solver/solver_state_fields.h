#pragma once
// Field lists of the records every solver shares, for saving and restoring
// a solver's state (core/state/state_archive.h): the solver record itself,
// the head of every constraint group, the point blocks and the debug record.

#include "core/debug/debug_data.h"
#include "core/kernels/constraint_group.h"
#include "core/solver/point_blocks.h"
#include "core/solver/solver_data.h"
#include "core/state/state_archive.h"

namespace myo_core {

template <class Archive>
void SolverDataFields(Archive& a, ArchiveRecord<Archive, SolverData>& s) {
  a.Section("solver");
  a.Array(s.masses_);
  a.Array(s.previous_positions_);
  a.Array(s.positions_);
  a.Array(s.velocities_);
  a.Array(s.lambdas_);
  a.Array(s.damping_weights_);
  FixedArray(a, s.gravity_);
  a.Value(s.world_matrix_);
  a.Value(s.world_matrix_inverse_);
  a.Value(s.point_mass_mode_);
  a.Value(s.space_scale_mode_);
  a.Value(s.mesh_dimension_);
  a.Value(s.global_mass_multiplier_);
  a.Value(s.density_);
  a.Value(s.space_scale_);
  a.Value(s.time_step_);
  a.Value(s.stiffness_);
  a.Value(s.compliance_);
  a.Value(s.global_damping_multiplier_);
  a.Value(s.inertia_damper_);
  a.Value(s.iterations_);
  a.Value(s.point_count_);
  a.Value(s.attenuation_matrix_);
  a.Value(s.previous_attenuation_matrix_);
  a.Value(s.attenuation_velocity_factor_);
  a.Value(s.mesh_measure_);
  if constexpr (Archive::kLoading) {
    const std::size_t n = s.point_count_;
    if (s.positions_.size() != 3 * n || s.previous_positions_.size() != s.positions_.size() ||
        s.velocities_.size() != s.positions_.size())
      a.Fail("the solver's positions do not hold its " + std::to_string(n) + " points");
  }
}

template <class Archive>
void ConstraintGroupFields(Archive& a, ArchiveRecord<Archive, ConstraintGroup>& g) {
  a.Array(g.inverse_masses_);
  a.Value(g.lambda_base_);
}

template <class Archive>
void PointBlocksFields(Archive& a, ArchiveRecord<Archive, PointBlocks>& b) {
  a.Value(b.thread_count_);
  a.Value(b.thread_block_max_);
  a.Array(b.thread_block_sizes_);
  a.Array(b.thread_block_offsets_);
  if constexpr (Archive::kLoading) {
    if (b.thread_count_ < 0 || b.thread_block_sizes_.size() != static_cast<std::size_t>(b.thread_count_) ||
        b.thread_block_offsets_.size() != b.thread_block_sizes_.size())
      a.Fail("the point blocks do not match their count");
  }
}

template <class Archive>
void DebugDataFields(Archive& a, ArchiveRecord<Archive, DebugData>& d) {
  a.Array(d.lines_);
  a.Array(d.line_values_);
  a.Array(d.discs_);
  FixedArray(a, d.color_);
  a.Value(d.width_);
  a.Value(d.enabled_);
}

}  // namespace myo_core
