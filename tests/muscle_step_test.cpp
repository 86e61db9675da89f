// The muscle step as a whole, on assembled spindles.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "core/kernels/volume_constraint.h"
#include "core/solver/solver_stages.h"
#include "scenes/muscle_meshes.h"
#include "core/solver/stop_request.h"
#include "scenes/muscle_setup.h"
#include "support/solver_runs.h"

using namespace myo_core;
using namespace myo_scenes;

namespace {

MuscleScene& Assemble(MuscleScene& scene, const PolygonMesh& mesh, MuscleSetupOptions options = {}) {
  std::string error;
  EXPECT_TRUE(AssembleMuscle(mesh, options, scene, error)) << error;
  return scene;
}

float MaxDistanceFrom(const std::vector<float>& a, const std::vector<float>& b) {
  float worst = 0.0f;
  for (std::size_t k = 0; k < a.size(); ++k) worst = std::fmax(worst, std::fabs(a[k] - b[k]));
  return worst;
}

// Extent of the points along an axis.
float Extent(const std::vector<float>& points, int axis) {
  float low = points[axis], high = low;
  for (std::size_t k = axis; k < points.size(); k += 3) {
    low = std::fmin(low, points[k]);
    high = std::fmax(high, points[k]);
  }
  return high - low;
}

// The step of a muscle without attachments or targets, every group in table
// order on one thread.
void PlainStep(MuscleFamilySolver& solver, VolumeConstraint* volume) {
  BeginStep(solver);
  const EdgeConstraints& edges = *solver.edge_constraints_;
  for (uint32_t iteration = 0; iteration < solver.iterations_; ++iteration) {
    myo_test::PlainEdgeRows(edges, solver.compliance_, ClampRestActivation(edges.rest_activation_),
                            solver.positions_.data(), solver.lambdas_.data());
    myo_test::PlainShapeRows(*solver.shape_constraints_, solver.positions_.data(), solver.lambdas_.data());
    if (volume != nullptr) myo_test::PlainVolumeRow(*volume, solver.compliance_, solver.positions_, solver.lambdas_);
  }
  EndStep(solver);
}

}  // namespace

// Levels of rows over the threads, the volume's terms over the threads: the
// bits of the plain step for the muscle and the ribbon (no volume row) on any
// number of threads, built on those threads.
TEST(MuscleStepTest, MatchesThePlainStepBitForBitOnAnyThreadCount) {
  MuscleSetupOptions options;
  options.shape_preservation = 0.7f;
  options.tendon_ends = 1.0f;
  FrameSettings frame;
  frame.activation = 0.3f;
  frame.global_damping = 0.1f;
  frame.iterations = 4;
  for (bool with_volume : {true, false}) {
    for (int threads = 1; threads <= 4; ++threads) {
      SCOPED_TRACE(testing::Message() << (with_volume ? "muscle" : "ribbon") << ", threads " << threads);
      myo_test::ScopedLevelThreads team(threads);
      MuscleScene fast, plain;
      Assemble(fast, MakeCubeSphere(30, 4.0f), options);
      Assemble(plain, MakeCubeSphere(30, 4.0f), options);
      ASSERT_GT(fast.solver.volume_constraint_->triangles_.size() / 3, 8192u);  // the volume's threaded path
      for (int step = 0; step < 3; ++step) {
        ApplyFrameSettings(frame, fast.solver);
        ApplyFrameSettings(frame, plain.solver);
        StepMuscleFamily(fast.solver, with_volume ? fast.solver.volume_constraint_.get() : nullptr);
        PlainStep(plain.solver, with_volume ? plain.solver.volume_constraint_.get() : nullptr);
      }
      EXPECT_TRUE(myo_test::SameBits(fast.solver.positions_, plain.solver.positions_));
      EXPECT_TRUE(myo_test::SameBits(fast.solver.velocities_, plain.solver.velocities_));
      EXPECT_NE(fast.solver.positions_, fast.mesh.points);
      EXPECT_EQ(fast.solver.lambdas_, std::vector<float>(fast.solver.lambdas_.size(), 0.0f));
    }
  }
}

TEST(MuscleStepTest, AMeshAtRestStaysAtRest) {
  MuscleScene scene;
  MuscleSetupOptions options;
  options.shape_preservation = 1.0f;
  options.tendon_ends = 1.0f;
  Assemble(scene, MakeSpindle(10, 12, 10.0f, 2.0f), options);
  FrameSettings frame;
  frame.gravity_y = 0.0f;
  frame.global_damping = 0.5f;
  ApplyFrameSettings(frame, scene.solver);
  const std::vector<float> rest = scene.solver.positions_;
  for (int step = 0; step < 20; ++step) Step(scene.solver);
  EXPECT_LT(MaxDistanceFrom(rest, scene.solver.positions_), 1e-4f);
}

