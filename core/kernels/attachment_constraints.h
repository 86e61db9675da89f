#pragma once
// Attachments of points to animated matrices: a point keeps the place it had
// in the frame of each matrix at rest. Rows are sets times N, set-major. Soft
// rows are XPBD distance rows to the target; hard rows blend towards it.

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/solver/solver_data.h"

namespace myo_core {

struct AttachmentConstraints : ConstraintGroup {
  // inverse_masses_: A N, map value, over the mass unless hard_.
  std::vector<Matrix> matrices_;         // A, world space, updated each frame
  std::vector<uint16_t> row_flags_;      // A N, 1 = inert row
  std::vector<float> local_positions_;   // 3 A N, point in the matrix frame at rest
  bool hard_ = false;                    // attribute "hardAttachments"

  uint32_t SetCount() const { return static_cast<uint32_t>(matrices_.size()); }
};

// One row: target t = local position through the attachment matrix, x the
// point in world space (through world_matrix when has_transform).
// Hard: x moves to x + (t - x) weight; no multiplier is touched.
// Soft: C = |x - t|, n = (x - t) / |x - t| (0 when on target); the common
// XPBD update with the solver's compliance.
// row: a N + point, the row of local_positions (3 per row); weight is the
// row's entry of inverse_masses_.
inline void SolveAttachment(uint32_t lambda_row, uint32_t point, uint32_t row, uint16_t row_flag,
                            float weight, float compliance, bool has_transform, bool hard,
                            const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                            const Matrix& matrix, const float* local_positions, float* positions,
                            float* lambdas) {
  if (weight < kEpsilon || row_flag == 1) return;
  Vec3 x = Load3(positions, point);
  if (has_transform) x = TransformPoint(x, world_matrix);
  const Vec3 t = TransformPoint(Load3(local_positions, row), matrix);
  if (hard) {
    x = {(t.x - x.x) * weight + x.x, (t.y - x.y) * weight + x.y, (t.z - x.z) * weight + x.z};
  } else {
    const Vec3 d = x - t;
    const float c = Length(d);
    const Vec3 n = NormalizeSafe(d, c);
    float& lambda = lambdas[lambda_row];
    const float delta = (-c - lambda * compliance) /
                        (n.y * (n.y * weight) + n.x * (n.x * weight) + n.z * (n.z * weight) + compliance);
    lambda += delta;
    const float step = delta * weight;
    x = {x.x + n.x * step, x.y + n.y * step, x.z + n.z * step};
  }
  if (has_transform) x = TransformPoint(x, world_matrix_inverse);
  Store3(positions, point, x);
}

// Runs every row once: for every attachment a, for every point i, row a N + i
// with multiplier lambda_base_ + row. Tables that do not hold A N rows (a
// build that did not happen) run nothing.
void SolveAttachmentRows(const AttachmentConstraints& group, uint32_t point_count, float compliance,
                         bool has_transform, const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                         float* positions, float* lambdas);

// Builds the rows of the A = matrices_.size() attachments that the node has
// set, from the solver's rest positions. set_indices: the logical indices of
// the elements of "attachmentConstraintsList" whose "attachmentMatrix" is
// connected; a count other than A builds nothing. Reads the map
// "attachmentConstraints" of each set into weights (A N, the node's array),
// normalises it (repairing the paint), and appends A N multipliers to the
// solver's lambdas_. world_matrix: object to world space of the rest positions.
void BuildAttachmentConstraints(AttachmentConstraints& group, SolverData& solver,
                                const std::vector<uint32_t>& set_indices, MapPort& maps,
                                std::vector<float>& weights, const Matrix& world_matrix);

}  // namespace myo_core
