// Normalisation of the weights of tables over several sets, and the repair of
// the painted maps that goes with it.

#include <gtest/gtest.h>
#include <omp.h>

#include <cstring>
#include <random>
#include <vector>

#include "core/kernels/constraint_weights.h"
#include "core/maps/map_store.h"
#include "support/log_capture.h"

using namespace myo_core;

namespace {

const char kMessage[] = "Weights of the test sets were normalized.";

std::vector<float> ReadBack(const MapStore& maps, uint32_t index, uint32_t count) {
  std::vector<float> values;
  maps.ReadFloats("testList", "test", index, count, -1.0f, values);
  return values;
}

}  // namespace

TEST(NormalizeWeightsTest, SumsAboveOneAreScaledBackOthersStayAndPartialSetsAreRefused) {
  // Two sets over three points, set-major.
  std::vector<float> weights = {0.8f, 0.4f, 0.0f,   // set 0
                                0.8f, 0.4f, 1.0f};  // set 1
  EXPECT_TRUE(NormalizeWeights(weights, 3));
  EXPECT_EQ(weights, (std::vector<float>{0.5f, 0.4f, 0.0f, 0.5f, 0.4f, 1.0f}));

  // A sum of exactly 1, or over it by no more than 1e-6, is left alone.
  std::vector<float> within = {0.5f, 0.25f, 0.5f, 0.75f + 0.0000005f};
  const std::vector<float> before = within;
  EXPECT_FALSE(NormalizeWeights(within, 2));
  EXPECT_EQ(within, before);

  // Arrays that hold no whole set are refused.
  weights = {2.0f, 2.0f, 2.0f};
  EXPECT_FALSE(NormalizeWeights(weights, 0));
  EXPECT_FALSE(NormalizeWeights(weights, 2));
  EXPECT_EQ(weights, std::vector<float>(3, 2.0f));
  // One set alone is normalised too: a single weight above 1 becomes 1.
  EXPECT_TRUE(NormalizeWeights(weights, 3));
  EXPECT_EQ(weights, std::vector<float>(3, 1.0f));
}

TEST(NormalizeWeightsTest, ResultDoesNotDependOnTheThreadCount) {
  const uint32_t n = 50000, sets = 3;
  std::mt19937 random(7);
  std::uniform_real_distribution<float> value(0.0f, 0.7f);
  std::vector<float> weights(n * sets);
  for (float& w : weights) w = value(random);

  const int threads = omp_get_max_threads();
  std::vector<float> one = weights, two = weights;
  omp_set_num_threads(1);
  const bool changed_one = NormalizeWeights(one, n);
  omp_set_num_threads(2);
  const bool changed_two = NormalizeWeights(two, n);
  omp_set_num_threads(threads);

  EXPECT_TRUE(changed_one);
  EXPECT_EQ(changed_one, changed_two);
  EXPECT_EQ(std::memcmp(one.data(), two.data(), one.size() * sizeof(float)), 0);
  // Every point now sums to at most 1 (up to the rounding of the division).
  for (uint32_t i = 0; i < n; ++i) {
    const float sum = one[i] + one[n + i] + one[2 * n + i];
    ASSERT_LE(sum, 1.0f + 1e-6f) << "point " << i;
  }
}

TEST(ConsolidateConstraintWeightsTest, RepairedWeightsAreWrittenBackAtTheSetIndicesWithOneWarning) {
  MapStore maps;
  maps.SetAll("testList", "test", 2, {0.8f, 0.1f});
  maps.SetAll("testList", "test", 5, {0.8f, 0.2f});
  std::vector<float> weights = {0.8f, 0.1f, 0.8f, 0.2f};
  myo_test::LogCapture log;
  ConsolidateConstraintWeights(kMessage, {2, 5}, 2, maps, "testList", "test", weights);

  EXPECT_EQ(log.Count(std::string("[MyoForge][Warning] ") + kMessage), 1u);
  EXPECT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(weights, (std::vector<float>{0.5f, 0.1f, 0.5f, 0.2f}));
  EXPECT_EQ(ReadBack(maps, 2, 2), (std::vector<float>{0.5f, 0.1f}));
  EXPECT_EQ(ReadBack(maps, 5, 2), (std::vector<float>{0.5f, 0.2f}));
  // Nothing was written to the elements between the sets.
  EXPECT_EQ(maps.ElementCount("testList", "test", 3), 0u);
}

TEST(ConsolidateConstraintWeightsTest, WeightsWithinBoundsAreNeitherLoggedNorWritten) {
  MapStore maps;
  maps.SetAll("testList", "test", 0, {0.4f});  // one element of two: the map is sparse
  std::vector<float> weights = {0.4f, 0.0f, 0.4f, 1.0f};
  myo_test::LogCapture log;
  ConsolidateConstraintWeights(kMessage, {0, 1}, 2, maps, "testList", "test", weights);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(maps.ElementCount("testList", "test", 0), 1u);
  EXPECT_EQ(maps.ElementCount("testList", "test", 1), 0u);
}
