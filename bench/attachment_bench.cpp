// Cost of the bone attachment stages on a spindle of about 10k points: two
// attachments painted over the two ends and one segment along the axis with
// every point painted. One pass of a stage solves every row of its table
// (sets times points); unpainted rows return at once.

#include <benchmark/benchmark.h>

#include "bench/support/loop_clock.h"

#include <algorithm>
#include <chrono>
#include <memory>

#include "core/kernels/attachment_constraints.h"
#include "core/kernels/slide_on_segment_constraints.h"
#include "core/muscle/muscle_assembly.h"
#include "scenes/muscle_meshes.h"
#include "scenes/muscle_setup.h"

namespace {

using myo_core::Matrix;

Matrix Translation(float x, float y, float z) {
  Matrix m = myo_core::IdentityMatrix();
  m[12] = x;
  m[13] = y;
  m[14] = z;
  return m;
}

// The spindle runs along x from -10 to 10; the ends are the points beyond
// 8 away from the middle.
myo_scenes::MuscleScene& AttachedSpindle() {
  static std::unique_ptr<myo_scenes::MuscleScene> scene;
  if (scene) return *scene;
  scene = std::make_unique<myo_scenes::MuscleScene>();
  const myo_core::PolygonMesh polygons = myo_scenes::MakeSpindleWithPoints(10000, 20.0f, 3.0f);
  std::string error;
  myo_core::BuildMeshData(polygons.points, polygons.vertex_counts, polygons.vertices, scene->mesh, error);
  const uint32_t n = scene->mesh.PointCount();
  std::vector<float> left(n, 0.0f), right(n, 0.0f);
  for (uint32_t i = 0; i < n; ++i) {
    if (scene->mesh.points[3 * i] < -8.0f) left[i] = 1.0f;
    if (scene->mesh.points[3 * i] > 8.0f) right[i] = 1.0f;
  }
  scene->maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 0, left);
  scene->maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 1, right);
  scene->maps.SetAll("slideOnSegmentConstraintsList", "slideOnSegmentConstraints", 0, std::vector<float>(n, 1.0f));
  myo_core::MuscleAssemblyInputs inputs;
  inputs.warn = false;
  inputs.hard_attachments = false;
  inputs.attachment_indices = {0, 1};
  inputs.attachment_matrices = {Translation(-10.0f, 0.0f, 0.0f), Translation(10.0f, 0.0f, 0.0f)};
  inputs.segment_indices = {0};
  inputs.segment_matrices = {Translation(-30.0f, 0.0f, 0.0f), Translation(30.0f, 0.0f, 0.0f)};
  myo_core::InitializeSolver(scene->mesh, scene->maps, inputs, scene->node, scene->solver);
  myo_scenes::ApplyFrameSettings(myo_scenes::FrameSettings{}, scene->solver);
  // The bones moved since rest, so the rows have work to do.
  scene->solver.attachment_constraints_->matrices_ = {Translation(-10.0f, 0.5f, 0.0f), Translation(10.0f, 0.5f, 0.0f)};
  scene->solver.slide_on_segment_constraints_->matrices_ = {Translation(-29.0f, 0.5f, 0.0f),
                                                            Translation(31.0f, 0.5f, 0.0f)};
  return *scene;
}

// Argument 1: the mesh has a world matrix other than the identity, so every
// row goes through it and back.
void SetWorldMatrix(myo_core::MuscleSolver& solver, bool has_transform) {
  solver.world_matrix_ = has_transform ? Translation(0.0f, 0.0f, 0.0f) : myo_core::IdentityMatrix();
  if (has_transform) solver.world_matrix_[0] = solver.world_matrix_[5] = solver.world_matrix_[10] = 1.0f + 1e-6f;
  solver.world_matrix_inverse_ = myo_core::InvertMatrix(solver.world_matrix_);
}

void ReportPerRow(benchmark::State& state, const myo_bench::LoopClock& clock, std::size_t rows, std::size_t painted) {
  const double ns = clock.Nanoseconds() / static_cast<double>(state.iterations());
  state.counters["rows"] = static_cast<double>(rows);
  state.counters["painted_rows"] = static_cast<double>(painted);
  state.counters["ns_per_row"] = ns / static_cast<double>(rows);
  state.counters["ns_per_painted_row"] = ns / static_cast<double>(painted);
}

std::size_t Painted(const std::vector<float>& weights) {
  return static_cast<std::size_t>(std::count_if(weights.begin(), weights.end(), [](float w) { return w >= 1e-6f; }));
}

void BM_AttachmentRows(benchmark::State& state) {
  myo_core::MuscleSolver& solver = AttachedSpindle().solver;
  const bool has_transform = state.range(0) != 0;
  SetWorldMatrix(solver, has_transform);
  const myo_core::AttachmentConstraints& group = *solver.attachment_constraints_;
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveAttachmentRows(group, solver.point_count_, solver.compliance_, has_transform, solver.world_matrix_,
                                  solver.world_matrix_inverse_, solver.positions_.data(), solver.lambdas_.data());
    benchmark::ClobberMemory();
  }
  ReportPerRow(state, clock, group.inverse_masses_.size(), Painted(group.inverse_masses_));
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_AttachmentRows)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void BM_SlideOnSegmentRows(benchmark::State& state) {
  myo_core::MuscleSolver& solver = AttachedSpindle().solver;
  const bool has_transform = state.range(0) != 0;
  SetWorldMatrix(solver, has_transform);
  myo_core::SlideOnSegmentConstraints& group = *solver.slide_on_segment_constraints_;
  myo_core::PrepareSlideOnSegmentRows(group, solver.point_count_);
  const myo_bench::LoopClock clock;
  for (auto _ : state) {
    myo_core::SolveSlideOnSegmentRows(group, solver.point_count_, solver.compliance_, has_transform,
                                      solver.world_matrix_, solver.world_matrix_inverse_, solver.positions_.data(),
                                      solver.lambdas_.data());
    benchmark::ClobberMemory();
  }
  ReportPerRow(state, clock, group.inverse_masses_.size(), Painted(group.inverse_masses_));
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
}
BENCHMARK(BM_SlideOnSegmentRows)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace
