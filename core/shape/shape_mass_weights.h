#pragma once
// The shape solver's masses folded into its weights.

#include <vector>

#include "core/shape/simshape_solver.h"

namespace myo_core {

// Distance rows take 1 / mass; shape rows and, while collisions are on, the
// collision rows take their map over the mass (a map value below 1e-6
// unscaled). Leaves all weights unchanged, with a debug message, when a
// table does not fit its map.
void ApplyMassesToWeights(SimshapeSolver& solver, const std::vector<float>& shape_map,
                          const std::vector<float>& collision_map);

}  // namespace myo_core
