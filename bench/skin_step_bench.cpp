// Cost of the skin step on square grids of about 10k and 100k points over a
// reference grid, 3 iterations, with distance, shape and Uber rows (hard,
// soft and slide blended, Fast sliding), on 1, 2 and all threads; and of the
// 100k skin with the default maps on 2 threads. The runs on more than one
// thread report their speed-up over the 1-thread run of the same size. The
// plug-in's process runs OpenMP with OMP_WAIT_POLICY=PASSIVE; run the
// benchmark so too, or spinning threads distort the 2-thread figures on a
// loaded machine.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "bench/support/loop_clock.h"
#include "bench/support/thread_runs.h"
#include "scenes/skin_setup.h"

namespace {

// One assembled skin per grid size, kind of maps and thread count, kept
// across benchmark runs and built on that many threads as a run on them
// builds it (0: as many as the process has): the blended maps above, or the
// maps as a new node has them (hard 1, soft, slide and shape preservation 0).
myo_scenes::SkinScene& SkinWithCells(uint32_t cells, bool default_maps = false, int threads = 0) {
  static std::map<std::tuple<uint32_t, bool, int>, std::unique_ptr<myo_scenes::SkinScene>> scenes;
  auto& scene = scenes[{cells, default_maps, threads}];
  if (!scene) {
    const myo_bench::OmpThreads team(threads > 0 ? threads : omp_get_max_threads());
    scene = std::make_unique<myo_scenes::SkinScene>();
    myo_scenes::SkinSetupOptions options;
    options.cells = cells;
    if (!default_maps) {
      options.hard = 0.6f;
      options.soft = 0.2f;
      options.slide = 0.2f;
      options.shape_preservation = 0.5f;
    }
    options.max_sliding_distance = 2.0f * options.size / static_cast<float>(cells);  // two cells
    options.thread_count = 2;
    std::string error;
    myo_scenes::AssembleSkin(options, *scene, error);
    myo_scenes::SkinFrameSettings frame;
    frame.iterations = 3;
    myo_scenes::ApplySkinFrame(frame, myo_core::TranslationMatrix(0.0f, -0.1f, 0.0f), *scene);
  }
  return *scene;
}

// range(0): cells per side; range(1): OpenMP threads.
void BM_SkinStep(benchmark::State& state) {
  const uint32_t cells = static_cast<uint32_t>(state.range(0));
  const int threads = static_cast<int>(state.range(1));
  myo_core::SkinSolver& solver = SkinWithCells(cells, false, threads).solver;
  const myo_bench::OmpThreads team(threads);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::StepSkin(solver);
    benchmark::ClobberMemory();
  }
  state.counters["points"] = solver.point_count_;
  myo_bench::ReportStep(state, "skin" + std::to_string(cells), threads,
                        clock.Nanoseconds() / state.iterations() * 1e-6);
}
BENCHMARK(BM_SkinStep)
    ->Apply([](auto* b) { myo_bench::ArgsWithThreads(b, {{99}, {315}}); })
    ->Unit(benchmark::kMillisecond);

// The skin as it comes out of the box: the default maps, so no shape rows,
// no sliding search and Uber rows of the hard term alone.
void BM_SkinStepDefaultMaps(benchmark::State& state) {
  myo_core::SkinSolver& solver = SkinWithCells(static_cast<uint32_t>(state.range(0)), true).solver;
  const int saved = omp_get_max_threads();
  omp_set_num_threads(static_cast<int>(state.range(1)));
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::StepSkin(solver);
    benchmark::ClobberMemory();
  }
  state.counters["ms_per_step"] = clock.Nanoseconds() / state.iterations() * 1e-6;
  state.counters["points"] = solver.point_count_;
  omp_set_num_threads(saved);
}
BENCHMARK(BM_SkinStepDefaultMaps)->Args({315, 2})->Unit(benchmark::kMillisecond);

// The same steps with the sliding points searched at every iteration.
void BM_SkinStepQuality(benchmark::State& state) {
  myo_core::SkinSolver& solver = SkinWithCells(static_cast<uint32_t>(state.range(0))).solver;
  const int saved = omp_get_max_threads();
  omp_set_num_threads(static_cast<int>(state.range(1)));
  solver.sliding_constraints_mode_ = 1;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::StepSkin(solver);
    benchmark::ClobberMemory();
  }
  state.counters["ms_per_step"] = clock.Nanoseconds() / state.iterations() * 1e-6;
  solver.sliding_constraints_mode_ = 0;
  omp_set_num_threads(saved);
}
BENCHMARK(BM_SkinStepQuality)->Args({99, 2})->Args({315, 2})->Unit(benchmark::kMillisecond);

// Building a skin of about 100k points over its reference, on 2 threads.
void BM_SkinBuild(benchmark::State& state) {
  myo_scenes::SkinSetupOptions options;
  options.cells = static_cast<uint32_t>(state.range(0));
  options.hard = 0.6f;
  options.soft = 0.2f;
  options.slide = 0.2f;
  options.shape_preservation = 0.5f;
  options.max_sliding_distance = 2.0f * options.size / static_cast<float>(options.cells);
  options.thread_count = 2;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_scenes::SkinScene scene;
    std::string error;
    myo_scenes::AssembleSkin(options, scene, error);
    benchmark::DoNotOptimize(scene.solver.positions_.data());
  }
  state.counters["ms_per_build"] = clock.Nanoseconds() / state.iterations() * 1e-6;
}
BENCHMARK(BM_SkinBuild)->Arg(315)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
