#pragma once
// The skin's one constraint per point against its reference mesh, blending
// three wishes by three painted weights:
// - hard: keep the bound offset from the bound surface point, in a frame that
//   turns with the bound triangle;
// - soft: keep the bound distance from the bound surface point, free to swing;
// - slide: keep the bound distance from the nearest point of the point's
//   candidate triangles, so that it may glide over the surface.
// The three corrections are summed into one vector that is solved as a single
// XPBD row; row of point i is lambda_base_ + i.

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/kernels/sliding_search.h"
#include "core/kernels/target_mesh.h"
#include "core/kernels/triangle_queries.h"
#include "core/math/matrix.h"

namespace myo_core {

// N skin points, V reference vertices, P reference polygons, G reference triangles.
struct UberConstraints : ConstraintGroup {
  // inverse_masses_: N, 1 / mass of each point.
  std::vector<uint32_t> triangle_vertices_;    // 3N, vertices of the bound triangle
  std::vector<uint32_t> polygon_indices_;      // N, polygon of the bound triangle
  std::vector<uint32_t> reference_triangles_;  // 3G, the reference triangulation in polygon order
  std::vector<float> reference_positions_;     // 3V, world space, this frame
  std::vector<float> polygon_normals_;         // 3P, world space, this frame
  std::vector<float> barycentric_u_;           // N, weight of the bound triangle's first vertex
  std::vector<float> barycentric_v_;           // N, of the second; the third has 1 - u - v
  std::vector<float> surface_distances_;       // N, world distance to the bound surface point at binding
  std::vector<float> local_offsets_;           // 3N, offset from the bound surface point in TriangleFrame terms
  std::vector<float> sliding_points_;          // 3N, current sliding point, world space
  std::vector<float> hard_weights_;            // N, map "hardConstraints", default 1
  std::vector<float> soft_weights_;            // N, map "softConstraints", default 0
  std::vector<float> slide_weights_;           // N, map "slideConstraints", default 0
  std::vector<uint32_t> sliding_triangles_;    // candidate triangles of all points, list after list
  std::vector<uint32_t> sliding_counts_;       // N, length of each point's list
  std::vector<uint32_t> sliding_offsets_;      // N, start of each point's list
  std::vector<uint16_t> sliding_inactive_;     // N, 1 = no sliding point at the last search
  std::vector<uint32_t> sliding_edges_;        // 2 per edge, sorted vertex pairs of all candidates (drawing)

