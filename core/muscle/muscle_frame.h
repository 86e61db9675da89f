#pragma once
// Everything one evaluation of a muscle deformer reads from its host: the
// attributes of the frame, the deformer's own inputs and what is connected.
// The defaults are those of the attribute table.

#include <cstdint>
#include <vector>

#include "core/kernels/target_mesh.h"
#include "core/math/matrix.h"
#include "core/tables/material_type.h"

namespace myo_core {

// Matrices of the connected elements of a list attribute.
struct ConnectedMatrices {
  std::vector<uint32_t> indices;  // logical indices, ascending
  std::vector<Matrix> matrices;   // one per element, or root and tip per segment
};

struct MuscleFrameValues {
  // Time, in seconds.
  float preroll_start_time = 0.0f;  // "prerollStartTime"
  float start_time = 0.0f;          // "startTime"
  float current_time = 0.0f;        // "currentTime"

  bool enable = true;
  int32_t iterations = 10;
  int32_t material = kMaterialMuscle;
  float stiffness_multiplier = 1.0f;
  int32_t point_mass_mode = 1;
  float density = 1060.0f;           // kg/m3
  float activation = 0.0f;
  float rest_activation = 0.0f;
  float volume_preservation = 1.0f;  // muscle only
  float volume_ratio = 1.0f;         // muscle only
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
  bool hard_attachments = true;
  Matrix attenuation_matrix = IdentityMatrix();
  bool debug = false;
  float debug_fibers_scale = 1.0f;

  // The deformer's own inputs.
  float envelope = 1.0f;
  Matrix local_to_world = IdentityMatrix();
  uint32_t geometry_index = 0;
  int32_t displayed_weights = -1;      // WeightsType shown by the paint tool, -1 for none
  int32_t current_influence = 0;       // "currentInfluence"

  // Connections.
  ConnectedMatrices attachments;       // "attachmentConstraintsList" with "attachmentMatrix"
  ConnectedMatrices segments;          // "slideOnSegmentConstraintsList", root and tip
  std::vector<TargetInput> targets;    // "targets" with mesh and matrix connected
};

}  // namespace myo_core
