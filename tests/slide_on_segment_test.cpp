// Slide on segment: a refused build, the kernel, the stage, and a muscle
// sliding on a bone that moves along its axis.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "core/kernels/slide_on_segment_constraints.h"
#include "core/maps/map_store.h"
#include "core/muscle/muscle_assembly.h"
#include "scenes/muscle_meshes.h"
#include "scenes/muscle_setup.h"
#include "support/test_geometry.h"

using namespace myo_core;
using namespace myo_scenes;
using myo_test::ExpectVec;

namespace {

// Quarter turn about x (row vectors): y goes to z, z to -y.
Matrix QuarterTurnAboutX(float x, float y, float z) {
  Matrix m = myo_test::Affine(x, y, z);
  m[5] = m[10] = 0.0f;
  m[6] = 1.0f;
  m[9] = -1.0f;
  return m;
}

// Segments over points given by the test, built with a world matrix and the
// row weights a mass of 1 gives.
struct SegmentBuild {
  SolverData solver;
  MapStore maps;
  SlideOnSegmentConstraints group;
  std::vector<float> weights;
  Matrix world = IdentityMatrix();

  SegmentBuild(std::vector<float> points, std::vector<Matrix> matrices) {
    solver.point_count_ = static_cast<uint32_t>(points.size() / 3);
    solver.positions_ = std::move(points);
    group.matrices_ = std::move(matrices);
  }
  void Build(const std::vector<std::vector<float>>& maps_by_index) {
    std::vector<uint32_t> indices;
    for (uint32_t k = 0; k < maps_by_index.size(); ++k) {
      maps.SetAll("slideOnSegmentConstraintsList", "slideOnSegmentConstraints", 2 * k, maps_by_index[k]);
      indices.push_back(2 * k);
    }
    BuildSlideOnSegmentConstraints(group, solver, indices, maps, weights, world);
    group.inverse_masses_ = weights;
  }
  void Run(float compliance) {
    solver.world_matrix_ = world;
    solver.world_matrix_inverse_ = InvertMatrix(world);
    PrepareSlideOnSegmentRows(group, solver.point_count_);
    SolveSlideOnSegmentRows(group, solver.point_count_, compliance, !IsIdentity(world), solver.world_matrix_,
                            solver.world_matrix_inverse_, solver.positions_.data(), solver.lambdas_.data());
  }
  Vec3 Point(uint32_t i) const { return Load3(solver.positions_.data(), i); }
};

}  // namespace

TEST(SlideOnSegmentBuildTest, MismatchedSegmentsBuildNothing) {
  SegmentBuild build({0.0f, 1.0f, 0.0f, 1.0f, 1.0f, 0.0f}, {myo_test::Affine(0.0f, 0.0f, 0.0f), myo_test::Affine(4.0f, 0.0f, 0.0f),
                                                            myo_test::Affine(0.0f, 0.0f, 0.0f), myo_test::Affine(0.0f, 4.0f, 0.0f)});
  // Two segments, one connected element: the tables are cleared, but the
  // multiplier rows were laid out before the count was checked.
  build.solver.lambdas_.clear();
  build.Build({{1.0f, 1.0f}});
  EXPECT_FALSE(build.group.initialised_);
  EXPECT_TRUE(build.group.matrices_.empty() && build.group.radii_.empty() && build.weights.empty());
  EXPECT_EQ(build.solver.lambdas_.size(), 4u);
  const std::vector<float> before = build.solver.positions_;
  build.Run(0.0f);
  EXPECT_EQ(build.solver.positions_, before);
}

