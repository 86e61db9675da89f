#pragma once
// The attributes of one evaluation that every simulation deformer reads, and
// how they reach a solver. The defaults are those of the muscle; each node's
// frame values set its own.

#include <cstdint>
#include <vector>

#include "core/kernels/shape_constraints.h"
#include "core/math/matrix.h"
#include "core/solver/solver_data.h"
#include "core/tables/material_type.h"

namespace myo_core {

struct SolverFrameValues {
  // Time, in seconds.
  float preroll_start_time = 0.0f;  // "prerollStartTime"
  float start_time = 0.0f;          // "startTime"
  float current_time = 0.0f;        // "currentTime"

  bool enable = true;
  int32_t iterations = 10;
  int32_t material = kMaterialMuscle;
  float stiffness_multiplier = 1.0f;
  int32_t point_mass_mode = 1;
  float density = 1060.0f;  // kg/m3
  float time_scale = 1.0f;
  float space_scale = 1.0f;
  int32_t space_scale_mode = 1;
  float gravity = 0.0f;
  float gravity_direction[3] = {0.0f, -1.0f, 0.0f};
  bool use_custom_stiffness = false;
  float stiffness = 100000.0f;
  bool override_shape_preservation_stiffness = false;
  float stiffness_shape_preservation = 1000.0f;
  float global_mass_multiplier = 1.0f;
  float global_damping_multiplier = 0.75f;
  float inertia_damper = 0.0f;
  float rest_length_multiplier = 1.0f;
  float compression_multiplier = 1.0f;
  float stretching_multiplier = 1.0f;
  float max_sliding_distance = 0.0f;
  float attenuation_velocity_factor = 1.0f;
  int32_t sliding_constraints_mode = 0;
  Matrix attenuation_matrix = IdentityMatrix();
  bool debug = false;
  int32_t debug_feature = 4;                       // "debugFeature"
  float debug_color[3] = {1.0f, 0.0f, 0.0f};       // "debugColor"
  float debug_width = 3.0f;                        // "debugWidth"

  // The deformer's own inputs.
  float envelope = 1.0f;
  Matrix local_to_world = IdentityMatrix();
  uint32_t geometry_index = 0;
};

// The mass scalars, read before a possible rebuild: density (kg/m3 to
// g/cm3), point mass mode, space scale (at least 1e-6) and its mode, global
// mass multiplier.
void ApplyMassScalars(const SolverFrameValues& frame, SolverData& solver);

// The scalars of a step that every solver shares: gravity (divided by the
// space scale where forces scale), step length, world matrices, iterations
// (the absolute value), damping, masses, stiffness and compliance, the shape
// group's compliance, the attenuation matrix.
void ApplyStepScalars(const SolverFrameValues& frame, float dt, bool warn, const std::vector<float>& painted_masses,
                      SolverData& solver, ShapeConstraints& shape);

// out = (simulated - input) * envelope + input in double, for the points the
// solver holds; the rest of the input passes as it is.
void BlendByEnvelope(const std::vector<float>& simulated, const std::vector<double>& input, float envelope,
                     std::vector<double>& output);

}  // namespace myo_core
