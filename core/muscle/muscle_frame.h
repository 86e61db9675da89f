#pragma once
// Everything one evaluation of a muscle deformer reads from its host: the
// attributes of the frame, the deformer's own inputs and what is connected.
// The defaults are those of the attribute table.

#include <cstdint>
#include <vector>

#include "core/kernels/target_mesh.h"
#include "core/math/matrix.h"
#include "core/solver/frame_values.h"

namespace myo_core {

// Matrices of the connected elements of a list attribute.
struct ConnectedMatrices {
  std::vector<uint32_t> indices;  // logical indices, ascending
  std::vector<Matrix> matrices;   // one per element, or root and tip per segment
};

struct MuscleFrameValues : SolverFrameValues {
  float activation = 0.0f;
  float rest_activation = 0.0f;
  float volume_preservation = 1.0f;  // muscle only
  float volume_ratio = 1.0f;         // muscle only
  bool hard_attachments = true;
  float debug_fibers_scale = 1.0f;
  int32_t displayed_weights = -1;    // WeightsType shown by the paint tool, -1 for none
  int32_t current_influence = 0;     // "currentInfluence"

  // Connections.
  ConnectedMatrices attachments;       // "attachmentConstraintsList" with "attachmentMatrix"
  ConnectedMatrices segments;          // "slideOnSegmentConstraintsList", root and tip
  std::vector<TargetInput> targets;    // "targets" with mesh and matrix connected
};

}  // namespace myo_core
