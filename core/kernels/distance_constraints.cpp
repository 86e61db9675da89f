#include "core/kernels/distance_constraints.h"

#include <omp.h>

#include "core/kernels/row_schedule.h"
#include "core/solver/parallel_levels.h"

namespace myo_core {

void PrepareDistanceRows(DistanceConstraints& group) {
  const uint32_t rows = group.RowCount();
  if (group.schedule_.size() != rows || group.schedule_levels_.size() < 2)
    TableOrderSchedule(rows, group.schedule_, group.schedule_levels_);
  group.frame_rows_.resize(rows);
#pragma omp parallel for schedule(static) if (rows >= kParallelPrepareRows)
  for (int64_t k = 0; k < static_cast<int64_t>(rows); ++k) {
    const uint32_t e = group.schedule_[k];
    LengthRow& row = group.frame_rows_[k];
    row.i = group.edge_vertices_a_[e];
    row.j = group.edge_vertices_b_[e];
    row.target = group.rest_lengths_[e] * group.rest_length_multiplier_;
    row.compression = DistanceResistance(group.compression_weights_[e], group.compression_multiplier_);
    row.stretching = DistanceResistance(group.stretching_weights_[e], group.stretching_multiplier_);
    row.w_i = group.inverse_masses_[row.i];
    row.w_j = group.inverse_masses_[row.j];
  }
}

void SolveDistanceRows(const DistanceConstraints& group, float compliance, float* positions, float* lambdas,
                       const float* attraction) {
  SolveLengthRows(group.frame_rows_, group.schedule_levels_, compliance, attraction, positions,
                  lambdas + group.lambda_base_);
}

void BuildDistanceConstraints(DistanceConstraints& group, const std::vector<int32_t>& edge_vertices,
                              const std::vector<float>& positions, const std::vector<float>& compression_map,
                              const std::vector<float>& stretching_map, std::vector<float>& lambdas) {
  const std::size_t edge_count = edge_vertices.size() / 2;
  group.rest_lengths_.assign(edge_count, 0.0f);
  group.edge_vertices_a_.assign(edge_count, 0u);
  group.edge_vertices_b_.assign(edge_count, 0u);
  group.compression_weights_.assign(edge_count, 0.0f);
  group.stretching_weights_.assign(edge_count, 0.0f);
  group.lambda_base_ = ReserveLambdaRows(lambdas, edge_count);
  group.inverse_masses_.assign(positions.size() / 3, 1.0f);

  const float* p = positions.data();
  for (std::size_t e = 0; e < edge_count; ++e) {
    const uint32_t a = static_cast<uint32_t>(edge_vertices[2 * e]);
    const uint32_t b = static_cast<uint32_t>(edge_vertices[2 * e + 1]);
    group.edge_vertices_a_[e] = a;
    group.edge_vertices_b_[e] = b;
    group.rest_lengths_[e] = Length(Load3(p, b) - Load3(p, a));
    group.compression_weights_[e] = (compression_map[a] + compression_map[b]) * 0.5f;
    group.stretching_weights_[e] = (stretching_map[a] + stretching_map[b]) * 0.5f;
  }

  std::vector<int32_t> starts(edge_count), ends(edge_count);  // E each, the schedule's corners
  for (std::size_t e = 0; e < edge_count; ++e) {
    starts[e] = edge_vertices[2 * e];
    ends[e] = edge_vertices[2 * e + 1];
  }
  RowSchedule schedule = BuildRowSchedule({&starts, &ends}, static_cast<uint32_t>(positions.size() / 3),
                                          RowScheduleWindowFor(omp_get_max_threads()));
  group.schedule_ = std::move(schedule.order);
  group.schedule_levels_ = std::move(schedule.level_offsets);
}

}  // namespace myo_core
