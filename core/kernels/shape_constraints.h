#pragma once
// Shape preservation: a point keeps its rest height over the line between two
// of its neighbours that lie opposite each other (triangle bending).

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/math/lanes.h"
#include "core/math/vec3.h"

namespace myo_core {

struct ShapeConstraints : ConstraintGroup {
  // inverse_masses_: N, map "shapePreservation" over the mass.
  float group_compliance_ = 0.0f;       // compliance of this step
  bool disabled_ = false;               // the group does not run in this step
  std::vector<float> rest_distances_;   // R, centre to centroid at rest
  std::vector<int32_t> first_points_;   // R
  std::vector<int32_t> centre_points_;  // R
  std::vector<int32_t> third_points_;   // R
  std::vector<uint32_t> schedule_;      // R, solving order (BuildShapeConstraints)

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

// Runs every row once, unless the group is disabled. Rows run in the
// schedule's order, which gives the same result as table order (see
// RowSchedule) while neighbouring rows in it need not wait for each other;
// a table without a schedule runs in table order.
inline void SolveShapeRows(const ShapeConstraints& shape, float* positions, float* lambdas) {
  if (shape.disabled_) return;
  const uint32_t rows = shape.RowCount();
  const bool scheduled = shape.schedule_.size() == rows;
  const float* w = shape.inverse_masses_.data();
  for (uint32_t k = 0; k < rows; ++k) {
    const uint32_t r = scheduled ? shape.schedule_[k] : k;
    const uint32_t a = static_cast<uint32_t>(shape.first_points_[r]);
    const uint32_t b = static_cast<uint32_t>(shape.centre_points_[r]);
    const uint32_t c = static_cast<uint32_t>(shape.third_points_[r]);
    SolveShapeConstraint(shape.lambda_base_ + r, a, b, c, w[a], w[b], w[c], shape.group_compliance_,
                         shape.rest_distances_[r], positions, lambdas);
  }
}

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
