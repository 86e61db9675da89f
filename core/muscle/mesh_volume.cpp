#include "core/muscle/mesh_volume.h"

#include <cmath>

namespace myo_core {

float MeshVolume(const std::vector<float>& positions, const std::vector<int32_t>& triangles, Vec3 outside) {
  float volume = 0.0f;
  const float* p = positions.data();
  const std::size_t count = triangles.size() / 3;
  for (std::size_t t = 0; t < count; ++t) {
    const Vec3 a = Load3(p, triangles[3 * t]);
    const Vec3 b = Load3(p, triangles[3 * t + 1]);
    const Vec3 c = Load3(p, triangles[3 * t + 2]);
    const float six_v = std::fabs(Dot(Cross(a - outside, b - outside), c - outside)) * 0.16666667f;
    const Vec3 m = (a + b + c) * 0.33333334f;
    const float side = Dot(outside - m, Cross(b - a, c - a));
    if (side < 0.00001f) volume += six_v;
    if (side > -0.00001f) volume -= six_v;
  }
  return volume;
}

}  // namespace myo_core
