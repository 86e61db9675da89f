// Cost of the geometry constraints on a spindle of about 10k points that
// slides inside a larger spindle of about 20k triangles, with a sliding reach
// that gives about 50 candidate triangles per point: the build, the candidate
// walk per row, the closest-point update per row (and its per-triangle
// preparation), the kernel stages per row, the per-frame target refresh, and
// the whole step in Fast and in Quality at 10 iterations.

#include <benchmark/benchmark.h>

#include "bench/support/loop_clock.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

#include "core/kernels/geometry_constraints.h"
#include "core/muscle/muscle_assembly.h"
#include "core/muscle/muscle_mass_weights.h"
#include "scenes/muscle_meshes.h"
#include "scenes/muscle_setup.h"
#include "scenes/targeted_muscle.h"

namespace {

using myo_core::Matrix;

constexpr double kCandidatesPerRow = 50.0;

double MeanCandidates(const myo_core::SlideOnGeometryConstraints& slides) {
  return static_cast<double>(slides.candidates_.size()) / static_cast<double>(slides.candidate_counts_.size());
}

myo_core::PolygonMesh Muscle() { return myo_scenes::MakeSpindleWithPoints(10000, 20.0f, 3.0f); }
myo_core::PolygonMesh Target() { return myo_scenes::MakeSpindleWithPoints(10000, 22.0f, 3.4f); }

// The reach that gives about 50 candidates per row, found once: the count
// grows with the area the reach covers.
float SlidingReach() {
  static float reach = 0.0f;
  if (reach > 0.0f) return reach;
  reach = 0.6f;
  for (int round = 0; round < 4; ++round) {
    myo_scenes::TargetedMuscle scene;
    myo_scenes::TargetedMuscleOptions options;
    options.slide_weight = 1.0f;
    options.max_sliding_distance = reach;
    std::string error;
    myo_scenes::AssembleTargetedMuscle(Muscle(), Target(), options, scene, error);
    reach *= static_cast<float>(std::sqrt(kCandidatesPerRow / MeanCandidates(*scene.solver.slide_on_geometry_constraints_)));
  }
  return reach;
}

// One assembled scene per sliding mode, kept across runs.
myo_scenes::TargetedMuscle& Scene(int32_t mode) {
  static std::unique_ptr<myo_scenes::TargetedMuscle> scenes[2];
  auto& scene = scenes[mode];
  if (!scene) {
    scene = std::make_unique<myo_scenes::TargetedMuscle>();
    myo_scenes::TargetedMuscleOptions options;
    options.slide_weight = 1.0f;
    options.max_sliding_distance = SlidingReach();
    std::string error;
    myo_scenes::AssembleTargetedMuscle(Muscle(), Target(), options, *scene, error);
    myo_scenes::FrameSettings frame;
    frame.gravity_y = 0.0f;
    myo_scenes::ApplyFrameSettings(frame, scene->solver);
    scene->solver.sliding_constraints_mode_ = mode;
  }
  return *scene;
}

void SetSizeCounters(benchmark::State& state, const myo_scenes::TargetedMuscle& scene) {
  state.counters["points"] = scene.solver.point_count_;
  state.counters["target_triangles"] = scene.target_mesh.TriangleCount();
  state.counters["candidates_per_row"] = MeanCandidates(*scene.solver.slide_on_geometry_constraints_);
}

// The whole assembly of the muscle with its target (edges, shape, volume and
// the geometry rows), and the geometry rows alone.
void BM_MuscleBuildWithTarget(benchmark::State& state) {
  myo_scenes::TargetedMuscle& scene = Scene(myo_core::kSlidingFast);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::InitializeSolver(scene.muscle_mesh, scene.maps, scene.inputs, scene.node, scene.solver);
    benchmark::ClobberMemory();
  }
  state.counters["ms_per_build"] = clock.Nanoseconds() * 1e-6 / state.iterations();
  SetSizeCounters(state, scene);
}
BENCHMARK(BM_MuscleBuildWithTarget)->Unit(benchmark::kMillisecond);

