#pragma once
// The attributes one evaluation of a shape deformer reads. Meshes (anim,
// rest, collision, collision rest, deform) are asked of the host when the
// evaluation comes to them. The defaults are those of the attribute table.

#include <cstdint>
#include <string>

#include "core/math/matrix.h"
#include "core/ramp/ramp_entries.h"
#include "core/solver/frame_values.h"
#include "core/tables/material_type.h"

namespace myo_core {

struct ShapeFrameValues : SolverFrameValues {
  ShapeFrameValues() {
    iterations = 3;
    material = kMaterialLeather;
    density = 1100.0f;
    space_scale_mode = 2;
    debug_feature = 6;
  }
  float attraction_multiplier = 1.0f;     // "attractionMultiplier"
  int32_t attraction_remap_mode = 3;      // "attractionRemapMode"
  bool animatable_rest_mesh = false;      // "animatableRestMesh"
  bool initialize_to_anim_mesh = false;   // "initializeToAnimMesh"
  // Collisions.
  float max_collision_sliding_distance = 0.0f;  // "maxCollisionSlidingDistance"
  bool keep_collision_orientation = true;       // "keepCollisionOrientation"
  bool compute_collisions = true;               // "computeCollisions"
  Matrix collision_mesh_matrix = IdentityMatrix();       // "collisionMeshMatrix"
  Matrix collision_rest_mesh_matrix = IdentityMatrix();  // "collisionRestMeshMatrix"
  // Activation.
  std::string muscles_file;               // "musclesFile"
  int32_t activation_smoothing = 1;       // "activationSmoothing"
  int32_t activation_mode = 2;            // "activationMode": 0 patches, 1 plug values, 2 none
  bool bidirectional_activation = false;  // "bidirectionalActivation"
  bool draw_activation = false;           // "drawActivation"
  bool write_out_activation = false;      // "writeOutActivation"
  // "activationRemap": the entries a new node gets, (0, 0) and (1, 1), linear.
  RampEntries activation_remap{{0.0f, 1.0f}, {0.0f, 1.0f}, {1, 1}};
  float debug_muscle_fibers_scale = 1.0f; // "debugMuscleFibersScale"
};

}  // namespace myo_core
