#pragma once
// Weights of tables over several sets (attachments, segments, targets): at a
// point, the values of all sets may not exceed 1 in sum. Sums above 1 are
// scaled back, and the repaired paint is written back to the host.

#include <cstdint>
#include <string>
#include <vector>

#include "core/maps/map_port.h"

namespace myo_core {

// weights: K N, set-major, K = size / point_count. Every point whose K values
// sum to more than 1 (by over 1e-6) has them divided by that sum; sums below
// 1 stay. Returns whether any point changed; false without effect for an
// empty array, no points, or a size that point_count does not divide. Points
// run in parallel, each over its own column, so the result is the same for
// any thread count.
bool NormalizeWeights(std::vector<float>& weights, uint32_t point_count);

// Normalises the weights read from the maps `list` / `child`, and when any
// point changed, logs `message` as a warning and writes the block of every set
// back to the host at the set's logical index, so the painted map is repaired
// too. set_indices: K, ascending logical indices of the sets.
void ConsolidateConstraintWeights(const std::string& message, const std::vector<uint32_t>& set_indices,
                                  uint32_t point_count, MapPort& maps, const std::string& list,
                                  const std::string& child, std::vector<float>& weights);

}  // namespace myo_core
