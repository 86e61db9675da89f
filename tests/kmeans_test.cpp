// K-means of the learning: seeds drawn from rand() in order, the pass limit,
// exact convergence, ties to the lowest id, and the refusal of input that
// cannot give K seeds. (Coinciding seeds leaving a cluster empty are seen
// through the learning's file.) The library never seeds rand(); these tests
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

TEST(KMeans, TwoRegionsMovingApartAreSplitWhateverTheSeeds) {
  std::vector<std::vector<double>> features;
  for (int i = 0; i < 40; ++i) {
    const double wobble = 0.01 * (i % 7);
    if (i < 20)
      features.push_back({wobble, 1.0 + wobble, 0.0, 0.0, 0.5, wobble});
    else
      features.push_back({1.0, wobble, 0.0, -0.5, wobble, 0.0});
  }
  for (unsigned seed : {3u, 6u, 1000u}) {
    const Outcome outcome = RunFrom(seed, Rows(features), 2, 0);
    ASSERT_TRUE(outcome.ok) << outcome.error;
    for (size_t i = 0; i < 40; ++i) EXPECT_EQ(outcome.ids[i], outcome.ids[i < 20 ? 0 : 20]) << "seed " << seed;
    EXPECT_NE(outcome.ids[0], outcome.ids[20]) << "seed " << seed;
  }
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
}

TEST(KMeans, RefusesInputThatCannotGiveEverySeedARowOfItsOwn) {
  // Fewer rows than clusters would draw forever; the run says so instead.
  const Outcome outcome = RunFrom(1, Rows({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}), 4, 0);
  EXPECT_FALSE(outcome.ok);
  EXPECT_NE(outcome.error.find("Cannot learn 4 muscle patches from 3 vertices"), std::string::npos) << outcome.error;
  EXPECT_TRUE(outcome.ids.empty());
  EXPECT_TRUE(KMeans::CanSeed(3, 3));
  EXPECT_FALSE(KMeans::CanSeed(5, 0));

  const Outcome uneven = RunFrom(1, Rows({{0, 0, 0}, {1, 0}}), 1, 0);
  EXPECT_FALSE(uneven.ok);
  EXPECT_NE(uneven.error.find("row 1 has 2 features"), std::string::npos) << uneven.error;
  EXPECT_TRUE(RunFrom(1, {}, 3, 0).ok);
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
}

}  // namespace
