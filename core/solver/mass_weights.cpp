#include "core/solver/mass_weights.h"

namespace myo_core {

void ScaleWeightsByInverseMass(uint32_t point, uint32_t point_count, uint32_t set_count,
                               float inverse_mass, const std::vector<float>& map,
                               ConstraintGroup& group) {
  for (uint32_t s = 0; s < set_count; ++s) {
    const std::size_t row = static_cast<std::size_t>(s) * point_count + point;
    group.inverse_masses_[row] = MapOverMass(map[row], inverse_mass);
  }
}

}  // namespace myo_core
