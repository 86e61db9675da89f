// Cost of the muscle family's step, 10 iterations, dt 1/24, on 1, 2 and all
// threads with the speed-up over one: the muscle on closed spindles of about
// 1k, 10k and 100k points with edge, shape and volume rows; the muscle on
// closed cube-spheres of the same sizes with edge rows on every mesh edge
// and the volume row alone; the ribbon muscle (no volume row) on flat grids
// of about 10k and 100k points with edge and shape rows. And the three kinds
// of rows by themselves.

#include <benchmark/benchmark.h>
#include <omp.h>

#include "bench/support/loop_clock.h"
#include "bench/support/thread_runs.h"

#include <chrono>
#include <cmath>
#include <string>
#include <tuple>
#include <utility>
#include <map>
#include <memory>

#include "core/kernels/edge_constraints.h"
#include "core/kernels/shape_constraints.h"
#include "core/muscle/muscle_assembly.h"
#include "scenes/muscle_meshes.h"
#include "scenes/muscle_setup.h"

namespace {

template <typename T>
std::size_t Bytes(const std::vector<T>& v) {
  return v.capacity() * sizeof(T);
}

std::size_t SolverBytes(const myo_core::MuscleSolver& s) {
  const auto& e = *s.edge_constraints_;
  const auto& sh = *s.shape_constraints_;
  const auto& v = *s.volume_constraint_;
  return sizeof(s) + Bytes(s.masses_) + Bytes(s.previous_positions_) + Bytes(s.positions_) +
         Bytes(s.velocities_) + Bytes(s.lambdas_) + Bytes(s.damping_weights_) + sizeof(e) +
         Bytes(e.inverse_masses_) + Bytes(e.rest_lengths_) + Bytes(e.rest_vectors_) + Bytes(e.edge_fibers_) +
         Bytes(e.edge_tendons_) + Bytes(e.tendons_) + Bytes(e.fibers_) + Bytes(e.fiber_bary_u_) +
         Bytes(e.fiber_bary_v_) + Bytes(e.edge_compression_) + Bytes(e.edge_stretching_) +
         Bytes(e.edge_start_) + Bytes(e.edge_end_) + Bytes(e.fiber_triangles_) + sizeof(sh) +
         Bytes(sh.inverse_masses_) + Bytes(sh.rest_distances_) + Bytes(sh.first_points_) +
         Bytes(sh.centre_points_) + Bytes(sh.third_points_) + sizeof(v) + Bytes(v.inverse_masses_) +
         Bytes(v.triangles_) + Bytes(v.gradients_) + Bytes(e.schedule_) +
         Bytes(e.schedule_levels_) + Bytes(e.frame_rows_) + Bytes(sh.schedule_);
}

enum class Shape { kSpindle, kCubeSphere, kGrid };

// One assembled muscle per shape, size and thread count, kept across
// benchmark runs, built on that many threads as a run on them builds it
// (0: as many as the process has). The spindle and the grid carry shape rows
// and tendons at their ends; the cube-sphere only edges and volume.
myo_scenes::MuscleScene& SceneWithPoints(uint32_t points, Shape shape = Shape::kSpindle, int threads = 0) {
  static std::map<std::tuple<Shape, uint32_t, int>, std::unique_ptr<myo_scenes::MuscleScene>> scenes;
  auto& scene = scenes[{shape, points, threads}];
  if (!scene) {
    const myo_bench::OmpThreads team(threads > 0 ? threads : omp_get_max_threads());
    scene = std::make_unique<myo_scenes::MuscleScene>();
    myo_scenes::MuscleSetupOptions options;
    if (shape != Shape::kCubeSphere) {
      options.shape_preservation = 1.0f;
      options.tendon_ends = 1.0f;
    }
    const uint32_t side = static_cast<uint32_t>(std::lround(std::sqrt(static_cast<double>(points)))) - 1;
    const myo_core::PolygonMesh mesh = shape == Shape::kSpindle ? myo_scenes::MakeSpindleWithPoints(points, 20.0f, 3.0f)
                                       : shape == Shape::kCubeSphere
                                           ? myo_scenes::MakeCubeSphereWithPoints(points, 5.0f)
                                           : myo_scenes::MakeGrid(side, side, 20.0f, 20.0f);
    std::string error;
    myo_scenes::AssembleMuscle(mesh, options, *scene, error);
  }
  return *scene;
}

// The frame the step benchmarks run: a little activation and damping on the
// spindle and grid; the cube-sphere as it is.
myo_core::MuscleSolver& SteppedSolver(uint32_t points, Shape shape, int threads) {
  myo_core::MuscleSolver& solver = SceneWithPoints(points, shape, threads).solver;
  myo_scenes::FrameSettings frame;
  if (shape != Shape::kCubeSphere) {
    frame.activation = 0.3f;
    frame.global_damping = 0.1f;
  }
  myo_scenes::ApplyFrameSettings(frame, solver);
  return solver;
}

// range(0): points; range(1): threads. The ribbon's step is the muscle
// family's without the volume row.
template <Shape kShape, bool kVolume>
void BM_Step(benchmark::State& state) {
  const uint32_t points = static_cast<uint32_t>(state.range(0));
  const int threads = static_cast<int>(state.range(1));
  myo_core::MuscleSolver& solver = SteppedSolver(points, kShape, threads);
  const myo_bench::OmpThreads team(threads);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::StepMuscleFamily(solver, kVolume ? solver.volume_constraint_.get() : nullptr);
    benchmark::ClobberMemory();
  }
  const double n = solver.point_count_;
  state.counters["points"] = n;
  state.counters["edge_rows"] = solver.edge_constraints_->RowCount();
  state.counters["shape_rows"] = solver.shape_constraints_->RowCount();
  state.counters["bytes_per_point"] = static_cast<double>(SolverBytes(solver)) / n;
  myo_bench::ReportStep(state, std::to_string(static_cast<int>(kShape)) + "/" + std::to_string(kVolume) + "/" +
                                   std::to_string(points),
                        threads, clock.Nanoseconds() / state.iterations() * 1e-6);
}