TEST(SlideOnSegmentKernelTest, TheRootsRotationCarriesTheAngleAroundTheBone) {
  // Built with an unturned root; then the root turns a quarter about the bone.
  SegmentBuild build({2.0f, 1.0f, 0.0f, 2.0f, 0.0f, 1.0f, 2.0f, 0.0f, 0.0f},
                     {myo_test::Affine(0.0f, 0.0f, 0.0f), myo_test::Affine(4.0f, 0.0f, 0.0f)});
  build.Build({{1.0f, 1.0f, 1.0f}});
  build.group.matrices_[0] = QuarterTurnAboutX(0.0f, 0.0f, 0.0f);
  build.solver.positions_[6] = 3.0f;  // the point on the bone, pulled off it
  build.solver.positions_[7] = 0.5f;
  build.Run(0.0f);
  ExpectVec(build.Point(0), {2.0f, 0.0f, 1.0f}, 1e-6f);
  ExpectVec(build.Point(1), {2.0f, -1.0f, 0.0f}, 1e-6f);
  ExpectVec(build.Point(2), {3.0f, 0.0f, 0.0f}, 1e-6f);  // back on the bone where it projects
}

TEST(SlideOnSegmentKernelTest, SegmentEndsDegenerateSegmentsAndTurns) {
  // A table set by hand: reference +y, radius 2, one point, no compliance.
  std::vector<Matrix> matrices(2);
  const float reference[3] = {0.0f, 1.0f, 0.0f};
  float rotation[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  float closest[3] = {0.0f, 0.0f, 0.0f};
  auto solve = [&](Vec3 root, Vec3 tip, Vec3 point, float weight, float& lambda) {
    matrices = {myo_test::Affine(root.x, root.y, root.z), myo_test::Affine(tip.x, tip.y, tip.z)};
    float position[3] = {point.x, point.y, point.z};
    SolveSlideOnSegment(0, 0, 0, 0, weight, 0.0f, 2.0f, false, IdentityMatrix(), IdentityMatrix(), matrices.data(),
                        closest, reference, rotation, position, &lambda);
    return Load3(position, 0);
  };
  float lambda = 0.0f;
  // Beyond the tip: held at the stored direction around the tip; before the root, around the root.
  ExpectVec(solve({0, 0, 0}, {4, 0, 0}, {9, 3, 0}, 1.0f, lambda), {4.0f, 2.0f, 0.0f}, 1e-6f);
  ExpectVec(Load3(closest, 0), {4.0f, 0.0f, 0.0f}, 0.0f);
  EXPECT_NEAR(lambda, -std::sqrt(26.0f), 1e-5f);
  ExpectVec(solve({0, 0, 0}, {4, 0, 0}, {-3, 0, 1}, 1.0f, lambda), {0.0f, 2.0f, 0.0f}, 1e-6f);
  // A segment of no length: held around its one end.
  ExpectVec(solve({-1, 0, 3}, {-1, 0, 3}, {1, 4, 3}, 1.0f, lambda), {-1.0f, 2.0f, 3.0f}, 1e-6f);
  ExpectVec(Load3(closest, 0), {-1.0f, 0.0f, 3.0f}, 0.0f);
  // Half a turn of +y about the diagonal (1, 1, 0), of any length, gives +x.
  const float turn[4] = {3.0f, 3.0f, 0.0f, 3.14159265f};
  std::copy(turn, turn + 4, rotation);
  ExpectVec(solve({0, 0, 0}, {0, 0, 4}, {5, 5, 2}, 1.0f, lambda), {2.0f, 0.0f, 2.0f}, 1e-5f);
}

TEST(SlideOnSegmentRowsTest, TheStageGivesTheBitsOfTheKernelInTableOrder) {
  // Two segments over a ring of points; the bones have moved and turned since
  // rest, and the mesh has a world matrix.
  std::vector<float> points;
  for (int i = 0; i < 12; ++i) {
    const float a = 0.5f * static_cast<float>(i);
    points.insert(points.end(), {0.7f * static_cast<float>(i) - 2.0f, 1.5f * std::cos(a), 1.5f * std::sin(a)});
  }
  SegmentBuild build(points, {myo_test::Affine(-3.0f, 0.0f, 0.0f), myo_test::Affine(6.0f, 0.5f, 0.0f),
                              QuarterTurnAboutX(0.0f, -2.0f, 0.0f), myo_test::Affine(0.0f, 3.0f, 1.0f)});
  build.world = myo_test::Affine(0.25f, -0.5f, 1.0f);
  std::vector<float> second(12, 0.0f);
  std::fill(second.begin() + 6, second.end(), 0.25f);
  build.Build({std::vector<float>(12, 0.5f), second});
  build.group.matrices_[0] = QuarterTurnAboutX(-2.0f, 0.5f, 0.25f);
  build.group.matrices_[3] = myo_test::Affine(1.0f, 3.5f, 0.0f);

  SlideOnSegmentConstraints group = build.group;
  std::vector<float> positions = build.solver.positions_, lambdas = build.solver.lambdas_;
  for (uint32_t row = 0; row < 24; ++row)
    SolveSlideOnSegment(group.lambda_base_ + row, row % 12, row / 12, row, group.inverse_masses_[row], 0.01f,
                        group.radii_[row], true, build.world, InvertMatrix(build.world), group.matrices_.data(),
                        group.closest_points_.data(), group.reference_directions_.data(), group.rotations_.data(),
                        positions.data(), lambdas.data());
  build.Run(0.01f);
  ASSERT_NE(positions, points);
  EXPECT_EQ(std::memcmp(positions.data(), build.solver.positions_.data(), positions.size() * sizeof(float)), 0);
  EXPECT_EQ(std::memcmp(lambdas.data(), build.solver.lambdas_.data(), lambdas.size() * sizeof(float)), 0);
  EXPECT_EQ(std::memcmp(group.closest_points_.data(), build.group.closest_points_.data(), 72 * sizeof(float)), 0);
}

TEST(MusclePhysicsTest, MuscleSlidingOnABoneKeepsItsRadiusWhileTheBoneMovesAlongItsAxis) {
  MuscleScene scene;
  scene.mesh = myo_test::BuildMesh(MakeSpindle(12, 10, 20.0f, 3.0f));
  const uint32_t n = scene.mesh.PointCount();
  scene.maps.SetAll("slideOnSegmentConstraintsList", "slideOnSegmentConstraints", 3, std::vector<float>(n, 1.0f));
  MuscleAssemblyInputs inputs;
  inputs.warn = false;
  inputs.segment_indices = {3};
  inputs.segment_matrices = {myo_test::Affine(-30.0f, 0.0f, 0.0f), myo_test::Affine(30.0f, 0.0f, 0.0f)};
  InitializeSolver(scene.mesh, scene.maps, inputs, scene.node, scene.solver);
  MuscleSolver& solver = scene.solver;
  SlideOnSegmentConstraints& segment = *solver.slide_on_segment_constraints_;
  ASSERT_TRUE(segment.initialised_);
  FrameSettings frame;
  frame.stiffness = 1000000.0f;
  ApplyFrameSettings(frame, solver);

  auto centre_x = [&] {
    float sum = 0.0f;
    for (uint32_t i = 0; i < n; ++i) sum += solver.positions_[3 * i];
    return sum / static_cast<float>(n);
  };
  const float start_x = centre_x();
  float worst = 0.0f;
  for (int step = 1; step <= 50; ++step) {
    const float shift = 0.1f * static_cast<float>(step);
    segment.matrices_ = {myo_test::Affine(-30.0f + shift, 0.0f, 0.0f), myo_test::Affine(30.0f + shift, 0.0f, 0.0f)};
    Step(solver);
    for (uint32_t i = 0; i < n; ++i) {
      const Vec3 p = Load3(solver.positions_.data(), i);
      worst = std::fmax(worst, std::fabs(std::sqrt(p.y * p.y + p.z * p.z) - segment.radii_[i]));
    }
  }
  // Held against gravity at its radius, and free along the bone: the bone
  // moved by 5 and the muscle did not go with it.
  EXPECT_LT(worst, 0.01f);
  EXPECT_LT(std::fabs(centre_x() - start_x), 0.5f);
}
