#pragma once
// Points sliding along the segment between two animated matrices, a root and
// a tip: a point keeps its rest distance from the segment and its rest angle
// around it (measured in the root's rotation frame), while its closest point
// on the segment follows it. Rows are segments times N, set-major.

#include <cmath>
#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/solver/solver_data.h"

namespace myo_core {

struct SlideOnSegmentConstraints : ConstraintGroup {
  // inverse_masses_: S N, map value over the mass.
  std::vector<Matrix> matrices_;              // 2S, world space, root at 2s, tip at 2s + 1
  std::vector<float> radii_;                  // S N, distance from the segment at rest
  std::vector<float> closest_points_;         // 3 S N, world space, written by the kernel
  std::vector<float> reference_directions_;   // 3S, perpendicular to the segment, in the root's rotation frame
  std::vector<float> rotations_;              // 4 S N, unit axis in the root's rotation frame, angle in radians
  bool initialised_ = false;                  // set at the end of a full build
  std::vector<float> row_directions_;         // 3 S N, unit direction of each row from its segment
                                              // in this step (PrepareSlideOnSegmentRows)

  uint32_t SetCount() const { return static_cast<uint32_t>(matrices_.size() / 2); }
};

// Closest point to x on the segment from a to b: a when x projects before a,
// b when it projects beyond b or the segment has no length.
inline Vec3 ClosestPointOnSegment(Vec3 x, Vec3 a, Vec3 b) {
  const Vec3 e = b - a;
  const float s = Dot(x - a, e);
  if (s <= 0.0f) return a;
  const float q = Dot(e, e);
  if (s > q || static_cast<double>(q) < kEpsilonDouble) return b;
  const float k = s / q;
  return {a.x + e.x * k, a.y + e.y * k, a.z + e.z * k};
}

inline Vec3 MatrixTranslation(const Matrix& m) { return {m[12], m[13], m[14]}; }

// The rotation part of a matrix: rows 0 to 2 as they stand, then (0, 0, 0, 1).
inline Matrix RotationOnly(const Matrix& m) {
  Matrix q = m;
  q[12] = 0.0f;
  q[13] = 0.0f;
  q[14] = 0.0f;
  q[15] = 1.0f;
  return q;
}

// What one segment's rows share within a step: its two ends, the root's
// rotation, and the reference direction through that rotation, normalised.
struct SegmentFrame {
  Vec3 root, tip;
  Matrix rotation;
  Vec3 reference;
};

inline SegmentFrame PrepareSegmentFrame(const Matrix* matrices, const float* reference_directions,
                                        uint32_t segment) {
  const Matrix& root = matrices[2 * segment];
  SegmentFrame frame{MatrixTranslation(root), MatrixTranslation(matrices[2 * segment + 1]), RotationOnly(root), {}};
  frame.reference = NormalizeSafe(TransformPoint(Load3(reference_directions, segment), frame.rotation));
  return frame;
}

// Direction of a row's point from its segment: the reference turned by the
// row's angle about the row's axis, both carried by the root's rotation. It
// depends only on the matrices and the rest data, so it holds for a step.
inline Vec3 SlideDirection(const SegmentFrame& frame, const float* rotation) {
  Vec3 d = frame.reference;
  const float angle = rotation[3];
  if (angle >= kEpsilon) {
    const Vec3 axis = NormalizeSafe(TransformPoint({rotation[0], rotation[1], rotation[2]}, frame.rotation));
    const float cosine = std::cos(angle), sine = std::sin(angle);
    const Vec3 turn = Cross(axis, d);
    const float along = Dot(axis, d);
    const float rest = 1.0f - cosine;
    d = {d.x * cosine + turn.x * sine + axis.x * along * rest,
         d.y * cosine + turn.y * sine + axis.y * along * rest,
         d.z * cosine + turn.z * sine + axis.z * along * rest};
  }
  return NormalizeSafe(d);
}

// One row with its direction d from SlideDirection (see SolveSlideOnSegment).
inline void SolveSlideOnSegmentRow(uint32_t lambda_row, uint32_t point, uint32_t row, float weight,
                                   float compliance, float radius, bool has_transform, const Matrix& world_matrix,
                                   const Matrix& world_matrix_inverse, const SegmentFrame& frame, Vec3 d,
                                   float* closest_points, float* positions, float* lambdas) {
  if (weight < kEpsilon) return;
  Vec3 x = Load3(positions, point);
  if (has_transform) x = TransformPoint(x, world_matrix);
  const Vec3 c = ClosestPointOnSegment(x, frame.root, frame.tip);
  const Vec3 target = c + d * radius;

  const Vec3 offset = {-(target.x - x.x), -(target.y - x.y), -(target.z - x.z)};
  const float length = Length(offset);
  const Vec3 n = NormalizeSafe(offset, length);
  float& lambda = lambdas[lambda_row];
  const float delta = (-length - lambda * compliance) /
                      (n.x * (n.x * weight) + n.y * (n.y * weight) + n.z * (n.z * weight) + compliance);
  lambda += delta;
  const float step = delta * weight;
  x = {x.x + n.x * step, x.y + n.y * step, x.z + n.z * step};
  if (has_transform) x = TransformPoint(x, world_matrix_inverse);
  Store3(positions, point, x);
  Store3(closest_points, row, c);
}

// One row. With c the closest point on the segment, D the reference direction
// through the root's rotation turned by the row's angle around the row's axis,
// and target = c + D radius: C = |x - target|, n = (x - target) / C (0 on
// target); the common XPBD update with the solver's compliance. x is the point
// in world space (through world_matrix when has_transform). c is stored in
// closest_points.
// row: segment N + point, the row of closest_points (3 per row) and
// rotations (4 per row); weight is the row's entry of inverse_masses_.
inline void SolveSlideOnSegment(uint32_t lambda_row, uint32_t point, uint32_t segment, uint32_t row,
                                float weight, float compliance, float radius, bool has_transform,
                                const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                                const Matrix* matrices, float* closest_points,
                                const float* reference_directions, const float* rotations, float* positions,
                                float* lambdas) {
  if (weight < kEpsilon) return;
  const SegmentFrame frame = PrepareSegmentFrame(matrices, reference_directions, segment);
  SolveSlideOnSegmentRow(lambda_row, point, row, weight, compliance, radius, has_transform, world_matrix,
                         world_matrix_inverse, frame, SlideDirection(frame, rotations + 4 * static_cast<std::size_t>(row)),
                         closest_points, positions, lambdas);
}

// Forms the direction of every painted row for this step, from the
// segments' matrices of the frame. Run once per step before the iterations.
void PrepareSlideOnSegmentRows(SlideOnSegmentConstraints& group, uint32_t point_count);

// Runs every row once when the group is initialised and prepared: for every
// segment s, for every point i, row s N + i with multiplier lambda_base_ +
// row. Tables that do not hold S N rows run nothing.
void SolveSlideOnSegmentRows(SlideOnSegmentConstraints& group, uint32_t point_count, float compliance,
                             bool has_transform, const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                             float* positions, float* lambdas);

// Builds the rows of the S = matrices_.size() / 2 segments that the node has
// set, from the solver's rest positions. set_indices: the logical indices of
// the elements of "slideOnSegmentConstraintsList" whose root and tip matrices
// are both connected; a count other than S builds nothing. Reads the map
// "slideOnSegmentConstraints" of each set into weights (S N, the node's
// array), normalises it (repairing the paint), and appends S N multipliers to
// the solver's lambdas_. world_matrix: object to world space of the rest
// positions.
void BuildSlideOnSegmentConstraints(SlideOnSegmentConstraints& group, SolverData& solver,
                                    const std::vector<uint32_t>& set_indices, MapPort& maps,
                                    std::vector<float>& weights, const Matrix& world_matrix);

}  // namespace myo_core
