// Cost of the skin's blended constraint: a spindle skin of about 10k points
// bound to a larger spindle of about 20k triangles, hard, soft and slide
// mixed, with a sliding reach of about 50 candidate triangles per point. The
// row pass runs the points in as many blocks as threads (as the skin step
// does); the sliding search refreshes all sliding points. 1 and 2 threads.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <memory>
#include <string>

#include "bench/support/loop_clock.h"
#include "core/maps/map_store.h"
#include "core/mesh/world_space.h"
#include "core/skin/uber_assembly.h"
#include "scenes/muscle_meshes.h"

namespace {

struct UberScene {
  myo_core::MeshData reference;
  std::vector<float> positions;  // 3N
  std::vector<float> lambdas;
  std::vector<float> max_sliding_map;
  myo_core::UberConstraints uber;
};

constexpr float kSlidingReach = 0.22f;

const UberScene& Scene() {
  static std::unique_ptr<UberScene> scene;
  if (scene) return *scene;
  scene = std::make_unique<UberScene>();
  const myo_core::PolygonMesh skin = myo_scenes::MakeSpindleWithPoints(10000, 22.0f, 3.6f);
  const myo_core::PolygonMesh reference = myo_scenes::MakeSpindleWithPoints(10000, 20.0f, 3.0f);
  std::string error;
  myo_core::BuildMeshData(reference.points, reference.vertex_counts, reference.vertices, scene->reference, error);
  myo_core::FillWorldSpace(myo_core::IdentityMatrix(), scene->reference);
  scene->positions = skin.points;
  const uint32_t n = static_cast<uint32_t>(skin.points.size() / 3);
  myo_core::MapStore maps;
  maps.SetAll("hardConstraintsList", "hardConstraints", 0, std::vector<float>(n, 0.3f));
  maps.SetAll("softConstraintsList", "softConstraints", 0, std::vector<float>(n, 0.3f));
  maps.SetAll("slideConstraintsList", "slideConstraints", 0, std::vector<float>(n, 0.4f));
  myo_core::UberBindingInput input;
  input.reference_mesh = &scene->reference;
  input.max_sliding_distance = kSlidingReach;
  myo_core::InitUberConstraints(input, maps, scene->positions, scene->lambdas, scene->max_sliding_map, scene->uber);
  scene->uber.inverse_masses_.assign(n, 1.0f);
  myo_core::UpdateSlidingPoints(false, scene->positions, myo_core::IdentityMatrix(), scene->uber);
  return *scene;
}

void SceneCounters(benchmark::State& state, const UberScene& scene) {
  const double n = static_cast<double>(scene.positions.size() / 3);
  state.counters["points"] = n;
  state.counters["reference_triangles"] = static_cast<double>(scene.reference.TriangleCount());
  state.counters["candidates_per_point"] = static_cast<double>(scene.uber.sliding_triangles_.size()) / n;
}

void BM_UberRows(benchmark::State& state) {
  const UberScene& scene = Scene();
  const int threads = static_cast<int>(state.range(0));
  const uint32_t n = static_cast<uint32_t>(scene.positions.size() / 3);
  std::vector<float> positions = scene.positions, lambdas = scene.lambdas;
  const int previous = omp_get_max_threads();
  omp_set_num_threads(threads);
  const uint32_t block = (n + threads - 1) / threads;
  const myo_core::Matrix identity = myo_core::IdentityMatrix();
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
#pragma omp parallel for schedule(static)
    for (int b = 0; b < threads; ++b) {
      const uint32_t first = std::min(n, b * block);
      myo_core::SolveUberRows(scene.uber, first, std::min(block, n - first), 1e-6f, false, identity, identity,
                              positions.data(), lambdas.data());
    }
    benchmark::DoNotOptimize(positions.data());
  }
  state.counters["ns_per_point"] = clock.Nanoseconds() / (static_cast<double>(n) * state.iterations());
  omp_set_num_threads(previous);
  SceneCounters(state, scene);
}
BENCHMARK(BM_UberRows)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_UpdateSlidingPoints(benchmark::State& state) {
  const UberScene& scene = Scene();
  const int threads = static_cast<int>(state.range(0));
  const uint32_t n = static_cast<uint32_t>(scene.positions.size() / 3);
  myo_core::UberConstraints uber = scene.uber;
  const int previous = omp_get_max_threads();
  omp_set_num_threads(threads);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::UpdateSlidingPoints(false, scene.positions, myo_core::IdentityMatrix(), uber);
    benchmark::DoNotOptimize(uber.sliding_points_.data());
  }
  state.counters["ns_per_point"] = clock.Nanoseconds() / (static_cast<double>(n) * state.iterations());
  omp_set_num_threads(previous);
  SceneCounters(state, scene);
}
BENCHMARK(BM_UpdateSlidingPoints)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
