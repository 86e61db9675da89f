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

// What the volume sum costs per triangle against the gradient pass, measured
// (bench/: BM_VolumeRow): the first thread adds up the volume while the others
// form gradients, and then takes a run of triangles this much shorter.
constexpr double kVolumeSumCost = 0.45;

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
  volume.late_triangles_team_ = 0;
}

// Triangle runs of a team, run t for thread t: the first thread adds up the
// volume first and so takes a shorter run.
uint32_t RunBegin(uint32_t run, int team, uint32_t triangle_count) {
  if (run == 0) return 0;
  if (static_cast<int>(run) >= team) return triangle_count;
  const double first_share = std::max(0.0, (1.0 - kVolumeSumCost * (team - 1)) / team);
  const double first_run = triangle_count * first_share;
  return static_cast<uint32_t>(first_run + (triangle_count - first_run) * (run - 1) / (team - 1));
}

// The triangles of each run with a corner whose point a run before holds,
// ascending, closed by kNoCorner: the only ones whose parts wait.
void ListLateTriangles(VolumeConstraint& volume, int team) {
  const uint32_t triangle_count = static_cast<uint32_t>(volume.triangles_.size() / 3);
  volume.late_triangles_.clear();
  for (int run = 0; run < team; ++run) {
    const uint32_t first = RunBegin(run, team, triangle_count), last = RunBegin(run + 1, team, triangle_count);
    for (uint32_t tri = first; tri < last; ++tri)
      for (uint32_t k = 0; k < 3; ++k)
        if (volume.point_first_corners_[volume.triangles_[3 * tri + k]] < 3 * first) {
          volume.late_triangles_.push_back(tri);
          break;
        }
  }
  volume.late_triangles_.push_back(kNoCorner);
  volume.late_triangles_team_ = team;
}

// The gradients formed run by run over the threads of a team. A point's
// gradient is added up, in triangle order, by the run that holds the point's
// first triangle; what later runs add to it is listed and added after, run
// by run, so every sum is that of the one-thread pass. The first run to
// start clears the gradients before any run adds to them. A thread that
// finds a run not yet begun solves it, so that a thread the system has set
// aside, or one the team did not get, holds nobody up.
class GradientRuns {
 public:
  GradientRuns(VolumeConstraint& volume, const float* positions, int team)
      : volume_(volume), positions_(positions), team_(team) {}

  // Solves `own_run` unless another thread has taken it, then any run not
  // yet taken; true for the thread that finished the last run, which then
  // adds the parts that later runs listed.
  bool Take(int own_run) {
    bool last = ClaimLevelShare(runs_[own_run], 0) && Solve(own_run);
    for (int run = 0; run < team_; ++run)
      if (ClaimLevelShare(runs_[run], 0)) last = Solve(run) || last;
    if (!last) return false;
    float* g = volume_.gradients_.data();
    for (int run = 1; run < team_; ++run)
      for (const LateGradient& part : volume_.late_gradients_[run])
        Store3(g, part.point, Load3(g, part.point) + part.gradient);
    return true;
  }

