#include "core/kernels/shape_constraints.h"

#include <omp.h>

#include <algorithm>

#include "core/kernels/row_schedule.h"
#include "core/solver/parallel_levels.h"

namespace myo_core {

void BuildShapeConstraints(ShapeConstraints& group, const std::vector<float>& positions,
                           const std::vector<float>& weights, const std::vector<int32_t>& neighbour_lists,
                           const std::vector<int32_t>& neighbour_counts,
                           const std::vector<int32_t>& neighbour_offsets, std::vector<float>& lambdas) {
  group.inverse_masses_.assign(weights.size(), 0.0f);
  group.rest_distances_.clear();
  group.first_points_.clear();
  group.centre_points_.clear();
  group.third_points_.clear();
  group.lambda_base_ = static_cast<uint32_t>(lambdas.size());

  const float* p = positions.data();
  const uint32_t point_count = static_cast<uint32_t>(
      std::min({weights.size(), positions.size() / 3, neighbour_counts.size(), neighbour_offsets.size()}));
  std::vector<std::pair<int32_t, int32_t>> taken;  // pairs of the current centre
  for (uint32_t i = 0; i < point_count; ++i) {
    taken.clear();
    const int32_t* list = neighbour_lists.data() + neighbour_offsets[i];
    const int32_t count = neighbour_counts[i];
    const Vec3 pi = Load3(p, i);
    for (int32_t jn = 0; jn < count; ++jn) {
      const int32_t j = list[jn];
      if (j == static_cast<int32_t>(i)) continue;
      const Vec3 v = Load3(p, j) - pi;
      int32_t k = j;
      float least_cosine = 0.0f;
      for (int32_t kn = 0; kn < count; ++kn) {
        const int32_t candidate = list[kn];
        if (candidate == static_cast<int32_t>(i) || candidate == j) continue;
        const Vec3 u = Load3(p, candidate) - pi;
        const float product = Length(u) * Length(v);
        if (product < kEpsilon) continue;
        const float cosine = Dot(u, v) / product;
        if (cosine < least_cosine) {
          least_cosine = cosine;
          k = candidate;
        }
      }
      if (k == j) continue;
      const bool seen = std::any_of(taken.begin(), taken.end(), [&](const auto& pair) {
        return (pair.first == j && pair.second == k) || (pair.first == k && pair.second == j);
      });
      if (seen) continue;
      if (weights[j] < kEpsilon || weights[i] < kEpsilon || weights[k] < kEpsilon) continue;
      taken.emplace_back(j, k);
      const Vec3 m = (pi + Load3(p, j) + Load3(p, k)) * 0.33333334f;
      group.first_points_.push_back(j);
      group.centre_points_.push_back(static_cast<int32_t>(i));
      group.third_points_.push_back(k);
      group.rest_distances_.push_back(Length(pi - m));
    }
  }
  ReserveLambdaRows(lambdas, group.RowCount());
  RowSchedule schedule =
      BuildRowSchedule({&group.first_points_, &group.centre_points_, &group.third_points_},
                       static_cast<uint32_t>(weights.size()), RowScheduleWindowFor(omp_get_max_threads()));
  group.schedule_ = std::move(schedule.order);
  group.schedule_levels_ = std::move(schedule.level_offsets);
}

void PrepareShapeRows(ShapeConstraints& shape) {
  const uint32_t rows = shape.RowCount();
  if (shape.schedule_.size() != rows || shape.schedule_levels_.size() < 2)
    TableOrderSchedule(rows, shape.schedule_, shape.schedule_levels_);
  shape.frame_rows_.resize(rows);
#pragma omp parallel for schedule(static) if (rows >= kParallelPrepareRows)
  for (int64_t k = 0; k < static_cast<int64_t>(rows); ++k) {
    const uint32_t r = shape.schedule_[k];
    ShapeRow& row = shape.frame_rows_[k];
    row.a = static_cast<uint32_t>(shape.first_points_[r]);
    row.b = static_cast<uint32_t>(shape.centre_points_[r]);
    row.c = static_cast<uint32_t>(shape.third_points_[r]);
    row.rest = shape.rest_distances_[r];
  }
}

void SolveShapeRows(const ShapeConstraints& shape, float* positions, float* lambdas) {
  if (shape.disabled_) return;
  const float* w = shape.inverse_masses_.data();
  const ShapeRow* rows = shape.frame_rows_.data();
  float* row_lambdas = lambdas + shape.lambda_base_;  // the row at place k has row_lambdas[k]
  const float compliance = shape.group_compliance_;
  ForEachLevelChunk(shape.schedule_levels_, [&](uint32_t begin, uint32_t end) {
    for (uint32_t k = begin; k < end; ++k) {
      const ShapeRow& row = rows[k];
      SolveShapeConstraint(k, row.a, row.b, row.c, w[row.a], w[row.b], w[row.c], compliance, row.rest, positions,
                           row_lambdas);
    }
  });
}

void SetShapeCompliance(ShapeConstraints& group, float dt_squared, float compliance,
                        float shape_stiffness, bool override_stiffness) {
  if (!override_stiffness) {
    group.disabled_ = false;
    group.group_compliance_ = compliance;
    return;
  }
  group.group_compliance_ = (1.0f / std::max(shape_stiffness, 0.0001f)) / dt_squared;
  group.disabled_ = shape_stiffness < kEpsilon;
}

}  // namespace myo_core
