// Cost of the edge evaluator's kernel per vertex on a grid of about 100k
// vertices (a rest grid and the same grid shrunk and waved), on 1 and 2
// threads; and of the skin merge on the same grid: the per-frame blend per
// point, and the binding (nearest vertex over one simulated and one animated
// source). Run with OMP_WAIT_POLICY=PASSIVE on a loaded machine, as the
// plug-in's process does.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <cmath>
#include <memory>
#include <string>

#include "bench/support/loop_clock.h"
#include "core/evaluator/edge_evaluator.h"
#include "core/maps/map_store.h"
#include "core/merge/skin_merge.h"
#include "scenes/muscle_meshes.h"

namespace {

constexpr uint32_t kCells = 316;  // 317 x 317 = 100489 vertices

struct Grids {
  myo_core::MeshData rest;
  myo_core::MeshData deformed;
};

const Grids& GridsOf100k() {
  static const std::unique_ptr<Grids> grids = [] {
    auto out = std::make_unique<Grids>();
    const myo_core::PolygonMesh grid = myo_scenes::MakeGrid(kCells, kCells, 10.0f, 10.0f);
    myo_core::PolygonMesh deformed = grid;
    for (size_t k = 0; k < deformed.points.size(); k += 3) {
      deformed.points[k] *= 0.8f;
      deformed.points[k + 1] = 0.3f * std::sin(deformed.points[k + 2]);
    }
    std::string error;
    myo_core::BuildMeshData(grid.points, grid.vertex_counts, grid.vertices, out->rest, error);
    myo_core::BuildMeshData(deformed.points, deformed.vertex_counts, deformed.vertices, out->deformed, error);
    return out;
  }();
  return *grids;
}

// range(0): threads of the partition and the team.
void BM_EdgeEvaluatorKernel(benchmark::State& state) {
  const int threads = static_cast<int>(state.range(0));
  const Grids& grids = GridsOf100k();
  myo_core::EdgeEvaluator evaluator(threads);
  if (!evaluator.Initialize(grids.rest, grids.deformed)) {
    state.SkipWithError(evaluator.error().c_str());
    return;
  }
  const myo_core::RampCurve remap(myo_core::DefaultCompressionRemap());
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    evaluator.ComputeCompression(grids.deformed.points.data(), remap);
    benchmark::DoNotOptimize(evaluator.compression().data());
  }
  const double vertices = static_cast<double>(grids.rest.PointCount());
  state.counters["vertices"] = vertices;
  state.counters["ns_per_vertex"] = clock.Nanoseconds() / (vertices * static_cast<double>(state.iterations()));
}
BENCHMARK(BM_EdgeEvaluatorKernel)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// One simulated and one animated source: the rest grid and the deformed one.
class BenchMergeHost : public myo_core::SkinMergeHost {
 public:
  bool IsPlaying() const override { return true; }
  void ReadConnections(myo_core::MergeSourceKind, myo_core::MergeConnections& out) override {
    out.mesh_indices = {0};
    out.matrix_indices = {0};
  }
  bool ReadSource(myo_core::MergeSourceKind kind, uint32_t, myo_core::MeshRead, myo_core::MeshData& mesh,
                  myo_core::Matrix& matrix) override {
    const Grids& grids = GridsOf100k();
    mesh = kind == myo_core::MergeSourceKind::kSimulated ? grids.deformed : grids.rest;
    matrix = myo_core::IdentityMatrix();
    return true;
  }
  void ReadMergeWeights(uint32_t count, std::vector<float>& out) override { out.assign(count, 1.0f); }
};

const myo_core::SkinMerge& BoundMerge100k(double* bind_ms = nullptr) {
  static std::unique_ptr<myo_core::SkinMerge> merge;
  static double ms = 0.0;
  if (!merge) {
    merge = std::make_unique<myo_core::SkinMerge>();
    BenchMergeHost host;
    myo_core::MapStore maps;
    const std::vector<float>& points = GridsOf100k().rest.points;
    const myo_bench::LoopClock clock;
    merge->Bind(myo_core::SkinMergeFrame(), std::vector<double>(points.begin(), points.end()), host, maps);
    ms = clock.Nanoseconds() * 1e-6;
  }
  if (bind_ms != nullptr) *bind_ms = ms;
  return *merge;
}

// range(0): OpenMP threads.
void BM_SkinMergeBlend(benchmark::State& state) {
  const int threads = static_cast<int>(state.range(0));
  myo_core::SkinMergeData data = BoundMerge100k().data();
  const int saved = omp_get_max_threads();
  omp_set_num_threads(threads);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::BlendSkinMerge(data);
    benchmark::DoNotOptimize(data.merge_positions_.data());
  }
  const double points = static_cast<double>(data.point_count_);
  state.counters["points"] = points;
  state.counters["ns_per_point"] = clock.Nanoseconds() / (points * static_cast<double>(state.iterations()));
  omp_set_num_threads(saved);
}
BENCHMARK(BM_SkinMergeBlend)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// The binding, once: two closest-point hierarchies and a query per point
// and source, on the threads OpenMP has.
void BM_SkinMergeBind(benchmark::State& state) {
  double ms = 0.0;
  for (auto _ : state) BoundMerge100k(&ms);
  state.counters["bind_ms"] = ms;
  state.counters["ns_per_point"] = ms * 1e6 / static_cast<double>(GridsOf100k().rest.PointCount());
}
BENCHMARK(BM_SkinMergeBind)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