TEST(MuscleStepTest, ZeroIterationsIsAFreeFall) {
  MuscleScene scene;
  Assemble(scene, MakeSpindle(4, 6, 10.0f, 2.0f));
  FrameSettings frame;
  frame.iterations = 0;
  frame.dt = 0.5f;
  frame.gravity_y = -8.0f;
  ApplyFrameSettings(frame, scene.solver);
  const std::vector<float> rest = scene.solver.positions_;
  Step(scene.solver);
  for (uint32_t i = 0; i < scene.solver.point_count_; ++i) {
    EXPECT_FLOAT_EQ(scene.solver.positions_[3 * i + 1], rest[3 * i + 1] - 2.0f);
    EXPECT_FLOAT_EQ(scene.solver.velocities_[3 * i + 1], -4.0f);
  }
}

TEST(MusclePhysicsTest, HangingMuscleKeepsItsVolumeWithinOnePercent) {
  MuscleScene scene;
  Assemble(scene, MakeSpindleWithPoints(1000, 20.0f, 3.0f));
  MuscleSolver& solver = scene.solver;
  const PointHold hold(solver, EndPoints(scene.mesh.points));
  hold.Weigh(solver);
  FrameSettings frame;
  frame.iterations = 10;
  ApplyFrameSettings(frame, solver);
  const float rest = solver.volume_constraint_->rest_volume_;
  const std::vector<float> start = solver.positions_;
  float worst = 0.0f;
  for (int step = 0; step < 100; ++step) {
    Step(solver);
    hold.Restore(solver);
    const float volume = SixTimesVolume(solver.volume_constraint_->triangles_, solver.positions_.data());
    worst = std::fmax(worst, std::fabs(volume / rest - 1.0f));
  }
  EXPECT_LT(worst, 0.01f);
  // It did hang: the belly sagged under gravity.
  EXPECT_GT(MaxDistanceFrom(start, solver.positions_), 0.05f);
}

TEST(MusclePhysicsTest, ActivationShortensAlongTheFibersAndNotAcross) {
  // Tendons at both ends along x give fibers along x.
  MuscleScene scene;
  MuscleSetupOptions options;
  options.tendon_ends = 1.0f;
  Assemble(scene, MakeSpindle(16, 12, 20.0f, 3.0f), options);
  MuscleSolver& solver = scene.solver;
  const std::vector<float>& fibers = solver.edge_constraints_->edge_fibers_;
  float along = 0.0f;
  for (std::size_t e = 0; e < fibers.size() / 3; ++e) along += std::fabs(fibers[3 * e]);
  EXPECT_GT(along / (fibers.size() / 3), 0.6f);

  FrameSettings frame;
  frame.gravity_y = 0.0f;
  frame.activation = 0.5f;
  frame.volume_preservation = 0.0f;
  frame.global_damping = 1.0f;
  ApplyFrameSettings(frame, solver);
  const float length = Extent(solver.positions_, 0), width = Extent(solver.positions_, 1);
  for (int step = 0; step < 60; ++step) Step(solver);
  EXPECT_LT(Extent(solver.positions_, 0), 0.8f * length);
  EXPECT_NEAR(Extent(solver.positions_, 1), width, 0.1f * width);
  // Each step leaves its multipliers cleared and its positions recorded.
  for (float lambda : solver.lambdas_) ASSERT_EQ(lambda, 0.0f);
  EXPECT_EQ(solver.positions_, solver.previous_positions_);
}

TEST(MuscleRobustnessTest, NonFinitePointsDoNotCrashAssemblyOrStep) {
  PolygonMesh mesh = MakeSpindle(4, 6, 10.0f, 2.0f);
  mesh.points[4] = std::numeric_limits<float>::quiet_NaN();
  mesh.points[8] = std::numeric_limits<float>::infinity();
  MuscleScene scene;
  MuscleSetupOptions options;
  options.shape_preservation = 1.0f;
  options.tendon_ends = 1.0f;
  Assemble(scene, mesh, options);
  ApplyFrameSettings(FrameSettings{}, scene.solver);
  for (int step = 0; step < 3; ++step) Step(scene.solver);
  EXPECT_EQ(scene.solver.positions_.size(), mesh.points.size());
}

// A stop request, as a signal handler of the standalone host makes it, ends a
// step before its next iteration: with one pending, a step of a thousand
// iterations does what a step of none does. No request: iterations run.
TEST(MuscleStepTest, AStopRequestEndsTheStepBeforeItsNextIteration) {
  MuscleScene stopped, free_fall, running;
  for (MuscleScene* scene : {&stopped, &free_fall, &running}) {
    Assemble(*scene, MakeSpindle(4, 6, 10.0f, 2.0f), MuscleSetupOptions{0.5f});
    FrameSettings frame;
    frame.iterations = scene == &free_fall ? 0 : 1000;
    ApplyFrameSettings(frame, scene->solver);
  }
  RequestStop();
  Step(stopped.solver);
  ClearStopRequest();
  Step(free_fall.solver);
  Step(running.solver);
  EXPECT_EQ(stopped.solver.positions_, free_fall.solver.positions_);
  EXPECT_NE(running.solver.positions_, free_fall.solver.positions_);
}
