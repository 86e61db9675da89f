#pragma once
// Wall time of a benchmark loop, for per-row, per-step and per-build counters.

#include <chrono>

namespace myo_bench {

class LoopClock {
 public:
  LoopClock() : start_(std::chrono::steady_clock::now()) {}
  double Nanoseconds() const {
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_;
};

}  // namespace myo_bench
