#include "core/ramp/ramp_curve.h"

#include <algorithm>
#include <cmath>

namespace myo_core {

namespace {

float Linear(float from, float to, float t) { return from + (to - from) * t; }

float Smooth(float from, float to, float t) { return from + (to - from) * (t * t * (3.0f - 2.0f * t)); }

float CatmullRom(float before, float from, float to, float after, float t) {
  const float a0 = 2.0f * from;
  const float a1 = to - before;
  const float a2 = 2.0f * before - 5.0f * from + 4.0f * to - after;
  const float a3 = 3.0f * from - before - 3.0f * to + after;
  return 0.5f * (a0 + a1 * t + a2 * t * t + a3 * t * t * t);
}

}  // namespace

RampCurve::RampCurve(const RampEntries& entries) {
  const std::size_t count =
      std::min({entries.positions.size(), entries.values.size(), entries.interpolations.size()});
  std::vector<std::size_t> order;
  order.reserve(count);
  for (std::size_t k = 0; k < count; ++k)
    if (std::isfinite(entries.positions[k])) order.push_back(k);
  std::stable_sort(order.begin(), order.end(), [&entries](std::size_t a, std::size_t b) {
    return entries.positions[a] < entries.positions[b];
  });
  positions_.reserve(order.size());
  values_.reserve(order.size());
  interpolations_.reserve(order.size());
  for (std::size_t k : order) {
    positions_.push_back(entries.positions[k]);
    values_.push_back(entries.values[k]);
    interpolations_.push_back(entries.interpolations[k]);
  }
}

float RampCurve::ValueAt(float position) const {
  if (positions_.empty()) return 0.0f;
  if (std::isnan(position) || position < positions_.front()) return values_.front();
  // The first entry beyond the position ends the segment.
  const std::size_t end =
      static_cast<std::size_t>(std::upper_bound(positions_.begin(), positions_.end(), position) - positions_.begin());
  if (end == positions_.size()) return values_.back();
  const std::size_t k = end - 1;
  float t = (position - positions_[k]) / (positions_[end] - positions_[k]);
  // Only positions far beyond a float's range of ramps overflow here.
  if (!(t >= 0.0f)) t = 0.0f;
  if (t > 1.0f) t = 1.0f;
  const float from = values_[k];
  const float to = values_[end];
  switch (interpolations_[k]) {
    case kRampNone:
      return from;
    case kRampSmooth:
      return Smooth(from, to, t);
    case kRampSpline: {
      const float before = k > 0 ? values_[k - 1] : from;
      const float after = end + 1 < values_.size() ? values_[end + 1] : to;
      return CatmullRom(before, from, to, after, t);
    }
    default:
      return Linear(from, to, t);
  }
}

float RemapClamped(const RampCurve& curve, float activation) {
  float value = curve.ValueAt(activation);
  if (value < 0.0f) value = 0.0f;
  if (value > 1.0f) value = 1.0f;
  return value;
}

}  // namespace myo_core
