// K-means of the learning: seeds drawn from rand() in order, the pass limit,
// exact convergence, ties to the lowest id, coinciding seeds leaving a
// cluster empty, and the refusal of input that cannot give K seeds. The
// library never seeds rand(); these tests seed it themselves so that each
// knows the sequence its run draws from.

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
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
  for (unsigned seed : {1u, 2u, 17u, 12345u}) {
    const std::vector<int32_t> seeds = SeedRows(seed, 5, 5);
    const Outcome outcome = RunFrom(seed, rows, 5, 0);
    ASSERT_TRUE(outcome.ok) << outcome.error;
    EXPECT_EQ(outcome.passes, 1) << "seed " << seed;
    // The row drawn n-th founds cluster n and stays in it.
    for (int32_t c = 0; c < 5; ++c) {
      EXPECT_EQ(outcome.ids[static_cast<size_t>(seeds[static_cast<size_t>(c)])], c + 1) << "seed " << seed;
      for (size_t d = 0; d < 3; ++d)
        EXPECT_EQ(outcome.centroids[static_cast<size_t>(c)][d], rows[static_cast<size_t>(seeds[static_cast<size_t>(c)])].features[d]);
    }
  }
}

TEST(KMeans, LimitOfOnePassLeavesRowsOnTheirNearestSeedAndCentroidsAtTheirMeans) {
  // Points on a line, so that a second pass would move rows between clusters.
  std::vector<std::vector<double>> features;
  for (int i = 0; i < 12; ++i) features.push_back({static_cast<double>(i * i % 17), 0.0, 0.0});
  const auto rows = Rows(features);
  const unsigned seed = 99;
  const std::vector<int32_t> seeds = SeedRows(seed, 12, 3);
  const Outcome one = RunFrom(seed, rows, 3, 1);
  ASSERT_TRUE(one.ok) << one.error;
  EXPECT_EQ(one.passes, 1);
  std::vector<double> sums(3, 0.0), counts(3, 0.0);
  for (size_t i = 0; i < rows.size(); ++i) {
    // Nearest seed by hand; the lower id wins a tie.
    int32_t best = 0;
    for (int32_t c = 1; c < 3; ++c) {
      const double here = std::abs(features[i][0] - features[static_cast<size_t>(seeds[static_cast<size_t>(c)])][0]);
      const double there = std::abs(features[i][0] - features[static_cast<size_t>(seeds[static_cast<size_t>(best)])][0]);
      if (here < there) best = c;
    }
    EXPECT_EQ(one.ids[i], best + 1) << "row " << i;
    sums[static_cast<size_t>(best)] += features[i][0];
    counts[static_cast<size_t>(best)] += 1.0;
  }
  for (size_t c = 0; c < 3; ++c) EXPECT_DOUBLE_EQ(one.centroids[c][0], sums[c] / counts[c]);

  const Outcome free_run = RunFrom(seed, rows, 3, 0);
  EXPECT_GE(free_run.passes, 2);
  const Outcome limit_two = RunFrom(seed, rows, 3, 2);
  EXPECT_EQ(limit_two.passes, 2);
}

TEST(KMeans, TwoRegionsMovingApartAreSplitWhateverTheSeeds) {
  // Twenty rows moving up, twenty moving sideways, each with a small spread.
  std::vector<std::vector<double>> features;
  for (int i = 0; i < 40; ++i) {
    const double wobble = 0.01 * (i % 7);
    if (i < 20)
      features.push_back({wobble, 1.0 + wobble, 0.0, 0.0, 0.5, wobble});
    else
      features.push_back({1.0, wobble, 0.0, -0.5, wobble, 0.0});
  }
  for (unsigned seed : {3u, 4u, 5u, 6u, 7u, 8u, 1000u}) {
    const Outcome outcome = RunFrom(seed, Rows(features), 2, 0);
    ASSERT_TRUE(outcome.ok) << outcome.error;
    for (int i = 1; i < 20; ++i) EXPECT_EQ(outcome.ids[static_cast<size_t>(i)], outcome.ids[0]) << "seed " << seed;
    for (int i = 21; i < 40; ++i) EXPECT_EQ(outcome.ids[static_cast<size_t>(i)], outcome.ids[20]) << "seed " << seed;
    EXPECT_NE(outcome.ids[0], outcome.ids[20]) << "seed " << seed;
  }
}

