#include "core/kernels/slide_on_segment_constraints.h"

#include <algorithm>

#include "core/kernels/constraint_weights.h"

namespace myo_core {

namespace {

// No segment rows: the tables, the matrices and the weights are all absent.
// A refused build clears the rows of the previous build as well, so that no
// row is left to address multipliers that lambdas_ no longer holds.
void ClearSlideOnSegmentRows(SlideOnSegmentConstraints& group, std::vector<float>& weights) {
  group.radii_.clear();
  group.closest_points_.clear();
  group.matrices_.clear();
  group.reference_directions_.clear();
  group.rotations_.clear();
  group.inverse_masses_.clear();
  weights.clear();
}

// A unit direction perpendicular to the segment direction u, in the plane of
// u and the up vector: (0, 1, 0), or (0, 0, 1) for a segment along y.
Vec3 ReferenceDirection(Vec3 u) {
  Vec3 up{0.0f, 1.0f, 0.0f};
  if (std::fabs(Dot(u, up)) > 0.999999f) up = {0.0f, 0.0f, 1.0f};
  return NormalizeSafe(Cross(Cross(u, up), u));
}

}  // namespace

namespace {

bool TablesFit(const SlideOnSegmentConstraints& group, uint32_t point_count) {
  const uint32_t segments = group.SetCount();
  const std::size_t rows = static_cast<std::size_t>(segments) * point_count;
  return group.initialised_ && rows != 0 && group.inverse_masses_.size() == rows && group.radii_.size() == rows &&
         group.closest_points_.size() == 3 * rows && group.rotations_.size() == 4 * rows &&
         group.reference_directions_.size() == 3 * static_cast<std::size_t>(segments);
}

}  // namespace

void PrepareSlideOnSegmentRows(SlideOnSegmentConstraints& group, uint32_t point_count) {
  if (!TablesFit(group, point_count)) return;
  const uint32_t segments = group.SetCount();
  group.row_directions_.resize(3 * static_cast<std::size_t>(segments) * point_count);
  for (uint32_t s = 0; s < segments; ++s) {
    const SegmentFrame frame = PrepareSegmentFrame(group.matrices_.data(), group.reference_directions_.data(), s);
    for (uint32_t i = 0; i < point_count; ++i) {
      const uint32_t row = s * point_count + i;
      if (group.inverse_masses_[row] < kEpsilon) continue;
      Store3(group.row_directions_.data(), row,
             SlideDirection(frame, group.rotations_.data() + 4 * static_cast<std::size_t>(row)));
    }
  }
}

void SolveSlideOnSegmentRows(SlideOnSegmentConstraints& group, uint32_t point_count, float compliance,
                             bool has_transform, const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                             float* positions, float* lambdas) {
  if (!TablesFit(group, point_count)) return;
  const uint32_t segments = group.SetCount();
  if (group.row_directions_.size() != 3 * static_cast<std::size_t>(segments) * point_count) return;
  const float* weights = group.inverse_masses_.data();
  const float* radii = group.radii_.data();
  for (uint32_t s = 0; s < segments; ++s) {
    const SegmentFrame frame = PrepareSegmentFrame(group.matrices_.data(), group.reference_directions_.data(), s);
    for (uint32_t i = 0; i < point_count; ++i) {
      const uint32_t row = s * point_count + i;
      SolveSlideOnSegmentRow(group.lambda_base_ + row, i, row, weights[row], compliance, radii[row], has_transform,
                             world_matrix, world_matrix_inverse, frame, Load3(group.row_directions_.data(), row),
                             group.closest_points_.data(), positions, lambdas);
    }
  }
}

void BuildSlideOnSegmentConstraints(SlideOnSegmentConstraints& group, SolverData& solver,
                                    const std::vector<uint32_t>& set_indices, MapPort& maps,
                                    std::vector<float>& weights, const Matrix& world_matrix) {
  group.initialised_ = false;
  if (group.matrices_.size() < 2) {
    ClearSlideOnSegmentRows(group, weights);
    return;
  }
  const uint32_t segments = group.SetCount();
  const uint32_t n = solver.point_count_;
  const uint32_t rows = segments * n;

  // The multipliers are laid out before the count is checked, so a refused
  // build still holds its rows in lambdas_.
  group.radii_.assign(rows, 1000000.0f);
  group.closest_points_.assign(3 * static_cast<std::size_t>(rows), 0.0f);
  group.lambda_base_ = ReserveLambdaRows(solver.lambdas_, rows);
  group.reference_directions_.assign(3 * static_cast<std::size_t>(segments), 0.0f);
  group.rotations_.assign(4 * static_cast<std::size_t>(rows), 0.0f);
  if (set_indices.size() != segments) {
    ClearSlideOnSegmentRows(group, weights);
    return;
  }

  // Painted weights, one block of N per segment, repaired where they sum above 1.
  weights.assign(rows, 0.0f);
  for (uint32_t s = 0; s < segments; ++s)
    maps.ReadFloatsAt("slideOnSegmentConstraintsList", "slideOnSegmentConstraints", set_indices[s], s * n, n,
                      rows, 0.0f, weights);
  ConsolidateConstraintWeights(
      "Non-normalized Slide On Segment Constraint weights detected. Proceeding to normalize weights for "
      "solver consistency.",
      set_indices, n, maps, "slideOnSegmentConstraintsList", "slideOnSegmentConstraints", weights);
  group.inverse_masses_.assign(rows, 0.0f);

  // Per painted point: its distance from the segment, and its direction from
  // the segment as a rotation of the reference direction, in the root frame.
  const bool has_transform = !IsIdentity(world_matrix);
  for (uint32_t s = 0; s < segments; ++s) {
    const Matrix& root = group.matrices_[2 * s];
    const Matrix root_inverse = InvertMatrix(RotationOnly(root));
    const Vec3 a = MatrixTranslation(root);
    const Vec3 b = MatrixTranslation(group.matrices_[2 * s + 1]);
    const Vec3 reference = ReferenceDirection(NormalizeSafe(b - a));
    for (uint32_t i = 0; i < n; ++i) {
      const uint32_t row = s * n + i;
      if (weights[row] < kEpsilon) continue;
      Vec3 p = Load3(solver.positions_.data(), i);
      if (has_transform) p = TransformPoint(p, world_matrix);
      const Vec3 c = ClosestPointOnSegment(p, a, b);
      Vec3 v = p - c;
      const float r = Length(v);
      group.radii_[row] = r;
      Store3(group.closest_points_.data(), row, c);
      v = NormalizeSafe(v, r);
      const Vec3 axis = NormalizeSafe(Cross(reference, v));
      const Vec3 local_axis = NormalizeSafe(TransformPoint(axis, root_inverse));
      const float angle = std::acos(std::clamp(Dot(reference, v), -1.0f, 1.0f));
      float* rotation = group.rotations_.data() + 4 * static_cast<std::size_t>(row);
      rotation[0] = local_axis.x;
      rotation[1] = local_axis.y;
      rotation[2] = local_axis.z;
      rotation[3] = angle;
    }
    Store3(group.reference_directions_.data(), s, TransformPoint(reference, root_inverse));
  }
  group.initialised_ = true;
}

}  // namespace myo_core
