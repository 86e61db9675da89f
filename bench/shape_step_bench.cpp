// Cost of the shape step on square grids of about 10k and 100k points, 3
// iterations, attraction partly painted (force 0.3), shape preservation on,
// with and without a collider grid of 20k triangles just under the mesh,
// which the mesh falls onto so that most collision rows act; on 1, 2 and
// all threads, with the speed-up over one. Counters: ns per point and per collision row (one per point and
// iteration), and for the build of the 100k mesh with its collider, ms per
// build. Run with OMP_WAIT_POLICY=PASSIVE, as the plug-in's process does.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <map>
#include <memory>
#include <string>
#include <tuple>

#include "bench/support/loop_clock.h"
#include "bench/support/thread_runs.h"
#include "core/log/logger.h"
#include "core/solver/solver_stages.h"
#include "scenes/shape_setup.h"

namespace {

constexpr uint32_t kColliderCells = 100;

// The logger at info level for the life of a benchmark, as the plug-in runs
// once loaded: at debug level the binding builds its per-point trace.
class InfoLogLevel {
 public:
  InfoLogLevel() : saved_(myo_core::GetLevel()) { myo_core::SetLevel(myo_core::kLogLevelInfo); }
  ~InfoLogLevel() { myo_core::SetLevel(static_cast<uint32_t>(saved_)); }

