#include "core/kernels/constraint_weights.h"

#include <algorithm>

#include "core/log/logger.h"
#include "core/math/vec3.h"

namespace myo_core {

bool NormalizeWeights(std::vector<float>& weights, uint32_t point_count) {
  if (weights.empty() || point_count == 0 || weights.size() % point_count != 0) return false;
  const std::size_t n = point_count;
  const std::size_t sets = weights.size() / n;
  const int64_t points = static_cast<int64_t>(n);
  float* w = weights.data();
  bool changed = false;
#pragma omp parallel for schedule(static) reduction(|| : changed)
  for (int64_t i = 0; i < points; ++i) {
    float sum = 0.0f;
    for (std::size_t s = 0; s < sets; ++s) sum += w[s * n + i];
    if (sum - 1.0f > kEpsilon && sum >= kEpsilon) {
      for (std::size_t s = 0; s < sets; ++s) w[s * n + i] /= sum;
      changed = true;
    }
  }
  return changed;
}

void ConsolidateConstraintWeights(const std::string& message, const std::vector<uint32_t>& set_indices,
                                  uint32_t point_count, MapPort& maps, const std::string& list,
                                  const std::string& child, std::vector<float>& weights) {
  if (!NormalizeWeights(weights, point_count)) return;
  LogWarning(message);
  const std::size_t n = point_count;
  const std::size_t sets = std::min(set_indices.size(), weights.size() / n);
  std::vector<float> block(n);
  for (std::size_t s = 0; s < sets; ++s) {
    std::copy(weights.begin() + s * n, weights.begin() + (s + 1) * n, block.begin());
    maps.WriteFloats(list, child, set_indices[s], block);
  }
}

}  // namespace myo_core
