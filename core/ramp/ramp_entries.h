#pragma once
// The entries of a ramp attribute as plain data: what a host hands over of a
// remap curve that a node reads (positions, values and interpolations, in
// the host's order of entries).

#include <cstdint>
#include <vector>

namespace myo_core {

struct RampEntries {
  std::vector<float> positions;         // K, 0 to 1 on a normalised ramp
  std::vector<float> values;            // K
  std::vector<int32_t> interpolations;  // K: 0 none, 1 linear, 2 smooth, 3 spline
};

// True when every position and every value lies within 0 to 1 (and is a
// number), and the three lists are of one length.
bool IsRampNormalized(const RampEntries& ramp);

}  // namespace myo_core
