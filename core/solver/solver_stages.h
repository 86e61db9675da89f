#pragma once
// The integrator stages that every solver's step shares, in the order a step
// calls them: attenuation, damping, prediction, then (after the constraints)
// the velocity update.

#include <vector>

#include "core/math/matrix.h"
#include "core/solver/solver_data.h"

namespace myo_core {

// Carries the body along with the change of the attenuation matrix since the
// last step, moving positions and previous positions alike so that no
// velocity arises. positions, previous_positions: 3N.
void ApplyAttenuation(std::vector<float>& positions, std::vector<float>& previous_positions,
                      const Matrix& matrix, const Matrix& previous_matrix, float factor);

// Blends each velocity towards the rigid motion of the whole body (linear and
// angular momentum), by rigid times the point's weight, then applies the
// uniform inertia loss. velocities, positions: 3N; masses, weights: N.
void ApplyDamping(std::vector<float>& velocities, const std::vector<float>& positions,
                  const std::vector<float>& masses, const std::vector<float>& weights,
                  float rigid, float inertia);

// v += dt g, then x += dt v, for every point whatever its mass.
void PredictPositions(std::vector<float>& positions, std::vector<float>& velocities,
                      const float gravity[3], float dt);

// v = (x - previous) / dt, the reciprocal formed in double.
void UpdateVelocities(float dt, const std::vector<float>& positions,
                      const std::vector<float>& previous_positions, std::vector<float>& velocities);

// The opening of every step: attenuation, damping and prediction with the
// solver's own scalars.
void BeginStep(SolverData& solver);
// The close of every step: the velocity update, the multipliers back to 0,
// and this step's positions and attenuation matrix kept as the previous ones.
void EndStep(SolverData& solver);

}  // namespace myo_core