void BM_GeometryBuild(benchmark::State& state) {
  myo_scenes::TargetedMuscle& scene = Scene(myo_core::kSlidingFast);
  myo_core::MuscleSolver& solver = scene.solver;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    // Rows of the former build are dropped so that lambdas_ keeps its size.
    solver.lambdas_.resize(solver.attachment_to_geo_constraints_->lambda_base_);
    myo_core::BuildGeometryConstraints(scene.inputs.targets, scene.inputs.node_name, scene.maps,
                                       scene.inputs.map_index, scene.inputs.max_sliding_distance,
                                       solver.point_count_, scene.inputs.world_matrix, scene.node, solver);
    benchmark::ClobberMemory();
  }
  state.counters["ms_per_build"] = clock.Nanoseconds() * 1e-6 / state.iterations();
  SetSizeCounters(state, scene);
  myo_core::ApplyMassesToWeights(solver, scene.node.shape_map_, scene.node.attachment_map_,
                                 scene.node.attachment_to_geo_map_, scene.node.slide_on_segment_map_,
                                 scene.node.slide_on_geometry_map_);
}
BENCHMARK(BM_GeometryBuild)->Unit(benchmark::kMillisecond);

// The candidate walk of every row, from the row's closest point at rest.
void BM_SearchCandidateTriangles(benchmark::State& state) {
  myo_scenes::TargetedMuscle& scene = Scene(myo_core::kSlidingFast);
  const myo_core::MuscleSolver& solver = scene.solver;
  const myo_core::TargetMesh& target = solver.targets_[0];
  const auto& slides = *solver.slide_on_geometry_constraints_;
  const uint32_t n = solver.point_count_;
  std::vector<int32_t> starts(n);  // N, global triangle of each row's closest point
  for (uint32_t i = 0; i < n; ++i) {
    const int32_t first = target.polygon_triangle_offsets_[slides.faces_[i]];
    starts[i] = first;
    for (int32_t k = 0; k < target.polygon_triangle_counts_[slides.faces_[i]]; ++k)
      if (std::equal(&slides.triangle_vertices_[3 * i], &slides.triangle_vertices_[3 * i] + 3,
                     &target.triangle_vertices_[3 * (first + k)]))
        starts[i] = first + k;
  }
  const float reach = scene.inputs.max_sliding_distance;
  myo_core::CandidateSearchScratch visited;
  std::vector<int32_t> found;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    for (uint32_t i = 0; i < n; ++i)
      myo_core::SearchCandidateTriangles(starts[i], reach, myo_core::Load3(slides.closest_points_.data(), i),
                                         target, target.triangle_vertices_, true, visited, found);
    benchmark::DoNotOptimize(found.data());
  }
  state.counters["ns_per_row"] = clock.Nanoseconds() / (static_cast<double>(n) * state.iterations());
  SetSizeCounters(state, scene);
}
BENCHMARK(BM_SearchCandidateTriangles)->Unit(benchmark::kMillisecond);

void BM_UpdateClosestPoints(benchmark::State& state) {
  myo_scenes::TargetedMuscle& scene = Scene(myo_core::kSlidingFast);
  myo_core::MuscleSolver& solver = scene.solver;
  auto& slides = *solver.slide_on_geometry_constraints_;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::UpdateClosestPoints(solver.positions_, solver.world_matrix_, solver.targets_, slides);
    benchmark::ClobberMemory();
  }
  const double ns = clock.Nanoseconds() / state.iterations();
  state.counters["ns_per_row"] = ns / solver.point_count_;
  state.counters["ns_per_candidate"] = ns / static_cast<double>(slides.candidates_.size());
  SetSizeCounters(state, scene);
}
BENCHMARK(BM_UpdateClosestPoints)->Unit(benchmark::kMicrosecond);

