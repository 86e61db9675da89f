#include "core/skin/skin_solver.h"

#include <algorithm>

#include "core/solver/solver_stages.h"

namespace myo_core {

void StepSkin(SkinSolver& solver) {
  ApplyAttenuation(solver.positions_, solver.previous_positions_, solver.attenuation_matrix_,
                   solver.previous_attenuation_matrix_, solver.attenuation_velocity_factor_);
  ApplyDamping(solver.velocities_, solver.positions_, solver.masses_, solver.damping_weights_,
               solver.global_damping_multiplier_, solver.inertia_damper_);
  PredictPositions(solver.positions_, solver.velocities_, solver.gravity_, solver.time_step_);
  const bool has_transform = !IsIdentity(solver.world_matrix_);

  const DistanceConstraints& distance = *solver.distance_constraints_;
  const ShapeConstraints& shape = *solver.shape_constraints_;
  UberConstraints& uber = *solver.uber_constraints_;
  float* positions = solver.positions_.data();
  float* lambdas = solver.lambdas_.data();
  // The sliding points: once per step (Fast) or at the start of every
  // iteration (Quality).
  if (solver.sliding_constraints_mode_ == kSlidingFast)
    UpdateSlidingPoints(has_transform, solver.positions_, solver.world_matrix_, uber);

  for (uint32_t iteration = 0; iteration < solver.iterations_; ++iteration) {
    if (solver.sliding_constraints_mode_ == kSlidingQuality)
      UpdateSlidingPoints(has_transform, solver.positions_, solver.world_matrix_, uber);
    SolveDistanceRows(distance, solver.compliance_, positions, lambdas);
    SolveShapeRows(shape, positions, lambdas);
    // Uber rows of different points share nothing: one block per thread.
    ForEachBlock(solver.point_blocks_, [&](uint32_t first, uint32_t count) {
      SolveUberRows(uber, first, count, solver.compliance_, has_transform, solver.world_matrix_,
                    solver.world_matrix_inverse_, positions, lambdas);
    });
  }

  UpdateVelocities(solver.time_step_, solver.positions_, solver.previous_positions_, solver.velocities_);
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
  solver.previous_positions_ = solver.positions_;
  solver.previous_attenuation_matrix_ = solver.attenuation_matrix_;
}

}  // namespace myo_core
