#include "core/solver/parallel_levels.h"

#include <algorithm>
#include <thread>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace myo_core {

namespace {

std::atomic<uint32_t> level_threading_minimum{64};

// Passes still to run on one thread after a pass found the machine busy.
std::atomic<uint32_t> held_back_passes{0};

// Busy passes in a row: one alone may be a thread woken late.
std::atomic<uint32_t> busy_passes{0};

// Busy passes in a row that hold the next ones back, and how many.
constexpr uint32_t kBusyPassesInARow = 3;
constexpr uint32_t kHeldBackPasses = 16;

inline void Pause() {
#if defined(__SSE2__) || defined(_M_X64)
  _mm_pause();
#endif
}

}  // namespace

uint32_t LevelThreadingMinimum() { return level_threading_minimum.load(std::memory_order_relaxed); }

void SetLevelThreadingMinimum(uint32_t rows) { level_threading_minimum.store(rows, std::memory_order_relaxed); }

int LevelPassThreads(uint32_t rows) {
  const uint64_t minimum = LevelThreadingMinimum();
  if (omp_in_parallel() || rows < std::min<uint64_t>(kLevelPassRows, 1024 * minimum)) return 1;
  return std::min(omp_get_max_threads(), kMaxLevelThreads);
}

bool LevelPassesHeldBack() {
  if (LevelThreadingMinimum() == 0) return false;
  uint32_t left = held_back_passes.load(std::memory_order_relaxed);
  while (left > 0 && !held_back_passes.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
  }
  return left > 0;
}

void NoteLevelPassShares(uint32_t first_thread_shares, uint32_t all_shares) {
  // The other threads solved less than a sixteenth: they hardly ran. (On an
  // idle machine they solve far more, although shares move between threads
  // all the time.)
  const bool busy =
      all_shares >= 16 && 16 * (static_cast<uint64_t>(all_shares) - first_thread_shares) < all_shares;
  if (!busy) {
    busy_passes.store(0, std::memory_order_relaxed);
  } else if (busy_passes.fetch_add(1, std::memory_order_relaxed) + 1 >= kBusyPassesInARow) {
    busy_passes.store(0, std::memory_order_relaxed);
    held_back_passes.store(kHeldBackPasses, std::memory_order_relaxed);
  }
}

void BackOff(uint32_t& spins) {
  // A short spin covers the usual wait of a few hundred nanoseconds; past it
  // the other thread is probably not running, and yielding lets it.
  if (spins++ < 4096) Pause();
  else std::this_thread::yield();
}

}  // namespace myo_core
