// Attachments of points to animated matrices: kernel, stage, and the build
// refused. A muscle held at both ends by moving bones is run end to end with
// the muscle deformer.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/kernels/attachment_constraints.h"
#include "core/maps/map_store.h"
#include "support/test_geometry.h"

using namespace myo_core;
using myo_test::ExpectVec;

namespace {

// Solves one row of point 0 towards `matrix` with local position 0 unless given.
Vec3 Solve(Vec3 point, const Matrix& matrix, float weight, float compliance, bool hard, float& lambda,
           uint16_t flag = 0, const Matrix& world = IdentityMatrix(), Vec3 local = {0.0f, 0.0f, 0.0f}) {
  float position[3] = {point.x, point.y, point.z};
  const float local_position[3] = {local.x, local.y, local.z};
  SolveAttachment(0, 0, 0, flag, weight, compliance, !IsIdentity(world), hard, world, InvertMatrix(world), matrix,
                  local_position, position, &lambda);
  return Load3(position, 0);
}

}  // namespace

TEST(AttachmentKernelTest, HardRowsBlendSoftRowsAccumulateTheirMultiplier) {
  // Quarter turn about z, then (1, 2, 3): the local point (0.5, 0, 0) sits at (1, 2.5, 3).
  Matrix turned = myo_test::Affine(1.0f, 2.0f, 3.0f);
  turned[0] = turned[5] = 0.0f;
  turned[1] = 1.0f;
  turned[4] = -1.0f;
  const Matrix shifted = myo_test::Affine(1.0f, 0.0f, 0.0f);
  struct Case {
    const char* name;
    Vec3 point;
    const Matrix* matrix;
    float weight, compliance;
    bool hard;
    uint16_t flag;
    Vec3 local;
    float lambda_in;
    Vec3 expected;
    float lambda_out;
  };
  const Vec3 origin{0.0f, 0.0f, 0.0f}, half_x{0.5f, 0.0f, 0.0f};
  const Case cases[] = {
      // Hard rows blend by the map value and leave the multiplier.
      {"hard", {5, -1, 0.25f}, &turned, 1.0f, 0.5f, true, 0, half_x, 0.75f, {1, 2.5f, 3}, 0.75f},
      {"hard quarter", {5, -1, 0.25f}, &turned, 0.25f, 0.5f, true, 0, half_x, 0.75f, {4, -0.125f, 0.9375f}, 0.75f},
      // Rows below 1e-6 or flagged inert do nothing.
      {"soft below 1e-6", {4, 0, 0}, &turned, 0.0000009f, 0.5f, false, 0, origin, 0.75f, {4, 0, 0}, 0.75f},
      {"hard inert", {4, 0, 0}, &turned, 1.0f, 0.5f, true, 1, origin, 0.75f, {4, 0, 0}, 0.75f},
      // C = 2 against a weighted norm 1 and compliance 1: half the way, lambda
      // -1; then the multiplier balances the remaining C = 1 and nothing moves.
      {"soft first", {3, 0, 0}, &shifted, 1.0f, 1.0f, false, 0, origin, 0.0f, {2, 0, 0}, -1.0f},
      {"soft balanced", {2, 0, 0}, &shifted, 1.0f, 1.0f, false, 0, origin, -1.0f, {2, 0, 0}, -1.0f},
      // Without compliance the row lands on the target whatever the weight.
      {"soft rigid", {3, 0, 0}, &shifted, 0.5f, 0.0f, false, 0, origin, 0.0f, {1, 0, 0}, -4.0f},
      // On target: zero gradient, and the multiplier falls back to 0.
      {"soft on target", {1, 0, 0}, &shifted, 1.0f, 0.5f, false, 0, origin, 0.3f, {1, 0, 0}, 0.0f},
  };
  for (const Case& c : cases) {
    float lambda = c.lambda_in;
    ExpectVec(Solve(c.point, *c.matrix, c.weight, c.compliance, c.hard, lambda, c.flag, IdentityMatrix(), c.local),
              c.expected, 0.0f);
    EXPECT_EQ(lambda, c.lambda_out) << c.name;
  }
}

