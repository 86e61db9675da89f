#include "core/skin/skin_solver.h"

#include <algorithm>

#include "core/solver/solver_stages.h"
#include "core/solver/stop_request.h"

namespace myo_core {

void StepSkin(SkinSolver& solver) {
  BeginStep(solver);
  PrepareDistanceRows(*solver.distance_constraints_);
  PrepareShapeRows(*solver.shape_constraints_);
  const bool has_transform = !IsIdentity(solver.world_matrix_);

  const DistanceConstraints& distance = *solver.distance_constraints_;
  const ShapeConstraints& shape = *solver.shape_constraints_;
  UberConstraints& uber = *solver.uber_constraints_;
  float* positions = solver.positions_.data();
  float* lambdas = solver.lambdas_.data();
  // The sliding points: once per step (Fast) or at the start of every
  // iteration (Quality).
  const bool fast = solver.sliding_constraints_mode_ == kSlidingFast;
  const bool quality = solver.sliding_constraints_mode_ == kSlidingQuality;
  if (fast && solver.iterations_ == 0)
    UpdateSlidingPoints(has_transform, solver.positions_, solver.world_matrix_, uber);

  for (uint32_t iteration = 0; iteration < solver.iterations_ && !StopRequested(); ++iteration) {
    if (quality || (fast && iteration == 0))
      UpdateSlidingPoints(has_transform, solver.positions_, solver.world_matrix_, uber);
    // The rows of a level are shared out over the threads.
    SolveDistanceRows(distance, solver.compliance_, positions, lambdas);
    SolveShapeRows(shape, positions, lambdas);
    // Uber rows of different points share nothing: one block per thread.
    ForEachBlock(solver.point_blocks_, [&](uint32_t first, uint32_t count) {
      SolveUberRows(uber, first, count, solver.compliance_, has_transform, solver.world_matrix_,
                    solver.world_matrix_inverse_, positions, lambdas);
    });
  }

  EndStep(solver);
}

}  // namespace myo_core
