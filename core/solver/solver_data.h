#pragma once
// The record that every solver object starts with: rest-independent state,
// the scalars of the current frame, and the accumulated multipliers.

#include <cstdint>
#include <vector>

#include "core/math/matrix.h"

namespace myo_core {

struct SolverData {
  // State, carried from step to step.
  std::vector<float> masses_;              // N, each at least 1e-6 once evaluated
  std::vector<float> previous_positions_;  // 3N, positions at the end of the last step
  std::vector<float> positions_;           // 3N, predicted then corrected in place
  std::vector<float> velocities_;          // 3N
  std::vector<float> lambdas_;             // one per constraint row, contiguous per group
  std::vector<float> damping_weights_;     // N, map "globalDamping"

  // Scalars of this frame, set by the node before each step.
  float gravity_[3] = {0.0f, 0.0f, 0.0f};  // already divided by the space scale where due
  Matrix world_matrix_ = IdentityMatrix();
  Matrix world_matrix_inverse_ = IdentityMatrix();
  int32_t point_mass_mode_ = 1;            // 0 By Density, 1 By Uniform Value
  int32_t space_scale_mode_ = 1;           // 0 Masses, 1 Forces, 2 Masses + Forces
  int32_t mesh_dimension_ = 2;             // 0 perimeter, 1 area, 2 volume
  float global_mass_multiplier_ = 1.0f;
  float density_ = 1060.0f;                // g/cm3 once set from the attribute
  float space_scale_ = 1.0f;               // never below 1e-6
  float time_step_ = 0.0f;                 // seconds of simulated time
  float stiffness_ = 0.0f;                 // never below 0.0001
  float compliance_ = 0.0f;                // (1 / stiffness_) / (dt dt)
  float global_damping_multiplier_ = 0.0f;
  float inertia_damper_ = 0.0f;            // velocity loss per step, 0 to 1
  uint32_t iterations_ = 0;
  uint32_t point_count_ = 0;               // N
  Matrix attenuation_matrix_ = IdentityMatrix();
  Matrix previous_attenuation_matrix_ = IdentityMatrix();
  float attenuation_velocity_factor_ = 0.0f;
  float mesh_measure_ = 0.0f;              // perimeter, area or volume at assembly
};

// The mass settings of a surface solver (skin, shape) before its first
// frame: masses from the area, with the space scale applied to masses and
// forces, density 1100.
inline void SetSurfaceMassDefaults(SolverData& solver) {
  solver.point_mass_mode_ = 1;
  solver.space_scale_mode_ = 2;
  solver.mesh_dimension_ = 1;
  solver.global_mass_multiplier_ = 1.0f;
  solver.density_ = 1100.0f;
  solver.space_scale_ = 1.0f;
  solver.mesh_measure_ = 0.0f;
}

}  // namespace myo_core
