#pragma once
// The attributes one evaluation of a skin deformer reads. The reference mesh
// is asked of the host when the evaluation comes to it (DeformerHost). The
// defaults are those of the attribute table.

#include "core/math/matrix.h"
#include "core/solver/frame_values.h"
#include "core/tables/material_type.h"

namespace myo_core {

struct SkinFrameValues : SolverFrameValues {
  SkinFrameValues() {
    iterations = 3;
    material = kMaterialLeather;
    density = 1100.0f;
    space_scale_mode = 2;
    debug_feature = 3;
  }
  Matrix reference_matrix = IdentityMatrix();  // "referenceMatrix"
};

}  // namespace myo_core
