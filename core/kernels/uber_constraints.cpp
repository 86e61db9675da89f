#include "core/kernels/uber_constraints.h"

#include <algorithm>
#include <utility>

#include "core/math/lanes.h"

namespace myo_core {

namespace {

// Below this many triangles a parallel region costs more than it saves.
constexpr int64_t kParallelPreparationMinimum = 2048;

bool RowTablesFit(const UberConstraints& uber, std::size_t points) {
  return uber.inverse_masses_.size() >= points && uber.triangle_vertices_.size() >= 3 * points &&
         uber.polygon_indices_.size() >= points && uber.barycentric_u_.size() >= points &&
         uber.barycentric_v_.size() >= points && uber.surface_distances_.size() >= points &&
         uber.local_offsets_.size() >= 3 * points && uber.sliding_points_.size() >= 3 * points &&
         uber.hard_weights_.size() >= points && uber.soft_weights_.size() >= points &&
         uber.slide_weights_.size() >= points && uber.sliding_inactive_.size() >= points &&
         !uber.reference_positions_.empty() && !uber.polygon_normals_.empty();
}

bool SlidingTablesFit(const UberConstraints& uber, std::size_t points) {
  if (uber.slide_weights_.size() != points || uber.sliding_counts_.size() != points ||
      uber.sliding_offsets_.size() != points || uber.sliding_points_.size() != 3 * points)
    return false;
  const std::size_t total = uber.sliding_triangles_.size();
  for (std::size_t i = 0; i < points; ++i)
    if (static_cast<std::size_t>(uber.sliding_offsets_[i]) + uber.sliding_counts_[i] > total) return false;
  return true;
}

// Prepares every used triangle from the current reference positions. False
// when a used triangle names a vertex that has no position.
bool PrepareUsedTriangles(UberConstraints& uber) {
  const std::size_t vertex_count = uber.reference_positions_.size() / 3;
  const uint32_t* corners = uber.reference_triangles_.data();
  for (uint32_t t : uber.used_triangles_)
    for (int k = 0; k < 3; ++k)
      if (corners[3 * static_cast<std::size_t>(t) + k] >= vertex_count) return false;
  const float* positions = uber.reference_positions_.data();
  const uint32_t* used = uber.used_triangles_.data();
  PackedTriangle* prepared = uber.prepared_triangles_.data();
  const int64_t used_count = static_cast<int64_t>(uber.used_triangles_.size());
#pragma omp parallel for schedule(static) if (used_count >= kParallelPreparationMinimum)
  for (int64_t s0 = 0; s0 < used_count; s0 += 4) {
    // Four triangles at a time; lanes past the end are prepared from zeros
    // into a place that is thrown away.
    float corner_values[4][9] = {};
    const float* four[4];
    PackedTriangle unused[4];
    PackedTriangle* out[4];
    for (int j = 0; j < 4; ++j) {
      four[j] = corner_values[j];
      out[j] = &unused[j];
      if (s0 + j >= used_count) continue;
      const uint32_t* abc = corners + 3 * static_cast<std::size_t>(used[s0 + j]);
      for (int k = 0; k < 3; ++k)
        for (int axis = 0; axis < 3; ++axis) corner_values[j][3 * k + axis] = positions[3 * abc[k] + axis];
      out[j] = &prepared[used[s0 + j]];
    }
    TriangleLanes<Float4, Mask4> lanes;
    Float4 det;
    PrepareFourTriangles(four, lanes, det);
    PackFourTriangles(lanes, out);
  }
  return true;
}

// The closest point of the list's triangles to p: the least distance, and
// among equals the candidate that stands first in the list, which is what a
// stable sort by distance puts first. Candidates run four at a time; each
// lane sees its candidates in list order, and the lanes are merged by
// distance, then by list position. False when the list names no triangle.
bool NearestOfList(Vec3 p, const uint32_t* list, int64_t count, uint32_t triangle_count,
                   const PackedTriangle* prepared, Vec3& nearest) {
  const V3<Float4> p4 = {Float4(p.x), Float4(p.y), Float4(p.z)};
  LaneBest lanes;
  int64_t pending[4];
  int pending_count = 0;
  for (int64_t k = 0; k < count; ++k) {
    if (list[k] >= triangle_count) continue;
    pending[pending_count++] = k;
    if (pending_count < 4) continue;
    MeasureFourCandidates(p4, pending, list, prepared, lanes);
    pending_count = 0;
  }
  if (pending_count > 0) {
    for (int j = pending_count; j < 4; ++j) pending[j] = -1;
    MeasureFourCandidates(p4, pending, list, prepared, lanes);
  }
  float distances[4], positions[4], xs[4], ys[4], zs[4];
  lanes.distance.Store(distances);
  lanes.position.Store(positions);
  lanes.point.x.Store(xs);
  lanes.point.y.Store(ys);
  lanes.point.z.Store(zs);
  int winner = -1;
  for (int j = 0; j < 4; ++j) {
    if (positions[j] < 0.0f) continue;
    if (winner < 0 || distances[j] < distances[winner] ||
        (distances[j] == distances[winner] && positions[j] < positions[winner]))
      winner = j;
  }
  if (winner < 0) return false;
  nearest = {xs[winner], ys[winner], zs[winner]};
  return true;
}

}  // namespace

void SolveUberRows(const UberConstraints& uber, uint32_t first, uint32_t count, float compliance,
                   bool has_transform, const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                   float* positions, float* lambdas) {
  if (count == 0 || !RowTablesFit(uber, static_cast<std::size_t>(first) + count)) return;
  const uint32_t* corners = uber.triangle_vertices_.data();
  for (uint32_t i = first; i < first + count; ++i) {
    SolveUberConstraint(uber.lambda_base_ + i, i, corners[3 * i], corners[3 * i + 1], corners[3 * i + 2],
                        uber.polygon_indices_[i], uber.sliding_inactive_[i], uber.inverse_masses_[i],
                        uber.hard_weights_[i], uber.soft_weights_[i], uber.slide_weights_[i], compliance,
                        uber.barycentric_u_[i], uber.barycentric_v_[i], uber.surface_distances_[i], has_transform,
                        world_matrix, world_matrix_inverse, uber.reference_positions_.data(),
                        uber.polygon_normals_.data(), uber.local_offsets_.data(), uber.sliding_points_.data(),
                        positions, lambdas);
  }
}

void PrepareSlidingTriangles(UberConstraints& uber) {
  const std::size_t triangle_count = uber.reference_triangles_.size() / 3;
  std::vector<uint8_t> named(triangle_count, 0);
  for (uint32_t t : uber.sliding_triangles_)
    if (t < triangle_count) named[t] = 1;
  uber.used_triangles_.clear();
  for (std::size_t t = 0; t < triangle_count; ++t)
    if (named[t]) uber.used_triangles_.push_back(static_cast<uint32_t>(t));
  uber.prepared_triangles_.assign(triangle_count, PackedTriangle{});
}

void UpdateSlidingPoints(bool has_transform, const std::vector<float>& positions, const Matrix& world_matrix,
                         UberConstraints& uber) {
  const std::size_t point_count = positions.size() / 3;
  uber.sliding_inactive_.assign(point_count, 1);
  if (point_count == 0 || !SlidingTablesFit(uber, point_count)) return;
  const uint32_t triangle_count = static_cast<uint32_t>(uber.reference_triangles_.size() / 3);
  if (uber.prepared_triangles_.size() != triangle_count) PrepareSlidingTriangles(uber);
  if (!PrepareUsedTriangles(uber)) return;

  const float* weights = uber.slide_weights_.data();
  const uint32_t* counts = uber.sliding_counts_.data();
  const uint32_t* offsets = uber.sliding_offsets_.data();
  const uint32_t* lists = uber.sliding_triangles_.data();
  const PackedTriangle* prepared = uber.prepared_triangles_.data();
  float* sliding_points = uber.sliding_points_.data();
  uint16_t* inactive = uber.sliding_inactive_.data();
#pragma omp parallel for schedule(dynamic, 1)
  for (int64_t i = 0; i < static_cast<int64_t>(point_count); ++i) {
    if (weights[i] < kEpsilon || counts[i] == 0) continue;
    Vec3 p = Load3(positions.data(), static_cast<uint32_t>(i));
    if (has_transform) p = TransformPoint(p, world_matrix);
    Vec3 nearest;
    if (!NearestOfList(p, lists + offsets[i], counts[i], triangle_count, prepared, nearest)) continue;
    inactive[i] = 0;
    Store3(sliding_points, static_cast<uint32_t>(i), nearest);
  }
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
