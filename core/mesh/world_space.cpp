#include "core/mesh/world_space.h"

#include <algorithm>

namespace myo_core {

void FillWorldSpace(const Matrix& matrix, MeshData& mesh) {
  const uint32_t point_count = mesh.PointCount();
  mesh.world_points.resize(3 * static_cast<std::size_t>(point_count));
  for (uint32_t v = 0; v < point_count; ++v)
    Store3(mesh.world_points.data(), v, TransformPoint(Load3(mesh.points.data(), v), matrix));

  const uint32_t polygon_count = mesh.PolygonCount();
  mesh.world_polygon_normals.resize(3 * static_cast<std::size_t>(polygon_count));
  const float* points = mesh.world_points.data();
  for (uint32_t f = 0; f < polygon_count; ++f) {
    const int32_t* loop = mesh.polygon_vertices.data() + mesh.polygon_vertex_offsets[f];
    const int32_t count = mesh.polygon_vertex_counts[f];
    Vec3 n = {0.0f, 0.0f, 0.0f};
    for (int32_t k = 0; k < count; ++k) {
      const Vec3 i = Load3(points, loop[k]);
      const Vec3 j = Load3(points, loop[k + 1 == count ? 0 : k + 1]);
      n.x += (i.y - j.y) * (i.z + j.z);
      n.y += (i.z - j.z) * (i.x + j.x);
      n.z += (i.x - j.x) * (i.y + j.y);
    }
    Store3(mesh.world_polygon_normals.data(), f, NormalizeSafe(n));
  }
}

float MeshDiagonal(const std::vector<float>& points, const Matrix& matrix) {
  if (points.size() < 3) return 0.0f;
  Vec3 low = Load3(points.data(), 0), high = low;
  for (uint32_t i = 1; i < points.size() / 3; ++i) {
    const Vec3 p = Load3(points.data(), i);
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  return Length(TransformPoint(high, matrix) - TransformPoint(low, matrix));
}

}  // namespace myo_core
