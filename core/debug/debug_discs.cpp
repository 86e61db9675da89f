#include "core/debug/debug_discs.h"

#include <algorithm>
#include <cmath>

namespace myo_core {

std::vector<DebugDisc> DrawnDiscs(const std::vector<float>& discs) {
  std::vector<DebugDisc> drawn;
  for (std::size_t k = 0; k + kDiscFloats <= discs.size(); k += kDiscFloats) {
    const float* d = discs.data() + k;
    if (!IsDiscDrawn(d[6])) continue;
    const Vec3 normal{d[3], d[4], d[5]};
    drawn.push_back({Vec3{d[0], d[1], d[2]} + normal * kDiscLift, normal, d[6]});
  }
  return drawn;
}

std::array<Vec3, kDiscRimPoints + 1> DiscFan() {
  std::array<Vec3, kDiscRimPoints + 1> fan{};
  fan[0] = {0.0f, 0.0f, kDiscLift};
  for (int i = 0; i < kDiscRimPoints; ++i) {
    const float angle = static_cast<float>(i) * 0.3926991f;
    fan[static_cast<std::size_t>(i) + 1] = {kDiscRadius * std::cos(angle), kDiscRadius * std::sin(angle), kDiscLift};
  }
  return fan;
}

DiscRotation RotationOntoNormal(Vec3 normal) {
  const Vec3 z{0.0f, 0.0f, 1.0f};
  const Vec3 n = NormalizeSafe(normal);
  const float cosine = std::max(-1.0f, std::min(1.0f, Dot(z, n)));
  Vec3 axis = Cross(z, n);
  if (Length(axis) < kEpsilon) axis = {1.0f, 0.0f, 0.0f};
  return {axis, std::acos(cosine) * 57.295776f};
}

}  // namespace myo_core
