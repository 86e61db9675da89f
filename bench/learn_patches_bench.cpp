// Cost of learning muscle patches on a mesh of about 100k vertices with 10
// target poses and 40 patches: the dataset, the clustering until it
// converges, the fibers and the file ids, on 1 and 2 threads. Reports the
// whole run, the clustering's passes and the seconds per pass. The poses
// move eight regions of a grid in eight directions, each with a ramp of
// strength and a little noise, so the clustering has real work to do.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/learning/kmeans.h"
#include "core/learning/patch_dataset.h"

namespace {

constexpr int kSide = 317;  // 100,489 vertices
constexpr int kTargets = 10;
constexpr int kPatches = 40;

struct Poses {
  std::vector<float> neutral;
  std::vector<std::vector<float>> targets;
};

const Poses& LearningPoses() {
  static Poses poses = [] {
    Poses p;
    for (int r = 0; r < kSide; ++r)
      for (int c = 0; c < kSide; ++c) p.neutral.insert(p.neutral.end(), {float(c), 0.0f, float(r)});
    uint32_t state = 12345;  // a fixed small generator, so the poses never depend on rand()
    auto noise = [&state] {
      state = state * 1664525u + 1013904223u;
      return (static_cast<float>(state >> 8) / 16777216.0f - 0.5f) * 0.02f;
    };
    for (int t = 0; t < kTargets; ++t) {
      std::vector<float> target = p.neutral;
      for (int r = 0; r < kSide; ++r)
        for (int c = 0; c < kSide; ++c) {
          const int region = (r * 4 / kSide) * 2 + (c * 2 / kSide);
          const double angle = 0.785398 * region + 0.3 * t;
          const float strength = static_cast<float>((t % 3 + 1) * (1.0 + 0.5 * std::sin(0.05 * (r + c))));
          float* v = &target[3 * (static_cast<std::size_t>(r) * kSide + c)];
          v[0] += strength * static_cast<float>(std::cos(angle)) + noise();
          v[1] += 0.3f * strength * static_cast<float>(region % 3) + noise();
          v[2] += strength * static_cast<float>(std::sin(angle)) + noise();
        }
      p.targets.push_back(std::move(target));
    }
    return p;
  }();
  return poses;
}

void BM_LearnPatches100k(benchmark::State& state) {
  const int threads = static_cast<int>(state.range(0));
  const int before = omp_get_max_threads();
  omp_set_num_threads(threads);
  const Poses& poses = LearningPoses();
  const int32_t vertices = kSide * kSide;
  std::vector<int32_t> mask(vertices);
  for (int32_t i = 0; i < vertices; ++i) mask[i] = i;
  double passes = 0.0, cluster_seconds = 0.0;
  for (auto _ : state) {
    std::srand(1);  // every repetition draws the same seeds
    std::vector<std::vector<double>> displacements(kTargets);
#pragma omp parallel for schedule(static)
    for (int t = 0; t < kTargets; ++t)
      displacements[t] = myo_core::MaskedDisplacements(poses.neutral, poses.targets[t], mask);
    std::vector<myo_core::KMeansPoint> rows = myo_core::BuildKMeansRows(displacements, mask.size());
    myo_core::KMeans kmeans(kPatches, 0);
    std::vector<int32_t> ids;
    std::vector<std::array<double, 3>> centroids;
    std::string error;
    const auto begin = std::chrono::steady_clock::now();
    if (!kmeans.Run(rows, ids, centroids, error)) {
      state.SkipWithError(error.c_str());
      break;
    }
    cluster_seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    passes += kmeans.passes();
    benchmark::DoNotOptimize(myo_core::PatchFibers(displacements, ids));
    benchmark::DoNotOptimize(myo_core::PatchFileIds(vertices, mask, ids));
  }
  omp_set_num_threads(before);
  const double runs = static_cast<double>(state.iterations());
  state.counters["passes"] = passes / runs;
  state.counters["s_per_pass"] = passes > 0.0 ? cluster_seconds / passes : 0.0;
  state.counters["threads"] = threads;
}

BENCHMARK(BM_LearnPatches100k)->Arg(1)->Arg(2)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

}  // namespace
