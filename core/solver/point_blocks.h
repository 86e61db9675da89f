#pragma once
// Contiguous point ranges, one per thread, fixed at initialisation so that a
// per-point pass that runs many times per step needs no schedule of its own.

#include <cstdint>
#include <vector>

namespace myo_core {

struct PointBlocks {
  int32_t thread_count_ = 0;                   // number of blocks
  uint32_t thread_block_max_ = 0;              // size of the largest block
  std::vector<uint32_t> thread_block_sizes_;   // thread_count_, points of each block
  std::vector<uint32_t> thread_block_offsets_; // thread_count_, first point of each block
};

// Cuts point_count points into thread_count contiguous blocks: with
// q = N / threads and r = N mod threads, the first r blocks hold q + 1 points
// and the others q. The caller passes omp_get_max_threads(); a count below 1
// is taken as 1.
void BuildPointBlocks(uint32_t point_count, int32_t thread_count, PointBlocks& blocks);

// Calls block_pass(first, count) once for every block, the blocks shared out
// over the threads of one parallel region by block index (static, one block a
// chunk); count is the block's size, never above thread_block_max_. Each block
// runs exactly once whatever the number of threads, so a pass whose points
// share nothing gives the same result with any count.
template <typename BlockPass>
void ForEachBlock(const PointBlocks& blocks, BlockPass&& block_pass) {
#pragma omp parallel for schedule(static, 1)
  for (int32_t b = 0; b < blocks.thread_count_; ++b) {
    const uint32_t size = blocks.thread_block_sizes_[b];
    block_pass(blocks.thread_block_offsets_[b], size < blocks.thread_block_max_ ? size : blocks.thread_block_max_);
  }
}

}  // namespace myo_core
