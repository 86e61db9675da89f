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

namespace {

// Work below this many triangles or points runs on the calling thread.
constexpr int64_t kParallelVolumeItems = 8192;

// Corners per point by a counting pass, each point's in triangle order.
void ListPointCorners(VolumeConstraint& volume, uint32_t point_count) {
  const std::vector<int32_t>& triangles = volume.triangles_;
  volume.point_corner_offsets_.assign(static_cast<std::size_t>(point_count) + 1, 0u);
  for (int32_t v : triangles)
    if (v >= 0 && static_cast<uint32_t>(v) < point_count) ++volume.point_corner_offsets_[v + 1];
  for (uint32_t i = 0; i < point_count; ++i) volume.point_corner_offsets_[i + 1] += volume.point_corner_offsets_[i];
  volume.point_corners_.resize(volume.point_corner_offsets_[point_count]);
  std::vector<uint32_t> fill(volume.point_corner_offsets_.begin(), volume.point_corner_offsets_.end() - 1);
  for (std::size_t corner = 0; corner < triangles.size(); ++corner) {
    const int32_t v = triangles[corner];
    if (v >= 0 && static_cast<uint32_t>(v) < point_count)
      volume.point_corners_[fill[v]++] = static_cast<uint32_t>(corner);
  }
}

}  // namespace

void SolveVolumeConstraint(VolumeConstraint& volume, float compliance, std::vector<float>& positions,
                           std::vector<float>& lambdas) {
  const std::vector<int32_t>& triangles = volume.triangles_;
  const std::vector<float>& inverse_masses = volume.inverse_masses_;
  const int64_t triangle_count = static_cast<int64_t>(triangles.size() / 3);
  const int64_t point_count = static_cast<int64_t>(positions.size() / 3);
  // A table filled by hand lists its corners on its first solve.
  if (volume.point_corner_offsets_.size() != static_cast<std::size_t>(point_count) + 1)
    ListPointCorners(volume, static_cast<uint32_t>(point_count));
  float* p = positions.data();
  volume.terms_.resize(static_cast<std::size_t>(std::max(triangle_count, point_count)));
  volume.gradients_.resize(positions.size());
  float* terms = volume.terms_.data();
  float* g = volume.gradients_.data();
  const int32_t* corners = triangles.data();

#pragma omp parallel for schedule(static) if (triangle_count >= kParallelVolumeItems)
  for (int64_t t = 0; t < triangle_count; ++t)
    terms[t] = Dot(Cross(Load3(p, corners[3 * t]), Load3(p, corners[3 * t + 1])), Load3(p, corners[3 * t + 2]));
  float six_volume = 0.0f;
  for (int64_t t = 0; t < triangle_count; ++t) six_volume += terms[t];
  const float violation = six_volume - volume.rest_volume_ * volume.volume_ratio_;
  if (std::fabs(violation) < kEpsilon) return;

  // Each point sums the cross products of its triangles' other two corners
  // in triangle order, as one pass over the triangles would add them.
  const int64_t weighted = std::min(point_count, static_cast<int64_t>(inverse_masses.size()));
  const uint32_t* offsets = volume.point_corner_offsets_.data();
  const uint32_t* point_corners = volume.point_corners_.data();
#pragma omp parallel for schedule(static) if (point_count >= kParallelVolumeItems)
  for (int64_t i = 0; i < point_count; ++i) {
    Vec3 gi{0.0f, 0.0f, 0.0f};
    for (uint32_t k = offsets[i]; k < offsets[i + 1]; ++k) {
      const uint32_t corner = point_corners[k];
      const int32_t* triangle = corners + (corner - corner % 3);
      const Vec3 a = Load3(p, triangle[0]), b = Load3(p, triangle[1]), c = Load3(p, triangle[2]);
      const uint32_t which = corner % 3;
      gi = gi + (which == 0 ? Cross(b, c) : which == 1 ? Cross(c, a) : Cross(a, b));
    }
    Store3(g, static_cast<uint32_t>(i), gi);
    if (i < weighted) terms[i] = inverse_masses[i] * Dot(gi, gi);
  }
  float sum = 0.0f;
  for (int64_t i = 0; i < weighted; ++i) sum += terms[i];
  sum += compliance;
  float& lambda = lambdas[volume.lambda_base_];
  const float delta = (-violation - lambda * compliance) / sum;
  lambda += delta;
  const float preservation = volume.volume_preservation_;
#pragma omp parallel for schedule(static) if (weighted >= kParallelVolumeItems)
  for (int64_t i = 0; i < weighted; ++i) {
    const uint32_t point = static_cast<uint32_t>(i);
    Store3(p, point, Load3(p, point) + Load3(g, point) * (delta * inverse_masses[i] * preservation));
  }
}

void BuildVolumeConstraint(const std::vector<int32_t>& triangles, const std::vector<float>& positions,
                           uint32_t point_count, std::vector<float>& lambdas, VolumeConstraint& volume) {
  volume.inverse_masses_.assign(point_count, 1.0f);
  volume.lambda_base_ = ReserveLambdaRows(lambdas, 1);
  volume.triangles_ = triangles;
  volume.rest_volume_ = SixTimesVolume(triangles, positions.data());
  volume.gradients_.assign(3 * static_cast<std::size_t>(point_count), 0.0f);
  volume.terms_.assign(std::max<std::size_t>(triangles.size() / 3, point_count), 0.0f);

  ListPointCorners(volume, point_count);
}

}  // namespace myo_core
