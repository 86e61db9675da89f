#pragma once
// Distance rows: one constraint per mesh edge that keeps the edge at its rest
// length, resisting compression and stretching by painted amounts. The skin
// and the shape solver run them.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/kernels/length_rows.h"
#include "core/math/vec3.h"

namespace myo_core {

struct DistanceConstraints : ConstraintGroup {
  // inverse_masses_: N, 1 / mass of each point.

  // Rest data, built at initialisation (BuildDistanceConstraints), indexed by
  // the host's edge id.
  std::vector<float> rest_lengths_;         // E, edge length at assembly
  std::vector<uint32_t> edge_vertices_a_;   // E, first vertex
  std::vector<uint32_t> edge_vertices_b_;   // E, second vertex
  std::vector<float> compression_weights_;  // E, mean compression resistance of the two ends
  std::vector<float> stretching_weights_;   // E, mean stretching resistance of the two ends

  // Scalars of the frame.
  float rest_length_multiplier_ = 1.0f;  // "restLengthMultiplier"
  float compression_multiplier_ = 1.0f;  // "compressionMultiplier"
  float stretching_multiplier_ = 1.0f;   // "stretchingMultiplier"

  std::vector<uint32_t> schedule_;         // E, solving order (BuildDistanceConstraints)
  std::vector<uint32_t> schedule_levels_;  // levels + 1, ranges of independent rows in schedule_
  std::vector<LengthRow> frame_rows_;      // E, per-step values in solving order (PrepareDistanceRows)

  uint32_t RowCount() const { return static_cast<uint32_t>(rest_lengths_.size()); }
};

// One row in table order: SolveLengthRow from a to b with the target
// rest * rest_multiplier and the solver's compliance.
inline void SolveDistanceConstraint(uint32_t row, uint32_t a, uint32_t b, float w_a, float w_b, float compliance,
                                    float rest, float rest_multiplier, float compression, float stretching,
                                    float* positions, float* lambdas) {
  SolveLengthRow(row, a, b, w_a, w_b, rest * rest_multiplier, compression, stretching, compliance, positions,
                 lambdas);
}

// The resistance a row runs with: the edge's weight times the frame's
// multiplier, capped at 1.
inline float DistanceResistance(float weight, float multiplier) { return std::min(1.0f, weight * multiplier); }

// Forms the values of each row that stay fixed during a step (target length,
// the two resistances capped at 1), in solving order; run once per step
// before SolveDistanceRows. A table without a schedule runs in table order.
void PrepareDistanceRows(DistanceConstraints& group);

// Runs every row once with the values of PrepareDistanceRows and the
// solver's compliance (see SolveLengthRows), with the result of running
// them in table order. With `attraction` (N, the shape solver's pull of this
// step), a row whose two ends are both at attraction 1 or more is skipped
// and its multiplier left alone. During a step the multiplier of the row at
// place k of the schedule stands at lambda_base_ + k.
void SolveDistanceRows(const DistanceConstraints& group, float compliance, float* positions, float* lambdas,
                       const float* attraction = nullptr);

// One row per edge in id order from the rest positions. edge_vertices: 2E,
// the two ends of each edge in the host's order; compression_map and
// stretching_map: N, resistances already clamped to [0, 1]. The inverse
// masses start at 1 (N); lambdas grows by E zeroed rows. Also orders the
// rows for solving.
void BuildDistanceConstraints(DistanceConstraints& group, const std::vector<int32_t>& edge_vertices,
                              const std::vector<float>& positions, const std::vector<float>& compression_map,
                              const std::vector<float>& stretching_map, std::vector<float>& lambdas);

}  // namespace myo_core
