// K-means of the learning: seeds drawn from rand() in order, the pass limit,
// exact convergence, and rows of uneven length.
// (Coinciding seeds, too few rows and the split of regions are seen through
// the learning's tests.) The library never seeds rand(); these tests
// seed it themselves so that each knows the sequence its run draws from.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "core/learning/kmeans.h"

namespace {

using myo_core::KMeans;
using myo_core::KMeansPoint;

std::vector<KMeansPoint> Rows(const std::vector<std::vector<double>>& features) {
  std::vector<KMeansPoint> rows(features.size());
  for (size_t i = 0; i < features.size(); ++i) {
    rows[i].id = static_cast<int32_t>(i);
    rows[i].features = features[i];
  }
  return rows;
}

// The rows a run seeded from `seed` takes, in seeding order: rand() modulo
// the row count, a row drawn before drawn again.
std::vector<int32_t> SeedRows(unsigned seed, int32_t row_count, int32_t k) {
  std::srand(seed);
  std::vector<int32_t> drawn;
  while (static_cast<int32_t>(drawn.size()) < k) {
    const int32_t r = std::rand() % row_count;
    bool again = false;
    for (int32_t d : drawn) again = again || d == r;
    if (!again) drawn.push_back(r);
  }
  return drawn;
}

struct Outcome {
  bool ok = false;
  std::vector<int32_t> ids;
  std::vector<std::array<double, 3>> centroids;
  int32_t passes = 0;
  std::string error;
};

Outcome RunFrom(unsigned seed, std::vector<KMeansPoint> rows, int32_t k, int32_t limit) {
  std::srand(seed);
  KMeans kmeans(k, limit);
  Outcome outcome;
  outcome.ok = kmeans.Run(rows, outcome.ids, outcome.centroids, outcome.error);
  outcome.passes = kmeans.passes();
  return outcome;
}

TEST(KMeans, EveryDistinctRowStaysOnItsOwnSeedAfterOnePassWhateverTheSeeds) {
  const auto rows = Rows({{0, 0, 0}, {5, 1, 0}, {-3, 2, 7}, {1, -4, 2}, {9, 9, 9}});
  for (unsigned seed : {1u, 12345u}) {
    const std::vector<int32_t> seeds = SeedRows(seed, 5, 5);
    const Outcome outcome = RunFrom(seed, rows, 5, 0);
    ASSERT_TRUE(outcome.ok) << outcome.error;
    EXPECT_EQ(outcome.passes, 1) << "seed " << seed;
    // The row drawn n-th founds cluster n and stays in it.
    for (size_t c = 0; c < 5; ++c) {
      const size_t row = static_cast<size_t>(seeds[c]);
      EXPECT_EQ(outcome.ids[row], static_cast<int32_t>(c + 1)) << "seed " << seed;
      EXPECT_EQ(outcome.centroids[c][0], rows[row].features[0]) << "seed " << seed;
    }
  }
}

TEST(KMeans, PassLimitAndCentroidsAtTheMeansOfTheirRows) {
  // Points on a line, so that a second pass would move rows between clusters.
  std::vector<std::vector<double>> features;
  for (int i = 0; i < 12; ++i) features.push_back({static_cast<double>(i * i % 17), 0.0, 0.0});
  const auto rows = Rows(features);
  const Outcome one = RunFrom(99, rows, 3, 1);
  ASSERT_TRUE(one.ok) << one.error;
  EXPECT_EQ(one.passes, 1);
  std::vector<double> sums(3, 0.0), counts(3, 0.0);
  for (size_t i = 0; i < rows.size(); ++i) {
    sums[static_cast<size_t>(one.ids[i] - 1)] += features[i][0];
    counts[static_cast<size_t>(one.ids[i] - 1)] += 1.0;
  }
  for (size_t c = 0; c < 3; ++c) EXPECT_DOUBLE_EQ(one.centroids[c][0], sums[c] / counts[c]);
  EXPECT_GE(RunFrom(99, rows, 3, 0).passes, 2);
  EXPECT_EQ(RunFrom(99, rows, 3, 2).passes, 2);
}

// Too few rows for the seeds is refused through the learning's own tests.
TEST(KMeans, RefusesRowsOfUnevenLength) {
  const Outcome uneven = RunFrom(1, Rows({{0, 0, 0}, {1, 0}}), 1, 0);
  EXPECT_FALSE(uneven.ok);
  EXPECT_NE(uneven.error.find("row 1 has 2 features"), std::string::npos) << uneven.error;
  EXPECT_TRUE(RunFrom(1, {}, 3, 0).ok);
}

}  // namespace
