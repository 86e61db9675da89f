#pragma once
// Edge rows: one distance constraint per mesh edge whose target length
// follows the muscle's activation along the fiber direction only.

#include <cmath>
#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/kernels/length_rows.h"
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

  std::vector<uint32_t> schedule_;          // E, solving order (ScheduleEdgeRows)
  std::vector<uint32_t> schedule_levels_;   // levels + 1, ranges of independent rows in schedule_
  std::vector<LengthRow> frame_rows_;       // E, per-step values in solving order (PrepareEdgeRows)
  std::vector<float> frame_targets_;        // E, scratch of PrepareEdgeRows: target lengths in table order

  uint32_t RowCount() const { return static_cast<uint32_t>(edge_start_.size()); }
};

// The target length of an edge: the rest vector shortened per axis by the
// activation along the absolute fiber components,
//   c_k = r_k / (1 - f_k rest_activation) * rest_length_multiplier * (1 - f_k activation),
// target = |c|. The first factor takes back the rest activation built into
// the rest shape.
inline float ActivatedRestLength(Vec3 rest, Vec3 fiber, float activation, float rest_activation,
                                 float rest_length_multiplier) {
  const Vec3 f{std::fabs(fiber.x), std::fabs(fiber.y), std::fabs(fiber.z)};
  const Vec3 c{rest.x / (1.0f - f.x * rest_activation) * rest_length_multiplier * (1.0f - f.x * activation),
               rest.y / (1.0f - f.y * rest_activation) * rest_length_multiplier * (1.0f - f.y * activation),
               rest.z / (1.0f - f.z * rest_activation) * rest_length_multiplier * (1.0f - f.z * activation)};
  return Length(c);
}

// One edge row with its activation formed on the call.
inline void SolveEdgeConstraint(uint32_t lambda_row, uint32_t edge, uint32_t i, uint32_t j, float w_i, float w_j,
                                float compliance, float activation, float rest_activation,
                                float rest_length_multiplier, float compression, float stretching,
                                const float* rest_vectors, const float* fibers, float* positions,
                                float* lambdas) {
  const float target = ActivatedRestLength(Load3(rest_vectors, edge), Load3(fibers, edge), activation,
                                           rest_activation, rest_length_multiplier);
  SolveLengthRow(lambda_row, i, j, w_i, w_j, target, compression, stretching, compliance, positions, lambdas);
}

// Orders the rows for solving (see RowSchedule); run after the tables change.
void ScheduleEdgeRows(EdgeConstraints& edges, uint32_t point_count);

// Forms the values of each row that stay fixed during a step (target length
// and the two resistances capped at 1), in solving order.
void PrepareEdgeRows(EdgeConstraints& edges, float rest_activation);

// Runs every edge row once with the values of PrepareEdgeRows (see
// SolveLengthRows), with the result of running them in table order. During a
// step the multiplier of the row at place k of the schedule stands at
// lambda_base_ + k; all are 0 again at the end of the step.
void SolveEdgeRows(const EdgeConstraints& edges, float compliance, float* positions, float* lambdas);

}  // namespace myo_core
