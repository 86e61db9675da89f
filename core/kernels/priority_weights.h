#pragma once
// Normalisation of the skin's three constraint weights against each other
// by a priority order: the highest-priority map keeps its painted value and
// the others share what it leaves, in proportion.

#include <array>
#include <cstdint>
#include <vector>

namespace myo_core {

// One point of one pass. x = primary_values[i] (the painted value), y and z
// the current values of the two others. primary[i] = x; when x + y + z
// exceeds 1 by more than 1e-6, x is clamped to 0..1 and stored, and with
// left = 1 - x: y and z become 0 when left is below 1e-6; otherwise, when
// s = y + z is at least 1e-6, each of y and z above 1e-6 becomes
// clamp(value / s * left, 0, 1). Returns whether the sum was above 1.
bool ApplyPriorityWeight(uint32_t i, float* primary, const float* primary_values, float* other_a,
                         float* other_b);

// order: three kinds, 0 hard, 1 soft, 2 slide, from the lowest priority to
// the highest (a list of ConstraintPriorityOrderLists()). The three arrays
// are copied and zeroed; then for each kind of the order, one parallel pass
// of ApplyPriorityWeight over all points with that kind as primary (its copy
// gives the values) and the other two in the order hard, soft, slide.
// Returns whether any point of any pass had a sum above 1; false without
// effect when count is 0 or an array is not of size count.
bool NormalizeByPriority(std::vector<float>& hard, std::vector<float>& soft, std::vector<float>& slide,
                         const std::array<int32_t, 3>& order, uint32_t count);

}  // namespace myo_core
