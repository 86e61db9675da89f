#include "core/kernels/volume_constraint.h"

#include <omp.h>

#include <algorithm>
#include <atomic>

#include "core/solver/parallel_levels.h"

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

// Volume rows over fewer triangles run on the calling thread, and so do all
// on fewer than three threads: on two, the ordered sums on one thread and the
// hand-overs cost more than halving the pass over the triangles saves
// (bench/: BM_VolumeRow).
constexpr int64_t kParallelVolumeTriangles = 8192;
constexpr int kParallelVolumeThreads = 3;

constexpr uint32_t kNoCorner = UINT32_MAX;

// The first corner (3 t + k) of each point in triangle order; kNoCorner for
// a point of no triangle.
void FindFirstCorners(VolumeConstraint& volume, uint32_t point_count) {
  volume.point_first_corners_.assign(point_count, kNoCorner);
  for (std::size_t corner = volume.triangles_.size(); corner-- > 0;) {
    const int32_t v = volume.triangles_[corner];
    if (v >= 0 && static_cast<uint32_t>(v) < point_count)
      volume.point_first_corners_[v] = static_cast<uint32_t>(corner);
  }
}

// The row on one thread: one pass over the triangles forms the volume sum
// and the gradient together (a x b serves both).
void SolveOnOneThread(VolumeConstraint& volume, float compliance, std::vector<float>& positions,
                      std::vector<float>& lambdas) {
  const std::vector<int32_t>& triangles = volume.triangles_;
  float* p = positions.data();
  volume.gradients_.assign(positions.size(), 0.0f);
  float* g = volume.gradients_.data();
  float six_volume = 0.0f;
  const std::size_t triangle_count = triangles.size() / 3;
  for (std::size_t t = 0; t < triangle_count; ++t) {
    const int32_t ia = triangles[3 * t], ib = triangles[3 * t + 1], ic = triangles[3 * t + 2];
    const Vec3 a = Load3(p, ia), b = Load3(p, ib), c = Load3(p, ic);
    const Vec3 ab = Cross(a, b);
    six_volume += Dot(ab, c);
    Store3(g, ia, Load3(g, ia) + Cross(b, c));
    Store3(g, ib, Load3(g, ib) + Cross(c, a));
    Store3(g, ic, Load3(g, ic) + ab);
  }
  const float violation = six_volume - volume.rest_volume_ * volume.volume_ratio_;
  if (std::fabs(violation) < kEpsilon) return;

  const std::vector<float>& w = volume.inverse_masses_;
  const uint32_t count = static_cast<uint32_t>(std::min(w.size(), positions.size() / 3));
  float sum = 0.0f;
  for (uint32_t i = 0; i < count; ++i) sum += w[i] * Dot(Load3(g, i), Load3(g, i));
  sum += compliance;
  float& lambda = lambdas[volume.lambda_base_];
  const float delta = (-violation - lambda * compliance) / sum;
  lambda += delta;
  for (uint32_t i = 0; i < count; ++i)
    Store3(p, i, Load3(p, i) + Load3(g, i) * (delta * w[i] * volume.volume_preservation_));
}

}  // namespace

