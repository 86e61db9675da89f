#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "core/kernels/edge_constraints.h"
#include "core/kernels/row_schedule.h"
#include "core/kernels/shape_constraints.h"
#include "scenes/muscle_meshes.h"
#include "scenes/muscle_setup.h"
#include "support/solver_runs.h"

using namespace myo_core;

// The whole point of the schedule: the same bits as solving in table order.
TEST(RowScheduleTest, ScheduledRowsGiveTheBitsOfTableOrder) {
  myo_scenes::MuscleScene scene;
  myo_scenes::MuscleSetupOptions options;
  options.shape_preservation = 1.0f;
  options.tendon_ends = 1.0f;
  std::string error;
  ASSERT_TRUE(myo_scenes::AssembleMuscle(myo_scenes::MakeGrid(48, 48, 10.0f, 10.0f), options, scene, error));
  MuscleSolver& solver = scene.solver;
  EdgeConstraints& edges = *solver.edge_constraints_;
  ShapeConstraints& shape = *solver.shape_constraints_;
  edges.activation_ = 0.4f;
  edges.rest_activation_ = 0.1f;
  edges.stretching_multiplier_ = 0.7f;
  shape.group_compliance_ = 0.001f;
  // Disturb the points so that every row does something.
  std::mt19937 random(7);
  std::uniform_real_distribution<float> jitter(-0.2f, 0.2f);
  for (float& p : solver.positions_) p += jitter(random);
  for (uint32_t i = 0; i < solver.point_count_; ++i) {
    edges.inverse_masses_[i] = 0.5f + (i % 3) * 0.25f;
    // Some rows have all three weights below the threshold, though their
    // weighted sum is not: they leave their multiplier alone too.
    shape.inverse_masses_[i] = i < 60 ? 4e-7f : i % 5 == 0 ? 0.0f : 0.5f;
  }
  uint32_t widest = 0;
  for (std::size_t level = 0; level + 1 < shape.schedule_levels_.size(); ++level)
    widest = std::max(widest, shape.schedule_levels_[level + 1] - shape.schedule_levels_[level]);
  ASSERT_GE(widest, 16u) << "levels wide enough to share out over threads";

  std::vector<float> table_positions = solver.positions_, table_lambdas(solver.lambdas_.size(), 0.0f);
  for (int iteration = 0; iteration < 3; ++iteration) {
    myo_test::PlainEdgeRows(edges, 0.01f, edges.rest_activation_, table_positions.data(), table_lambdas.data());
    myo_test::PlainShapeRows(shape, table_positions.data(), table_lambdas.data());
  }

  // Rows of a level shared out over any number of threads: still the bits
  // of table order, with each group's multipliers in solving order.
  PrepareEdgeRows(edges, edges.rest_activation_);
  PrepareShapeRows(shape);
  const std::vector<float> start = solver.positions_, no_lambdas(solver.lambdas_.size(), 0.0f);
  for (int threads = 1; threads <= 4; ++threads) {
    myo_test::ScopedLevelThreads team(threads);
    std::vector<float> positions = start, lambdas = no_lambdas;
    for (int iteration = 0; iteration < 3; ++iteration) {
      SolveEdgeRows(edges, 0.01f, positions.data(), lambdas.data());
      SolveShapeRows(shape, positions.data(), lambdas.data());
    }
    EXPECT_TRUE(myo_test::SameBits(positions, table_positions)) << threads << " threads";
    lambdas = myo_test::InTableOrder(lambdas, edges.lambda_base_, edges.schedule_);
    lambdas = myo_test::InTableOrder(lambdas, shape.lambda_base_, shape.schedule_);
    EXPECT_TRUE(myo_test::SameBits(lambdas, table_lambdas)) << threads << " threads";
  }
}