  // Kept beside the table, derived from it:
  // the reference mesh as bound, whose topology is frozen until the next
  // binding; ReadReferenceMesh refreshes its frame data every step.
  TargetMesh reference_mesh_;
  // Scratch of the sliding search (prepared candidate triangles and their
  // bounds), kept from one search to the next.
  SlidingSearchScratch sliding_search_;
};

// One point, one row. In world space, with weights clamped (when they sum
// above 1) hard first, then slide, then soft:
//   q  = u A + v B + (1 - u - v) C, the bound surface point
//   dH = F(q) local_offset + q - p, F the TriangleFrame at q
//   dS = q + distance (p - q)/|p - q| - p
//   dL = r + distance (p - r)/|p - r| - p, r the sliding point (only when active)
//   C = |g|, g = -(soft dS + slide dL + hard dH), gradient n = g / |g|
// delta = (-C - lambda compliance) / (n.n w + compliance); the point moves
// by n delta w. Returns silently when the unclamped weights sum below 1e-6
// or w is below 1e-6. Touches position i and lambdas[row] only.
inline void SolveUberConstraint(uint32_t row, uint32_t i, uint32_t t0, uint32_t t1, uint32_t t2, uint32_t polygon,
                                uint16_t inactive, float w, float hard, float soft, float slide, float compliance,
                                float u, float v, float distance, bool has_transform, const Matrix& world_matrix,
                                const Matrix& world_matrix_inverse, const float* reference_positions,
                                const float* polygon_normals, const float* local_offsets,
                                const float* sliding_points, float* positions, float* lambdas) {
  const float sum = hard + soft + slide;
  float hard_weight = hard, soft_weight = soft, slide_weight = slide;
  if (sum > 1.0f) {
    hard_weight = hard < 1.0f ? hard : 1.0f;
    slide_weight = slide < 1.0f - hard_weight ? slide : 1.0f - hard_weight;
    const float soft_room = 1.0f - (slide_weight + hard_weight);
    soft_weight = soft < soft_room ? soft : soft_room;
  }
  if (sum < kEpsilon || w < kEpsilon) return;

  Vec3 p = Load3(positions, i);
  if (has_transform) p = TransformPoint(p, world_matrix);

  Vec3 q = {0.0f, 0.0f, 0.0f};
  if (hard_weight >= kEpsilon || soft_weight >= kEpsilon) {
    const float c = static_cast<float>(1.0 - static_cast<double>(u) - static_cast<double>(v));
    q = Load3(reference_positions, t0) * u + Load3(reference_positions, t1) * v +
        Load3(reference_positions, t2) * c;
  }
  Vec3 hard_term = {0.0f, 0.0f, 0.0f};
  if (hard_weight >= kEpsilon) {
    const Matrix frame = TriangleFrame(q, reference_positions, polygon_normals, polygon, t0, t1);
    hard_term = TransformColumn(frame, Load3(local_offsets, i)) + q - p;
  }
  Vec3 soft_term = {0.0f, 0.0f, 0.0f};
  if (soft_weight >= kEpsilon) soft_term = (q + NormalizeSafe(p - q) * distance) - p;
  Vec3 slide_term = {0.0f, 0.0f, 0.0f};
  if (slide_weight >= kEpsilon && inactive == 0) {
    const Vec3 r = Load3(sliding_points, i);
    slide_term = (r + NormalizeSafe(p - r) * distance) - p;
  }

  const Vec3 blended = soft_term * soft_weight + slide_term * slide_weight + hard_term * hard_weight;
  const Vec3 g = {-blended.x, -blended.y, -blended.z};
  const float length = Length(g);
  const Vec3 n = NormalizeSafe(g, length);
  float& lambda = lambdas[row];
  const float delta =
      (-length - lambda * compliance) / (n.y * n.y * w + n.x * n.x * w + n.z * n.z * w + compliance);
  lambda = lambda + delta;
  p += n * (delta * w);

  if (has_transform) p = TransformPoint(p, world_matrix_inverse);
  Store3(positions, i, p);
}

// Runs the rows of points [first, first + count) once: one block of the
// skin's point blocks, so that blocks may run on different threads. The rows
// share nothing and run eight at a time in lanes, each lane with the bits of
// SolveUberConstraint. Weights are inverse_masses_. A table whose per-point
// arrays do not hold first + count points, or whose reference arrays are
// empty, runs nothing.
void SolveUberRows(const UberConstraints& uber, uint32_t first, uint32_t count, float compliance,
                   bool has_transform, const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                   float* positions, float* lambdas);

// Derives the scratch of the sliding search from the candidate lists
// (PrepareSearchTriangles). Run by the binding; UpdateSlidingPoints runs it
// itself when the scratch is not of size G, so a caller that edits the lists
// in place must run it.
void PrepareSlidingTriangles(UberConstraints& uber);

// Refreshes every sliding point. sliding_inactive_ becomes N ones; then, in
// parallel over points, each point with a slide weight of at least 1e-6 and
// a candidate list takes the closest point of its candidates to its position
// (through world_matrix when has_transform), the first in list order among
// equals, and is marked active. Other points keep their old sliding point.
// The search is that of core/kernels/sliding_search.h over the
// reference's triangles; nothing is allocated per point. positions: 3N.
void UpdateSlidingPoints(bool has_transform, const std::vector<float>& positions, const Matrix& world_matrix,
                         UberConstraints& uber);

// The edges of all candidate triangles, each as (smaller, larger), sorted
// and without repeats, flattened into sliding_edges (two values a pair).
// reference_triangles: 3G.
void BuildSlidingEdges(const std::vector<uint32_t>& sliding_triangles,
                       const std::vector<uint32_t>& reference_triangles, std::vector<uint32_t>& sliding_edges);

}  // namespace myo_core
