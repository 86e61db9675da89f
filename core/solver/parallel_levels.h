#pragma once
// Runs the levels of a row schedule (see RowSchedule) on the threads of one
// parallel region, with the result of running them one after the other.
//
// The rows of one level share no point, so every thread takes a contiguous
// share of each level. A thread starts a level only once every other thread
// has finished the level before: that is all the order rows of different
// levels need, since a row depends on rows of lower levels only. The hand-
// over is one counter per thread rather than a team barrier, so a level costs
// the threads one look at each other's counter.

#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <vector>

namespace myo_core {

// Passes of independent per-row work (packing a step's row values) over at
// least this many rows are shared out over the threads.
constexpr int64_t kParallelPrepareRows = 65536;

// Most threads a level pass runs on; a larger team is cut to this size.
constexpr int kMaxLevelThreads = 64;

// The least number of rows of a level that is shared out over the threads,
// 64: on fewer, the hand-over between threads costs more than the rows it
// shares. Smaller levels in a row run together on one thread, and a pass
// with no larger level runs on the calling thread alone. Tests lower it so
// that small tables take the threaded path; the result is the same either
// way.
uint32_t LevelThreadingMinimum();
void SetLevelThreadingMinimum(uint32_t rows);

// The least number of rows of a pass that opens threads: starting and
// joining threads, which waits for a thread the system has not run yet on a
// busy machine, is worth it only on large tables.
constexpr uint32_t kLevelPassRows = 65536;

// Threads a pass of `rows` rows may run on: 1 inside a parallel region or
// below kLevelPassRows rows (fewer when tests lower the minimum), else
// omp_get_max_threads() up to kMaxLevelThreads. It runs on them only when a
// level reaches the minimum.
int LevelPassThreads(uint32_t rows);

// The share of one thread in every level: `claimed` counts the levels whose
// share has been taken, by the thread or by another, and `finished` those
// whose share is done. A share is taken once, by whoever gets to it first.
struct alignas(64) LevelShareState {
  std::atomic<uint32_t> claimed{0};
  std::atomic<uint32_t> finished{0};
};

// Takes the share of `level` if nobody has; all shares of the level before
// must be finished.
inline bool ClaimLevelShare(LevelShareState& state, uint32_t level) {
  uint32_t expected = level;
  return state.claimed.load(std::memory_order_relaxed) == level &&
         state.claimed.compare_exchange_strong(expected, level + 1, std::memory_order_acq_rel);
}

// A busy machine: when the first thread of several passes in a row ended up
// solving nearly all the shares itself, the others were not running, and
// starting them cost more than it gave. The next passes then run on one
// thread, and a later one tries again. The result is the same either way.
bool LevelPassesHeldBack();
void NoteLevelPassShares(uint32_t first_thread_shares, uint32_t all_shares);

// Pauses the calling thread a little longer each time it waits in vain.
void BackOff(uint32_t& spins);

// The share of thread `t` of a team of `team` in rows [begin, end).
inline void LevelShare(uint32_t begin, uint32_t end, int t, int team, uint32_t& first, uint32_t& last) {
  const uint64_t size = end - begin;
  first = begin + static_cast<uint32_t>(size * static_cast<uint64_t>(t) / static_cast<uint64_t>(team));
  last = begin + static_cast<uint32_t>(size * static_cast<uint64_t>(t + 1) / static_cast<uint64_t>(team));
}

// Calls chunk_pass(first, last) over the rows of every level, level after
// level; rows [first, last) lie within one level. level_offsets: levels + 1
// ascending offsets into the schedule's order.
//
// The pass walks units: a level of at least the minimum rows, shared out
// over the team, or a run of smaller levels, all given to the first thread.
// Each thread solves its share of a unit once every share of the unit before
// is done. A thread that finds a share of the unit before not yet begun
// solves it itself, so that a thread the system has set aside does not hold
// the others up: shares move to whoever runs, and the result stays that of
// one thread.
template <typename ChunkPass>
void ForEachLevelChunk(const std::vector<uint32_t>& level_offsets, ChunkPass&& chunk_pass) {
  if (level_offsets.size() < 2) return;
  const uint32_t levels = static_cast<uint32_t>(level_offsets.size() - 1);
  const uint32_t minimum = LevelThreadingMinimum();
  int threads = LevelPassesHeldBack() ? 1 : LevelPassThreads(level_offsets.back() - level_offsets.front());
  // A pass that could open threads looks for a level to share, up to the
  // first one.
  if (threads > 1) {
    bool shared_level = false;
    for (uint32_t level = 0; level < levels && !shared_level; ++level)
      shared_level = level_offsets[level + 1] - level_offsets[level] >= minimum;
    if (!shared_level) threads = 1;
  }
  const auto solve_levels = [&](uint32_t first_level, uint32_t last_level) {
    for (uint32_t level = first_level; level < last_level; ++level)
      if (level_offsets[level] < level_offsets[level + 1]) chunk_pass(level_offsets[level], level_offsets[level + 1]);
  };
  if (threads <= 1) {
    solve_levels(0, levels);
    return;
  }
  const auto shared = [&](uint32_t level) { return level_offsets[level + 1] - level_offsets[level] >= minimum; };
  LevelShareState shares[kMaxLevelThreads];
  std::atomic<uint32_t> all_shares{0}, first_thread_shares{0};
#pragma omp parallel num_threads(threads)
  {
    const int t = omp_get_thread_num(), team = omp_get_num_threads();
    uint32_t solved = 0;  // shares of shared levels this thread solved
    // Unit `unit` spans levels [begin, end); each thread walks the same units.
    const auto solve_share = [&](uint32_t unit, uint32_t begin, uint32_t end, int owner) {
      if (end - begin == 1 && shared(begin)) {
        uint32_t first = 0, last = 0;
        LevelShare(level_offsets[begin], level_offsets[end], owner, team, first, last);
        if (first < last) chunk_pass(first, last);
        ++solved;
      } else if (owner == 0) {
        solve_levels(begin, end);
      }
      shares[owner].finished.store(unit + 1, std::memory_order_release);
    };
    uint32_t unit = 0, previous_begin = 0, previous_end = 0;
    for (uint32_t begin = 0; begin <= levels; ++unit) {
      uint32_t end = begin + 1;
      if (begin < levels && !shared(begin))
        while (end < levels && !shared(end)) ++end;
      // Every share of the unit before must be done, this thread's own too:
      // another thread may still be solving it.
      if (unit > 0)
        for (int u = 0; u < team; ++u)
          for (uint32_t spins = 0; shares[u].finished.load(std::memory_order_acquire) < unit;) {
            if (ClaimLevelShare(shares[u], unit - 1)) solve_share(unit - 1, previous_begin, previous_end, u);
            else BackOff(spins);
          }
      if (begin == levels) break;  // the end: every share of the last unit done
      if (ClaimLevelShare(shares[t], unit)) solve_share(unit, begin, end, t);
      previous_begin = begin;
      previous_end = end;
      begin = end;
    }
    all_shares.fetch_add(solved, std::memory_order_relaxed);
    if (t == 0) first_thread_shares.store(solved, std::memory_order_relaxed);
  }
  NoteLevelPassShares(first_thread_shares.load(), all_shares.load());
}

}  // namespace myo_core
