#include <gtest/gtest.h>

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "core/kernels/row_schedule.h"
#include "core/skin/skin_assembly.h"
#include "core/skin/skin_solver.h"
#include "core/solver/stop_request.h"
#include "core/skin/skin_mass_weights.h"
#include "core/solver/solver_stages.h"
#include "scenes/skin_setup.h"
#include "support/log_capture.h"
#include "support/ordered_sliding_scan.h"
#include "support/test_geometry.h"
#include "support/test_host.h"

using namespace myo_core;
using myo_scenes::SkinScene;
using myo_scenes::SkinSetupOptions;

namespace {

void Assemble(const SkinSetupOptions& options, SkinScene& scene) {
  std::string error;
  ASSERT_TRUE(myo_scenes::AssembleSkin(options, scene, error)) << error;
}

// Counts the progress calls of a build.
class ProgressHost : public myo_test::TestHost {
 public:
  ProgressHost() : TestHost(MeshData{}) {}
  void BeginProgress(int count, const std::string& status) override {
    begun_count = count;
    this->status = status;
  }
  void AdvanceProgress() override { ++advances; }
  void EndProgress() override { ++ends; }
  int begun_count = -1, advances = 0, ends = 0;
  std::string status;
};

// A skin with every group active, stepped `frames` times while the reference
// turns and moves under it.
std::vector<float> SimulatedPoints(int32_t block_count, int threads) {
  SkinSetupOptions options;
  options.cells = 30;
  options.hard = 0.5f;
  options.soft = 0.2f;
  options.slide = 0.3f;
  options.shape_preservation = 0.5f;
  options.max_sliding_distance = 1.0f;
  options.thread_count = block_count;
  SkinScene scene;
  Assemble(options, scene);
  const int saved = omp_get_max_threads();
  omp_set_num_threads(threads);
  myo_scenes::SkinFrameSettings frame;
  frame.sliding_mode = 1;
  frame.iterations = 4;
  for (int f = 1; f <= 4; ++f) {
    myo_scenes::ApplySkinFrame(frame, myo_test::RotationZ(0.05f * f, {0.2f * f, 0.1f * f, 0.0f}), scene);
    StepSkin(scene.solver);
  }
  omp_set_num_threads(saved);
  return scene.solver.positions_;
}

// The step written the plain way, for comparing StepSkin with: each group in
// table order and point by point, the sliding search as an ordered scan of
// every candidate, nothing side by side.
void StraightforwardStep(SkinSolver& solver) {
  BeginStep(solver);
  const bool has_transform = !IsIdentity(solver.world_matrix_);
  const DistanceConstraints& distance = *solver.distance_constraints_;
  const ShapeConstraints& shape = *solver.shape_constraints_;
  UberConstraints& uber = *solver.uber_constraints_;
  float* p = solver.positions_.data();
  float* lambdas = solver.lambdas_.data();
  if (solver.sliding_constraints_mode_ == 0)
    myo_test::OrderedSlidingScan(has_transform, solver.positions_, solver.world_matrix_, uber);
  for (uint32_t iteration = 0; iteration < solver.iterations_; ++iteration) {
    if (solver.sliding_constraints_mode_ == 1)
      myo_test::OrderedSlidingScan(has_transform, solver.positions_, solver.world_matrix_, uber);
    const float* w = distance.inverse_masses_.data();
    for (uint32_t e = 0; e < distance.RowCount(); ++e) {
      const uint32_t a = distance.edge_vertices_a_[e], b = distance.edge_vertices_b_[e];
      SolveDistanceConstraint(distance.lambda_base_ + e, a, b, w[a], w[b], solver.compliance_,
                              distance.rest_lengths_[e], distance.rest_length_multiplier_,
                              std::min(1.0f, distance.compression_weights_[e] * distance.compression_multiplier_),
                              std::min(1.0f, distance.stretching_weights_[e] * distance.stretching_multiplier_), p,
                              lambdas);
    }
    for (uint32_t r = 0; r < shape.RowCount() && !shape.disabled_; ++r) {
      const uint32_t a = shape.first_points_[r], b = shape.centre_points_[r], c = shape.third_points_[r];
      const float* v = shape.inverse_masses_.data();
      SolveShapeConstraint(shape.lambda_base_ + r, a, b, c, v[a], v[b], v[c], shape.group_compliance_,
                           shape.rest_distances_[r], p, lambdas);
    }
    for (uint32_t i = 0; i < solver.point_count_; ++i) {
      const uint32_t* abc = &uber.triangle_vertices_[3 * i];
      SolveUberConstraint(uber.lambda_base_ + i, i, abc[0], abc[1], abc[2], uber.polygon_indices_[i],
                          uber.sliding_inactive_[i], uber.inverse_masses_[i], uber.hard_weights_[i],
                          uber.soft_weights_[i], uber.slide_weights_[i], solver.compliance_, uber.barycentric_u_[i],
                          uber.barycentric_v_[i], uber.surface_distances_[i], has_transform, solver.world_matrix_,
                          solver.world_matrix_inverse_, uber.reference_positions_.data(),
                          uber.polygon_normals_.data(), uber.local_offsets_.data(), uber.sliding_points_.data(), p,
                          lambdas);
    }
  }
  EndStep(solver);
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

}  // namespace

TEST(SkinAssemblyTest, LaysOutRowsBlocksAndWeights) {
  SkinSetupOptions options;
  options.cells = 4;
  options.shape_preservation = 0.5f;
  options.thread_count = 3;
  SkinScene scene;
  scene.maps.SetAll("massList", "mass", 0, std::vector<float>(25, 2.0f));
  Assemble(options, scene);
  const SkinSolver& solver = scene.solver;

  EXPECT_NEAR(solver.mesh_measure_, 100.0f, 1e-3f);

  // lambdas_: distance rows, then shape rows, then one Uber row per point.
  const uint32_t n = 25, edges = scene.mesh.EdgeCount();
  const uint32_t shape_rows = solver.shape_constraints_->RowCount();
  EXPECT_EQ(solver.point_count_, n);
  EXPECT_GT(shape_rows, 0u);
  EXPECT_EQ(solver.distance_constraints_->RowCount(), edges);
  EXPECT_EQ(solver.distance_constraints_->lambda_base_, 0u);
  EXPECT_EQ(solver.shape_constraints_->lambda_base_, edges);
  EXPECT_EQ(solver.uber_constraints_->lambda_base_, edges + shape_rows);
  EXPECT_EQ(solver.lambdas_, std::vector<float>(edges + shape_rows + n, 0.0f));

  EXPECT_EQ(solver.point_blocks_.thread_block_sizes_, (std::vector<uint32_t>{9, 8, 8}));

  // Masses of 2: inverse masses 0.5, shape weights the map over the mass.
  EXPECT_EQ(solver.masses_, std::vector<float>(n, 2.0f));
  EXPECT_EQ(solver.distance_constraints_->inverse_masses_, std::vector<float>(n, 0.5f));
  EXPECT_EQ(solver.uber_constraints_->inverse_masses_, std::vector<float>(n, 0.5f));
  EXPECT_EQ(solver.shape_constraints_->inverse_masses_, std::vector<float>(n, 0.25f));
}

TEST(SkinAssemblyTest, ResistanceMapsAreClampedAndMassesFloored) {
  myo_test::LogCapture capture;
  SkinSetupOptions options;
  options.cells = 2;
  SkinScene scene;
  std::vector<float> masses(9, 1.0f);
  masses[2] = 0.0f;
  masses[5] = -3.0f;
  scene.maps.SetAll("massList", "mass", 0, masses);
  std::vector<float> compression(9, 1.5f);
  compression[0] = -1.0f;
  scene.maps.SetAll("compressionResistanceList", "compressionResistance", 0, compression);
  Assemble(options, scene);

  EXPECT_EQ(capture.Count("[MyoForge][Warning] Mass values lower than 1e-06 are not supported by the Simshape "
                          "solver. Non supported mass values are replaced with 1e-06 minimum mass values."),
            1u);
  EXPECT_EQ(scene.node.masses_map_[2], 0.000001f);
  EXPECT_EQ(scene.node.masses_map_[5], 0.000001f);
  EXPECT_EQ(scene.node.compression_map_[0], 0.0f);
  EXPECT_EQ(scene.node.compression_map_[1], 1.0f);
  // The edges of point 0 mean 0 with 1.
  const DistanceConstraints& distance = *scene.solver.distance_constraints_;
  for (uint32_t e = 0; e < distance.RowCount(); ++e) {
    const bool touches_0 = distance.edge_vertices_a_[e] == 0 || distance.edge_vertices_b_[e] == 0;
    EXPECT_EQ(distance.compression_weights_[e], touches_0 ? 0.5f : 1.0f) << "edge " << e;
  }
}

TEST(SkinAssemblyTest, OnlyAFirstBuildShowsProgress) {
  ProgressHost host;
  SkinScene scene;
  std::string error;
  ASSERT_TRUE(myo_scenes::AssembleSkin(SkinSetupOptions{}, scene, error)) << error;  // builds meshes and maps
  SkinAssemblyInputs inputs;
  inputs.node_name = "skin1";
  inputs.progress = &host;
  inputs.reference_mesh = &scene.reference_mesh;

  SkinSolver fresh;
  SkinNodeState node;
  ASSERT_TRUE(InitSkinData(scene.mesh, scene.maps, inputs, node, fresh));
  const int n = static_cast<int>(scene.mesh.PointCount());
  EXPECT_EQ(host.begun_count, n + 4);
  EXPECT_EQ(host.advances, n + 4);
  EXPECT_EQ(host.ends, 1);
  EXPECT_EQ(host.status, "[MyoForge] Initializing MyoSkin...");

  // A reset that keeps the simulated points: no progress, the points stay.
  fresh.positions_[1] += 0.25f;
  const std::vector<float> carried = fresh.positions_;
  inputs.read_points = false;
  ASSERT_TRUE(InitSkinData(scene.mesh, scene.maps, inputs, node, fresh));
  EXPECT_EQ(host.advances, n + 4);
  EXPECT_EQ(fresh.positions_, carried);
  EXPECT_EQ(fresh.previous_positions_, std::vector<float>(scene.mesh.points));
}

TEST(SkinMassWeightsTest, WrongSizesKeepTheOldWeights) {
  myo_test::LogCapture capture;
  SkinScene scene;
  SkinSetupOptions options;
  options.cells = 2;
  Assemble(options, scene);
  SkinSolver& solver = scene.solver;
  solver.masses_.assign(9, 4.0f);
  std::vector<float> shape_map(9, 0.5f);
  shape_map[3] = 0.0f;
  ApplyMassesToWeights(solver, shape_map);
  EXPECT_EQ(solver.distance_constraints_->inverse_masses_, std::vector<float>(9, 0.25f));
  EXPECT_EQ(solver.uber_constraints_->inverse_masses_, std::vector<float>(9, 0.25f));
  EXPECT_EQ(solver.shape_constraints_->inverse_masses_[0], 0.125f);
  EXPECT_EQ(solver.shape_constraints_->inverse_masses_[3], 0.0f);

  solver.masses_.assign(9, 1.0f);
  ApplyMassesToWeights(solver, std::vector<float>(8, 0.5f));
  EXPECT_EQ(capture.Count("[MyoForge][Debug] Could not apply masses to weights because of incorrect weight sizes."),
            1u);
  EXPECT_EQ(solver.distance_constraints_->inverse_masses_, std::vector<float>(9, 0.25f));
}

TEST(SkinStepTest, ASkinAtRestStaysAtRest) {
  SkinSetupOptions options;
  options.shape_preservation = 1.0f;
  options.soft = 0.3f;
  options.hard = 0.7f;
  SkinScene scene;
  Assemble(options, scene);
  myo_scenes::SkinFrameSettings frame;
  frame.gravity[1] = 0.0f;
  myo_scenes::ApplySkinFrame(frame, IdentityMatrix(), scene);
  for (int step = 0; step < 3; ++step) StepSkin(scene.solver);

  const SkinSolver& solver = scene.solver;
  for (std::size_t k = 0; k < solver.positions_.size(); ++k) {
    EXPECT_NEAR(solver.positions_[k], scene.mesh.points[k], 1e-5f) << k;
    EXPECT_NEAR(solver.velocities_[k], 0.0f, 1e-3f) << k;
  }
  EXPECT_EQ(solver.previous_positions_, solver.positions_);
  EXPECT_EQ(solver.lambdas_, std::vector<float>(solver.lambdas_.size(), 0.0f));
}

TEST(SkinStepTest, EachIterationEndsOnTheReference) {
  // The reference doubles in size under a stiff skin: the distance rows pull
  // the stretched skin together in the second iteration, and the Uber rows
  // that follow put every point back on its bound offset.
  SkinScene scene;
  Assemble(SkinSetupOptions{}, scene);
  myo_scenes::SkinFrameSettings frame;
  frame.gravity[1] = 0.0f;
  frame.stiffness = 1e9f;
  frame.iterations = 2;
  myo_scenes::ApplySkinFrame(frame, myo_test::Affine(0.0f, 0.0f, 0.0f, 2.0f), scene);
  StepSkin(scene.solver);

  const SkinSolver& solver = scene.solver;
  const uint32_t n = solver.point_count_;
  for (uint32_t i = 0; i < n; ++i) {
    const Vec3 rest = Load3(scene.mesh.points.data(), i);
    myo_test::ExpectVec(Load3(solver.positions_.data(), i), {2.0f * rest.x, rest.y, 2.0f * rest.z}, 1e-3f);
  }
  EXPECT_EQ(solver.lambdas_, std::vector<float>(solver.lambdas_.size(), 0.0f));
  EXPECT_EQ(solver.previous_positions_, solver.positions_);
  EXPECT_EQ(solver.previous_attenuation_matrix_, solver.attenuation_matrix_);
}

TEST(SkinStepTest, WithoutIterationsOnlyFastSearchesAndNoConstraintActs) {
  for (int32_t mode : {0, 1}) {
    SkinSetupOptions options;
    options.cells = 4;
    options.hard = 0.0f;
    options.slide = 1.0f;
    options.max_sliding_distance = 3.0f;
    SkinScene scene;
    Assemble(options, scene);
    myo_scenes::SkinFrameSettings frame;
    frame.iterations = 0;
    frame.sliding_mode = mode;
    frame.gravity[0] = 100.0f;
    frame.gravity[1] = 0.0f;
    myo_scenes::ApplySkinFrame(frame, IdentityMatrix(), scene);
    StepSkin(scene.solver);

    // Free flight: v = dt g, x += dt v.
    const float dx = frame.dt * (frame.dt * 100.0f);
    const uint32_t centre = 12;  // interior point of the 5 x 5 grid, bound at x = 0
    const SkinSolver& solver = scene.solver;
    EXPECT_EQ(solver.positions_[3 * centre], scene.mesh.points[3 * centre] + dx);
    EXPECT_EQ(solver.positions_[3 * centre + 1], scene.mesh.points[3 * centre + 1]);
    // Fast searched once, after the prediction; Quality never did.
    const float sliding_x = solver.uber_constraints_->sliding_points_[3 * centre];
    if (mode == 0) {
      EXPECT_NEAR(sliding_x, dx, 1e-6f);
    } else {
      EXPECT_EQ(sliding_x, 0.0f);
    }
  }
}

TEST(SkinStepTest, PointsAreBitIdenticalForAnyThreadCountAndRun) {
  const std::vector<float> one_thread = SimulatedPoints(2, 1);
  const std::vector<float> two_threads = SimulatedPoints(2, 2);
  const std::vector<float> again = SimulatedPoints(2, 2);
  const std::vector<float> four_blocks = SimulatedPoints(4, 2);
  ASSERT_FALSE(one_thread.empty());
  for (float value : one_thread) ASSERT_TRUE(std::isfinite(value));
  EXPECT_EQ(one_thread, two_threads);
  EXPECT_EQ(two_threads, again);
  EXPECT_EQ(one_thread, four_blocks);

  // The scene does move: the skin is not simply where it started.
  SkinScene rest;
  SkinSetupOptions options;
  options.cells = 30;
  Assemble(options, rest);
  EXPECT_NE(one_thread, rest.mesh.points);
}

// StepSkin with its lanes, schedules, bounded search and side-by-side search
// against the plain step: the same bits in Fast and in Quality, with a skin
// world matrix, on two threads, over a grid with more rows than one window
// of the schedules and a reference that turns and moves.
TEST(SkinStepTest, MatchesTheStraightforwardStepBitForBit) {
  for (int32_t mode : {0, 1}) {
    SkinSetupOptions options;
    options.cells = 50;
    options.hard = 0.5f;
    options.soft = 0.2f;
    options.slide = 0.3f;
    options.shape_preservation = 0.5f;
    options.max_sliding_distance = 0.45f;
    options.thread_count = 2;
    SkinScene fast, plain;
    Assemble(options, fast);
    Assemble(options, plain);
    ASSERT_GT(fast.solver.distance_constraints_->RowCount(), kRowScheduleWindow);
    ASSERT_GT(fast.solver.shape_constraints_->RowCount(), kRowScheduleWindow);
    const Matrix world = myo_test::RotationZ(0.2f, {0.3f, -0.1f, 0.2f});
    for (SkinSolver* solver : {&fast.solver, &plain.solver}) {
      solver->world_matrix_ = world;
      solver->world_matrix_inverse_ = InvertMatrix(world);
    }
    const int saved = omp_get_max_threads();
    omp_set_num_threads(2);
    myo_scenes::SkinFrameSettings frame;
    frame.sliding_mode = mode;
    frame.iterations = 3;
    for (int f = 1; f <= 3; ++f) {
      const Matrix reference = myo_test::RotationZ(0.04f * f, {0.1f * f, -0.05f * f, 0.0f});
      myo_scenes::ApplySkinFrame(frame, reference, fast);
      myo_scenes::ApplySkinFrame(frame, reference, plain);
      StepSkin(fast.solver);
      StraightforwardStep(plain.solver);
    }
    omp_set_num_threads(saved);
    EXPECT_TRUE(SameBits(fast.solver.positions_, plain.solver.positions_)) << "mode " << mode;
    EXPECT_TRUE(SameBits(fast.solver.velocities_, plain.solver.velocities_)) << "mode " << mode;
    EXPECT_TRUE(
        SameBits(fast.solver.uber_constraints_->sliding_points_, plain.solver.uber_constraints_->sliding_points_));
    EXPECT_EQ(fast.solver.uber_constraints_->sliding_inactive_, plain.solver.uber_constraints_->sliding_inactive_);
    EXPECT_NE(fast.solver.positions_, fast.mesh.points);  // the skin did move
  }
}

TEST(SkinStepTest, AStopRequestEndsTheStepBeforeItsNextIteration) {
  SkinSetupOptions options;
  options.cells = 4;
  SkinScene stopped, free_fall;
  for (SkinScene* scene : {&stopped, &free_fall}) {
    Assemble(options, *scene);
    myo_scenes::SkinFrameSettings frame;
    frame.iterations = scene == &free_fall ? 0 : 1000;
    frame.sliding_mode = 1;  // Quality: no search outside the iterations
    myo_scenes::ApplySkinFrame(frame, IdentityMatrix(), *scene);
  }
  RequestStop();
  StepSkin(stopped.solver);
  ClearStopRequest();
  StepSkin(free_fall.solver);
  EXPECT_EQ(stopped.solver.positions_, free_fall.solver.positions_);
}
