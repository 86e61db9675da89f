#pragma once
// K-means clustering of the learning: rows of 64-bit features grouped into K
// clusters. Seeds are rows drawn with the C library's rand(), which nothing
// here seeds: the first run in a process always draws the same rows, and a
// later run goes on in the same sequence.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

// One row of the dataset.
struct KMeansPoint {
  int32_t id = 0;          // row number, from 0
  int32_t cluster_id = 0;  // 1 to K; 0 until the first assignment, except for the seeds
  int32_t dimensions = 0;  // number of features
  std::vector<double> features;
};

struct KMeansCluster {
  int32_t id = 0;  // 1 to K, in order of seeding
  std::vector<double> centroid;
  // The rows of the current pass, by row id in row order. The rows
  // themselves stay in the dataset: copying their features into the
  // clusters at every pass would double the memory of a large mesh.
  std::vector<int32_t> points;
};

class KMeans {
 public:
  KMeans(int32_t k, int32_t max_iterations) : k(k), max_iterations(max_iterations) {}

  // Whether `row_count` rows give K distinct seeds: a seed is a row not drawn
  // before in the run, so with fewer rows (or fewer than rand() can reach)
  // the draw would never end.
  static bool CanSeed(int64_t row_count, int32_t k);

  // Clusters `rows`: seeds K distinct rows in turn (a row drawn before is
  // drawn again), then repeats passes of assignment to the nearest centroid
  // and centroid update until no row changes its cluster, or until the pass
  // limit when it is above 0 (a limit of L allows exactly L passes). A
  // cluster that loses all its rows keeps its centroid and is not reseeded.
  // `cluster_ids` receives each row's cluster id in row order, `centroids`
  // the first three centroid values of each cluster in id order (0 for a
  // dimension that does not exist). The rows' cluster ids are updated.
  //
  // No rows: returns true at once, outputs empty. Returns false, with one
  // message in `error` and nothing drawn, when K is not above 0, when the rows
  // cannot give K distinct seeds (CanSeed), or when a row's feature count is
  // not that of row 0.
  bool Run(std::vector<KMeansPoint>& rows, std::vector<int32_t>& cluster_ids,
           std::vector<std::array<double, 3>>& centroids, std::string& error);

  // The id of the cluster nearest to `row`: Euclidean distance over all
  // dimensions (the plain difference for one dimension); a tie goes to the
  // cluster first in the list, the lowest id.
  int32_t NearestClusterId(const KMeansPoint& row) const;

  // The number of passes of the last Run.
  int32_t passes() const { return passes_; }

  int32_t k = 0;
  int32_t max_iterations = 0;  // 0 or less: no limit
  int32_t dimensions = 0;
  int32_t total_points = 0;
  std::vector<KMeansCluster> clusters;

 private:
  void Seed(std::vector<KMeansPoint>& rows);
  bool AssignRows(std::vector<KMeansPoint>& rows) const;
  void UpdateCentroids(const std::vector<KMeansPoint>& rows);

  int32_t passes_ = 0;
};

}  // namespace myo_core
