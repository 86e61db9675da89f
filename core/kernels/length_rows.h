#pragma once
// Rows that hold the distance of two points at a target length, resisting
// compression and stretching by separate amounts: the muscle's edge rows and
// the skin's and shape solver's distance rows. Their values for one step are
// packed in solving order, and one pass solves them level by level over the
// threads, several rows of a level at a time.

#include <cstdint>
#include <vector>

#include "core/math/vec3.h"

namespace myo_core {

// What one row needs during a step, packed in solving order.
struct LengthRow {
  uint32_t i, j;        // end points
  float target;         // target length of this step
  float compression;    // resistance when shorter than the target, at most 1
  float stretching;     // resistance when longer
  float w_i, w_j;       // weights of the ends, copied so that a row reads them in sequence
};

// One row: C = |p_j - p_i| - target, gradient n = (p_j - p_i) / |p_j - p_i|
// for j and -n for i. The violation alone is scaled by k, the compression
// resistance when C < 0 and the stretching one otherwise. An end whose own
// weight is below 1e-6 stays in place; a row whose weights sum below 1e-6 is
// skipped.
inline void SolveLengthRow(uint32_t lambda_row, uint32_t i, uint32_t j, float w_i, float w_j, float target,
                           float compression, float stretching, float compliance, float* positions,
                           float* lambdas) {
  const float w = w_i + w_j;
  if (w < kEpsilon) return;
  const Vec3 pi = Load3(positions, i);
  const Vec3 d = Load3(positions, j) - pi;
  const float length = Length(d);
  const Vec3 n = NormalizeSafe(d, length);
  const float violation = length - target;
  const float k = violation < 0.0f ? compression : stretching;
  float& lambda = lambdas[lambda_row];
  const float delta = (-(k * violation) - lambda * compliance) /
                      (n.x * w * n.x + n.y * w * n.y + n.z * w * n.z + compliance);
  lambda += delta;
  if (w_i >= kEpsilon) Store3(positions, i, pi - n * (delta * w_i));
  if (w_j >= kEpsilon) Store3(positions, j, Load3(positions, j) + n * (delta * w_j));
}

// Runs every row of `rows` once (SolveLengthRow with the row's values), in
// the order of the schedule whose levels are `level_offsets`; the same result
// as running them one by one. The row at place k has its multiplier at
// row_lambdas[k], so that the rows walk their multipliers in sequence. A row
// whose two ends are both at `attraction` 1 or more, when given (N), is
// skipped.
void SolveLengthRows(const std::vector<LengthRow>& rows, const std::vector<uint32_t>& level_offsets,
                     float compliance, const float* attraction, float* positions, float* row_lambdas);

}  // namespace myo_core