 private:
  int32_t saved_;
};  // 2 x 100 x 100 = 20k triangles

myo_scenes::ShapeSetupOptions BenchOptions(uint32_t cells, bool with_collider) {
  myo_scenes::ShapeSetupOptions options;
  options.cells = cells;
  options.height = 0.05f;
  options.attract_force = 0.3f;
  options.shape_preservation = 0.5f;
  options.collision_weight = 1.0f;
  options.collider_cells = with_collider ? kColliderCells : 0;
  options.max_collision_sliding_distance = 2.0f * options.size / static_cast<float>(kColliderCells);  // two cells
  options.thread_count = 2;
  return options;
}

// One assembled shape per grid size, collider and thread count, kept across
// runs and built on that many threads as a run on them builds it, with the
// frame's scalars set: gravity pulls it onto the collider, the targets are
// the rest shape.
myo_scenes::ShapeScene& ShapeWithCells(uint32_t cells, bool with_collider, int threads) {
  static std::map<std::tuple<uint32_t, bool, int>, std::unique_ptr<myo_scenes::ShapeScene>> scenes;
  auto& scene = scenes[{cells, with_collider, threads}];
  if (!scene) {
    const myo_bench::OmpThreads team(threads);
    scene = std::make_unique<myo_scenes::ShapeScene>();
    std::string error;
    myo_scenes::AssembleShape(BenchOptions(cells, with_collider), *scene, error);
    myo_scenes::ShapeFrameSettings frame;
    frame.iterations = 3;
    frame.attraction_remap_mode = 3;
    myo_scenes::ApplyShapeFrame(frame, scene->mesh.points, myo_core::IdentityMatrix(), *scene);
    // A few steps first, so that the mesh lies on the collider.
    for (int step = 0; step < 3; ++step) myo_core::StepSimshape(scene->solver);
  }
  return *scene;
}

// Milliseconds per step by grid size, threads and collider, for the share
// of the collision rows.
std::map<std::tuple<uint32_t, int, bool>, double>& StepMs() {
  static std::map<std::tuple<uint32_t, int, bool>, double> ms;
  return ms;
}

// Collision rows that move their point in the first iteration of the next
// step: the step's prediction and attraction and the search are run on
// copies, then the rows whose point is on the side it was bound on and
// within its threshold, or has crossed over, are counted.
uint32_t ActingRows(const myo_core::SimshapeSolver& solver) {
  using myo_core::Vec3;
  myo_core::SolverData probe = solver;
  myo_core::SlideCollisionConstraints group = *solver.slide_collision_constraints_;
  myo_core::BeginStep(probe);
  for (uint32_t k = 0; k < 3 * solver.point_count_; ++k)
    probe.positions_[k] += (solver.attraction_targets_[k] - probe.positions_[k]) * solver.attraction_[k / 3];
  const bool has_transform = !myo_core::IsIdentity(probe.world_matrix_);
  myo_core::UpdateCollisionSlidingPoints(has_transform, probe.positions_, probe.world_matrix_, group);
  uint32_t acting = 0;
  for (uint32_t i = 0; i < solver.point_count_; ++i) {
    if (group.sliding_inactive_[i] != 0 || !(solver.attraction_[i] < 1.0f)) continue;
    Vec3 p = myo_core::Load3(probe.positions_.data(), i);
    if (has_transform) p = myo_core::TransformPoint(p, probe.world_matrix_);
    const Vec3 d = p - myo_core::Load3(group.closest_points_.data(), i);
    const Vec3 n =
        myo_core::NormalizeSafe(myo_core::Load3(group.collider_normals_.data(), group.closest_triangles_[i]));
    const bool same_side = group.inside_flags_[i] == (myo_core::Dot(myo_core::NormalizeSafe(d), n) < 0.0f);
    acting += !same_side || myo_core::Length(d) <= group.collision_distances_[i] * group.threshold_multipliers_[i];
  }
  return acting;
}

// range(0): cells per side; range(1): OpenMP threads; range(2): collider.
// ns_per_collision_row is the time the collider adds to the step of the
// same size and threads, over the rows it runs (points times iterations).
void BM_ShapeStep(benchmark::State& state) {
  const uint32_t cells = static_cast<uint32_t>(state.range(0));
  const int threads = static_cast<int>(state.range(1));
  const bool with_collider = state.range(2) != 0;
  const InfoLogLevel log_level;
  myo_core::SimshapeSolver& solver = ShapeWithCells(cells, with_collider, threads).solver;
  double ns = 0.0;
  {
    const myo_bench::OmpThreads team(threads);
    const myo_bench::LoopClock clock;
    for (auto _ : state) {
      myo_core::StepSimshape(solver);
      benchmark::ClobberMemory();
    }
    ns = clock.Nanoseconds() / static_cast<double>(state.iterations());
  }

  const uint32_t n = solver.point_count_;
  state.counters["points"] = n;
  state.counters["ns_per_point"] = ns / n;
  StepMs()[{cells, threads, with_collider}] = ns * 1e-6;
  if (with_collider) {
    state.counters["acting_rows"] = ActingRows(solver);
    const auto plain = StepMs().find({cells, threads, false});
    if (plain != StepMs().end())
      state.counters["ns_per_collision_row"] =
          (ns - plain->second * 1e6) / (static_cast<double>(n) * solver.iterations_);
  }
  myo_bench::ReportStep(state, "shape" + std::to_string(cells) + (with_collider ? "c" : ""), threads, ns * 1e-6);
}
BENCHMARK(BM_ShapeStep)
    ->Apply([](auto* b) { myo_bench::ArgsWithThreads(b, {{99, 0}, {99, 1}, {315, 0}, {315, 1}}); })
    ->Unit(benchmark::kMillisecond);

// The whole build (InitSimshape) of about 100k points with the collider, on
// 2 threads.
void BM_ShapeBuild(benchmark::State& state) {
  const myo_scenes::ShapeSetupOptions options = BenchOptions(static_cast<uint32_t>(state.range(0)), true);
  const InfoLogLevel log_level;
  const int saved = omp_get_max_threads();
  omp_set_num_threads(2);
  myo_scenes::ShapeScene scene;
  std::string error;
  myo_scenes::MakeShapeInputs(options, scene, error);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::ShapeNodeState node;
    myo_core::SimshapeSolver solver;
    myo_scenes::BuildShapeSolver(options, scene, node, solver);
    benchmark::DoNotOptimize(solver.positions_.data());
  }
  state.counters["ms_per_build"] = clock.Nanoseconds() / static_cast<double>(state.iterations()) * 1e-6;
  omp_set_num_threads(saved);
}
BENCHMARK(BM_ShapeBuild)->Arg(315)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
