#include "core/solver/parallel_levels.h"

#include <algorithm>
#include <thread>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace myo_core {

namespace {

std::atomic<uint32_t> level_threading_minimum{64};

inline void Pause() {
#if defined(__SSE2__) || defined(_M_X64)
  _mm_pause();
#endif
}

}  // namespace

uint32_t LevelThreadingMinimum() { return level_threading_minimum.load(std::memory_order_relaxed); }

void SetLevelThreadingMinimum(uint32_t rows) { level_threading_minimum.store(rows, std::memory_order_relaxed); }

int LevelPassThreads(uint64_t rows, uint64_t levels) {
  if (levels == 0 || omp_in_parallel()) return 1;
  if (rows < static_cast<uint64_t>(LevelThreadingMinimum()) * levels) return 1;
  return std::min(omp_get_max_threads(), kMaxLevelThreads);
}

void BackOff(uint32_t& spins) {
  // A short spin covers the usual wait of a few hundred nanoseconds; past it
  // the other thread is probably not running, and yielding lets it.
  if (spins++ < 4096) Pause();
  else std::this_thread::yield();
}

}  // namespace myo_core
