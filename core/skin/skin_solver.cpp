#include "core/skin/skin_solver.h"

#include <algorithm>

#include "core/solver/solver_stages.h"
#include "core/solver/stop_request.h"

namespace myo_core {

namespace {

// The search of the sliding points, then the distance and shape rows, as the
// step orders them, with the same result but side by side: the rows are one
// sequence for one thread, and the other threads search meanwhile from a copy
// of the positions as they stood before the rows; the thread of the rows
// joins the search when done. The search writes only the sliding points and
// their flags, which the rows do not read.
void SearchBesideRows(SkinSolver& solver, bool has_transform) {
  UberConstraints& uber = *solver.uber_constraints_;
  float* positions = solver.positions_.data();
  float* lambdas = solver.lambdas_.data();
  const uint32_t longest = PrepareSlidingSearch(solver.positions_.size() / 3, uber);
  if (longest == 0) {
    SolveDistanceRows(*solver.distance_constraints_, solver.compliance_, positions, lambdas);
    SolveShapeRows(*solver.shape_constraints_, positions, lambdas);
    return;
  }
  solver.search_positions_.assign(solver.positions_.begin(), solver.positions_.end());
#pragma omp parallel
  {
#pragma omp single nowait
    {
      SolveDistanceRows(*solver.distance_constraints_, solver.compliance_, positions, lambdas);
      SolveShapeRows(*solver.shape_constraints_, positions, lambdas);
    }
    SearchSlidingPoints(has_transform, solver.search_positions_.data(), solver.world_matrix_, longest, uber);
  }
}

}  // namespace

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
    if (quality || (fast && iteration == 0)) {
      SearchBesideRows(solver, has_transform);
    } else {
      SolveDistanceRows(distance, solver.compliance_, positions, lambdas);
      SolveShapeRows(shape, positions, lambdas);
    }
    // Uber rows of different points share nothing: one block per thread.
    ForEachBlock(solver.point_blocks_, [&](uint32_t first, uint32_t count) {
      SolveUberRows(uber, first, count, solver.compliance_, has_transform, solver.world_matrix_,
                    solver.world_matrix_inverse_, positions, lambdas);
    });
  }

  EndStep(solver);
}

}  // namespace myo_core
