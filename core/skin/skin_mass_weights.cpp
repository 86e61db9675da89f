#include "core/skin/skin_mass_weights.h"

#include "core/log/logger.h"
#include "core/solver/mass_weights.h"

namespace myo_core {

void ApplyMassesToWeights(SkinSolver& solver, const std::vector<float>& shape_map) {
  const uint32_t n = solver.point_count_;
  if (n == 0) return;
  DistanceConstraints& distance = *solver.distance_constraints_;
  ShapeConstraints& shape = *solver.shape_constraints_;
  UberConstraints& uber = *solver.uber_constraints_;
  const bool fits = shape.inverse_masses_.size() == shape_map.size() && shape_map.size() >= n &&
                    solver.masses_.size() == n && distance.inverse_masses_.size() == n &&
                    uber.inverse_masses_.size() == n;
  if (!fits) {
    LogDebug("Could not apply masses to weights because of incorrect weight sizes.");
    return;
  }
  for (uint32_t i = 0; i < n; ++i) {
    const float inv = 1.0f / solver.masses_[i];
    distance.inverse_masses_[i] = inv;
    uber.inverse_masses_[i] = inv;
    shape.inverse_masses_[i] = MapOverMass(shape_map[i], inv);
  }
}

}  // namespace myo_core
