#include <algorithm>
#include <cstddef>

#include "core/math/vec3.h"
#include "core/merge/skin_merge.h"
#include "core/mesh/closest_point_query.h"

namespace myo_core {

void BindMergeSources(SkinMergeData& data, const std::vector<MeshData>& meshes,
                      const std::vector<Matrix>& matrices, const std::vector<bool>& present,
                      MergeSourceArrays arrays) {
  const size_t n = data.point_count_;
  const size_t source_count = meshes.size();
  arrays.positions.clear();
  arrays.sources.assign(n, 0);
  arrays.vertices.assign(n, 0);
  arrays.offsets.assign(source_count, 0);
  arrays.transformed.assign(source_count, false);
  arrays.matrices.assign(source_count, IdentityMatrix());

  // The merged points in world space, where the sources are compared.
  const bool has_transform = !IsIdentity(data.world_matrix_);
  std::vector<Vec3> world(n);
  for (size_t i = 0; i < n; ++i) {
    const Vec3 p = Load3(data.merge_positions_.data(), static_cast<uint32_t>(i));
    world[i] = has_transform ? TransformPoint(p, data.world_matrix_) : p;
  }
  std::vector<float> nearest(n, kMergeFarDistance);

  for (size_t j = 0; j < source_count && j < matrices.size() && j < present.size(); ++j) {
    if (!present[j]) continue;
    const MeshData& mesh = meshes[j];
    arrays.matrices[j] = matrices[j];
    const bool transformed = !IsIdentity(matrices[j]);
    arrays.transformed[j] = transformed;
    arrays.offsets[j] = static_cast<uint32_t>(arrays.positions.size());
    arrays.positions.insert(arrays.positions.end(), mesh.points.begin(), mesh.points.end());

    ClosestPointQuery query;
    query.Build(mesh.points, mesh.triangle_vertices, mesh.polygon_triangle_counts);
    if (query.Empty()) continue;
    const Matrix inverse = InvertMatrix(matrices[j]);
    const int64_t point_count = mesh.PointCount();
    const int64_t polygon_count =
        static_cast<int64_t>(std::min(mesh.polygon_vertex_counts.size(), mesh.polygon_vertex_offsets.size()));
    const int64_t loop_size = static_cast<int64_t>(mesh.polygon_vertices.size());
    const uint32_t source = static_cast<uint32_t>(j);
    // Each point writes only its own entries; sources stay in order, so
    // the result does not depend on the threads.
#pragma omp parallel for schedule(dynamic, 256)
    for (int64_t i = 0; i < static_cast<int64_t>(n); ++i) {
      const Vec3 p = world[i];
      // The query goes through the source's inverse matrix, the distance
      // below does not: the vertex is compared as read.
      const Vec3 q = transformed ? TransformPoint(p, inverse) : p;
      const float query_point[3] = {q.x, q.y, q.z};
      ClosestPointHit hit;
      if (!query.Closest(query_point, -1.0f, hit)) continue;
      if (hit.polygon < 0 || hit.polygon >= polygon_count) continue;
      const int32_t first = mesh.polygon_vertex_offsets[hit.polygon];
      const int32_t count = mesh.polygon_vertex_counts[hit.polygon];
      if (first < 0 || count < 0 || int64_t(first) + count > loop_size) continue;
      for (int32_t k = 0; k < count; ++k) {
        const int32_t v = mesh.polygon_vertices[first + k];
        if (v < 0 || v >= point_count) continue;
        const float d = Length(p - Load3(mesh.points.data(), static_cast<uint32_t>(v)));
        if (d < nearest[i]) {
          nearest[i] = d;
          arrays.sources[i] = source;
          arrays.vertices[i] = static_cast<uint32_t>(v);
        }
      }
    }
  }
}

}  // namespace myo_core
