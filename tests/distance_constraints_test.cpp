#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/kernels/distance_constraints.h"
#include "scenes/muscle_meshes.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

// Two points on the x axis, a at 0 and b at `length`.
std::vector<float> EdgeAlongX(float length) { return {0.0f, 0.0f, 0.0f, length, 0.0f, 0.0f}; }

float EdgeLength(const std::vector<float>& p) {
  return std::sqrt((p[3] - p[0]) * (p[3] - p[0]) + (p[4] - p[1]) * (p[4] - p[1]) + (p[5] - p[2]) * (p[5] - p[2]));
}

}  // namespace

TEST(DistanceKernelTest, RigidRowRestoresTheRestLengthSymmetrically) {
  std::vector<float> p = EdgeAlongX(3.0f), lambdas{0.0f, 0.0f};
  SolveDistanceConstraint(1, 0, 1, 1.0f, 1.0f, 0.0f, 2.0f, 1.0f, 1.0f, 1.0f, p.data(), lambdas.data());
  EXPECT_FLOAT_EQ(p[0], 0.5f);
  EXPECT_FLOAT_EQ(p[3], 2.5f);
  EXPECT_FLOAT_EQ(lambdas[1], -0.5f);  // -C / (w_a + w_b)

  // The rest multiplier scales the target: 2 times 0.75 is 1.5.
  p = EdgeAlongX(3.0f);
  lambdas = {0.0f, 0.0f};
  SolveDistanceConstraint(0, 0, 1, 1.0f, 1.0f, 0.0f, 2.0f, 0.75f, 1.0f, 1.0f, p.data(), lambdas.data());
  EXPECT_NEAR(EdgeLength(p), 1.5f, 1e-6f);

  // Unequal weights share the correction in their ratio, along the edge.
  p = {1.0f, 1.0f, 1.0f, 1.0f, 5.0f, 1.0f};
  lambdas = {0.0f};
  SolveDistanceConstraint(0, 0, 1, 3.0f, 1.0f, 0.0f, 2.0f, 1.0f, 1.0f, 1.0f, p.data(), lambdas.data());
  EXPECT_FLOAT_EQ(p[1], 2.5f);
  EXPECT_FLOAT_EQ(p[4], 4.5f);
}

TEST(DistanceKernelTest, ResistanceScalesTheViolationByItsSign) {
  // Compressed edge (length 1, rest 2): the compression resistance applies.
  std::vector<float> p = EdgeAlongX(1.0f), lambdas{0.0f};
  SolveDistanceConstraint(0, 0, 1, 1.0f, 1.0f, 0.0f, 2.0f, 1.0f, 0.5f, 0.0f, p.data(), lambdas.data());
  EXPECT_NEAR(EdgeLength(p), 1.5f, 1e-6f);

  // Compression resistance 0 on a compressed edge: no push back, and with a
  // multiplier of 0 the delta is 0.
  p = EdgeAlongX(1.0f);
  lambdas = {0.0f};
  SolveDistanceConstraint(0, 0, 1, 1.0f, 1.0f, 0.5f, 2.0f, 1.0f, 0.0f, 1.0f, p.data(), lambdas.data());
  EXPECT_EQ(p, EdgeAlongX(1.0f));
  EXPECT_EQ(lambdas[0], 0.0f);

  // ... while an accumulated multiplier still acts through the compliance:
  // delta = (-m a) / (w + a).
  lambdas = {0.2f};
  SolveDistanceConstraint(0, 0, 1, 1.0f, 1.0f, 0.5f, 2.0f, 1.0f, 0.0f, 1.0f, p.data(), lambdas.data());
  const float delta = (-(0.2f * 0.5f)) / (2.0f + 0.5f);
  EXPECT_FLOAT_EQ(lambdas[0], 0.2f + delta);
  EXPECT_FLOAT_EQ(p[0], -delta);

  // Stretched edge: the stretching resistance applies, not the compression.
  p = EdgeAlongX(3.0f);
  lambdas = {0.0f};
  SolveDistanceConstraint(0, 0, 1, 1.0f, 1.0f, 0.0f, 2.0f, 1.0f, 1.0f, 0.25f, p.data(), lambdas.data());
  EXPECT_NEAR(EdgeLength(p), 2.75f, 1e-6f);
}

