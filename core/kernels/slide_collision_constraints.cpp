#include "core/kernels/slide_collision_constraints.h"

#include "core/log/logger.h"
#include "core/log/stream_text.h"

namespace myo_core {

namespace {

bool RowTablesFit(const SlideCollisionConstraints& group, std::size_t points) {
  return group.inverse_masses_.size() >= points && group.collision_distances_.size() >= points &&
         group.closest_points_.size() >= 3 * points && group.sliding_inactive_.size() >= points &&
         group.threshold_multipliers_.size() >= points && group.closest_triangles_.size() >= points &&
         group.inside_flags_.size() >= points;
}

// The triangle counts are one per polygon and number exactly the mesh's
// triangles, and the host handed a world-space normal for every polygon.
bool TriangleNormalsReadable(const MeshData& mesh) {
  const std::size_t polygon_count = mesh.PolygonCount();
  if (mesh.polygon_triangle_counts.size() != polygon_count ||
      mesh.world_polygon_normals.size() != 3 * polygon_count)
    return false;
  std::size_t triangles = 0;
  for (int32_t count : mesh.polygon_triangle_counts) {
    if (count < 0) return false;
    triangles += static_cast<std::size_t>(count);
  }
  return triangles == mesh.TriangleCount();
}

}  // namespace

void SolveSlideCollisionRows(const SlideCollisionConstraints& group, uint32_t first, uint32_t count,
                             const std::vector<float>& attraction, float compliance, bool has_transform,
                             const Matrix& world_matrix, const Matrix& world_matrix_inverse, float* positions,
                             float* lambdas) {
  const std::size_t end = static_cast<std::size_t>(first) + count;
  if (count == 0 || attraction.size() < end || !RowTablesFit(group, end)) return;
  const std::size_t normal_count = group.collider_normals_.size() / 3;
  const float* closest_points = group.closest_points_.data();
  const float* normals = group.collider_normals_.data();
  for (uint32_t i = first; i < end; ++i) {
    // A fully attracted point sits on its target for this step.
    if (!(attraction[i] < 1.0f)) continue;
    const uint32_t triangle = group.closest_triangles_[i];
    if (triangle >= normal_count) continue;
    SolveSlideCollisionConstraint(group.lambda_base_ + i, i, triangle, group.sliding_inactive_[i],
                                  group.inverse_masses_[i], compliance, group.collision_distances_[i],
                                  group.threshold_multipliers_[i], has_transform, group.keep_orientation_,
                                  group.inside_flags_[i], world_matrix, world_matrix_inverse, closest_points,
                                  normals, positions, lambdas);
  }
}

void UpdateCollisionSlidingPoints(bool has_transform, const std::vector<float>& positions,
                                  const Matrix& world_matrix, SlideCollisionConstraints& group) {
  const SlidingSearchInput input = {group.inverse_masses_,     group.sliding_counts_,
                                    group.sliding_offsets_,    group.sliding_triangles_,
                                    group.collider_positions_, group.collider_triangles_};
  const SlidingSearchOutput output = {group.closest_points_, group.sliding_inactive_, &group.closest_triangles_};
  RunSlidingSearch(input, output, has_transform, positions, world_matrix, group.sliding_search_);
}

bool ReadTriangleNormals(const MeshData& mesh, bool warn, std::vector<float>& normals) {
  if (!TriangleNormalsReadable(mesh)) return false;
  normals.resize(3 * static_cast<std::size_t>(mesh.TriangleCount()));
  const float* polygon_normals = mesh.world_polygon_normals.data();
  uint32_t triangle = 0;
  uint32_t defaulted = 0;
  for (uint32_t f = 0; f < mesh.PolygonCount(); ++f) {
    const int32_t triangles = mesh.polygon_triangle_counts[f];
    const bool valid = triangles == mesh.polygon_vertex_counts[f] - 2;
    if (!valid) ++defaulted;
    const Vec3 normal = valid ? Load3(polygon_normals, f) : Vec3{0.0f, 1.0f, 0.0f};
    for (int32_t k = 0; k < triangles; ++k) Store3(normals.data(), triangle++, normal);
  }
  if (warn && defaulted > 0)
    LogWarning(
        "Some triangle normals have been defaulted to (0.0, 1.0, 0.0) due to an invalid face triangulation. "
        "Number of defaulted triangle normals: " +
        StreamText(defaulted));
  return true;
}

bool ReadColliderMesh(const MeshData& mesh, bool warn, SlideCollisionConstraints& group) {
  const std::size_t vertex_count = mesh.PointCount();
  if (vertex_count == 0 || 3 * vertex_count != group.collider_positions_.size() ||
      mesh.world_points.size() != 3 * vertex_count ||
      3 * static_cast<std::size_t>(mesh.TriangleCount()) != group.collider_triangles_.size() ||
      !TriangleNormalsReadable(mesh))
    return false;
  group.collider_positions_.assign(mesh.world_points.begin(), mesh.world_points.end());
  return ReadTriangleNormals(mesh, warn, group.collider_normals_);
}

}  // namespace myo_core
