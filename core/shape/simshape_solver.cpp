#include "core/shape/simshape_solver.h"

#include <cmath>
#include <cstring>

#include "core/solver/parallel_levels.h"
#include "core/solver/solver_stages.h"
#include "core/solver/stop_request.h"

namespace myo_core {

namespace {

// e - 1, the factor of the logarithmic remap: ln(K a + 1) maps 0 to 0 and 1 to 1.
const float kLogRemapFactor = static_cast<float>(std::exp(1.0) - 1.0);

float Remap(float a, int32_t mode) {
  switch (mode) {
    case 1: return std::log(kLogRemapFactor * a + 1.0f);
    case 2:
    case 3: return static_cast<float>(std::pow(static_cast<double>(a), 1.0 / mode));
    default: return a;
  }
}

}  // namespace

void ComputeAttraction(SimshapeSolver& solver) {
  const uint32_t n = solver.point_count_;
  if (solver.attract_forces_.size() < n || solver.activations_.size() < n) return;
  solver.attraction_.resize(n);
  const int32_t mode = solver.attraction_remap_mode_;
  const bool remapped = mode >= 1 && mode <= 3;
  SimshapeSolver::AttractionRemapMemo& memo = solver.attraction_remap_memo_;
  if (remapped && (memo.remap_mode != mode || memo.value_bits.size() != n || memo.remapped.size() != n)) {
    // No pair may answer for another mode: the bits of NaN are never those of
    // a clamped value, so every point is remapped afresh.
    memo.value_bits.assign(n, 0x7fc00000u);
    memo.remapped.assign(n, 0.0f);
    memo.remap_mode = mode;
  }
  // Each point's attraction is its own: the points are shared out over the
  // threads (a logarithm or a power per point is worth it).
#pragma omp parallel for schedule(static) if (n >= kParallelPrepareRows)
  for (int64_t i = 0; i < static_cast<int64_t>(n); ++i) {
    float a = solver.attraction_multiplier_ * solver.attract_forces_[i];
    a = a > 0.0f ? a : 0.0f;
    if (a > 1.0f) a = 1.0f;
    a = std::min(1.0f, (1.0f - a) * solver.activations_[i] + a);
    if (!remapped) {
      solver.attraction_[i] = a;
      continue;
    }
    uint32_t bits;
    std::memcpy(&bits, &a, sizeof bits);
    if (memo.value_bits[i] != bits) {
      memo.remapped[i] = Remap(a, mode);
      memo.value_bits[i] = bits;
    }
    solver.attraction_[i] = memo.remapped[i];
  }
}

void ApplyAttraction(SimshapeSolver& solver) {
  const uint32_t n = solver.point_count_;
  if (solver.attraction_.size() < n || solver.attraction_targets_.size() < 3 * static_cast<std::size_t>(n) ||
      solver.positions_.size() < 3 * static_cast<std::size_t>(n))
    return;
  float* p = solver.positions_.data();
  const float* target = solver.attraction_targets_.data();
#pragma omp parallel for schedule(static) if (n >= kParallelPrepareRows)
  for (int64_t i = 0; i < static_cast<int64_t>(n); ++i) {
    const float a = solver.attraction_[i];
    for (int64_t k = 3 * i; k < 3 * i + 3; ++k) p[k] += (target[k] - p[k]) * a;
  }
}

bool CollisionsActive(const SimshapeSolver& solver) {
  const SlideCollisionConstraints* collisions = solver.slide_collision_constraints_.get();
  return collisions != nullptr && solver.compute_collisions_ && !collisions->collision_distances_.empty();
}

void StepSimshape(SimshapeSolver& solver) {
  BeginStep(solver);
  PrepareDistanceRows(*solver.distance_constraints_);
  PrepareShapeRows(*solver.shape_constraints_);
  ComputeAttraction(solver);
  ApplyAttraction(solver);
  const bool has_transform = !IsIdentity(solver.world_matrix_);
  const bool collisions = CollisionsActive(solver);
  if (collisions)
    UpdateCollisionSlidingPoints(has_transform, solver.positions_, solver.world_matrix_,
                                 *solver.slide_collision_constraints_);

  // The attraction guards the rows only when it holds a value per point.
  const bool attracted = solver.attraction_.size() == solver.point_count_;
  const float* attraction = attracted ? solver.attraction_.data() : nullptr;
  float* positions = solver.positions_.data();
  float* lambdas = solver.lambdas_.data();
  for (uint32_t iteration = 0; iteration < solver.iterations_ && !StopRequested(); ++iteration) {
    SolveDistanceRows(*solver.distance_constraints_, solver.compliance_, positions, lambdas, attraction);
    SolveShapeRows(*solver.shape_constraints_, positions, lambdas);
    if (collisions && attracted) {
      const SlideCollisionConstraints& group = *solver.slide_collision_constraints_;
      ForEachBlock(solver.point_blocks_, [&](uint32_t first, uint32_t count) {
        SolveSlideCollisionRows(group, first, count, solver.attraction_, solver.compliance_, has_transform,
                                solver.world_matrix_, solver.world_matrix_inverse_, positions, lambdas);
      });
    }
  }
  EndStep(solver);
}

}  // namespace myo_core
