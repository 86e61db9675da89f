#include <gtest/gtest.h>

#include <omp.h>

#include <vector>

#include "core/solver/point_blocks.h"

using namespace myo_core;

namespace {

// Every block starts where the one before it ends, and together they cover
// 0 to N.
void ExpectContiguousCover(const PointBlocks& blocks, uint32_t point_count) {
  ASSERT_EQ(blocks.thread_block_sizes_.size(), static_cast<std::size_t>(blocks.thread_count_));
  ASSERT_EQ(blocks.thread_block_offsets_.size(), static_cast<std::size_t>(blocks.thread_count_));
  uint32_t next = 0;
  for (int32_t b = 0; b < blocks.thread_count_; ++b) {
    EXPECT_EQ(blocks.thread_block_offsets_[b], next) << "block " << b;
    EXPECT_LE(blocks.thread_block_sizes_[b], blocks.thread_block_max_);
    next += blocks.thread_block_sizes_[b];
  }
  EXPECT_EQ(next, point_count);
}

}  // namespace

TEST(PointBlocksTest, FirstBlocksTakeTheRemainderAndSpareThreadsGetNone) {
  PointBlocks blocks;
  BuildPointBlocks(10, 4, blocks);
  EXPECT_EQ(blocks.thread_block_sizes_, (std::vector<uint32_t>{3, 3, 2, 2}));
  ExpectContiguousCover(blocks, 10);

  BuildPointBlocks(3, 8, blocks);
  EXPECT_EQ(blocks.thread_block_max_, 1u);
  EXPECT_EQ(blocks.thread_block_sizes_, (std::vector<uint32_t>{1, 1, 1, 0, 0, 0, 0, 0}));
  ExpectContiguousCover(blocks, 3);

  BuildPointBlocks(0, 2, blocks);
  EXPECT_EQ(blocks.thread_block_max_, 0u);
  ExpectContiguousCover(blocks, 0);

  // A rebuild with fewer threads drops the old blocks; no thread count below
  // one block.
  BuildPointBlocks(5, 0, blocks);
  EXPECT_EQ(blocks.thread_count_, 1);
  EXPECT_EQ(blocks.thread_block_sizes_, std::vector<uint32_t>{5});
}

TEST(PointBlocksTest, EveryPointIsVisitedOnceWhateverTheThreadCount) {
  const int saved = omp_get_max_threads();
  PointBlocks blocks;
  BuildPointBlocks(101, 4, blocks);
  for (int threads : {1, 2, 4, 7}) {
    omp_set_num_threads(threads);
    std::vector<int> visits(101, 0);
    ForEachBlock(blocks, [&](uint32_t first, uint32_t count) {
      for (uint32_t i = first; i < first + count; ++i) ++visits[i];
    });
    EXPECT_EQ(visits, std::vector<int>(101, 1)) << threads << " threads";
  }
  omp_set_num_threads(saved);
}
