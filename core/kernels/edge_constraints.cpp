#include "core/kernels/edge_constraints.h"

#include <algorithm>

#include "core/kernels/row_schedule.h"
#include "core/solver/parallel_levels.h"

namespace myo_core {

void ScheduleEdgeRows(EdgeConstraints& edges, uint32_t point_count) {
  RowSchedule schedule = BuildRowSchedule({&edges.edge_start_, &edges.edge_end_}, point_count);
  edges.schedule_ = std::move(schedule.order);
  edges.schedule_levels_ = std::move(schedule.level_offsets);
  edges.frame_rows_.assign(edges.schedule_.size(), LengthRow{});
}

void PrepareEdgeRows(EdgeConstraints& edges, float rest_activation) {
  if (edges.schedule_.size() != edges.RowCount() || edges.schedule_levels_.size() < 2)
    TableOrderSchedule(edges.RowCount(), edges.schedule_, edges.schedule_levels_);
  edges.frame_rows_.resize(edges.schedule_.size());
  // Each row's multiplier sits at its place in the solving order, so that
  // the row loop walks the multipliers in sequence.
  const int64_t rows = static_cast<int64_t>(edges.schedule_.size());
#pragma omp parallel for schedule(static) if (rows >= kParallelPrepareRows)
  for (int64_t k = 0; k < rows; ++k) {
    const uint32_t e = edges.schedule_[k];
    LengthRow& row = edges.frame_rows_[k];
    row.i = static_cast<uint32_t>(edges.edge_start_[e]);
    row.j = static_cast<uint32_t>(edges.edge_end_[e]);
    row.target = ActivatedRestLength(Load3(edges.rest_vectors_.data(), e), Load3(edges.edge_fibers_.data(), e),
                                     edges.activation_, rest_activation, edges.rest_length_multiplier_);
    row.compression = std::min(1.0f, edges.edge_compression_[e] * edges.compression_multiplier_);
    row.stretching = std::min(1.0f, edges.edge_stretching_[e] * edges.stretching_multiplier_);
    row.w_i = edges.inverse_masses_[row.i];
    row.w_j = edges.inverse_masses_[row.j];
  }
}

void SolveEdgeRows(const EdgeConstraints& edges, float compliance, float* positions, float* lambdas) {
  SolveLengthRows(edges.frame_rows_, edges.schedule_levels_, compliance, nullptr, positions,
                  lambdas + edges.lambda_base_);
}

}  // namespace myo_core