// Windows level runs of rows one after the other: whatever the window, a row
// comes after every earlier row it shares a point with, no level mixes
// windows, and a row with a point out of range comes after everything
// before it. A window of one row is table order itself.
TEST(RowScheduleTest, WindowsLevelRunsOfRowsOneAfterAnother) {
  std::mt19937 random(11);
  std::uniform_int_distribution<int32_t> point(0, 29);
  std::vector<int32_t> first(300), centre(300), third(300);
  for (std::size_t r = 0; r < first.size(); ++r) {
    first[r] = point(random);
    centre[r] = r % 37 == 5 ? 30 : point(random);  // out of range now and then
    third[r] = point(random);
  }
  const auto shares = [&](std::size_t a, std::size_t b) {
    for (int32_t p : {first[a], centre[a], third[a]})
      if (p == first[b] || p == centre[b] || p == third[b]) return true;
    return false;
  };
  for (uint32_t window : {0u, 1u, 7u, 64u, 1000u}) {
    const RowSchedule schedule = BuildRowSchedule({&first, &centre, &third}, 30, window);
    ASSERT_EQ(schedule.order.size(), first.size());
    ASSERT_EQ(schedule.level_offsets.back(), first.size());
    std::vector<uint32_t> level_of(first.size(), UINT32_MAX);
    for (std::size_t l = 0; l + 1 < schedule.level_offsets.size(); ++l) {
      const uint32_t begin = schedule.level_offsets[l], end = schedule.level_offsets[l + 1];
      ASSERT_LT(begin, end) << "empty level";
      for (uint32_t k = begin; k < end; ++k) {
        ASSERT_EQ(level_of[schedule.order[k]], UINT32_MAX) << "row listed twice";
        level_of[schedule.order[k]] = static_cast<uint32_t>(l);
        if (window > 0) {
          EXPECT_EQ(schedule.order[k] / window, schedule.order[begin] / window) << "level " << l;
        }
        if (k > begin) {
          EXPECT_LT(schedule.order[k - 1], schedule.order[k]);  // table order within a level
        }
      }
    }
    for (std::size_t b = 0; b < first.size(); ++b)
      for (std::size_t a = 0; a < b; ++a) {
        if (shares(a, b) || centre[b] == 30 || centre[a] == 30) {
          EXPECT_LT(level_of[a], level_of[b]) << "rows " << a << ", " << b << " window " << window;
        }
        if (window > 0 && a / window < b / window) {
          EXPECT_LT(level_of[a], level_of[b]);
        }
      }
    if (window == 1) {
      for (std::size_t k = 0; k < first.size(); ++k) EXPECT_EQ(schedule.order[k], k);
    }
  }
}

// Passes in a row whose first thread solved nearly all the shares found the
// others not running: the next passes run on one thread, then a
// later one tries the threads again. Tests that thread every level are
// never held back.
TEST(RowScheduleTest, APassTheOtherThreadsMissedHoldsTheNextOnesBack) {
  ASSERT_GT(LevelThreadingMinimum(), 0u);
  while (LevelPassesHeldBack()) {  // what earlier passes of this process left
  }
  NoteLevelPassShares(24, 32);  // shares move between running threads all the time
  EXPECT_FALSE(LevelPassesHeldBack());
  for (int pass = 0; pass < 2; ++pass) NoteLevelPassShares(31, 32);
  EXPECT_FALSE(LevelPassesHeldBack());  // two may be threads woken late
  NoteLevelPassShares(31, 32);
  uint32_t held = 0;
  while (LevelPassesHeldBack() && held < 1000) ++held;
  EXPECT_GT(held, 8u);
  EXPECT_LT(held, 1000u);
  NoteLevelPassShares(8, 8);  // too few shares to tell
  EXPECT_FALSE(LevelPassesHeldBack());
  for (int pass = 0; pass < 3; ++pass) NoteLevelPassShares(40, 40);
  {
    myo_test::ScopedLevelThreads team(2);
    EXPECT_FALSE(LevelPassesHeldBack());
  }
  while (LevelPassesHeldBack()) {
  }
}
