#pragma once
// Shape preservation: a point keeps its rest height over the line between two
// of its neighbours that lie opposite each other (triangle bending).

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/math/lanes.h"
#include "core/math/vec3.h"

namespace myo_core {

// What one shape row needs during a step, packed in solving order.
struct ShapeRow {
  uint32_t a, b, c;  // first, centre and third point
  float rest;        // centre to centroid at rest
};

struct ShapeConstraints : ConstraintGroup {
  // inverse_masses_: N, map "shapePreservation" over the mass.
  float group_compliance_ = 0.0f;       // compliance of this step
  bool disabled_ = false;               // the group does not run in this step
  std::vector<float> rest_distances_;   // R, centre to centroid at rest
  std::vector<int32_t> first_points_;   // R
  std::vector<int32_t> centre_points_;  // R
  std::vector<int32_t> third_points_;   // R
  std::vector<uint32_t> schedule_;        // R, solving order (BuildShapeConstraints)
  std::vector<uint32_t> schedule_levels_; // levels + 1, ranges of independent rows in schedule_
  std::vector<ShapeRow> frame_rows_;      // R, per-step values in solving order (PrepareShapeRows)

  uint32_t RowCount() const { return static_cast<uint32_t>(centre_points_.size()); }
};

// With centroid m = (p_b + p_a + p_c) / 3 and d = p_b - m: C = |d| - rest,
// n = d / |d|. Corrections -2 : 4 : -2 times the weights along n, against a
// weighted norm of w_a + 2 w_b + w_c. b is the centre. Always inlined, so
// that a loop over rows keeps the group's arrays and scalars in registers.
MYO_LANE_INLINE void SolveShapeConstraint(uint32_t lambda_row, uint32_t a, uint32_t b, uint32_t c, float w_a,
                                          float w_b, float w_c, float compliance, float rest, float* positions,
                                          float* lambdas) {
  if (w_a < kEpsilon && w_b < kEpsilon && w_c < kEpsilon) return;
  const float w = w_b + w_b + w_a + w_c;
  if (w < kEpsilon) return;
  const Vec3 pa = Load3(positions, a), pb = Load3(positions, b), pc = Load3(positions, c);
  const Vec3 m = (pb + pa + pc) * 0.33333334f;
  const Vec3 d = pb - m;
  const float length = Length(d);
  if (length < kEpsilon) return;
  const Vec3 n = NormalizeSafe(d, length);
  float& lambda = lambdas[lambda_row];
  const float delta = (-(length - rest) - lambda * compliance) /
                      (n.y * (n.y * w) + n.x * (n.x * w) + n.z * (n.z * w) + compliance);
  lambda += delta;
  if (w_a >= kEpsilon) Store3(positions, a, Load3(positions, a) - n * (2.0f * w_a * delta));
  if (w_b >= kEpsilon) Store3(positions, b, Load3(positions, b) + n * (4.0f * w_b * delta));
  if (w_c >= kEpsilon) Store3(positions, c, Load3(positions, c) - n * (2.0f * w_c * delta));
}

// Packs the rows in solving order for this step; run once per step before
// SolveShapeRows. A table without a schedule runs in table order.
void PrepareShapeRows(ShapeConstraints& shape);

// Runs every row once with the values of PrepareShapeRows, unless the group
// is disabled, with the result of running them in table order: the rows of
// one level of the schedule share no point and are shared out over the
// threads. During a step the multiplier of the row at place k of the
// schedule stands at lambda_base_ + k.
void SolveShapeRows(const ShapeConstraints& shape, float* positions, float* lambdas);

// One row per centre point and pair of opposite neighbours (more than a right
// angle apart, the most opposite first in list order) whose three map values
// are all painted. weights: N, the unscaled map; neighbour lists in mesh order.
void BuildShapeConstraints(ShapeConstraints& group, const std::vector<float>& positions,
                           const std::vector<float>& weights, const std::vector<int32_t>& neighbour_lists,
                           const std::vector<int32_t>& neighbour_counts,
                           const std::vector<int32_t>& neighbour_offsets, std::vector<float>& lambdas);

// Per frame: the solver's compliance, or the override's own stiffness; an
// override of zero stiffness switches the group off.
void SetShapeCompliance(ShapeConstraints& group, float dt_squared, float compliance,
                        float shape_stiffness, bool override_stiffness);

}  // namespace myo_core