void BM_MuscleStep(benchmark::State& state) { BM_Step<Shape::kSpindle, true>(state); }
BENCHMARK(BM_MuscleStep)
    ->Apply([](auto* b) { myo_bench::ArgsWithThreads(b, {{1000}, {10000}, {100000}}); })
    ->Unit(benchmark::kMillisecond);

void BM_CubeSphereMuscleStep(benchmark::State& state) { BM_Step<Shape::kCubeSphere, true>(state); }
BENCHMARK(BM_CubeSphereMuscleStep)
    ->Apply([](auto* b) { myo_bench::ArgsWithThreads(b, {{1000}, {10000}, {100000}}); })
    ->Unit(benchmark::kMillisecond);

void BM_RibbonStep(benchmark::State& state) { BM_Step<Shape::kGrid, false>(state); }
BENCHMARK(BM_RibbonStep)
    ->Apply([](auto* b) { myo_bench::ArgsWithThreads(b, {{10000}, {100000}}); })
    ->Unit(benchmark::kMillisecond);

// One pass over each kind of rows by itself, on the cube-sphere (edges,
// volume) and the grid (shape rows). range(0): points; range(1): threads.
void BM_EdgeRows(benchmark::State& state) {
  myo_core::MuscleSolver& solver = SceneWithPoints(static_cast<uint32_t>(state.range(0)), Shape::kCubeSphere).solver;
  myo_scenes::ApplyFrameSettings(myo_scenes::FrameSettings{}, solver);
  auto& edges = *solver.edge_constraints_;
  myo_core::PrepareEdgeRows(edges, 0.0f);
  const myo_bench::OmpThreads team(static_cast<int>(state.range(1)));
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveEdgeRows(edges, solver.compliance_, solver.positions_.data(), solver.lambdas_.data());
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_edge_row"] = clock.Nanoseconds() / (static_cast<double>(edges.RowCount()) * state.iterations());
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_EdgeRows)
    ->Apply([](auto* b) { myo_bench::ArgsWithThreads(b, {{10000}, {100000}}); })
    ->Unit(benchmark::kMicrosecond);

void BM_ShapeRows(benchmark::State& state) {
  myo_core::MuscleSolver& solver = SceneWithPoints(static_cast<uint32_t>(state.range(0)), Shape::kGrid).solver;
  myo_scenes::ApplyFrameSettings(myo_scenes::FrameSettings{}, solver);
  auto& shape = *solver.shape_constraints_;
  myo_core::PrepareShapeRows(shape);
  const myo_bench::OmpThreads team(static_cast<int>(state.range(1)));
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveShapeRows(shape, solver.positions_.data(), solver.lambdas_.data());
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_shape_row"] = clock.Nanoseconds() / (static_cast<double>(shape.RowCount()) * state.iterations());
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_ShapeRows)
    ->Apply([](auto* b) { myo_bench::ArgsWithThreads(b, {{100000}}); })
    ->Unit(benchmark::kMicrosecond);

void BM_VolumeRow(benchmark::State& state) {
  myo_core::MuscleSolver& solver = SceneWithPoints(static_cast<uint32_t>(state.range(0)), Shape::kCubeSphere).solver;
  auto& volume = *solver.volume_constraint_;
  // A goal away from rest, so that every call does the whole work; no move.
  const float ratio = volume.volume_ratio_, preservation = volume.volume_preservation_;
  volume.volume_ratio_ = 1.01f;
  volume.volume_preservation_ = 0.0f;
  const myo_bench::OmpThreads team(static_cast<int>(state.range(1)));
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveVolumeConstraint(volume, 1e-4f, solver.positions_, solver.lambdas_);
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_point"] = clock.Nanoseconds() / (static_cast<double>(solver.point_count_) * state.iterations());
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
  volume.volume_ratio_ = ratio;
  volume.volume_preservation_ = preservation;
}
BENCHMARK(BM_VolumeRow)
    ->Apply([](auto* b) { myo_bench::ArgsWithThreads(b, {{100000}}); })
    ->Unit(benchmark::kMicrosecond);

}  // namespace

namespace {

// The rebuild a muscle goes through at the start frame: every table again
// from the points the simulation left (range(0) points; range(1): 0
// spindle with tendons, so fibers are computed and projected, 1
// cube-sphere), on all threads.
void BM_MuscleRebuild(benchmark::State& state) {
  const uint32_t points = static_cast<uint32_t>(state.range(0));
  const Shape shape = state.range(1) == 0 ? Shape::kSpindle : Shape::kCubeSphere;
  myo_scenes::MuscleScene& scene = SceneWithPoints(points, shape);
  myo_core::MuscleAssemblyInputs inputs;
  inputs.node_name = "muscle1";
  inputs.warn = false;
  inputs.reset_positions = false;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::InitializeSolver(scene.mesh, scene.maps, inputs, scene.node, scene.solver);
    benchmark::ClobberMemory();
  }
  state.counters["ms_per_build"] = clock.Nanoseconds() / state.iterations() * 1e-6;
}
BENCHMARK(BM_MuscleRebuild)->Args({100000, 0})->Args({100000, 1})->Unit(benchmark::kMillisecond);

}  // namespace
