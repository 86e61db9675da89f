#pragma once
// The debug entry point of the shape solver: after a step with "debug" on,
// the record is filled for the feature on display.

#include <cstdint>
#include <vector>

#include "core/shape/simshape_solver.h"

namespace myo_core {

// Stores the colour (alpha 1) and the width, clears the lines and their
// values, and builds the lines of `feature` from `positions` (3N, the output
// points in object space): the fibers of the muscle patches (4, scaled by
// the patches' fiber scale times `fibers_scale`, at least 0.001), shape
// preservation (5), slide collision (6) and the collider's sliding surface
// (10). Without a collider 6 and 10 draw nothing, as does any other feature.
void UpdateShapeDebugData(SimshapeSolver& solver, const std::vector<float>& positions, int32_t feature,
                          const float color[3], float width, float fibers_scale);

}  // namespace myo_core
