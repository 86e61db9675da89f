#include "core/activation/muscle_data_init.h"

#include <chrono>
#include <cmath>

#include "core/activation/patch_activations.h"
#include "core/log/logger.h"
#include "core/math/vec3.h"
#include "core/mesh/closest_point_query.h"
#include "core/patches/muscle_patches_file.h"

namespace myo_core {

void InitMuscleData(const std::string& path, int32_t smoothing, const MeshData& rest_mesh, float fibers_scale,
                    MusclePatchesData& data, const MeshData* surface) {
  const bool timed = GetLevel() == 0;
  const auto start = std::chrono::steady_clock::now();

  // Load the file only when its path changed.
  bool rebuild = data.patches_loaded_ && smoothing != data.smoothing_rings_;
  if (path != data.muscles_file_) {
    data.muscles_file_ = path;
    data.patch_ids_.clear();
    data.patch_fibers_.clear();
    data.patches_loaded_ = ReadMusclePatchesFile(path, rest_mesh.PointCount(), data.patch_ids_, data.patch_fibers_);
    rebuild = data.patches_loaded_;
  }
  if (!data.patches_loaded_) return;

  if (rebuild) {
    BuildSmoothingArrays(rest_mesh, smoothing, data);
    data.smoothing_rings_ = smoothing;
  }

  ComputeVertexFibers(data);
  data.shortest_edge_ = ShortestEdgeLength(rest_mesh);
  data.fibers_scale_ = fibers_scale;
  if (rest_mesh.polygon_triangle_counts.size() != rest_mesh.PolygonCount())
    ReportError("Unexpected number of polygons during reference mesh processing", "");
  else
    ProjectVertexFibers(rest_mesh, data, surface);

  if (timed) {
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start);
    LogDebug("Init Muscle Data time (ns): " + std::to_string(ns.count()));
  }
}

void ComputeVertexFibers(MusclePatchesData& data) {
  const std::size_t n = data.smoothing_counts_.size();
  data.vertex_fibers_.assign(3 * n, 0.0f);
  data.fiber_bary_u_.assign(n, 0.0f);
  data.fiber_bary_v_.assign(n, 0.0f);
  data.fiber_triangles_.assign(3 * n, 0);

  const uint32_t patch_count = data.PatchCount();
  std::size_t entry = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const int32_t count = data.smoothing_counts_[i];
    if (count < 1 || entry + static_cast<std::size_t>(count) > data.smoothing_patch_ids_.size()) break;
    Vec3 sum{0.0f, 0.0f, 0.0f};
    for (int32_t k = 0; k < count; ++k, ++entry) {
      const int32_t p = data.smoothing_patch_ids_[entry];
      if (p < 1 || static_cast<uint32_t>(p) > patch_count) continue;
      sum += Load3(data.patch_fibers_.data(), static_cast<uint32_t>(p - 1));
    }
    const float divisor = static_cast<float>(count);
    const Vec3 mean{sum.x / divisor, sum.y / divisor, sum.z / divisor};
    Store3(data.vertex_fibers_.data(), static_cast<uint32_t>(i), NormalizeSafe(mean));
  }
}

float ShortestEdgeLength(const MeshData& mesh) {
  const uint32_t point_count = mesh.PointCount();
  float shortest = 1e10f;
  for (uint32_t e = 0; e < mesh.EdgeCount(); ++e) {
    const int32_t a = mesh.edge_vertices[2 * e];
    const int32_t b = mesh.edge_vertices[2 * e + 1];
    if (a < 0 || b < 0 || static_cast<uint32_t>(a) >= point_count || static_cast<uint32_t>(b) >= point_count)
      continue;
    const double dx = static_cast<double>(mesh.points[3 * b]) - static_cast<double>(mesh.points[3 * a]);
    const double dy = static_cast<double>(mesh.points[3 * b + 1]) - static_cast<double>(mesh.points[3 * a + 1]);
    const double dz = static_cast<double>(mesh.points[3 * b + 2]) - static_cast<double>(mesh.points[3 * a + 2]);
    const double length = std::sqrt(dx * dx + dy * dy + dz * dz);
    if (length < static_cast<double>(shortest)) shortest = static_cast<float>(length);
  }
  return shortest;
}

void ProjectVertexFibers(const MeshData& mesh, MusclePatchesData& data, const MeshData* surface) {
  const MeshData& on = surface != nullptr ? *surface : mesh;
  ClosestPointQuery query;
  query.Build(on.points, on.triangle_vertices, on.polygon_triangle_counts);
  std::size_t n = mesh.PointCount();
  if (data.vertex_fibers_.size() / 3 < n) n = data.vertex_fibers_.size() / 3;
  if (data.fiber_bary_u_.size() < n || data.fiber_bary_v_.size() < n || data.fiber_triangles_.size() / 3 < n) return;

  const float shortest = data.shortest_edge_;
  const float display_length = data.fibers_scale_ * shortest;
  for (std::size_t i = 0; i < n; ++i) {
    const uint32_t point = static_cast<uint32_t>(i);
    const Vec3 direction = Load3(data.vertex_fibers_.data(), point);
    const float length = Length(direction);
    if (length > kEpsilon && std::fabs(length - 1.0f) > kEpsilon) {
      LogWarning("Projecting vertex fiber without a normalized direction.");
      continue;
    }
    const Vec3 p = Load3(mesh.points.data(), point);
    const Vec3 tip = p + direction * shortest;
    const float query_point[3] = {tip.x, tip.y, tip.z};
    ClosestPointHit hit;
    const bool found = query.Closest(query_point, -1.0f, hit);
    Vec3 fiber{0.0f, 0.0f, 0.0f};
    if (found) fiber = Vec3{hit.point[0], hit.point[1], hit.point[2]} - p;
    const bool degenerate = !found || static_cast<double>(Length(fiber)) < kEpsilonDouble;
    Store3(data.vertex_fibers_.data(), point, NormalizeSafe(fiber) * display_length);
    data.fiber_bary_u_[i] = found ? hit.bary_u : 0.0f;
    data.fiber_bary_v_[i] = found ? hit.bary_v : 0.0f;
    const std::size_t corner = 3 * static_cast<std::size_t>(hit.triangle);
    const bool known = found && hit.triangle >= 0 && corner + 2 < on.triangle_vertices.size();
    for (std::size_t k = 0; k < 3; ++k)
      data.fiber_triangles_[3 * i + k] = degenerate || !known ? 0 : on.triangle_vertices[corner + k];
  }
}

}  // namespace myo_core
