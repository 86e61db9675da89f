#include "core/paint/paint_stamp.h"

#include <algorithm>
#include <cmath>

namespace myo_core {

namespace {

template <class T>
T Clamp01(T value) {
  return std::min(std::max(value, T(0)), T(1));
}

// The mean of the value at `index` and its neighbours' values in the same
// influence block; the value alone without neighbours.
float SmoothedValue(const std::vector<float>& source, uint32_t vertex, uint32_t offset,
                    const VertexNeighborsView& neighbors) {
  const size_t index = static_cast<size_t>(vertex) + offset;
  float sum = source[index];
  uint32_t used = 0;
  const uint32_t count = neighbors.Count(vertex);
  for (uint32_t k = 0; k < count; ++k) {
    const int32_t n = neighbors.Neighbor(vertex, k);
    if (n < 0 || static_cast<size_t>(n) + offset >= source.size()) continue;
    sum += source[static_cast<size_t>(n) + offset];
    ++used;
  }
  return used == 0 ? sum : sum / static_cast<float>(used + 1);
}

bool Normalize(float v[3]) {
  const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (!(length > 0.0f)) return false;
  for (int k = 0; k < 3; ++k) v[k] /= length;
  return true;
}

}  // namespace

bool StampFloatMap(const PaintContext& context, const std::vector<float>& source, std::vector<float>& target,
                   uint32_t vertex, double strength, const VertexNeighborsView& neighbors) {
  const size_t index = static_cast<size_t>(vertex) + context.influence_offset_;
  if (index >= source.size() || index >= target.size()) return false;
  const double value = context.invert_value_ ? 1.0 - static_cast<double>(context.ui_value_)
                                             : static_cast<double>(context.ui_value_);
  const double a = strength;
  const double old = source[index];
  float painted = 0.0f;
  switch (context.active_paint_mode_) {
    case kPaintReplace: painted = static_cast<float>((1.0 - a) * old + value * a); break;
    case kPaintAdd: painted = static_cast<float>(old + value * a); break;
    case kPaintScale: painted = static_cast<float>(value * a * old + (1.0 - a) * old); break;
    case kPaintSmooth: painted = SmoothedValue(source, vertex, context.influence_offset_, neighbors); break;
    default: return false;
  }
  target[index] = Clamp01(painted);
  return true;
}

bool FiberStampDirection(int32_t mode, const double raw[3], const std::vector<float>& source, uint32_t vertex,
                         const VertexNeighborsView& neighbors, float direction[3]) {
  direction[0] = direction[1] = direction[2] = 0.0f;
  if (mode != kPaintSmooth) {
    for (int k = 0; k < 3; ++k) direction[k] = static_cast<float>(raw[k]);
    Normalize(direction);
  } else {
    const uint32_t count = neighbors.Count(vertex);
    uint32_t used = 0;
    for (uint32_t k = 0; k < count; ++k) {
      const int32_t n = neighbors.Neighbor(vertex, k);
      if (n < 0 || 3 * static_cast<size_t>(n) + 2 >= source.size()) continue;
      float fiber[3] = {source[3 * n], source[3 * n + 1], source[3 * n + 2]};
      Normalize(fiber);
      for (int c = 0; c < 3; ++c) direction[c] += fiber[c];
      ++used;
    }
    if (used > 0)
      for (int c = 0; c < 3; ++c) direction[c] /= static_cast<float>(used);
    Normalize(direction);
  }
  const float length =
      std::sqrt(direction[0] * direction[0] + direction[1] * direction[1] + direction[2] * direction[2]);
  return length >= 1e-6f;
}

bool FloodFloatMap(const PaintContext& context, const std::vector<float>& source, std::vector<float>& target,
                   const VertexNeighborsView& neighbors) {
  const size_t offset = context.influence_offset_;
  const size_t points = context.point_count_;
  if (offset + points > target.size() || offset + points > source.size()) return false;
  const float value = context.ui_value_;
  const float opacity = context.ui_opacity_;
  const auto count = static_cast<int64_t>(points);
  switch (context.paint_mode_) {
    case kPaintReplace:
      for (size_t v = 0; v < points; ++v)
        target[offset + v] = Clamp01((1.0f - opacity) * source[offset + v] + value * opacity);
      return true;
    case kPaintAdd:
      for (size_t v = 0; v < points; ++v) target[offset + v] = Clamp01(value * opacity + source[offset + v]);
      return true;
    case kPaintScale:
      for (size_t v = 0; v < points; ++v)
        target[offset + v] =
            Clamp01(source[offset + v] * value * opacity + (1.0f - opacity) * source[offset + v]);
      return true;
    case kPaintSmooth:
      // Each vertex reads the live array and writes only its own entry.
#pragma omp parallel for schedule(static)
      for (int64_t v = 0; v < count; ++v)
        target[offset + v] =
            Clamp01(SmoothedValue(source, static_cast<uint32_t>(v), context.influence_offset_, neighbors));
      return true;
    default: return false;
  }
}

}  // namespace myo_core
