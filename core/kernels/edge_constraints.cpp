#include "core/kernels/edge_constraints.h"

#include <omp.h>

#include <algorithm>
#include <cmath>

#include "core/kernels/row_schedule.h"
#include "core/math/vector_clones.h"
#include "core/solver/parallel_levels.h"

namespace myo_core {

void ScheduleEdgeRows(EdgeConstraints& edges, uint32_t point_count) {
  RowSchedule schedule = BuildRowSchedule({&edges.edge_start_, &edges.edge_end_}, point_count);
  edges.schedule_ = std::move(schedule.order);
  edges.schedule_levels_ = std::move(schedule.level_offsets);
  edges.frame_rows_.assign(edges.schedule_.size(), LengthRow{});
}

namespace {

// Edges per hand-out of the target lengths.
constexpr int64_t kTargetBlock = 1024;

// The target lengths of edges [first, last) in table order: read in
// sequence, eight edges at a time (lane by lane, so that the compiler keeps
// each operation in vector registers), rather than one by one in solving
// order.
MYO_VECTOR_CLONES void ActivatedRestLengths(const float* rest_vectors, const float* fibers, float activation,
                                            float rest_activation, float multiplier, int64_t first, int64_t last,
                                            float* targets) {
  constexpr int64_t kLanes = 8;
  int64_t e = first;
  for (; e + kLanes <= last; e += kLanes) {
    Vec3 rest[kLanes], fiber[kLanes];
    for (int64_t l = 0; l < kLanes; ++l) {
      rest[l] = Load3(rest_vectors, static_cast<uint32_t>(e + l));
      fiber[l] = Load3(fibers, static_cast<uint32_t>(e + l));
    }
    for (int64_t l = 0; l < kLanes; ++l)
      targets[e + l] = ActivatedRestLength(rest[l], fiber[l], activation, rest_activation, multiplier);
  }
  for (; e < last; ++e)
    targets[e] = ActivatedRestLength(Load3(rest_vectors, static_cast<uint32_t>(e)),
                                     Load3(fibers, static_cast<uint32_t>(e)), activation, rest_activation,
                                     multiplier);
}

}  // namespace

void PrepareEdgeRows(EdgeConstraints& edges, float rest_activation) {
  if (edges.schedule_.size() != edges.RowCount() || edges.schedule_levels_.size() < 2)
    TableOrderSchedule(edges.RowCount(), edges.schedule_, edges.schedule_levels_);
  edges.frame_rows_.resize(edges.schedule_.size());
  const int64_t rows = static_cast<int64_t>(edges.schedule_.size());
  edges.frame_targets_.resize(rows);
  float* targets = edges.frame_targets_.data();
#pragma omp parallel if (rows >= kParallelPrepareRows)
  {
#pragma omp for schedule(static)
    for (int64_t first = 0; first < rows; first += kTargetBlock)
      ActivatedRestLengths(edges.rest_vectors_.data(), edges.edge_fibers_.data(), edges.activation_,
                           rest_activation, edges.rest_length_multiplier_, first,
                           std::min(first + kTargetBlock, rows), targets);
#pragma omp for schedule(static)
    for (int64_t k = 0; k < rows; ++k) {
      const uint32_t e = edges.schedule_[k];
      LengthRow& row = edges.frame_rows_[k];
      row.i = static_cast<uint32_t>(edges.edge_start_[e]);
      row.j = static_cast<uint32_t>(edges.edge_end_[e]);
      row.target = targets[e];
      row.compression = std::min(1.0f, edges.edge_compression_[e] * edges.compression_multiplier_);
      row.stretching = std::min(1.0f, edges.edge_stretching_[e] * edges.stretching_multiplier_);
      row.w_i = edges.inverse_masses_[row.i];
      row.w_j = edges.inverse_masses_[row.j];
    }
  }
}

void SolveEdgeRows(const EdgeConstraints& edges, float compliance, float* positions, float* lambdas) {
  SolveLengthRows(edges.frame_rows_, edges.schedule_levels_, compliance, nullptr, positions,
                  lambdas + edges.lambda_base_);
}

}  // namespace myo_core