// The part of the update that does not depend on the rows: preparing every
// distinct candidate triangle from the current target vertices (all rows
// are made weightless, so that none is searched).
void BM_PrepareCandidateTriangles(benchmark::State& state) {
  myo_scenes::TargetedMuscle& scene = Scene(myo_core::kSlidingFast);
  myo_core::MuscleSolver& solver = scene.solver;
  myo_core::SlideOnGeometryConstraints slides = *solver.slide_on_geometry_constraints_;
  slides.inverse_masses_.assign(slides.inverse_masses_.size(), 0.0f);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::UpdateClosestPoints(solver.positions_, solver.world_matrix_, solver.targets_, slides);
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_triangle"] =
      clock.Nanoseconds() / (static_cast<double>(slides.slot_triangles_.size()) * state.iterations());
  state.counters["triangles"] = static_cast<double>(slides.slot_triangles_.size());
}
BENCHMARK(BM_PrepareCandidateTriangles)->Unit(benchmark::kMicrosecond);

// One pass of each kernel stage over all rows.
void BM_SlideOnGeometryRows(benchmark::State& state) {
  myo_scenes::TargetedMuscle& scene = Scene(myo_core::kSlidingFast);
  myo_core::MuscleSolver& solver = scene.solver;
  const auto& slides = *solver.slide_on_geometry_constraints_;
  myo_core::UpdateClosestPoints(solver.positions_, solver.world_matrix_, solver.targets_,
                                *solver.slide_on_geometry_constraints_);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveSlideOnGeometryRows(slides, 1, solver.point_count_, solver.compliance_, false,
                                       solver.world_matrix_, solver.world_matrix_inverse_, solver.positions_.data(),
                                       solver.lambdas_.data());
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_row"] = clock.Nanoseconds() / (static_cast<double>(solver.point_count_) * state.iterations());
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_SlideOnGeometryRows)->Unit(benchmark::kMicrosecond);

void BM_AttachmentToGeoRows(benchmark::State& state) {
  myo_scenes::TargetedMuscle& scene = Scene(myo_core::kSlidingFast);
  myo_core::MuscleSolver& solver = scene.solver;
  myo_core::AttachmentToGeoConstraints attachments = *solver.attachment_to_geo_constraints_;
  attachments.hard_ = false;
  attachments.inverse_masses_.assign(solver.point_count_, 1.0f);  // every row soft and painted
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveAttachmentToGeoRows(attachments, solver.targets_, solver.point_count_, solver.compliance_, false,
                                       solver.world_matrix_, solver.world_matrix_inverse_, solver.positions_.data(),
                                       solver.lambdas_.data());
    benchmark::ClobberMemory();
  }
  state.counters["ns_per_row"] = clock.Nanoseconds() / (static_cast<double>(solver.point_count_) * state.iterations());
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_AttachmentToGeoRows)->Unit(benchmark::kMicrosecond);

// The per-frame refresh of the target: the host's world positions and polygon
// normals (here computed from a matrix, as the standalone host does) taken in.
void BM_UpdateTargets(benchmark::State& state) {
  myo_scenes::TargetedMuscle& scene = Scene(myo_core::kSlidingFast);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    scene.MoveTarget(myo_core::TranslationMatrix(0.0f, 0.0f, 0.0f));
    benchmark::ClobberMemory();
  }
  state.counters["us_per_frame"] = clock.Nanoseconds() * 1e-3 / state.iterations();
  scene.MoveTarget(myo_core::IdentityMatrix());
}
BENCHMARK(BM_UpdateTargets)->Unit(benchmark::kMicrosecond);

// The whole step at 10 iterations: Fast updates the closest points once,
// Quality ten times.
void BM_GeometryStep(benchmark::State& state) {
  const int32_t mode = static_cast<int32_t>(state.range(0));
  myo_scenes::TargetedMuscle& scene = Scene(mode);
  myo_core::MuscleSolver& solver = scene.solver;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::Step(solver);
    benchmark::ClobberMemory();
  }
  state.counters["ms_per_step"] = clock.Nanoseconds() * 1e-6 / state.iterations();
  SetSizeCounters(state, scene);
  state.SetLabel(mode == myo_core::kSlidingFast ? "Fast" : "Quality");
}
BENCHMARK(BM_GeometryStep)->Arg(myo_core::kSlidingFast)->Arg(myo_core::kSlidingQuality)->Unit(benchmark::kMillisecond);

}  // namespace
