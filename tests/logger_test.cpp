#include "core/log/logger.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/log_capture.h"

namespace {

using myo_test::LoggerStateGuard;
using myo_test::RecordingWorker;

// Sends std::cout into a string for its lifetime.
class CoutCapture {
 public:
  CoutCapture() : previous_(std::cout.rdbuf(buffer_.rdbuf())) {}
  ~CoutCapture() { std::cout.rdbuf(previous_); }
  std::string text() const { return buffer_.str(); }

 private:
  std::ostringstream buffer_;
  std::streambuf* previous_;
};

class LoggerTest : public ::testing::Test {
 protected:
  LoggerStateGuard guard_;
};

// A fresh default worker at threshold 0, printing to the captured stream.
TEST_F(LoggerTest, DefaultWorkerPrintsEachLevelAsOneTaggedLineAndNoWorkerNothing) {
  myo_core::SetWorker(std::make_shared<myo_core::LoggerWorker>());
  CoutCapture out;
  myo_core::LogDebug("a");
  myo_core::LogInfo("b c");
  myo_core::LogWarning("x");
  myo_core::LogError("");
  EXPECT_EQ(out.text(),
            "[MyoForge][Debug] a\n"
            "[MyoForge][Info] b c\n"
            "[MyoForge][Warning] x\n"
            "[MyoForge][Error] \n");
  // Without a worker logging does nothing, and no level passes.
  myo_core::ResetWorker();
  myo_core::LogError("lost");
  myo_core::SetLevel(0);
  EXPECT_EQ(myo_core::GetLevel(), 4);
  EXPECT_EQ(out.text().find("lost"), std::string::npos);
}

// A new worker starts at 0; each threshold lets its level and the ones above
// through. Levels 4 and beyond are never set nor logged, and levels that are
// negative as signed numbers fall below every threshold.
TEST_F(LoggerTest, TheThresholdFiltersLevelsAndOutOfRangeLevelsAreIgnored) {
  auto worker = std::make_shared<RecordingWorker>();
  myo_core::SetWorker(worker);
  EXPECT_EQ(myo_core::GetLevel(), 0);
  const std::vector<std::string> all = {"[MyoForge][Debug] d", "[MyoForge][Info] i", "[MyoForge][Warning] w",
                                        "[MyoForge][Error] e"};
  for (uint32_t threshold = 0; threshold < 4; ++threshold) {
    SCOPED_TRACE(threshold);
    worker->Clear();
    myo_core::SetLevel(threshold);
    myo_core::SetLevel(4);
    EXPECT_EQ(myo_core::GetLevel(), static_cast<int32_t>(threshold));
    myo_core::LogDebug("d");
    myo_core::LogInfo("i");
    myo_core::LogWarning("w");
    myo_core::LogError("e");
    worker->Log(4, "x");
    worker->Log(0xFFFFFFFFu, "x");
    EXPECT_EQ(worker->lines(), std::vector<std::string>(all.begin() + threshold, all.end()));
  }
  // A worker set in its place keeps its own threshold; null replaces nothing.
  auto second = std::make_shared<RecordingWorker>();
  second->level_ = 3;
  myo_core::SetWorker(second);
  myo_core::SetWorker(nullptr);
  EXPECT_EQ(myo_core::GetWorker(), second);
  EXPECT_EQ(myo_core::GetLevel(), 3);
}

TEST_F(LoggerTest, ConcurrentLinesStayWhole) {
  myo_core::SetWorker(std::make_shared<myo_core::LoggerWorker>());
  constexpr int kThreads = 8, kLinesPerThread = 500;
  auto message = [](int t) { return "thread " + std::to_string(t) + " " + std::string(40, static_cast<char>('a' + t)); };
  CoutCapture out;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([t, &message] {
      for (int i = 0; i < kLinesPerThread; ++i) myo_core::LogInfo(message(t));
    });
  for (std::thread& thread : threads) thread.join();

  std::set<std::string> expected;
  for (int t = 0; t < kThreads; ++t) expected.insert("[MyoForge][Info] " + message(t));
  std::istringstream lines(out.text());
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) ASSERT_EQ(expected.count(line), 1u) << "torn line: " << line;
  EXPECT_EQ(count, kThreads * kLinesPerThread);
}

}  // namespace
