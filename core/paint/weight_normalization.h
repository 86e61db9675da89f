#pragma once
// Consolidation of painted maps after a stroke: the value under the brush
// wins and the others of the same point make room for it. Both rules are
// one-sided: a point whose weights sum to at most 1 (within 1e-6) is left
// alone.

#include <cstdint>
#include <vector>

namespace myo_core {

// weights: influences times points, influence-major (influence i of point v
// at i * points + v). The influence `current` keeps its value clamped to
// [0, 1]; the others that are not below 1e-6 share the rest in proportion,
// each clamped to [0, 1]; with no rest they all become 0. False, with nothing
// changed, for an empty array, no points, a size that is not a multiple of
// points, or `current` outside the influences.
bool NormalizeInfluences(std::vector<float>& weights, uint32_t points, int32_t current);

// The three maps of the skin's blended constraint, N = points each. The map
// on display (0 hard, 1 soft, 2 slide) is clamped to [0, 1] and the other two
// share the rest in proportion; when they sum below 1e-6 they stay. Another
// display value, or a map that does not hold `points` values, does nothing.
// Returns whether any value changed.
bool NormalizeUberWeights(std::vector<float>& hard, std::vector<float>& soft, std::vector<float>& slide,
                          uint32_t points, int32_t display_weight);

}  // namespace myo_core
