#pragma once
// The skin: a surface held on a reference mesh by one blended constraint per
// point, kept in shape by distance rows along its edges and shape
// preservation rows.

#include <cstdint>
#include <memory>
#include <vector>

#include "core/debug/debug_data.h"
#include "core/kernels/distance_constraints.h"
#include "core/kernels/shape_constraints.h"
#include "core/kernels/uber_constraints.h"
#include "core/solver/muscle_solver.h"
#include "core/solver/point_blocks.h"
#include "core/solver/solver_data.h"

namespace myo_core {

struct SkinSolver : SolverData {
  SkinSolver() { SetSurfaceMassDefaults(*this); }

  // Groups, in the order their rows stand in lambdas_ after assembly.
  std::unique_ptr<DistanceConstraints> distance_constraints_ = std::make_unique<DistanceConstraints>();
  std::unique_ptr<ShapeConstraints> shape_constraints_ = std::make_unique<ShapeConstraints>();
  std::unique_ptr<UberConstraints> uber_constraints_ = std::make_unique<UberConstraints>();
  // The points cut into one block per thread at assembly, for the Uber pass.
  PointBlocks point_blocks_;
  int32_t sliding_constraints_mode_ = kSlidingFast;  // "slidingConstraintsMode"

  DebugData debug_data_;  // what "debug" shows of the constraints
};

// One simulation step: attenuation, damping, prediction, the sliding points
// (once, or per iteration in Quality), then iterations_ times the distance
// rows and shape rows in Gauss-Seidel order and the Uber rows in parallel over
// the point blocks; velocity update, multipliers cleared, and the state
// becomes the previous state. The Uber pass comes last in each iteration, so
// each iteration ends on the reference mesh. A search runs on the other
// threads while one thread solves the distance and shape rows that follow
// it; the result is that of the order above.
void StepSkin(SkinSolver& solver);

}  // namespace myo_core
