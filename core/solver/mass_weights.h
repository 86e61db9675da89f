#pragma once
// Folding point masses into per-row weights, the pieces every solver family
// shares: a heavy point gets a small weight in every soft constraint, while
// a painted value below 1e-6 takes no part and is kept as it is. Each family
// folds its own groups (core/muscle, core/skin, ...).

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/math/vec3.h"

namespace myo_core {

// A painted value over the mass: value * inverse_mass, or the value itself
// when it is below 1e-6.
inline float MapOverMass(float value, float inverse_mass) {
  return value < kEpsilon ? value : value * inverse_mass;
}

// weight[s N + point] = MapOverMass(map[s N + point], inverse_mass) for every
// set s.
void ScaleWeightsByInverseMass(uint32_t point, uint32_t point_count, uint32_t set_count,
                               float inverse_mass, const std::vector<float>& map,
                               ConstraintGroup& group);

}  // namespace myo_core
