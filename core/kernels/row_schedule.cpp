#include "core/kernels/row_schedule.h"

#include <algorithm>

namespace myo_core {

RowSchedule BuildRowSchedule(std::initializer_list<const std::vector<int32_t>*> rows_points,
                             uint32_t point_count, uint32_t window) {
  RowSchedule schedule;
  std::size_t rows = 0;
  for (const auto* corner : rows_points) rows = std::max(rows, corner->size());
  for (const auto* corner : rows_points) rows = std::min(rows, corner->size());

  // next_level[p]: the lowest level at which a new row touching p may run.
  std::vector<uint32_t> next_level(point_count, 0);
  std::vector<uint32_t> row_level(rows, 0);
  uint32_t barrier = 0;  // rows with an unknown point order after all before them
  uint32_t levels = 0;
  const std::size_t run = window == 0 ? rows : window;
  for (std::size_t r = 0; r < rows; ++r) {
    // A new window starts above every level so far, which no point's
    // next_level exceeds.
    if (r % run == 0) barrier = levels;
    uint32_t level = barrier;
    bool valid = true;
    for (const auto* corner : rows_points) {
      const int32_t p = (*corner)[r];
      if (p < 0 || static_cast<uint32_t>(p) >= point_count) valid = false;
      else level = std::max(level, next_level[p]);
    }
    if (!valid) level = levels;
    row_level[r] = level;
    for (const auto* corner : rows_points) {
      const int32_t p = (*corner)[r];
      if (p >= 0 && static_cast<uint32_t>(p) < point_count) next_level[p] = level + 1;
    }
    levels = std::max(levels, level + 1);
    if (!valid) barrier = level + 1;
  }

  // Counting sort by level, stable, so rows keep table order within a level.
  schedule.level_offsets.assign(levels + 1, 0);
  for (uint32_t level : row_level) ++schedule.level_offsets[level + 1];
  for (uint32_t l = 0; l < levels; ++l) schedule.level_offsets[l + 1] += schedule.level_offsets[l];
  schedule.order.resize(rows);
  std::vector<uint32_t> fill(schedule.level_offsets.begin(), schedule.level_offsets.end() - 1);
  for (std::size_t r = 0; r < rows; ++r) schedule.order[fill[row_level[r]]++] = static_cast<uint32_t>(r);
  return schedule;
}

void TableOrderSchedule(uint32_t rows, std::vector<uint32_t>& order, std::vector<uint32_t>& level_offsets) {
  order.resize(rows);
  level_offsets.resize(static_cast<std::size_t>(rows) + 1);
  for (uint32_t r = 0; r <= rows; ++r) {
    if (r < rows) order[r] = r;
    level_offsets[r] = r;
  }
}

}  // namespace myo_core
