#pragma once
// An order of constraint rows that solves to the same bits as table order
// but lets independent rows overlap.
//
// Gauss-Seidel makes each row read what earlier rows wrote. Two rows that
// share no point do not see each other, so only the order of rows that share
// a point matters. The schedule puts every row at the level one above the
// last earlier row that touches any of its points, and lists rows level by
// level, in table order within a level: each point still meets its rows in
// table order, so positions and multipliers come out bit for bit the same,
// while the rows of one level carry no dependency between them.

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace myo_core {

struct RowSchedule {
  std::vector<uint32_t> order;          // R, rows in solving order
  std::vector<uint32_t> level_offsets;  // levels + 1, ranges into order
};

// Rows per window of a windowed schedule: a few thousand rows touch few
// enough points to stay in the first cache levels, and many enough to give
// every level several rows on a mesh.
constexpr uint32_t kRowScheduleWindow = 4096;

// The window of the tables a solver builds for `threads` threads: windows
// of kRowScheduleWindow rows, whose levels touch few points, when one thread
// runs every level; whole-table levels, the widest there are, when the rows
// of a level are shared out over several threads.
inline uint32_t RowScheduleWindowFor(int threads) { return threads > 1 ? 0u : kRowScheduleWindow; }

// rows_points: the arrays of point indices of the rows, one array per corner
// (e.g. starts and ends of edges), each of R entries. Indices outside
// [0, point_count) make the row depend on everything before it.
//
// window 0 levels the whole table at once: the most rows per level, but a
// level may span the whole mesh. A window of W cuts the table into runs of W
// rows in table order and levels each run on its own, after all runs before
// it: the levels of a run touch the few points of those W rows, and the
// solving order stays close to table order. Either way each point meets its
// rows in table order.
RowSchedule BuildRowSchedule(std::initializer_list<const std::vector<int32_t>*> rows_points,
                             uint32_t point_count, uint32_t window = 0);

// The schedule of a table filled without one: table order, one row a level.
void TableOrderSchedule(uint32_t rows, std::vector<uint32_t>& order, std::vector<uint32_t>& level_offsets);

}  // namespace myo_core
