#include <cstddef>

#include "core/math/vec3.h"
#include "core/merge/skin_merge_data.h"

namespace myo_core {

MergeSourceArrays SimulatedArrays(SkinMergeData& data) {
  return {data.sim_positions_, data.sim_sources_, data.sim_vertices_,
          data.sim_offsets_,   data.sim_transformed_, data.sim_matrices_};
}

MergeSourceArrays AnimatedArrays(SkinMergeData& data) {
  return {data.anim_positions_, data.anim_sources_, data.anim_vertices_,
          data.anim_offsets_,   data.anim_transformed_, data.anim_matrices_};
}

namespace {

// The bound vertex of point i in one kind's arrays, through its source's
// matrix where that is set. False when it cannot be read.
bool BoundVertex(const std::vector<float>& positions, const std::vector<uint32_t>& sources,
                 const std::vector<uint32_t>& vertices, const std::vector<uint32_t>& offsets,
                 const std::vector<bool>& transformed, const std::vector<Matrix>& matrices, size_t i, Vec3& out) {
  const uint32_t source = sources[i];
  if (source >= offsets.size()) return false;
  const size_t first = static_cast<size_t>(offsets[source]) + 3 * static_cast<size_t>(vertices[i]);
  if (first + 3 > positions.size()) return false;
  out = {positions[first], positions[first + 1], positions[first + 2]};
  if (source < transformed.size() && transformed[source] && source < matrices.size())
    out = TransformPoint(out, matrices[source]);
  return true;
}

}  // namespace

void BlendSkinMerge(SkinMergeData& data) {
  const bool has_transform = !IsIdentity(data.world_matrix_);
  const int64_t n = data.point_count_;
  if (data.merge_positions_.size() < 3 * static_cast<size_t>(n) ||
      data.bind_positions_.size() < 3 * static_cast<size_t>(n) || data.merge_weights_.size() < size_t(n) ||
      data.blend_weights_.size() < size_t(n) || data.sim_sources_.size() < size_t(n) ||
      data.anim_sources_.size() < size_t(n) || data.sim_vertices_.size() < size_t(n) ||
      data.anim_vertices_.size() < size_t(n))
    return;
  const SkinMergeData& d = data;
  float* merge = data.merge_positions_.data();
#pragma omp parallel for schedule(static)
  for (int64_t i = 0; i < n; ++i) {
    const float w = d.merge_weights_[i];
    const float b = d.blend_weights_[i];
    const Vec3 bind = Load3(d.bind_positions_.data(), static_cast<uint32_t>(i));
    Vec3 s, a;
    if (!BoundVertex(d.sim_positions_, d.sim_sources_, d.sim_vertices_, d.sim_offsets_, d.sim_transformed_,
                     d.sim_matrices_, i, s) ||
        !BoundVertex(d.anim_positions_, d.anim_sources_, d.anim_vertices_, d.anim_offsets_, d.anim_transformed_,
                     d.anim_matrices_, i, a)) {
      Store3(merge, static_cast<uint32_t>(i), bind);
      continue;
    }
    Vec3 r = a * (1.0f - b) + s * b;
    if (has_transform) r = TransformPoint(r, d.world_matrix_inverse_);
    Store3(merge, static_cast<uint32_t>(i), bind * (1.0f - w) + r * w);
  }
}

}  // namespace myo_core