TEST(AttachmentRowsTest, RowsAreSetMajorWithTheirOwnMultipliers) {
  // Two attachments over three points; multipliers from row 4 on.
  AttachmentConstraints group;
  group.matrices_ = {myo_test::Affine(0.0f, 0.0f, 0.0f), myo_test::Affine(10.0f, 0.0f, 0.0f)};
  group.inverse_masses_ = {1.0f, 0.0f, 1.0f, 0.0f, 1.0f, 1.0f};
  group.row_flags_.assign(6, 0);
  group.local_positions_.assign(18, 0.0f);
  group.lambda_base_ = 4;
  std::vector<float> lambdas = {7.0f, 7.0f, 7.0f, 7.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 7.0f};
  std::vector<float> positions = {1.0f, 0.0f, 0.0f, 9.0f, 0.0f, 0.0f, 2.0f, 0.0f, 0.0f};
  const Matrix identity = IdentityMatrix();
  SolveAttachmentRows(group, 3, 0.0f, false, identity, identity, positions.data(), lambdas.data());
  // Point 2 went to attachment 0 first, then on to attachment 1.
  EXPECT_EQ(positions, (std::vector<float>{0.0f, 0.0f, 0.0f, 10.0f, 0.0f, 0.0f, 10.0f, 0.0f, 0.0f}));
  EXPECT_EQ(lambdas, (std::vector<float>{7.0f, 7.0f, 7.0f, 7.0f, -1.0f, 0.0f, -2.0f, 0.0f, -1.0f, -10.0f, 7.0f}));

  // The group's flag makes every row hard.
  group.hard_ = true;
  group.inverse_masses_ = {0.5f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  positions[0] = 4.0f;
  SolveAttachmentRows(group, 3, 0.0f, false, identity, identity, positions.data(), lambdas.data());
  EXPECT_EQ(positions[0], 2.0f);
  EXPECT_EQ(lambdas[4], -1.0f);
}

namespace {

// Three rest points lifted by 1 in z by the world matrix; attachments at
// (1, 0, 0) and scaled by 2.
struct AttachmentBuild {
  SolverData solver;
  MapStore maps;
  AttachmentConstraints group;
  std::vector<float> weights;

  AttachmentBuild() {
    solver.point_count_ = 3;
    solver.positions_ = {1.0f, 2.0f, 3.0f, -2.0f, 0.5f, 0.0f, 4.0f, 4.0f, -1.0f};
    solver.lambdas_ = {5.0f, 5.0f};
    group.matrices_ = {myo_test::Affine(1.0f, 0.0f, 0.0f), myo_test::Affine(0.0f, 0.0f, 0.0f, 2.0f)};
  }
  void Paint(uint32_t index, std::vector<float> values) {
    maps.SetAll("attachmentConstraintsList", "attachmentConstraints", index, values);
  }
  void Build(const std::vector<uint32_t>& set_indices) {
    BuildAttachmentConstraints(group, solver, set_indices, maps, weights, myo_test::Affine(0.0f, 0.0f, 1.0f));
  }
};

}  // namespace

TEST(AttachmentBuildTest, AMismatchedCountOrNoMatrixBuildsNothing) {
  AttachmentBuild build;
  build.Paint(0, {1.0f, 1.0f, 1.0f});
  build.Build({0, 1});
  ASSERT_EQ(build.group.local_positions_.size(), 18u);
  // Two matrices, one connected element: nothing is built, and the former
  // rows are gone too, since their multipliers are no longer in lambdas_
  // (rows left standing would index past it). No multiplier is added.
  // Likewise without matrices.
  build.solver.lambdas_ = {5.0f};
  for (const std::vector<uint32_t>& indices : {std::vector<uint32_t>{0}, std::vector<uint32_t>{}}) {
    if (indices.empty()) build.group.matrices_.clear();
    build.Build(indices);
    EXPECT_TRUE(build.group.local_positions_.empty() && build.group.row_flags_.empty());
    EXPECT_TRUE(build.group.inverse_masses_.empty() && build.weights.empty());
    EXPECT_EQ(build.solver.lambdas_, std::vector<float>{5.0f});
  }
}
