#include "core/learning/patch_dataset.h"

#include <cmath>
#include <cstdlib>
#include <map>

namespace myo_core {

bool CheckVerticesMask(const std::vector<int32_t>& mask, int32_t vertex_count, std::string& error) {
  std::vector<bool> seen(static_cast<size_t>(std::max<int32_t>(vertex_count, 0)), false);
  for (size_t i = 0; i < mask.size(); ++i) {
    const int32_t index = mask[i];
    if (index < 0 || index >= vertex_count) {
      error = "The vertices mask holds the index " + std::to_string(index) + " (entry " + std::to_string(i) +
              "), outside the " + std::to_string(vertex_count) + " vertices of the neutral mesh.";
      return false;
    }
    if (seen[static_cast<size_t>(index)]) {
      error = "The vertices mask holds the vertex " + std::to_string(index) + " twice (entry " + std::to_string(i) +
              ").";
      return false;
    }
    seen[static_cast<size_t>(index)] = true;
  }
  return true;
}

std::vector<double> MaskedDisplacements(const std::vector<float>& neutral, const std::vector<float>& target,
                                        const std::vector<int32_t>& mask) {
  // Membership by a table rather than by searching the mask for every
  // vertex: the same rows, in linear time.
  const size_t vertex_count = neutral.size() / 3;
  std::vector<bool> masked(vertex_count, false);
  for (int32_t index : mask) masked[static_cast<size_t>(index)] = true;
  std::vector<double> displacements;
  displacements.reserve(mask.size() * 3);
  for (size_t v = 0; v < vertex_count; ++v) {
    if (!masked[v]) continue;
    for (size_t c = 0; c < 3; ++c)
      displacements.push_back(static_cast<double>(target[3 * v + c]) - static_cast<double>(neutral[3 * v + c]));
  }
  return displacements;
}

std::vector<KMeansPoint> BuildKMeansRows(const std::vector<std::vector<double>>& displacements, size_t row_count) {
  std::vector<KMeansPoint> rows(row_count);
  const int32_t dimensions = static_cast<int32_t>(3 * displacements.size());
  const int64_t count = static_cast<int64_t>(row_count);
#pragma omp parallel for schedule(static)
  for (int64_t i = 0; i < count; ++i) {
    KMeansPoint& row = rows[static_cast<size_t>(i)];
    row.id = static_cast<int32_t>(i);
    row.dimensions = dimensions;
    row.features.reserve(static_cast<size_t>(dimensions));
    for (const std::vector<double>& target : displacements)
      for (size_t c = 0; c < 3; ++c) row.features.push_back(target[3 * static_cast<size_t>(i) + c]);
  }
  return rows;
}

std::vector<std::array<double, 3>> PatchFibers(const std::vector<std::vector<double>>& displacements,
                                               const std::vector<int32_t>& cluster_ids) {
  std::map<int32_t, std::vector<size_t>> rows_by_cluster;
  for (size_t i = 0; i < cluster_ids.size(); ++i) rows_by_cluster[cluster_ids[i]].push_back(i);
  auto length = [](const std::array<double, 3>& v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); };

  std::vector<std::array<double, 3>> fibers;
  fibers.reserve(rows_by_cluster.size());
  for (const auto& entry : rows_by_cluster) {
    const std::vector<size_t>& rows = entry.second;
    std::array<double, 3> best = {0.0, 0.0, 0.0};
    for (const std::vector<double>& target : displacements) {
      std::array<double, 3> mean = {0.0, 0.0, 0.0};
      for (size_t row : rows)
        for (size_t c = 0; c < 3; ++c) mean[c] += target[3 * row + c];
      for (size_t c = 0; c < 3; ++c) mean[c] /= static_cast<double>(rows.size());
      if (length(mean) > length(best)) best = mean;
    }
    fibers.push_back(best);
  }
  return fibers;
}

std::vector<int32_t> PatchFileIds(int32_t vertex_count, const std::vector<int32_t>& mask,
                                  const std::vector<int32_t>& cluster_ids) {
  std::vector<int32_t> ids(static_cast<size_t>(std::max<int32_t>(vertex_count, 0)), -1);
  for (size_t i = 0; i < mask.size() && i < cluster_ids.size(); ++i) ids[static_cast<size_t>(mask[i])] = cluster_ids[i];
  return ids;
}

std::vector<float> PatchColors(int32_t vertex_count, const std::vector<int32_t>& mask,
                               const std::vector<int32_t>& cluster_ids, size_t cluster_count) {
  std::vector<float> palette(4 * cluster_count);
  for (size_t c = 0; c < cluster_count; ++c) {
    for (size_t channel = 0; channel < 3; ++channel)
      palette[4 * c + channel] = static_cast<float>(std::rand() % 32768) / 65534.0f + 0.5f;
    palette[4 * c + 3] = 1.0f;
  }
  std::vector<float> colors(4 * static_cast<size_t>(std::max<int32_t>(vertex_count, 0)), 1.0f);
  for (size_t i = 0; i < mask.size() && i < cluster_ids.size(); ++i) {
    const int32_t cluster = cluster_ids[i];
    if (cluster < 1 || static_cast<size_t>(cluster) > cluster_count) continue;
    for (size_t channel = 0; channel < 4; ++channel)
      colors[4 * static_cast<size_t>(mask[i]) + channel] = palette[4 * static_cast<size_t>(cluster - 1) + channel];
  }
  return colors;
}

}  // namespace myo_core
