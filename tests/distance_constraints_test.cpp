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

// A multiplier that a case does not check.
float any_lambda() { return std::nanf(""); }

}  // namespace

TEST(DistanceKernelTest, EachCaseMovesTheEndsWhereTheyBelong) {
  struct Case {
    const char* name;
    std::vector<float> start;
    float w_a, w_b, compliance, rest_multiplier, compression, stretching, lambda_in;
    std::vector<float> expected;  // the two points after one solve
    float lambda_out;
  };
  const float delta = (-(0.2f * 0.5f)) / (2.0f + 0.5f);  // (-m a) / (w + a), the rows below at rest 2
  const Case cases[] = {
      {"rigid, symmetric", {0, 0, 0, 3, 0, 0}, 1, 1, 0, 1, 1, 1, 0, {0.5f, 0, 0, 2.5f, 0, 0}, -0.5f},
      {"rest multiplier 0.75", {0, 0, 0, 3, 0, 0}, 1, 1, 0, 0.75f, 1, 1, 0, {0.75f, 0, 0, 2.25f, 0, 0}, -0.75f},
      {"weights 3 : 1", {1, 1, 1, 1, 5, 1}, 3, 1, 0, 1, 1, 1, 0, {1, 2.5f, 1, 1, 4.5f, 1}, -0.5f},
      {"compression resistance 0.5", {0, 0, 0, 1, 0, 0}, 1, 1, 0, 1, 0.5f, 0, 0, {-0.25f, 0, 0, 1.25f, 0, 0}, 0.25f},
      {"stretch resistance 0.25", {0, 0, 0, 3, 0, 0}, 1, 1, 0, 1, 1, 0.25f, 0, {0.125f, 0, 0, 2.875f, 0, 0}, -0.125f},
      // No compression resistance: no push back from a zero multiplier...
      {"no compression resistance", {0, 0, 0, 1, 0, 0}, 1, 1, 0.5f, 1, 0, 1, 0, {0, 0, 0, 1, 0, 0}, 0.0f},
      // ... while an accumulated one still acts through the compliance.
      {"accumulated multiplier", {0, 0, 0, 1, 0, 0}, 1, 1, 0.5f, 1, 0, 1, 0.2f, {-delta, 0, 0, 1 + delta, 0, 0},
       0.2f + delta},
      {"weights below 1e-6", {0, 0, 0, 3, 0, 0}, 4e-7f, 4e-7f, 0, 1, 1, 1, 0, {0, 0, 0, 3, 0, 0}, 0.0f},
      // An end whose own weight is below 1e-6 stays; the other takes it all.
      {"one end below 1e-6", {0, 0, 0, 3, 0, 0}, 5e-7f, 1, 0, 1, 1, 1, 0, {0, 0, 0, 2, 0, 0}, any_lambda()},
      // Coincident points: no direction, the multiplier is (-C) / a.
      {"coincident", {1, 1, 1, 1, 1, 1}, 1, 1, 0.1f, 1, 1, 1, 0, {1, 1, 1, 1, 1, 1}, 2.0f / 0.1f},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<float> p = c.start, lambdas = {0.0f, c.lambda_in};
    SolveDistanceConstraint(1, 0, 1, c.w_a, c.w_b, c.compliance, 2.0f, c.rest_multiplier, c.compression, c.stretching,
                            p.data(), lambdas.data());
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(p[k], c.expected[k], 1e-5f) << k;
    if (!std::isnan(c.lambda_out)) {
      EXPECT_FLOAT_EQ(lambdas[1], c.lambda_out);
    }
    EXPECT_EQ(lambdas[0], 0.0f);
  }
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
  PrepareDistanceRows(group);
  for (const float* pull : {static_cast<const float*>(nullptr), static_cast<const float*>(attraction.data())}) {
    std::vector<float> table = start, table_lambdas = lambdas;
    uint32_t skipped = 0;
    const auto fully_attracted = [&](uint32_t a, uint32_t b) {
      const bool skip = pull != nullptr && pull[a] >= 1.0f && pull[b] >= 1.0f;
      skipped += skip ? 1 : 0;
      return skip;
    };
    for (int iteration = 0; iteration < 3; ++iteration)
      myo_test::PlainDistanceRows(group, 0.05f, table.data(), table_lambdas.data(), fully_attracted);
    EXPECT_NE(table, start);
    if (pull != nullptr) {
      EXPECT_GT(skipped, 30u);
    }
    for (int threads = 1; threads <= 4; ++threads) {
      myo_test::ScopedLevelThreads team(threads);
      std::vector<float> scheduled = start, scheduled_lambdas = lambdas;
      for (int iteration = 0; iteration < 3; ++iteration)
        SolveDistanceRows(group, 0.05f, scheduled.data(), scheduled_lambdas.data(), pull);
      EXPECT_TRUE(myo_test::SameBits(scheduled, table)) << threads << " threads";
      EXPECT_TRUE(myo_test::SameBits(myo_test::InTableOrder(scheduled_lambdas, group.lambda_base_, group.schedule_),
                                     table_lambdas))
          << threads << " threads";
    }
  }
}