TEST(KMeans, CoincidingSeedsLeaveTheHigherClusterEmptyForGood) {
  // Six still rows and two moving alike: with two seeds among the still rows
  // they tie at every pass, the lower id takes all still rows, and nothing
  // reseeds the higher one.
  const auto rows = Rows({{0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {4, 4}, {4, 4}});
  unsigned seed = 1;
  std::vector<int32_t> seeds;
  for (;; ++seed) {
    seeds = SeedRows(seed, 8, 3);
    if ((seeds[0] < 6) + (seeds[1] < 6) + (seeds[2] < 6) == 2) break;
  }
  std::vector<int32_t> still_ids, moving_ids;
  for (int32_t c = 0; c < 3; ++c) (seeds[static_cast<size_t>(c)] < 6 ? still_ids : moving_ids).push_back(c + 1);
  const Outcome outcome = RunFrom(seed, rows, 3, 0);
  ASSERT_TRUE(outcome.ok) << outcome.error;
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(outcome.ids[i], still_ids[0]) << "seed " << seed;
  for (size_t i = 6; i < 8; ++i) EXPECT_EQ(outcome.ids[i], moving_ids[0]) << "seed " << seed;
  ASSERT_EQ(outcome.centroids.size(), 3u);
  const auto& empty = outcome.centroids[static_cast<size_t>(still_ids[1] - 1)];
  EXPECT_EQ(empty[0], 0.0);  // the seed's features, kept
  EXPECT_EQ(outcome.centroids[static_cast<size_t>(moving_ids[0] - 1)][1], 4.0);
  EXPECT_EQ(empty[2], 0.0);  // a dimension that does not exist
}

TEST(KMeans, NearestClusterTiesGoToTheLowestIdAndOneDimensionUsesTheDifference) {
  KMeans kmeans(3, 0);
  kmeans.dimensions = 2;
  for (int32_t id = 1; id <= 3; ++id) {
    myo_core::KMeansCluster cluster;
    cluster.id = id;
    kmeans.clusters.push_back(cluster);
  }
  kmeans.clusters[0].centroid = {2, 0};
  kmeans.clusters[1].centroid = {0, 2};
  kmeans.clusters[2].centroid = {-2, 0};
  KMeansPoint row;
  row.features = {0, 0};
  EXPECT_EQ(kmeans.NearestClusterId(row), 1);
  row.features = {-1.5, 0.2};
  EXPECT_EQ(kmeans.NearestClusterId(row), 3);
  row.features = {-1, 1};  // as near to 2 as to 3
  EXPECT_EQ(kmeans.NearestClusterId(row), 2);

  kmeans.dimensions = 1;
  kmeans.clusters[0].centroid = {-1};
  kmeans.clusters[1].centroid = {3};
  kmeans.clusters[2].centroid = {1.5};
  row.features = {1.8};
  EXPECT_EQ(kmeans.NearestClusterId(row), 3);
  row.features = {-7};
  EXPECT_EQ(kmeans.NearestClusterId(row), 1);
}

TEST(KMeans, RefusesInputThatCannotGiveEverySeedARowOfItsOwn) {
  // Fewer rows than clusters would draw forever; the run says so instead.
  const Outcome outcome = RunFrom(1, Rows({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}), 4, 0);
  EXPECT_FALSE(outcome.ok);
  EXPECT_EQ(outcome.error,
            "Cannot learn 4 muscle patches from 3 vertices: every patch needs a vertex of its own to start from.");
  EXPECT_TRUE(outcome.ids.empty());
  EXPECT_FALSE(KMeans::CanSeed(0, 1));
  EXPECT_TRUE(KMeans::CanSeed(3, 3));
  EXPECT_FALSE(KMeans::CanSeed(5, 0));

  const Outcome uneven = RunFrom(1, Rows({{0, 0, 0}, {1, 0}}), 1, 0);
  EXPECT_FALSE(uneven.ok);
  EXPECT_NE(uneven.error.find("row 1 has 2 features"), std::string::npos) << uneven.error;

  const Outcome none = RunFrom(1, {}, 3, 0);
  EXPECT_TRUE(none.ok);
  EXPECT_TRUE(none.ids.empty());
  EXPECT_TRUE(none.centroids.empty());
}

TEST(KMeans, ASecondRunInTheProcessGoesOnInTheRandomSequence) {
  const auto rows = Rows({{0}, {1}, {2}, {3}, {4}, {5}, {6}, {7}, {8}, {9}});
  std::srand(42);
  std::vector<int32_t> first_ids, second_ids;
  std::vector<std::array<double, 3>> centroids;
  std::string error;
  KMeans first(10, 0), second(10, 0);
  auto rows_one = rows, rows_two = rows;
  ASSERT_TRUE(first.Run(rows_one, first_ids, centroids, error));
  ASSERT_TRUE(second.Run(rows_two, second_ids, centroids, error));
  EXPECT_NE(first_ids, second_ids);
  // Both are permutations: every row on a seed of its own.
  EXPECT_EQ(std::set<int32_t>(first_ids.begin(), first_ids.end()).size(), 10u);
  EXPECT_EQ(std::set<int32_t>(second_ids.begin(), second_ids.end()).size(), 10u);
}

}  // namespace
