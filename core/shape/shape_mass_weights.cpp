#include "core/shape/shape_mass_weights.h"

#include "core/log/logger.h"
#include "core/solver/mass_weights.h"

namespace myo_core {

void ApplyMassesToWeights(SimshapeSolver& solver, const std::vector<float>& shape_map,
                          const std::vector<float>& collision_map) {
  const uint32_t n = solver.point_count_;
  if (n == 0) return;
  DistanceConstraints& distance = *solver.distance_constraints_;
  ShapeConstraints& shape = *solver.shape_constraints_;
  SlideCollisionConstraints* collisions =
      solver.compute_collisions_ ? solver.slide_collision_constraints_.get() : nullptr;
  const bool fits = shape.inverse_masses_.size() == shape_map.size() && shape_map.size() >= n &&
                    (collisions == nullptr ||
                     (collisions->inverse_masses_.size() == collision_map.size() && collision_map.size() >= n)) &&
                    solver.masses_.size() == n && distance.inverse_masses_.size() == n;
  if (!fits) {
    LogDebug("Could not apply masses to weights because of incorrect weight sizes.");
    return;
  }
  for (uint32_t i = 0; i < n; ++i) {
    const float inv = 1.0f / solver.masses_[i];
    distance.inverse_masses_[i] = inv;
    shape.inverse_masses_[i] = MapOverMass(shape_map[i], inv);
    if (collisions != nullptr) collisions->inverse_masses_[i] = MapOverMass(collision_map[i], inv);
  }
}

}  // namespace myo_core
