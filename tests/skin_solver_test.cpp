// The skin solver's build (rows, blocks, maps, masses) and its step against
// a plain sequential step.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "core/kernels/row_schedule.h"
#include "core/skin/skin_assembly.h"
#include "core/skin/skin_solver.h"
#include "core/solver/solver_stages.h"
#include "core/solver/stop_request.h"
#include "scenes/skin_setup.h"
#include "support/ordered_sliding_scan.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;
using myo_scenes::SkinScene;
using myo_scenes::SkinSetupOptions;
using myo_test::SameBits;

namespace {

void Assemble(const SkinSetupOptions& options, SkinScene& scene) {
  std::string error;
  ASSERT_TRUE(myo_scenes::AssembleSkin(options, scene, error)) << error;
}

SkinSetupOptions Small(uint32_t cells) {
  SkinSetupOptions options;
  options.cells = cells;
  return options;
}

// The step written the plain way, for comparing StepSkin with: each group in
// table order and point by point, the sliding search as an ordered scan of
// every candidate, nothing side by side.
void PlainStep(SkinSolver& solver) {
  BeginStep(solver);
  const bool has_transform = !IsIdentity(solver.world_matrix_);
  UberConstraints& uber = *solver.uber_constraints_;
  float* p = solver.positions_.data();
  float* lambdas = solver.lambdas_.data();
  if (solver.sliding_constraints_mode_ == 0)
    myo_test::OrderedSlidingScan(has_transform, solver.positions_, solver.world_matrix_, uber);
  for (uint32_t iteration = 0; iteration < solver.iterations_; ++iteration) {
    if (solver.sliding_constraints_mode_ == 1)
      myo_test::OrderedSlidingScan(has_transform, solver.positions_, solver.world_matrix_, uber);
    myo_test::PlainDistanceRows(*solver.distance_constraints_, solver.compliance_, p, lambdas,
                                [](uint32_t, uint32_t) { return false; });
    myo_test::PlainShapeRows(*solver.shape_constraints_, p, lambdas);
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

}  // namespace

TEST(SkinAssemblyTest, LaysOutRowsBlocksAndWeights) {
  SkinSetupOptions options = Small(4);
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
  EXPECT_GT(shape_rows, 0u);
  EXPECT_EQ(solver.shape_constraints_->lambda_base_, edges);
  EXPECT_EQ(solver.uber_constraints_->lambda_base_, edges + shape_rows);
  EXPECT_EQ(solver.lambdas_, std::vector<float>(edges + shape_rows + n, 0.0f));
  EXPECT_EQ(solver.point_blocks_.thread_block_sizes_, (std::vector<uint32_t>{9, 8, 8}));
  // The build ends with the masses of 2 in the weights.
  EXPECT_EQ(solver.uber_constraints_->inverse_masses_, std::vector<float>(n, 0.5f));
  EXPECT_EQ(solver.shape_constraints_->inverse_masses_, std::vector<float>(n, 0.25f));
}

TEST(SkinAssemblyTest, ResistanceMapsAreClamped) {
  SkinScene scene;
  std::vector<float> compression(9, 1.5f);
  compression[0] = -1.0f;
  scene.maps.SetAll("compressionResistanceList", "compressionResistance", 0, compression);
  Assemble(Small(2), scene);
  // Clamped to [0, 1]: the edges of point 0 mean 0 with 1.
  const DistanceConstraints& distance = *scene.solver.distance_constraints_;
  for (uint32_t e = 0; e < distance.RowCount(); ++e) {
    const bool touches_0 = distance.edge_vertices_a_[e] == 0 || distance.edge_vertices_b_[e] == 0;
    EXPECT_EQ(distance.compression_weights_[e], touches_0 ? 0.5f : 1.0f) << "edge " << e;
  }
}

// StepSkin with its lanes, schedules, levels over the threads and bounded
// search against the plain step: the same bits in Fast and in Quality, with
// and without iterations, on one and two threads and over two and four point
// blocks, with a skin world matrix, over a grid with more rows than one
// window of the schedules and a reference that turns and moves.
TEST(SkinStepTest, MatchesThePlainStepBitForBitOnAnyThreadCount) {
  struct Case {
    int32_t mode;
    uint32_t iterations;
    int threads;
    int32_t blocks;
  };
  for (const Case& c : {Case{0, 3, 2, 2}, Case{1, 3, 2, 2}, Case{1, 3, 1, 4}, Case{0, 0, 2, 2}, Case{1, 0, 2, 4}}) {
    SCOPED_TRACE(testing::Message() << "mode " << c.mode << ", iterations " << c.iterations << ", threads "
                                    << c.threads << ", blocks " << c.blocks);
    SkinSetupOptions options;
    options.cells = 50;
    options.hard = 0.5f;
    options.soft = 0.2f;
    options.slide = 0.3f;
    options.shape_preservation = 0.5f;
    options.max_sliding_distance = 0.45f;
    options.thread_count = c.blocks;
    // Built and stepped on the case's threads: windowed schedules on one,
    // whole-table levels shared out over the threads on more.
    myo_test::ScopedLevelThreads threads(c.threads);
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
    myo_scenes::SkinFrameSettings frame;
    frame.sliding_mode = c.mode;
    frame.iterations = c.iterations;
    for (int f = 1; f <= 3; ++f) {
      const Matrix reference = myo_test::RotationZ(0.04f * f, {0.1f * f, -0.05f * f, 0.0f});
      myo_scenes::ApplySkinFrame(frame, reference, fast);
      myo_scenes::ApplySkinFrame(frame, reference, plain);
      StepSkin(fast.solver);
      PlainStep(plain.solver);
    }
    const SkinSolver& s = fast.solver;
    EXPECT_TRUE(SameBits(s.positions_, plain.solver.positions_));
    EXPECT_TRUE(SameBits(s.velocities_, plain.solver.velocities_));
    EXPECT_TRUE(SameBits(s.uber_constraints_->sliding_points_, plain.solver.uber_constraints_->sliding_points_));
    EXPECT_EQ(s.uber_constraints_->sliding_inactive_, plain.solver.uber_constraints_->sliding_inactive_);
    // A step ends with its positions kept and every multiplier back at 0.
    EXPECT_TRUE(SameBits(s.previous_positions_, s.positions_));
    EXPECT_EQ(s.lambdas_, std::vector<float>(s.lambdas_.size(), 0.0f));
    EXPECT_NE(s.positions_, fast.mesh.points);  // the skin did move
  }
}

TEST(SkinStepTest, AStopRequestEndsTheStepBeforeItsNextIteration) {
  SkinScene stopped, free_fall;
  for (SkinScene* scene : {&stopped, &free_fall}) {
    Assemble(Small(4), *scene);
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
