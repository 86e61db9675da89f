#pragma once
// Edge rows: one distance constraint per mesh edge whose target length
// follows the muscle's activation along the fiber direction only.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/math/vec3.h"

namespace myo_core {

struct EdgeConstraints : ConstraintGroup {
  // inverse_masses_: N, 1 / mass of each point, 1 at construction.
  EdgeConstraints() = default;

  // Rest data, built at initialisation (BuildEdgeConstraints).
  std::vector<float> rest_lengths_;      // E, edge length at rest
  std::vector<float> rest_vectors_;      // 3E, end minus start at rest, not normalised
  std::vector<float> edge_fibers_;       // 3E, unit fiber direction of each edge
  std::vector<float> edge_tendons_;      // E, mean tendon value of the two ends
  std::vector<float> tendons_;           // N, map "tendons"
  std::vector<float> fibers_;            // 3N, per-point fiber projected on the mesh
  std::vector<float> fiber_bary_u_;      // N, barycentric coordinates of the fiber tip
  std::vector<float> fiber_bary_v_;      // N
  std::vector<float> edge_compression_;  // E, mean "compressionResistance" of the ends
  std::vector<float> edge_stretching_;   // E, mean "stretchingResistance" of the ends
  std::vector<int32_t> edge_start_;      // E
  std::vector<int32_t> edge_end_;        // E
  std::vector<int32_t> fiber_triangles_; // 3N, triangle of the fiber tip; 0s when degenerate

  // Scalars of the frame.
  float activation_ = 0.0f;
  float rest_activation_ = 0.0f;
  float rest_length_multiplier_ = 1.0f;
  float compression_multiplier_ = 1.0f;
  float stretching_multiplier_ = 1.0f;

  float min_edge_length_ = 0.0f;  // shortest edge at rest
  float fibers_scale_ = 1.0f;     // display length of fibers, in shortest edges

  uint32_t RowCount() const { return static_cast<uint32_t>(edge_start_.size()); }
};

// C = |p_j - p_i| - |c|, where c is the rest vector shortened per axis by the
// activation along the absolute fiber components:
//   c_k = r_k / (1 - f_k rest_activation) * rest_length_multiplier * (1 - f_k activation).
// Gradient n = (p_j - p_i) / |p_j - p_i| for j, -n for i. The violation is
// scaled by the compression resistance when C < 0, by the stretching one
// otherwise; the compliance is the solver's.
inline void SolveEdgeConstraint(uint32_t lambda_row, uint32_t edge, uint32_t i, uint32_t j,
                                float w_i, float w_j, float compliance, float activation,
                                float rest_activation, float rest_length_multiplier,
                                float compression, float stretching, const float* rest_vectors,
                                const float* fibers, float* positions, float* lambdas) {
  const float w = w_i + w_j;
  if (w < kEpsilon) return;
  const Vec3 pi = Load3(positions, i);
  const Vec3 pj = Load3(positions, j);
  const Vec3 d = pj - pi;
  const float length = Length(d);
  const Vec3 n = NormalizeSafe(d, length);

  const Vec3 f = Load3(fibers, edge);
  const Vec3 r = Load3(rest_vectors, edge);
  const Vec3 fa{std::fabs(f.x), std::fabs(f.y), std::fabs(f.z)};
  const Vec3 c{r.x / (1.0f - fa.x * rest_activation) * rest_length_multiplier * (1.0f - fa.x * activation),
               r.y / (1.0f - fa.y * rest_activation) * rest_length_multiplier * (1.0f - fa.y * activation),
               r.z / (1.0f - fa.z * rest_activation) * rest_length_multiplier * (1.0f - fa.z * activation)};
  const float violation = length - Length(c);
  const float k = violation < 0.0f ? compression : stretching;

  float& lambda = lambdas[lambda_row];
  const float delta = (-(k * violation) - lambda * compliance) /
                      (n.x * w * n.x + n.y * w * n.y + n.z * w * n.z + compliance);
  lambda += delta;
  if (w_i >= kEpsilon) Store3(positions, i, pi - n * (delta * w_i));
  if (w_j >= kEpsilon) Store3(positions, j, Load3(positions, j) + n * (delta * w_j));
}

// Runs every edge row once, in table order, with the frame's scalars.
inline void SolveEdgeRows(const EdgeConstraints& edges, float compliance, float rest_activation,
                          float* positions, float* lambdas) {
  const uint32_t rows = edges.RowCount();
  const float* w = edges.inverse_masses_.data();
  for (uint32_t e = 0; e < rows; ++e) {
    const uint32_t i = static_cast<uint32_t>(edges.edge_start_[e]);
    const uint32_t j = static_cast<uint32_t>(edges.edge_end_[e]);
    SolveEdgeConstraint(edges.lambda_base_ + e, e, i, j, w[i], w[j], compliance, edges.activation_,
                        rest_activation, edges.rest_length_multiplier_,
                        std::min(1.0f, edges.edge_compression_[e] * edges.compression_multiplier_),
                        std::min(1.0f, edges.edge_stretching_[e] * edges.stretching_multiplier_),
                        edges.rest_vectors_.data(), edges.edge_fibers_.data(), positions, lambdas);
  }
}

}  // namespace myo_core