void SolveVolumeConstraint(VolumeConstraint& volume, float compliance, std::vector<float>& positions,
                           std::vector<float>& lambdas) {
  const std::vector<int32_t>& triangles = volume.triangles_;
  const uint32_t triangle_count = static_cast<uint32_t>(triangles.size() / 3);
  const uint32_t point_count = static_cast<uint32_t>(positions.size() / 3);
  const int threads = triangle_count >= kParallelVolumeTriangles && !omp_in_parallel()
                          ? std::min(omp_get_max_threads(), kMaxLevelThreads)
                          : 1;
  if (threads < kParallelVolumeThreads) {
    SolveOnOneThread(volume, compliance, positions, lambdas);
    return;
  }
  // A table filled by hand finds its first corners on its first solve.
  if (volume.point_first_corners_.size() != point_count) FindFirstCorners(volume, point_count);

  // Each thread takes a run of triangles in order. A point's gradient is
  // added up by the thread whose run holds the point's first triangle, in
  // triangle order; what later runs add to it is listed and added after, run
  // by run. The volume sum and the weighted norm are added in order by one
  // thread. So every sum is that of the one-thread pass.
  float* p = positions.data();
  volume.gradients_.resize(positions.size());
  volume.terms_.resize(triangle_count);
  if (volume.late_gradients_.size() < static_cast<std::size_t>(threads)) volume.late_gradients_.resize(threads);
  float* g = volume.gradients_.data();
  float* terms = volume.terms_.data();
  const int32_t* corners = triangles.data();
  const uint32_t* first_corners = volume.point_first_corners_.data();
  const std::vector<float>& w = volume.inverse_masses_;
  const uint32_t weighted = std::min(point_count, static_cast<uint32_t>(w.size()));

  LevelShareState shares[kMaxLevelThreads];
  std::atomic<uint32_t> summed{0};
  float delta = 0.0f;
  bool moves = false;
#pragma omp parallel num_threads(threads)
  {
    const int t = omp_get_thread_num(), team = omp_get_num_threads();
    // Gradients start at 0, each thread clearing a run of points; every
    // thread waits for all runs to be clear before adding to any.
    uint32_t point_first = 0, point_last = 0;
    LevelShare(0, point_count, t, team, point_first, point_last);
    std::fill(g + 3 * static_cast<std::size_t>(point_first), g + 3 * static_cast<std::size_t>(point_last), 0.0f);
    shares[t].claimed.store(1, std::memory_order_release);
    for (int u = 0; u < team; ++u)
      for (uint32_t spins = 0; shares[u].claimed.load(std::memory_order_acquire) < 1;) BackOff(spins);

    uint32_t first = 0, last = 0;
    LevelShare(0, triangle_count, t, team, first, last);
    std::vector<LateGradient>& late = volume.late_gradients_[t];
    late.clear();
    const uint32_t first_corner = 3 * first;
    for (uint32_t tri = first; tri < last; ++tri) {
      const int32_t* corner = corners + 3 * static_cast<std::size_t>(tri);
      const uint32_t ia = static_cast<uint32_t>(corner[0]), ib = static_cast<uint32_t>(corner[1]),
                     ic = static_cast<uint32_t>(corner[2]);
      const Vec3 a = Load3(p, ia), b = Load3(p, ib), c = Load3(p, ic);
      const Vec3 ab = Cross(a, b);
      terms[tri] = Dot(ab, c);
      const Vec3 bc = Cross(b, c), ca = Cross(c, a);
      if (first_corners[ia] >= first_corner) Store3(g, ia, Load3(g, ia) + bc);
      else late.push_back({ia, bc});
      if (first_corners[ib] >= first_corner) Store3(g, ib, Load3(g, ib) + ca);
      else late.push_back({ib, ca});
      if (first_corners[ic] >= first_corner) Store3(g, ic, Load3(g, ic) + ab);
      else late.push_back({ic, ab});
    }
    shares[t].finished.store(1, std::memory_order_release);

    if (t == 0) {
      // The volume sum run after run, each as soon as its thread is done.
      float six_volume = 0.0f;
      for (int u = 0; u < team; ++u) {
        for (uint32_t spins = 0; shares[u].finished.load(std::memory_order_acquire) < 1;) BackOff(spins);
        LevelShare(0, triangle_count, u, team, first, last);
        for (uint32_t tri = first; tri < last; ++tri) six_volume += terms[tri];
      }
      for (int u = 1; u < team; ++u)
        for (const LateGradient& part : volume.late_gradients_[u])
          Store3(g, part.point, Load3(g, part.point) + part.gradient);
      const float violation = six_volume - volume.rest_volume_ * volume.volume_ratio_;
      moves = !(std::fabs(violation) < kEpsilon);
      if (moves) {
        float sum = 0.0f;
        for (uint32_t i = 0; i < weighted; ++i) sum += w[i] * Dot(Load3(g, i), Load3(g, i));
        sum += compliance;
        float& lambda = lambdas[volume.lambda_base_];
        delta = (-violation - lambda * compliance) / sum;
        lambda += delta;
      }
      summed.store(1, std::memory_order_release);
    } else {
      for (uint32_t spins = 0; summed.load(std::memory_order_acquire) < 1;) BackOff(spins);
    }

    if (moves) {
      const float preservation = volume.volume_preservation_;
      for (uint32_t i = point_first; i < std::min(point_last, weighted); ++i)
        Store3(p, i, Load3(p, i) + Load3(g, i) * (delta * w[i] * preservation));
    }
  }
}

void BuildVolumeConstraint(const std::vector<int32_t>& triangles, const std::vector<float>& positions,
                           uint32_t point_count, std::vector<float>& lambdas, VolumeConstraint& volume) {
  volume.inverse_masses_.assign(point_count, 1.0f);
  volume.lambda_base_ = ReserveLambdaRows(lambdas, 1);
  volume.triangles_ = triangles;
  volume.rest_volume_ = SixTimesVolume(triangles, positions.data());
  volume.gradients_.assign(3 * static_cast<std::size_t>(point_count), 0.0f);
  volume.terms_.assign(triangles.size() / 3, 0.0f);
  FindFirstCorners(volume, point_count);
}

}  // namespace myo_core
