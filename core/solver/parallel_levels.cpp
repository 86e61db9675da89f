#include "core/solver/parallel_levels.h"

#include <algorithm>
#include <thread>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace myo_core {

namespace {

std::atomic<uint32_t> level_threading_minimum{128};

inline void Pause() {
#if defined(__SSE2__) || defined(_M_X64)
  _mm_pause();
#endif
}

}  // namespace

uint32_t LevelThreadingMinimum() { return level_threading_minimum.load(std::memory_order_relaxed); }

void SetLevelThreadingMinimum(uint32_t rows) { level_threading_minimum.store(rows, std::memory_order_relaxed); }

int LevelPassThreads(uint32_t largest_level) {
  if (omp_in_parallel() || largest_level < LevelThreadingMinimum()) return 1;
  return std::min(omp_get_max_threads(), kMaxLevelThreads);
}

void BackOff(uint32_t& spins) {
  // A short spin covers the usual wait of a few hundred nanoseconds; past it
  // the other thread is probably not running, and yielding lets it.
  if (spins++ < 4096) Pause();
  else std::this_thread::yield();
}

}  // namespace myo_core
