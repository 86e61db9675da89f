#pragma once
// The sliding search written the plain way, for comparing the solver's
// search with: every candidate measured in list order, the first of the
// least distance kept.

#include <vector>

#include "core/kernels/triangle_queries.h"
#include "core/kernels/uber_constraints.h"

namespace myo_test {

inline void OrderedSlidingScan(bool has_transform, const std::vector<float>& positions,
                               const myo_core::Matrix& world_matrix, myo_core::UberConstraints& uber) {
  using myo_core::Vec3;
  const std::size_t n = positions.size() / 3;
  const std::size_t triangle_count = uber.reference_triangles_.size() / 3;
  uber.sliding_inactive_.assign(n, 1);
  for (std::size_t i = 0; i < n; ++i) {
    if (uber.slide_weights_[i] < myo_core::kEpsilon) continue;
    Vec3 p = myo_core::Load3(positions.data(), static_cast<uint32_t>(i));
    if (has_transform) p = myo_core::TransformPoint(p, world_matrix);
    bool found = false;
    Vec3 best{};
    float best_distance = 0.0f;
    for (uint32_t k = 0; k < uber.sliding_counts_[i]; ++k) {
      const uint32_t t = uber.sliding_triangles_[uber.sliding_offsets_[i] + k];
      if (t >= triangle_count) continue;
      const uint32_t* abc = &uber.reference_triangles_[3 * t];
      const float* v = uber.reference_positions_.data();
      const Vec3 c = myo_core::ClosestPointOnTriangle(p, myo_core::Load3(v, abc[0]), myo_core::Load3(v, abc[1]),
                                                      myo_core::Load3(v, abc[2]));
      const float distance = myo_core::Length(c - p);
      if (!found || distance < best_distance) best = c, best_distance = distance, found = true;
    }
    if (!found) continue;
    uber.sliding_inactive_[i] = 0;
    myo_core::Store3(uber.sliding_points_.data(), static_cast<uint32_t>(i), best);
  }
}

}  // namespace myo_test
