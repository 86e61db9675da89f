#include "core/solver/muscle_solver.h"

#include <algorithm>

#include "core/solver/solver_stages.h"

namespace myo_core {

void Step(MuscleSolver& solver) {
  ApplyAttenuation(solver.positions_, solver.previous_positions_, solver.attenuation_matrix_,
                   solver.previous_attenuation_matrix_, solver.attenuation_velocity_factor_);
  ApplyDamping(solver.velocities_, solver.positions_, solver.masses_, solver.damping_weights_,
               solver.global_damping_multiplier_, solver.inertia_damper_);
  PredictPositions(solver.positions_, solver.velocities_, solver.gravity_, solver.time_step_);

  EdgeConstraints& edges = *solver.edge_constraints_;
  PrepareEdgeRows(edges, ClampRestActivation(edges.rest_activation_));
  VolumeConstraint& volume = *solver.volume_constraint_;
  float* positions = solver.positions_.data();
  float* lambdas = solver.lambdas_.data();

  for (uint32_t iteration = 0; iteration < solver.iterations_; ++iteration) {
    SolveEdgeRows(edges, solver.compliance_, positions, lambdas);
    SolveShapeRows(*solver.shape_constraints_, positions, lambdas);
    if (!volume.triangles_.empty())
      SolveVolumeConstraint(volume.lambda_base_, volume.rest_volume_, volume.volume_preservation_,
                            volume.volume_ratio_, solver.compliance_, volume.inverse_masses_,
                            volume.triangles_, solver.positions_, solver.lambdas_, volume.gradients_);
  }

  UpdateVelocities(solver.time_step_, solver.positions_, solver.previous_positions_, solver.velocities_);
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
  solver.previous_positions_ = solver.positions_;
  solver.previous_attenuation_matrix_ = solver.attenuation_matrix_;
}

}  // namespace myo_core
