#include "core/kernels/volume_constraint.h"

#include <algorithm>

namespace myo_core {

float SixTimesVolume(const std::vector<int32_t>& triangles, const float* positions) {
  float volume = 0.0f;
  const std::size_t count = triangles.size() / 3;
  for (std::size_t t = 0; t < count; ++t) {
    const Vec3 a = Load3(positions, triangles[3 * t]);
    const Vec3 b = Load3(positions, triangles[3 * t + 1]);
    const Vec3 c = Load3(positions, triangles[3 * t + 2]);
    volume += Dot(Cross(a, b), c);
  }
  return volume;
}

void SolveVolumeConstraint(uint32_t lambda_row, float rest_volume, float preservation, float ratio,
                           float compliance, const std::vector<float>& inverse_masses,
                           const std::vector<int32_t>& triangles, std::vector<float>& positions,
                           std::vector<float>& lambdas, std::vector<float>& gradients) {
  // One pass over the triangles forms the volume sum and the gradient
  // together (a x b serves both); the gradient is only used when the
  // violation is large enough to act on.
  float* p = positions.data();
  gradients.resize(positions.size());
  std::fill(gradients.begin(), gradients.end(), 0.0f);
  float* g = gradients.data();
  float volume = 0.0f;
  const std::size_t triangle_count = triangles.size() / 3;
  for (std::size_t t = 0; t < triangle_count; ++t) {
    const int32_t ia = triangles[3 * t], ib = triangles[3 * t + 1], ic = triangles[3 * t + 2];
    const Vec3 a = Load3(p, ia), b = Load3(p, ib), c = Load3(p, ic);
    const Vec3 ab = Cross(a, b);
    volume += Dot(ab, c);
    Store3(g, ia, Load3(g, ia) + Cross(b, c));
    Store3(g, ib, Load3(g, ib) + Cross(c, a));
    Store3(g, ic, Load3(g, ic) + ab);
  }
  const float violation = volume - rest_volume * ratio;
  if (std::fabs(violation) < kEpsilon) return;

  const uint32_t count = static_cast<uint32_t>(std::min(inverse_masses.size(), positions.size() / 3));
  float sum = 0.0f;
  for (uint32_t i = 0; i < count; ++i) {
    const Vec3 gi = Load3(g, i);
    sum += inverse_masses[i] * Dot(gi, gi);
  }
  sum += compliance;
  float& lambda = lambdas[lambda_row];
  const float delta = (-violation - lambda * compliance) / sum;
  lambda += delta;
  for (uint32_t i = 0; i < count; ++i)
    Store3(p, i, Load3(p, i) + Load3(g, i) * (delta * inverse_masses[i] * preservation));
}

void BuildVolumeConstraint(const std::vector<int32_t>& triangles, const std::vector<float>& positions,
                           uint32_t point_count, std::vector<float>& lambdas, VolumeConstraint& volume) {
  volume.inverse_masses_.assign(point_count, 1.0f);
  volume.lambda_base_ = ReserveLambdaRows(lambdas, 1);
  volume.triangles_ = triangles;
  volume.rest_volume_ = SixTimesVolume(triangles, positions.data());
  volume.gradients_.assign(3 * static_cast<std::size_t>(point_count), 0.0f);
}

}  // namespace myo_core
