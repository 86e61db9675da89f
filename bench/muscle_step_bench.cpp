// Cost of the muscle step on closed spindles of about 1k, 10k and 100k
// points, 10 iterations, with edge, shape and volume rows.

#include <benchmark/benchmark.h>

#include "bench/support/loop_clock.h"

#include <chrono>
#include <map>
#include <memory>

#include "core/kernels/edge_constraints.h"
#include "core/kernels/shape_constraints.h"
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

// One assembled muscle per size, kept across benchmark runs.
myo_scenes::MuscleScene& SceneWithPoints(uint32_t points) {
  static std::map<uint32_t, std::unique_ptr<myo_scenes::MuscleScene>> scenes;
  auto& scene = scenes[points];
  if (!scene) {
    scene = std::make_unique<myo_scenes::MuscleScene>();
    myo_scenes::MuscleSetupOptions options;
    options.shape_preservation = 1.0f;
    options.tendon_ends = 1.0f;
    std::string error;
    myo_scenes::AssembleMuscle(myo_scenes::MakeSpindleWithPoints(points, 20.0f, 3.0f), options, *scene, error);
  }
  return *scene;
}

// The frame the step benchmarks run: a little activation and damping.
myo_core::MuscleSolver& SteppedSolver(benchmark::State& state) {
  myo_core::MuscleSolver& solver = SceneWithPoints(static_cast<uint32_t>(state.range(0))).solver;
  myo_scenes::FrameSettings frame;
  frame.activation = 0.3f;
  frame.global_damping = 0.1f;
  myo_scenes::ApplyFrameSettings(frame, solver);
  return solver;
}

// Wall time per step, in nanoseconds.
double TimeSteps(benchmark::State& state, myo_core::MuscleSolver& solver) {
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::Step(solver);
    benchmark::ClobberMemory();
  }
  return clock.Nanoseconds() / state.iterations();
}

void BM_MuscleStep(benchmark::State& state) {
  myo_core::MuscleSolver& solver = SteppedSolver(state);
  const double ns = TimeSteps(state, solver) * state.iterations();
  const double n = solver.point_count_;
  state.counters["points"] = n;
  state.counters["edge_rows"] = solver.edge_constraints_->RowCount();
  state.counters["shape_rows"] = solver.shape_constraints_->RowCount();
  state.counters["bytes_per_point"] = static_cast<double>(SolverBytes(solver)) / n;
  state.counters["ms_per_step"] = ns * 1e-6 / state.iterations();
}
BENCHMARK(BM_MuscleStep)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// The same step with the shape group switched off: edges and volume only.
void BM_MuscleStepEdgesAndVolume(benchmark::State& state) {
  myo_core::MuscleSolver& solver = SteppedSolver(state);
  myo_core::ShapeConstraints& shape = *solver.shape_constraints_;
  myo_core::SetShapeCompliance(shape, 1.0f, solver.compliance_, 0.0f, true);  // switched off
  state.counters["ms_per_step"] = TimeSteps(state, solver) * 1e-6;
  myo_core::SetShapeCompliance(shape, 1.0f, solver.compliance_, 0.0f, false);
}
BENCHMARK(BM_MuscleStepEdgesAndVolume)->Arg(10000)->Unit(benchmark::kMillisecond);

// One Gauss-Seidel pass over the edge rows alone.
void BM_EdgeRows(benchmark::State& state) {
  myo_scenes::MuscleScene& scene = SceneWithPoints(static_cast<uint32_t>(state.range(0)));
  myo_core::MuscleSolver& solver = scene.solver;
  myo_scenes::ApplyFrameSettings(myo_scenes::FrameSettings{}, solver);
  auto& edges = *solver.edge_constraints_;
  myo_core::PrepareEdgeRows(edges, 0.0f);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveEdgeRows(edges, solver.compliance_, solver.positions_.data(), solver.lambdas_.data());
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_edge_row"] = clock.Nanoseconds() / (static_cast<double>(edges.RowCount()) * state.iterations());
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_EdgeRows)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

void BM_ShapeRows(benchmark::State& state) {
  myo_scenes::MuscleScene& scene = SceneWithPoints(static_cast<uint32_t>(state.range(0)));
  myo_core::MuscleSolver& solver = scene.solver;
  myo_scenes::ApplyFrameSettings(myo_scenes::FrameSettings{}, solver);
  const auto& shape = *solver.shape_constraints_;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveShapeRows(shape, solver.positions_.data(), solver.lambdas_.data());
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_shape_row"] = clock.Nanoseconds() / (static_cast<double>(shape.RowCount()) * state.iterations());
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_ShapeRows)->Arg(10000)->Unit(benchmark::kMicrosecond);

}  // namespace

namespace {

void BM_VolumeRow(benchmark::State& state) {
  myo_scenes::MuscleScene& scene = SceneWithPoints(static_cast<uint32_t>(state.range(0)));
  myo_core::MuscleSolver& solver = scene.solver;
  auto& volume = *solver.volume_constraint_;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    // A goal away from rest, so that every call does the whole work.
    myo_core::SolveVolumeConstraint(volume.lambda_base_, volume.rest_volume_, 0.0f, 1.01f, 1e-4f,
                                    volume.inverse_masses_, volume.triangles_, solver.positions_,
                                    solver.lambdas_, volume.gradients_);
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_point"] = clock.Nanoseconds() / (static_cast<double>(solver.point_count_) * state.iterations());
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_VolumeRow)->Arg(10000)->Unit(benchmark::kMicrosecond);

}  // namespace
