#pragma once
// The debug entry point of the skin: after a step with "debug" on, the
// record is filled for the feature on display.

#include <cstdint>
#include <vector>

#include "core/skin/skin_solver.h"

namespace myo_core {

// Stores the colour (alpha 1) and the width, clears the lines and their
// values, and builds the lines of `feature` from `positions` (3N, the output
// points in object space): hard (3), slide (7) and soft (11) constraints,
// shape preservation (5) and the sliding surface on the target (10). Any
// other feature leaves the arrays empty.
void UpdateSkinDebugData(SkinSolver& solver, const std::vector<float>& positions, int32_t feature,
                         const float color[3], float width);

}  // namespace myo_core
