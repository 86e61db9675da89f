#include "core/learning/kmeans.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace myo_core {

bool KMeans::CanSeed(int64_t row_count, int32_t k) {
  // rand() % rows reaches every row only while rand() reaches every number
  // below the row count.
  const int64_t reachable = std::min<int64_t>(row_count, static_cast<int64_t>(RAND_MAX) + 1);
  return k > 0 && k <= reachable;
}

void KMeans::Seed(std::vector<KMeansPoint>& rows) {
  clusters.clear();
  clusters.reserve(static_cast<size_t>(k));
  std::vector<bool> drawn(rows.size(), false);
  for (int32_t id = 1; id <= k; ++id) {
    int32_t r = 0;
    do {
      r = std::rand() % total_points;
    } while (drawn[static_cast<size_t>(r)]);
    drawn[static_cast<size_t>(r)] = true;
    KMeansPoint& row = rows[static_cast<size_t>(r)];
    row.cluster_id = id;
    KMeansCluster cluster;
    cluster.id = id;
    cluster.centroid = row.features;
    cluster.points.push_back(r);
    clusters.push_back(std::move(cluster));
  }
}

int32_t KMeans::NearestClusterId(const KMeansPoint& row) const {
  auto distance = [&](const KMeansCluster& cluster) {
    if (dimensions == 1) return std::fabs(cluster.centroid[0] - row.features[0]);
    double sum = 0.0;
    for (int32_t d = 0; d < dimensions; ++d) {
      const double delta = cluster.centroid[static_cast<size_t>(d)] - row.features[static_cast<size_t>(d)];
      sum += delta * delta;
    }
    return std::sqrt(sum);
  };
  int32_t best_id = clusters.front().id;
  double best = distance(clusters.front());
  for (size_t c = 1; c < clusters.size(); ++c) {
    const double candidate = distance(clusters[c]);
    if (candidate < best) {
      best = candidate;
      best_id = clusters[c].id;
    }
  }
  return best_id;
}

bool KMeans::AssignRows(std::vector<KMeansPoint>& rows) const {
  bool converged = true;
  const int64_t count = static_cast<int64_t>(rows.size());
#pragma omp parallel for schedule(static) reduction(&& : converged)
  for (int64_t i = 0; i < count; ++i) {
    KMeansPoint& row = rows[static_cast<size_t>(i)];
    const int32_t nearest = NearestClusterId(row);
    if (nearest != row.cluster_id) {
      row.cluster_id = nearest;
      converged = false;
    }
  }
  return converged;
}

void KMeans::UpdateCentroids(const std::vector<KMeansPoint>& rows) {
  for (KMeansCluster& cluster : clusters) cluster.points.clear();
  for (const KMeansPoint& row : rows) clusters[static_cast<size_t>(row.cluster_id - 1)].points.push_back(row.id);
  // Each centroid value is summed in row order by one thread: this is the
  // one-thread result, and it stays the same for any number of threads. The
  // clusters are shared out among the threads instead.
  const int64_t cluster_count = static_cast<int64_t>(clusters.size());
#pragma omp parallel for schedule(dynamic, 1)
  for (int64_t c = 0; c < cluster_count; ++c) {
    KMeansCluster& cluster = clusters[static_cast<size_t>(c)];
    if (cluster.points.empty()) continue;  // an empty cluster keeps its centroid
    const double count = static_cast<double>(cluster.points.size());
    for (int32_t d = 0; d < dimensions; ++d) {
      double sum = 0.0;
      for (int32_t id : cluster.points) sum += rows[static_cast<size_t>(id)].features[static_cast<size_t>(d)];
      cluster.centroid[static_cast<size_t>(d)] = sum / count;
    }
  }
}

bool KMeans::Run(std::vector<KMeansPoint>& rows, std::vector<int32_t>& cluster_ids,
                 std::vector<std::array<double, 3>>& centroids, std::string& error) {
  cluster_ids.clear();
  centroids.clear();
  passes_ = 0;
  if (rows.empty()) return true;
  if (k <= 0) {
    error = "Cannot cluster into " + std::to_string(k) + " muscle patches: the number must be above 0.";
    return false;
  }
  if (!CanSeed(static_cast<int64_t>(rows.size()), k)) {
    error = "Cannot learn " + std::to_string(k) + " muscle patches from " + std::to_string(rows.size()) +
            " vertices: every patch needs a vertex of its own to start from.";
    return false;
  }
  const size_t feature_count = rows.front().features.size();
  for (size_t i = 0; i < rows.size(); ++i) {
    // Rows are addressed by their id when clusters collect them.
    if (rows[i].features.size() != feature_count || rows[i].id != static_cast<int32_t>(i)) {
      error = "Cannot cluster the vertices: row " + std::to_string(i) + " has " +
              std::to_string(rows[i].features.size()) + " features and id " + std::to_string(rows[i].id) +
              "; row 0 has " + std::to_string(feature_count) + " features, and each row's id must be its number.";
      return false;
    }
  }
  total_points = static_cast<int32_t>(rows.size());
  dimensions = static_cast<int32_t>(feature_count);
  for (KMeansPoint& row : rows) row.dimensions = dimensions;
  Seed(rows);

  int32_t pass = 1;
  for (;;) {
    const bool converged = AssignRows(rows);
    UpdateCentroids(rows);
    passes_ = pass;
    ++pass;
    if (max_iterations > 0 && pass > max_iterations) break;
    if (converged) break;
  }

  cluster_ids.reserve(rows.size());
  for (const KMeansPoint& row : rows) cluster_ids.push_back(row.cluster_id);
  centroids.resize(clusters.size());
  for (size_t c = 0; c < clusters.size(); ++c)
    for (size_t d = 0; d < 3; ++d) centroids[c][d] = d < clusters[c].centroid.size() ? clusters[c].centroid[d] : 0.0;
  return true;
}

}  // namespace myo_core
