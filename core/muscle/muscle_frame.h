#pragma once
// The attributes one evaluation of a muscle deformer reads, and the host's
// state of the paint tool. Connections and meshes are asked of the host when
// the evaluation comes to them (DeformerHost). The defaults are those of the
// attribute table.

#include <cstdint>

#include "core/solver/frame_values.h"

namespace myo_core {

struct MuscleFrameValues : SolverFrameValues {
  float activation = 0.0f;
  float rest_activation = 0.0f;
  float volume_preservation = 1.0f;  // muscle only
  float volume_ratio = 1.0f;         // muscle only
  bool hard_attachments = true;
  float debug_fibers_scale = 1.0f;
  int32_t displayed_weights = -1;    // WeightsType shown by the paint tool, -1 for none
  int32_t current_influence = 0;     // "currentInfluence"
};

}  // namespace myo_core
