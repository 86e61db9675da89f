#include "core/kernels/attachment_constraints.h"

#include "core/kernels/constraint_weights.h"

namespace myo_core {

namespace {

// No attachment rows: the tables, the row weights and the painted weights
// are all absent. A build refused because the connected elements do not
// match the matrices clears the rows of the previous build as well, rather
// than leave them standing: lambdas_ was emptied for this build, so old rows
// would address multipliers beyond its end.
void ClearAttachmentRows(AttachmentConstraints& group, std::vector<float>& weights) {
  group.row_flags_.clear();
  group.local_positions_.clear();
  group.inverse_masses_.clear();
  weights.clear();
}

}  // namespace

void SolveAttachmentRows(const AttachmentConstraints& group, uint32_t point_count, float compliance,
                         bool has_transform, const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                         float* positions, float* lambdas) {
  const uint32_t sets = group.SetCount();
  const std::size_t rows = static_cast<std::size_t>(sets) * point_count;
  if (rows == 0 || group.inverse_masses_.size() != rows || group.row_flags_.size() != rows ||
      group.local_positions_.size() != 3 * rows)
    return;
  const float* weights = group.inverse_masses_.data();
  const uint16_t* flags = group.row_flags_.data();
  const float* local_positions = group.local_positions_.data();
  for (uint32_t a = 0; a < sets; ++a) {
    const Matrix& matrix = group.matrices_[a];
    for (uint32_t i = 0; i < point_count; ++i) {
      const uint32_t row = a * point_count + i;
      SolveAttachment(group.lambda_base_ + row, i, row, flags[row], weights[row], compliance, has_transform,
                      group.hard_, world_matrix, world_matrix_inverse, matrix, local_positions, positions,
                      lambdas);
    }
  }
}

void BuildAttachmentConstraints(AttachmentConstraints& group, SolverData& solver,
                                const std::vector<uint32_t>& set_indices, MapPort& maps,
                                std::vector<float>& weights, const Matrix& world_matrix) {
  const uint32_t sets = group.SetCount();
  if (sets == 0 || set_indices.size() != sets) {
    ClearAttachmentRows(group, weights);
    return;
  }
  const uint32_t n = solver.point_count_;
  const uint32_t rows = sets * n;

  // Painted weights, one block of N per attachment, repaired where they sum above 1.
  weights.assign(rows, 0.0f);
  for (uint32_t a = 0; a < sets; ++a)
    maps.ReadFloatsAt("attachmentConstraintsList", "attachmentConstraints", set_indices[a], a * n, n, rows,
                      0.0f, weights);
  ConsolidateConstraintWeights(
      "Non-normalized Attachment Constraint weights detected. Proceeding to normalize weights for solver "
      "consistency.",
      set_indices, n, maps, "attachmentConstraintsList", "attachmentConstraints", weights);

  group.inverse_masses_.assign(rows, 0.0f);
  group.local_positions_.assign(3 * static_cast<std::size_t>(rows), 0.0f);
  group.row_flags_.assign(rows, 0);
  group.lambda_base_ = ReserveLambdaRows(solver.lambdas_, rows);

  // Each rest point in the frame of each attachment matrix.
  const bool has_transform = !IsIdentity(world_matrix);
  for (uint32_t a = 0; a < sets; ++a) {
    const Matrix inverse = InvertMatrix(group.matrices_[a]);
    for (uint32_t i = 0; i < n; ++i) {
      Vec3 p = Load3(solver.positions_.data(), i);
      if (has_transform) p = TransformPoint(p, world_matrix);
      Store3(group.local_positions_.data(), a * n + i, TransformPoint(p, inverse));
    }
  }
}

}  // namespace myo_core
