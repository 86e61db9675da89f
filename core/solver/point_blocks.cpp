#include "core/solver/point_blocks.h"

namespace myo_core {

void BuildPointBlocks(uint32_t point_count, int32_t thread_count, PointBlocks& blocks) {
  blocks.thread_count_ = thread_count < 1 ? 1 : thread_count;
  const uint32_t threads = static_cast<uint32_t>(blocks.thread_count_);
  const uint32_t q = point_count / threads;
  const uint32_t r = point_count % threads;
  blocks.thread_block_max_ = r != 0 ? q + 1 : q;
  blocks.thread_block_sizes_.assign(threads, q);
  blocks.thread_block_offsets_.assign(threads, 0u);
  uint32_t running = 0;
  for (uint32_t b = 0; b < threads; ++b) {
    blocks.thread_block_offsets_[b] = running;
    if (b < r) ++blocks.thread_block_sizes_[b];
    running += blocks.thread_block_sizes_[b];
  }
}

}  // namespace myo_core
