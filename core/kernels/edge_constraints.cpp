#include "core/kernels/edge_constraints.h"

#include <algorithm>

#include "core/kernels/row_schedule.h"

namespace myo_core {

void ScheduleEdgeRows(EdgeConstraints& edges, uint32_t point_count) {
  RowSchedule schedule = BuildRowSchedule({&edges.edge_start_, &edges.edge_end_}, point_count);
  edges.schedule_ = std::move(schedule.order);
  edges.schedule_levels_ = std::move(schedule.level_offsets);
  edges.frame_rows_.assign(edges.schedule_.size(), EdgeRowFrame{});
}

void PrepareEdgeRows(EdgeConstraints& edges, float rest_activation) {
  if (edges.schedule_.size() != edges.RowCount()) {
    // A table filled by hand, without a schedule: table order, one row a level.
    edges.schedule_.resize(edges.RowCount());
    edges.schedule_levels_.resize(edges.RowCount() + 1);
    for (uint32_t e = 0; e < edges.RowCount(); ++e) edges.schedule_[e] = edges.schedule_levels_[e] = e;
    edges.schedule_levels_[edges.RowCount()] = edges.RowCount();
  }
  edges.frame_rows_.resize(edges.schedule_.size());
  for (std::size_t k = 0; k < edges.schedule_.size(); ++k) {
    const uint32_t e = edges.schedule_[k];
    EdgeRowFrame& row = edges.frame_rows_[k];
    row.i = static_cast<uint32_t>(edges.edge_start_[e]);
    row.j = static_cast<uint32_t>(edges.edge_end_[e]);
    row.lambda_row = edges.lambda_base_ + e;
    row.target = ActivatedRestLength(Load3(edges.rest_vectors_.data(), e), Load3(edges.edge_fibers_.data(), e),
                                     edges.activation_, rest_activation, edges.rest_length_multiplier_);
    row.compression = std::min(1.0f, edges.edge_compression_[e] * edges.compression_multiplier_);
    row.stretching = std::min(1.0f, edges.edge_stretching_[e] * edges.stretching_multiplier_);
  }
}

namespace {

// SolveEdgeRow over kLanes rows that share no point, written lane by lane so
// that the compiler can keep each operation in vector registers. Every lane
// performs the scalar kernel's operations in the scalar kernel's order.
template <uint32_t kLanes>
void SolveEdgeBatch(const EdgeRowFrame* rows, const float* w, float compliance, float* positions,
                    float* lambdas) {
  float pix[kLanes], piy[kLanes], piz[kLanes], pjx[kLanes], pjy[kLanes], pjz[kLanes];
  float wi[kLanes], wj[kLanes], target[kLanes], compression[kLanes], stretching[kLanes], lambda[kLanes];
  for (uint32_t l = 0; l < kLanes; ++l) {
    const EdgeRowFrame& row = rows[l];
    pix[l] = positions[3 * row.i];
    piy[l] = positions[3 * row.i + 1];
    piz[l] = positions[3 * row.i + 2];
    pjx[l] = positions[3 * row.j];
    pjy[l] = positions[3 * row.j + 1];
    pjz[l] = positions[3 * row.j + 2];
    wi[l] = w[row.i];
    wj[l] = w[row.j];
    target[l] = row.target;
    compression[l] = row.compression;
    stretching[l] = row.stretching;
    lambda[l] = lambdas[row.lambda_row];
  }
  float nx[kLanes], ny[kLanes], nz[kLanes], delta[kLanes];
  for (uint32_t l = 0; l < kLanes; ++l) {
    const float weight = wi[l] + wj[l];
    const float dx = pjx[l] - pix[l], dy = pjy[l] - piy[l], dz = pjz[l] - piz[l];
    const float length = std::sqrt(dx * dx + dy * dy + dz * dz);
    const float qx = dx / length, qy = dy / length, qz = dz / length;
    const bool positive = length > 0.0f;
    nx[l] = positive ? qx : dx;
    ny[l] = positive ? qy : dy;
    nz[l] = positive ? qz : dz;
    const float violation = length - target[l];
    const float k = violation < 0.0f ? compression[l] : stretching[l];
    delta[l] = (-(k * violation) - lambda[l] * compliance) /
               (nx[l] * weight * nx[l] + ny[l] * weight * ny[l] + nz[l] * weight * nz[l] + compliance);
  }
  for (uint32_t l = 0; l < kLanes; ++l) {
    if (wi[l] + wj[l] < kEpsilon) continue;
    const EdgeRowFrame& row = rows[l];
    const Vec3 n{nx[l], ny[l], nz[l]};
    lambdas[row.lambda_row] = lambda[l] + delta[l];
    if (wi[l] >= kEpsilon) Store3(positions, row.i, Vec3{pix[l], piy[l], piz[l]} - n * (delta[l] * wi[l]));
    if (wj[l] >= kEpsilon) Store3(positions, row.j, Load3(positions, row.j) + n * (delta[l] * wj[l]));
  }
}

}  // namespace

void SolveEdgeRows(const EdgeConstraints& edges, float compliance, float* positions, float* lambdas) {
  const float* w = edges.inverse_masses_.data();
  const EdgeRowFrame* rows = edges.frame_rows_.data();
  const std::vector<uint32_t>& levels = edges.schedule_levels_;
  for (std::size_t level = 0; level + 1 < levels.size(); ++level) {
    uint32_t begin = levels[level];
    const uint32_t end = levels[level + 1];
    // Wide batches first, then a narrower one, then single rows.
    for (; begin + 16 <= end; begin += 16) SolveEdgeBatch<16>(rows + begin, w, compliance, positions, lambdas);
    for (; begin + 8 <= end; begin += 8) SolveEdgeBatch<8>(rows + begin, w, compliance, positions, lambdas);
    for (; begin < end; ++begin) {
      const EdgeRowFrame& row = rows[begin];
      SolveEdgeRow(row.lambda_row, row.i, row.j, w[row.i], w[row.j], compliance, row.target, row.compression,
                   row.stretching, positions, lambdas);
    }
  }
}

}  // namespace myo_core