 private:
  // True when this was the last run to finish.
  bool Solve(int run) {
    // The first run to start clears the gradients; the others wait for it.
    uint32_t unclaimed = 0;
    if (clearing_.compare_exchange_strong(unclaimed, 1, std::memory_order_acq_rel)) {
      std::fill(volume_.gradients_.begin(), volume_.gradients_.end(), 0.0f);
      cleared_.store(1, std::memory_order_release);
    }
    for (uint32_t spins = 0; cleared_.load(std::memory_order_acquire) < 1;) BackOff(spins);
    const std::vector<int32_t>& triangles = volume_.triangles_;
    const uint32_t triangle_count = static_cast<uint32_t>(triangles.size() / 3);
    const uint32_t first = RunBegin(run, team_, triangle_count), last = RunBegin(run + 1, team_, triangle_count);
    const float* p = positions_;
    float* g = volume_.gradients_.data();
    const uint32_t* first_corners = volume_.point_first_corners_.data();
    std::vector<LateGradient>& late = volume_.late_gradients_[run];
    late.clear();
    const std::vector<uint32_t>& late_triangles = volume_.late_triangles_;
    const uint32_t* next_late = &*std::lower_bound(late_triangles.begin(), late_triangles.end(), first);
    for (uint32_t tri = first; tri < last; ++tri) {
      const int32_t* corner = triangles.data() + 3 * static_cast<std::size_t>(tri);
      const uint32_t ia = static_cast<uint32_t>(corner[0]), ib = static_cast<uint32_t>(corner[1]),
                     ic = static_cast<uint32_t>(corner[2]);
      const Vec3 a = Load3(p, ia), b = Load3(p, ib), c = Load3(p, ic);
      const Vec3 parts[3] = {Cross(b, c), Cross(c, a), Cross(a, b)};
      if (tri != *next_late) {
        Store3(g, ia, Load3(g, ia) + parts[0]);
        Store3(g, ib, Load3(g, ib) + parts[1]);
        Store3(g, ic, Load3(g, ic) + parts[2]);
        continue;
      }
      ++next_late;
      for (uint32_t k = 0; k < 3; ++k) {
        const uint32_t point = static_cast<uint32_t>(corner[k]);
        if (first_corners[point] < 3 * first) late.push_back({point, parts[k]});
        else Store3(g, point, Load3(g, point) + parts[k]);
      }
    }
    return finished_runs_.fetch_add(1, std::memory_order_acq_rel) + 1 == static_cast<uint32_t>(team_);
  }

  VolumeConstraint& volume_;
  const float* positions_;
  const int team_;
  LevelShareState runs_[kMaxLevelThreads];
  std::atomic<uint32_t> clearing_{0}, cleared_{0};
  std::atomic<uint32_t> finished_runs_{0};
};

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
  // Like a level pass: smaller rows cost more in hand-overs than they share.
  const int threads = LevelPassThreads(triangle_count);
  if (threads < 2) {
    SolveOnOneThread(volume, compliance, positions, lambdas);
    return;
  }
  // A table filled by hand finds its first corners on its first solve.
  if (volume.point_first_corners_.size() != point_count) FindFirstCorners(volume, point_count);

  if (volume.late_triangles_team_ != threads) ListLateTriangles(volume, threads);

  // The first thread adds up the volume over every triangle while the others
  // each take a run of triangles and form gradients; it then takes the first,
  // shorter run. The thread that finishes the last run adds the weighted norm
  // in point order.
  volume.gradients_.resize(positions.size());
  if (volume.late_gradients_.size() < static_cast<std::size_t>(threads)) volume.late_gradients_.resize(threads);
  GradientRuns pass(volume, positions.data(), threads);
  float* p = positions.data();
  const float* g = volume.gradients_.data();
  const std::vector<float>& w = volume.inverse_masses_;
  const uint32_t weighted = std::min(point_count, static_cast<uint32_t>(w.size()));
  std::atomic<uint32_t> added_up{0}, summed{0};
  float six_volume = 0.0f, delta = 0.0f;
  bool moves = false;
#pragma omp parallel num_threads(threads)
  {
    const int t = omp_get_thread_num();
    if (t == 0) {
      six_volume = SixTimesVolume(triangles, p);
      added_up.store(1, std::memory_order_release);
    }
    if (pass.Take(t)) {
      for (uint32_t spins = 0; added_up.load(std::memory_order_acquire) < 1;) BackOff(spins);
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
      uint32_t first = 0, last = 0;
      LevelShare(0, weighted, t, omp_get_num_threads(), first, last);
      const float preservation = volume.volume_preservation_;
      for (uint32_t i = first; i < last; ++i) Store3(p, i, Load3(p, i) + Load3(g, i) * (delta * w[i] * preservation));
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
  FindFirstCorners(volume, point_count);
}

}  // namespace myo_core
