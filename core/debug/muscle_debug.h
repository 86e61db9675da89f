#pragma once
// The debug entry point of the muscle family: after a step with "debug" on,
// the record is filled for the feature on display.

#include <cstdint>
#include <vector>

#include "core/debug/debug_features.h"
#include "core/solver/muscle_solver.h"

namespace myo_core {

// "debugFeature" of the muscle family that draws the fibers.
constexpr int32_t kDebugMuscleFibers = kDebugFibers;

// Stores the colour (alpha 1), the width and the fiber scale (at least
// 0.001), clears the lines and their values, and builds the lines of
// `feature` from `positions` (3N, the output points in object space):
// attachments to geometry (1) and to transforms (2), fibers (4), shape
// preservation (5), slide on geometry (8) and on segment (9). Any other
// feature leaves the arrays empty.
void UpdateMuscleDebugData(MuscleFamilySolver& solver, const std::vector<float>& positions, int32_t feature,
                           const float color[3], float width, float fibers_scale);

// Rewrites the fiber line of one vertex from the solver's points, after its
// fiber was painted (ProjectVertexFiber); nothing while fibers are not shown.
void UpdateMuscleVertexFiber(MuscleFamilySolver& solver, uint32_t vertex);

}  // namespace myo_core
