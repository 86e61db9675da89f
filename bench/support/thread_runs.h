#pragma once
// What the step benchmarks share: the thread counts they run at (1, 2 and
// the machine's number of processors) and the speed-up of each run over the
// 1-thread run of the same case.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace myo_bench {

// 1, 2 and the machine's number of processors, each once, ascending.
inline std::vector<int> ThreadCounts() {
  std::vector<int> counts{1, 2, omp_get_num_procs()};
  std::sort(counts.begin(), counts.end());
  counts.erase(std::unique(counts.begin(), counts.end()), counts.end());
  return counts;
}

// One run of each case per thread count, the threads as the case's second
// argument: {case[0], threads, case[1], ...}.
inline void ArgsWithThreads(benchmark::internal::Benchmark* benchmark,
                            const std::vector<std::vector<int64_t>>& cases) {
  for (const std::vector<int64_t>& c : cases)
    for (int threads : ThreadCounts()) {
      std::vector<int64_t> args{c.front(), threads};
      args.insert(args.end(), c.begin() + 1, c.end());
      benchmark->Args(args);
    }
}

// OpenMP's thread count for the life of the object.
class OmpThreads {
 public:
  explicit OmpThreads(int threads) : saved_(omp_get_max_threads()) { omp_set_num_threads(threads); }
  ~OmpThreads() { omp_set_num_threads(saved_); }
  OmpThreads(const OmpThreads&) = delete;
  OmpThreads& operator=(const OmpThreads&) = delete;

 private:
  int saved_;
};

// Sets "ms_per_step" and, past one thread, "speedup": the 1-thread time of
// the same case over this one. A case is the benchmark's name without its
// thread argument, given by the caller as `key`.
inline void ReportStep(benchmark::State& state, const std::string& key, int threads, double ms_per_step) {
  static std::map<std::string, double> single_thread_ms;
  state.counters["ms_per_step"] = ms_per_step;
  state.counters["threads"] = threads;
  if (threads == 1) single_thread_ms[key] = ms_per_step;
  const auto single = single_thread_ms.find(key);
  if (threads > 1 && single != single_thread_ms.end()) state.counters["speedup"] = single->second / ms_per_step;
}

}  // namespace myo_bench