TEST(DistanceKernelTest, WeightGuards) {
  // Weights summing below 1e-6: nothing moves, the multiplier stays.
  std::vector<float> p = EdgeAlongX(3.0f), lambdas{0.0f};
  SolveDistanceConstraint(0, 0, 1, 4e-7f, 4e-7f, 0.0f, 2.0f, 1.0f, 1.0f, 1.0f, p.data(), lambdas.data());
  EXPECT_EQ(p, EdgeAlongX(3.0f));
  EXPECT_EQ(lambdas[0], 0.0f);

  // An end whose own weight is below 1e-6 stays; the other takes it all.
  SolveDistanceConstraint(0, 0, 1, 5e-7f, 1.0f, 0.0f, 2.0f, 1.0f, 1.0f, 1.0f, p.data(), lambdas.data());
  EXPECT_EQ(p[0], 0.0f);
  EXPECT_NEAR(p[3], 2.0f, 1e-5f);

  // Coincident points: no direction, so the correction cannot move them.
  std::vector<float> same{1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f};
  lambdas = {0.0f};
  SolveDistanceConstraint(0, 0, 1, 1.0f, 1.0f, 0.1f, 2.0f, 1.0f, 1.0f, 1.0f, same.data(), lambdas.data());
  EXPECT_EQ(same, std::vector<float>(6, 1.0f));
  EXPECT_FLOAT_EQ(lambdas[0], 2.0f / 0.1f);  // (-C) / a, with n zero
}

TEST(DistanceBuildTest, OneRowPerEdgeInIdOrder) {
  const std::vector<float> points{0, 0, 0, 3, 4, 0, 3, 0, 0};
  DistanceConstraints group;
  std::vector<float> lambdas(2, 7.0f);
  BuildDistanceConstraints(group, {1, 0, 2, 1}, points, {0.2f, 0.4f, 1.0f}, {1.0f, 0.0f, 0.5f}, lambdas);
  ASSERT_EQ(group.RowCount(), 2u);
  EXPECT_EQ(lambdas, (std::vector<float>{7.0f, 7.0f, 0.0f, 0.0f}));
  EXPECT_EQ(group.edge_vertices_a_, (std::vector<uint32_t>{1, 2}));
  EXPECT_EQ(group.edge_vertices_b_, (std::vector<uint32_t>{0, 1}));
  EXPECT_FLOAT_EQ(group.rest_lengths_[0], 5.0f);
  EXPECT_FLOAT_EQ(group.rest_lengths_[1], 4.0f);
  EXPECT_FLOAT_EQ(group.compression_weights_[0], 0.3f);
  EXPECT_FLOAT_EQ(group.compression_weights_[1], 0.7f);
  EXPECT_FLOAT_EQ(group.stretching_weights_[0], 0.5f);
  EXPECT_FLOAT_EQ(group.stretching_weights_[1], 0.25f);
}

TEST(DistanceRowsTest, ScheduledRowsGiveTheBitsOfTableOrder) {
  // A grid crumpled in a fixed pattern, with pinned and light points and
  // both resistances in play.
  const MeshData mesh = myo_test::BuildMesh(myo_scenes::MakeGrid(12, 9, 6.0f, 4.0f));
  const uint32_t n = mesh.PointCount();
  std::vector<float> compression(n), stretching(n);
  for (uint32_t i = 0; i < n; ++i) {
    compression[i] = static_cast<float>(i % 5) * 0.25f;
    stretching[i] = static_cast<float>(i % 3) * 0.5f;
  }
  DistanceConstraints group;
  std::vector<float> lambdas;
  BuildDistanceConstraints(group, mesh.edge_vertices, mesh.points, compression, stretching, lambdas);
  ASSERT_EQ(group.schedule_.size(), group.RowCount());
  for (uint32_t i = 0; i < n; ++i) group.inverse_masses_[i] = i % 7 == 0 ? 0.0f : 1.0f / (1.0f + (i % 4));
  group.rest_length_multiplier_ = 0.9f;
  group.compression_multiplier_ = 1.5f;
  group.stretching_multiplier_ = 0.8f;
  std::vector<float> start = mesh.points;
  for (std::size_t k = 0; k < start.size(); ++k) start[k] += 0.1f * std::sin(static_cast<float>(k) * 1.7f);

  // With and without the shape solver's attraction: an edge whose two ends
  // are both fully attracted is skipped, its multiplier left alone.
  std::vector<float> attraction(n);
  for (uint32_t i = 0; i < n; ++i) attraction[i] = i % 3 == 0 ? 1.0f : (i % 3 == 1 ? 0.5f : 1.5f);
  for (const float* pull : {static_cast<const float*>(nullptr), static_cast<const float*>(attraction.data())}) {
    std::vector<float> scheduled = start, scheduled_lambdas = lambdas;
    std::vector<float> table = start, table_lambdas = lambdas;
    uint32_t skipped = 0;
    const auto fully_attracted = [&](uint32_t a, uint32_t b) {
      const bool skip = pull != nullptr && pull[a] >= 1.0f && pull[b] >= 1.0f;
      skipped += skip ? 1 : 0;
      return skip;
    };
    for (int iteration = 0; iteration < 3; ++iteration) {
      SolveDistanceRows(group, 0.05f, scheduled.data(), scheduled_lambdas.data(), pull);
      myo_test::PlainDistanceRows(group, 0.05f, table.data(), table_lambdas.data(), fully_attracted);
    }
    EXPECT_NE(table, start);
    EXPECT_EQ(scheduled, table);
    EXPECT_EQ(scheduled_lambdas, table_lambdas);
    if (pull != nullptr) {
      EXPECT_GT(skipped, 30u);
    }
  }
}
