#pragma once
// A curve ramp evaluated at a position, from its entries as plain data: how a
// remap curve such as "activationRemap" maps a float to a float.
//
// The rules, all arithmetic in 32-bit floats:
//  - The curve takes the first K entries, K the length of the shortest of
//    the three lists of RampEntries. Entries whose position is not finite are
//    left out. The rest are ordered by position; entries at one position keep
//    the order in which the host gave them.
//  - No entry: every position gives 0.
//  - A position below the first entry's gives the first entry's value; one
//    at or above the last entry's gives the last entry's value; a position
//    that is not a number gives the first entry's value.
//  - Otherwise the position x lies in the segment from entry k, the last
//    entry whose position is at or below x, to entry k + 1, and
//    t = (x - x_k) / (x_k+1 - x_k) runs from 0 to 1 over it (kept within 0
//    to 1 where huge positions overflow the float range). Entry k's
//    interpolation decides, with v the values:
//      0 none:   v_k
//      1 linear: v_k + (v_k+1 - v_k) t
//      2 smooth: v_k + (v_k+1 - v_k) s, s = t t (3 - 2 t), a cubic with zero
//                slope at both ends of the segment
//      3 spline: the uniform Catmull-Rom segment through v_k-1, v_k, v_k+1,
//                v_k+2 in t:
//                  0.5 (2 v_k + (v_k+1 - v_k-1) t
//                       + (2 v_k-1 - 5 v_k + 4 v_k+1 - v_k+2) t^2
//                       + (3 v_k - v_k-1 - 3 v_k+1 + v_k+2) t^3)
//                where a missing neighbour takes the value of the end it
//                stands beside (v_k-1 = v_k on the first segment,
//                v_k+2 = v_k+1 on the last). The curve passes through v_k
//                and v_k+1 and may overshoot between them.
//    Any other interpolation value counts as linear.
// Several entries at one position make a step there: the last of them
// starts the next segment.

#include <cstdint>
#include <vector>

#include "core/ramp/ramp_entries.h"

namespace myo_core {

constexpr int32_t kRampNone = 0;
constexpr int32_t kRampLinear = 1;
constexpr int32_t kRampSmooth = 2;
constexpr int32_t kRampSpline = 3;

class RampCurve {
 public:
  RampCurve() = default;
  explicit RampCurve(const RampEntries& entries);

  // The curve's value at `position`, by the rules above.
  float ValueAt(float position) const;

  // The entries in the order the curve uses them.
  const std::vector<float>& positions() const { return positions_; }
  const std::vector<float>& values() const { return values_; }

 private:
  std::vector<float> positions_;         // K, ascending
  std::vector<float> values_;            // K
  std::vector<int32_t> interpolations_;  // K
};

// A remapped activation: the curve's value at `activation`, raised to 0 and
// then lowered to 1.
float RemapClamped(const RampCurve& curve, float activation);

}  // namespace myo_core
