#include "core/kernels/distance_constraints.h"

#include <cmath>

#include "core/kernels/row_schedule.h"

namespace myo_core {

namespace {

// Both ends of an edge sit on their attraction targets: the row is skipped,
// its multiplier left alone.
inline bool BothAttracted(const float* attraction, uint32_t a, uint32_t b) {
  return attraction != nullptr && !(attraction[a] < 1.0f) && !(attraction[b] < 1.0f);
}

// SolveDistanceConstraint over kLanes rows that share no point, written lane
// by lane so that the compiler can keep each operation in vector registers.
// Every lane performs the scalar kernel's operations in the scalar kernel's
// order; a lane whose weights sum below 1e-6 computes but writes nothing.
template <uint32_t kLanes>
void SolveDistanceBatch(const DistanceConstraints& group, const uint32_t* rows, float compliance,
                        const float* attraction, float* positions, float* lambdas) {
  const float* w = group.inverse_masses_.data();
  uint32_t a[kLanes], b[kLanes];
  float pax[kLanes], pay[kLanes], paz[kLanes], pbx[kLanes], pby[kLanes], pbz[kLanes];
  float wa[kLanes], wb[kLanes], target[kLanes], compression[kLanes], stretching[kLanes], lambda[kLanes];
  for (uint32_t l = 0; l < kLanes; ++l) {
    const uint32_t e = rows[l];
    a[l] = group.edge_vertices_a_[e];
    b[l] = group.edge_vertices_b_[e];
    pax[l] = positions[3 * a[l]];
    pay[l] = positions[3 * a[l] + 1];
    paz[l] = positions[3 * a[l] + 2];
    pbx[l] = positions[3 * b[l]];
    pby[l] = positions[3 * b[l] + 1];
    pbz[l] = positions[3 * b[l] + 2];
    wa[l] = w[a[l]];
    wb[l] = w[b[l]];
    target[l] = group.rest_lengths_[e] * group.rest_length_multiplier_;
    compression[l] = DistanceResistance(group.compression_weights_[e], group.compression_multiplier_);
    stretching[l] = DistanceResistance(group.stretching_weights_[e], group.stretching_multiplier_);
    lambda[l] = lambdas[group.lambda_base_ + e];
  }
  float nx[kLanes], ny[kLanes], nz[kLanes], delta[kLanes];
  for (uint32_t l = 0; l < kLanes; ++l) {
    const float weight = wa[l] + wb[l];
    const float dx = pbx[l] - pax[l], dy = pby[l] - pay[l], dz = pbz[l] - paz[l];
    const float length = std::sqrt(dx * dx + dy * dy + dz * dz);
    const bool positive = length > 0.0f;
    nx[l] = positive ? dx / length : dx;
    ny[l] = positive ? dy / length : dy;
    nz[l] = positive ? dz / length : dz;
    const float c = length - target[l];
    const float k = c < 0.0f ? compression[l] : stretching[l];
    delta[l] = (-(k * c) - lambda[l] * compliance) /
               (nx[l] * (nx[l] * weight) + ny[l] * weight * ny[l] + nz[l] * weight * nz[l] + compliance);
  }
  for (uint32_t l = 0; l < kLanes; ++l) {
    if (wa[l] + wb[l] < kEpsilon || BothAttracted(attraction, a[l], b[l])) continue;
    const Vec3 n{nx[l], ny[l], nz[l]};
    lambdas[group.lambda_base_ + rows[l]] = lambda[l] + delta[l];
    if (wa[l] >= kEpsilon) Store3(positions, a[l], Vec3{pax[l], pay[l], paz[l]} - n * (delta[l] * wa[l]));
    if (wb[l] >= kEpsilon) Store3(positions, b[l], Vec3{pbx[l], pby[l], pbz[l]} + n * (delta[l] * wb[l]));
  }
}

void SolveDistanceRow(const DistanceConstraints& group, uint32_t e, float compliance, const float* attraction,
                      float* positions, float* lambdas) {
  const float* w = group.inverse_masses_.data();
  const uint32_t a = group.edge_vertices_a_[e];
  const uint32_t b = group.edge_vertices_b_[e];
  if (BothAttracted(attraction, a, b)) return;
  SolveDistanceConstraint(group.lambda_base_ + e, a, b, w[a], w[b], compliance, group.rest_lengths_[e],
                          group.rest_length_multiplier_,
                          DistanceResistance(group.compression_weights_[e], group.compression_multiplier_),
                          DistanceResistance(group.stretching_weights_[e], group.stretching_multiplier_),
                          positions, lambdas);
}

}  // namespace

void SolveDistanceRows(const DistanceConstraints& group, float compliance, float* positions, float* lambdas,
                       const float* attraction) {
  const uint32_t rows = group.RowCount();
  if (group.schedule_.size() != rows || group.schedule_levels_.empty()) {
    for (uint32_t e = 0; e < rows; ++e) SolveDistanceRow(group, e, compliance, attraction, positions, lambdas);
    return;
  }
  const std::vector<uint32_t>& levels = group.schedule_levels_;
  const uint32_t* order = group.schedule_.data();
  for (std::size_t level = 0; level + 1 < levels.size(); ++level) {
    uint32_t begin = levels[level];
    const uint32_t end = levels[level + 1];
    // Wide batches first, then a narrower one, then single rows.
    for (; begin + 16 <= end; begin += 16)
      SolveDistanceBatch<16>(group, order + begin, compliance, attraction, positions, lambdas);
    for (; begin + 8 <= end; begin += 8)
      SolveDistanceBatch<8>(group, order + begin, compliance, attraction, positions, lambdas);
    for (; begin < end; ++begin) SolveDistanceRow(group, order[begin], compliance, attraction, positions, lambdas);
  }
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
  RowSchedule schedule =
      BuildRowSchedule({&starts, &ends}, static_cast<uint32_t>(positions.size() / 3), kRowScheduleWindow);
  group.schedule_ = std::move(schedule.order);
  group.schedule_levels_ = std::move(schedule.level_offsets);
}

}  // namespace myo_core
