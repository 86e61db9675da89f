#pragma once
// Rows that hold the distance of two points at a target length, resisting
// compression and stretching by separate amounts: the muscle's edge rows and
// the skin's and shape solver's distance rows. Their values for one step are
// packed in solving order, and one pass solves them level by level over the
// threads, several rows of a level at a time.

#include <cstdint>
#include <vector>

namespace myo_core {

// What one row needs during a step, packed in solving order.
struct LengthRow {
  uint32_t i, j;        // end points
  uint32_t lambda_row;  // the row's multiplier
  float target;         // target length of this step
  float compression;    // resistance when shorter than the target, at most 1
  float stretching;     // resistance when longer
  float w_i, w_j;       // weights of the ends, copied so that a row reads them in sequence
};

// Runs every row of `rows` once, in the order of the schedule whose levels
// are `level_offsets`; the same result as running them one by one:
//   C = |p_j - p_i| - target, n = (p_j - p_i) / |p_j - p_i|, k = compression
//   when C < 0 else stretching, delta = (-(k C) - lambda compliance) /
//   (n.x w n.x + n.y w n.y + n.z w n.z + compliance) with w = w_i + w_j; the
//   ends move by -n delta w_i and n delta w_j, each only when its own weight
//   is at least 1e-6 (w_i, w_j: the row's copies of the weights of its ends).
//   A row whose weights sum below 1e-6 is skipped, and so
//   is one whose two ends are both at `attraction` 1 or more, when given (N).
void SolveLengthRows(const std::vector<LengthRow>& rows, const std::vector<uint32_t>& level_offsets,
                     float compliance, const float* attraction, float* positions, float* lambdas);

}  // namespace myo_core
