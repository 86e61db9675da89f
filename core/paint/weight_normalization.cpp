#include "core/paint/weight_normalization.h"

#include <algorithm>

namespace myo_core {

namespace {

constexpr float kSmall = 1e-6f;

float Clamp01(float value) { return std::min(std::max(value, 0.0f), 1.0f); }

}  // namespace

bool NormalizeInfluences(std::vector<float>& weights, uint32_t points, int32_t current) {
  if (weights.empty() || points == 0 || weights.size() % points != 0) return false;
  const size_t influences = weights.size() / points;
  if (current < 0 || static_cast<size_t>(current) >= influences) return false;

  for (size_t v = 0; v < points; ++v) {
    float& c = weights[static_cast<size_t>(current) * points + v];
    float s = 0.0f;
    for (size_t i = 0; i < influences; ++i)
      if (i != static_cast<size_t>(current)) s += weights[i * points + v];
    if (c + s - 1.0f <= kSmall) continue;

    c = Clamp01(c);
    const float r = 1.0f - c;
    for (size_t i = 0; i < influences; ++i) {
      if (i == static_cast<size_t>(current)) continue;
      float& w = weights[i * points + v];
      if (r > kSmall) {
        if (!(w < kSmall)) w = Clamp01(w / s * r);
      } else {
        w = 0.0f;
      }
    }
  }
  return true;
}

bool NormalizeUberWeights(std::vector<float>& hard, std::vector<float>& soft, std::vector<float>& slide,
                          uint32_t points, int32_t display_weight) {
  if (hard.size() != points || soft.size() != points || slide.size() != points) return false;
  std::vector<float>* primary = nullptr;
  std::vector<float>* first_other = nullptr;
  std::vector<float>* second_other = nullptr;
  switch (display_weight) {
    case 0: primary = &hard, first_other = &soft, second_other = &slide; break;
    case 1: primary = &soft, first_other = &hard, second_other = &slide; break;
    case 2: primary = &slide, first_other = &hard, second_other = &soft; break;
    default: return false;
  }

  bool changed = false;
  for (uint32_t v = 0; v < points; ++v) {
    float& p = (*primary)[v];
    float& a = (*first_other)[v];
    float& b = (*second_other)[v];
    if (p + a + b - 1.0f <= kSmall) continue;
    const float before[3] = {p, a, b};

    p = Clamp01(p);
    const float r = 1.0f - p;
    if (r < kSmall) {
      a = 0.0f;
      b = 0.0f;
    } else {
      const float others = a + b;
      if (!(others < kSmall)) {
        if (a > kSmall) a = Clamp01(a / others * r);
        if (b > kSmall) b = Clamp01(b / others * r);
      }
    }
    changed = changed || before[0] != p || before[1] != a || before[2] != b;
  }
  return changed;
}

}  // namespace myo_core
