#pragma once
// The skin's masses folded into its weights.

#include <vector>

#include "core/skin/skin_solver.h"

namespace myo_core {

// Distance and Uber rows take 1 / mass, shape rows the map over the mass (a
// map value below 1e-6 unscaled). Leaves all weights unchanged, with a debug
// message, when a table does not fit.
void ApplyMassesToWeights(SkinSolver& solver, const std::vector<float>& shape_map);

}  // namespace myo_core
