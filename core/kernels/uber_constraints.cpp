#include "core/kernels/uber_constraints.h"

#include <algorithm>
#include <utility>

namespace myo_core {

namespace {

SlidingSearchInput SearchInput(const UberConstraints& uber) {
  return {uber.slide_weights_,     uber.sliding_counts_,      uber.sliding_offsets_,
          uber.sliding_triangles_, uber.reference_positions_, uber.reference_triangles_};
}

SlidingSearchOutput SearchOutput(UberConstraints& uber) {
  return {uber.sliding_points_, uber.sliding_inactive_, nullptr};
}

}  // namespace

void PrepareSlidingTriangles(UberConstraints& uber) {
  PrepareSearchTriangles(uber.sliding_triangles_, uber.reference_triangles_.size() / 3, uber.sliding_search_);
}

void UpdateSlidingPoints(bool has_transform, const std::vector<float>& positions, const Matrix& world_matrix,
                         UberConstraints& uber) {
  RunSlidingSearch(SearchInput(uber), SearchOutput(uber), has_transform, positions, world_matrix,
                   uber.sliding_search_);
}

void BuildSlidingEdges(const std::vector<uint32_t>& sliding_triangles,
                       const std::vector<uint32_t>& reference_triangles, std::vector<uint32_t>& sliding_edges) {
  const std::size_t triangle_count = reference_triangles.size() / 3;
  std::vector<std::pair<uint32_t, uint32_t>> edges;  // 3 per candidate, then sorted and unique
  edges.reserve(3 * sliding_triangles.size());
  for (uint32_t t : sliding_triangles) {
    if (t >= triangle_count) continue;
    const uint32_t* abc = reference_triangles.data() + 3 * static_cast<std::size_t>(t);
    for (int k = 0; k < 3; ++k) {
      const uint32_t a = abc[k], b = abc[(k + 1) % 3];
      edges.emplace_back(std::min(a, b), std::max(a, b));
    }
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  sliding_edges.clear();
  sliding_edges.reserve(2 * edges.size());
  for (const auto& edge : edges) {
    sliding_edges.push_back(edge.first);
    sliding_edges.push_back(edge.second);
  }
}

}  // namespace myo_core
