// Cost of building mesh data and the closest-point hierarchy, and of one
// closest-point query, on spindles of growing size (up to ~100k triangles).

#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "core/mesh/closest_point_query.h"
#include "core/mesh/mesh_data.h"
#include "scenes/muscle_meshes.h"

namespace {

using myo_core::BuildMeshData;
using myo_core::ClosestPointHit;
using myo_core::ClosestPointQuery;
using myo_core::MeshData;

MeshData SpindleMeshData(int64_t target_points) {
  const myo_scenes::PolygonMesh spindle =
      myo_scenes::MakeSpindleWithPoints(static_cast<uint32_t>(target_points), 10.0f, 1.0f);
  MeshData mesh;
  std::string error;
  BuildMeshData(spindle.points, spindle.vertex_counts, spindle.vertices, mesh, error);
  return mesh;
}

void BM_BuildMeshData(benchmark::State& state) {
  const myo_scenes::PolygonMesh spindle =
      myo_scenes::MakeSpindleWithPoints(static_cast<uint32_t>(state.range(0)), 10.0f, 1.0f);
  MeshData mesh;
  std::string error;
  for (auto _ : state) {
    const bool ok = BuildMeshData(spindle.points, spindle.vertex_counts, spindle.vertices, mesh, error);
    benchmark::DoNotOptimize(ok);
  }
  state.counters["points"] = static_cast<double>(spindle.points.size() / 3);
  state.counters["ns_per_point"] = benchmark::Counter(
      static_cast<double>(spindle.points.size() / 3),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_BuildMeshData)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_ClosestPointQueryBuild(benchmark::State& state) {
  const MeshData mesh = SpindleMeshData(state.range(0));
  ClosestPointQuery query;
  for (auto _ : state) {
    query.Build(mesh.points, mesh.triangle_vertices, mesh.polygon_triangle_counts);
    benchmark::DoNotOptimize(query.Empty());
  }
  state.counters["triangles"] = mesh.TriangleCount();
  state.counters["ns_per_triangle"] = benchmark::Counter(
      mesh.TriangleCount(),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_ClosestPointQueryBuild)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);

// Query points: state.range(1) == 0 jitters mesh points by up to 2% of the
// radius (near the surface); 1 draws uniformly in the bounding box, which for
// a spindle is mostly inside it, well away from the surface.
void BM_ClosestPointQuery(benchmark::State& state) {
  const MeshData mesh = SpindleMeshData(state.range(0));
  ClosestPointQuery query;
  query.Build(mesh.points, mesh.triangle_vertices, mesh.polygon_triangle_counts);

  std::mt19937 random(17);
  const bool near_surface = state.range(1) == 0;
  const int query_count = 4096;
  std::vector<float> points(3 * query_count);
  std::uniform_real_distribution<float> jitter(-0.02f, 0.02f);
  std::uniform_int_distribution<uint32_t> pick(0, mesh.PointCount() - 1);
  std::uniform_real_distribution<float> along(-5.0f, 5.0f);
  std::uniform_real_distribution<float> across(-1.0f, 1.0f);
  for (int i = 0; i < query_count; ++i) {
    if (near_surface) {
      const uint32_t v = pick(random);
      for (int k = 0; k < 3; ++k) points[3 * i + k] = mesh.points[3 * v + k] + jitter(random);
    } else {
      points[3 * i] = along(random);
      points[3 * i + 1] = across(random);
      points[3 * i + 2] = across(random);
    }
  }

  ClosestPointHit hit;
  int i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(query.Closest(&points[3 * i], -1.0f, hit));
    i = (i + 1) % query_count;
  }
  state.counters["triangles"] = mesh.TriangleCount();
  state.counters["ns_per_query"] = benchmark::Counter(
      1.0, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_ClosestPointQuery)
    ->ArgNames({"points", "in_box"})
    ->Args({5000, 0})
    ->Args({5000, 1})
    ->Args({50000, 0})
    ->Args({50000, 1});

}  // namespace
