#include "core/log/logger.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/log_capture.h"

namespace {

using myo_test::LogCapture;
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
TEST_F(LoggerTest, DefaultWorkerPrintsEachLevelAsOneTaggedLine) {
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
}

TEST_F(LoggerTest, NewWorkerStartsAtZeroAndSetLevelFiltersIt) {
  auto worker = std::make_shared<RecordingWorker>();
  EXPECT_EQ(worker->level_, 0);
  myo_core::SetWorker(worker);
  EXPECT_EQ(myo_core::GetLevel(), 0);

  for (uint32_t threshold = 0; threshold < 4; ++threshold) {
    SCOPED_TRACE(threshold);
    worker->Clear();
    myo_core::SetLevel(threshold);
    EXPECT_EQ(myo_core::GetLevel(), static_cast<int32_t>(threshold));
    EXPECT_EQ(worker->level_, static_cast<int32_t>(threshold));
    myo_core::LogDebug("d");
    myo_core::LogInfo("i");
    myo_core::LogWarning("w");
    myo_core::LogError("e");
    const std::vector<std::string> all = {"[MyoForge][Debug] d", "[MyoForge][Info] i",
                                          "[MyoForge][Warning] w", "[MyoForge][Error] e"};
    const std::vector<std::string> expected(all.begin() + threshold, all.end());
    EXPECT_EQ(worker->lines(), expected);
  }
}

TEST_F(LoggerTest, OutOfRangeLevelsAreIgnored) {
  LogCapture capture;
  myo_core::SetLevel(1);
  myo_core::SetLevel(4);
  EXPECT_EQ(myo_core::GetLevel(), 1);

  // Level 4 and beyond is never logged, whatever the threshold; levels that are
  // negative as signed numbers fall below every threshold.
  auto worker = myo_core::GetWorker();
  for (uint32_t threshold = 0; threshold < 4; ++threshold) {
    myo_core::SetLevel(threshold);
    worker->Log(4, "x");
    worker->Log(0xFFFFFFFFu, "x");
  }
  EXPECT_TRUE(capture.lines().empty());
}

TEST_F(LoggerTest, SetWorkerIgnoresNullAndReplacesOtherwise) {
  auto first = std::make_shared<RecordingWorker>();
  myo_core::SetWorker(first);
  myo_core::SetWorker(nullptr);
  EXPECT_EQ(myo_core::GetWorker(), first);
  myo_core::LogWarning("one");

  auto second = std::make_shared<RecordingWorker>();
  second->level_ = 3;
  myo_core::SetWorker(second);
  EXPECT_EQ(myo_core::GetLevel(), 3);  // the new worker keeps its own threshold
  myo_core::LogWarning("two");
  myo_core::LogError("three");

  EXPECT_EQ(first->lines(), std::vector<std::string>{"[MyoForge][Warning] one"});
  EXPECT_EQ(second->lines(), std::vector<std::string>{"[MyoForge][Error] three"});
}

TEST_F(LoggerTest, ReportJoinsContextWithOneBlank) {
  LogCapture capture;
  myo_core::ReportWarning("m", "");
  myo_core::ReportError("failed", "node1");
  myo_core::ReportDebug("d", "ctx");
  EXPECT_EQ(capture.lines(), (std::vector<std::string>{"[MyoForge][Warning] m", "[MyoForge][Error] node1 failed",
                                                       "[MyoForge][Debug] ctx d"}));
}

TEST_F(LoggerTest, ResetWorkerMakesLoggingANoOp) {
  myo_core::ResetWorker();
  EXPECT_EQ(myo_core::GetWorker(), nullptr);
  CoutCapture out;
  myo_core::LogError("lost");
  myo_core::SetLevel(0);
  EXPECT_EQ(myo_core::GetLevel(), 4);  // nothing passes
  EXPECT_EQ(out.text(), "");

  auto worker = std::make_shared<RecordingWorker>();
  myo_core::SetWorker(worker);
  myo_core::LogInfo("back");
  EXPECT_EQ(worker->lines(), std::vector<std::string>{"[MyoForge][Info] back"});
}

class ThrowingWorker : public myo_core::LoggerWorker {
 public:
  void LogError(const std::string& message) override { throw std::runtime_error(message); }
};

TEST_F(LoggerTest, MutexIsReleasedWhenALevelOperationThrows) {
  myo_core::SetWorker(std::make_shared<ThrowingWorker>());
  EXPECT_THROW(myo_core::LogError("boom"), std::runtime_error);
  std::unique_lock<std::mutex> lock(myo_core::LoggerMutex(), std::try_to_lock);
  EXPECT_TRUE(lock.owns_lock());
}

TEST_F(LoggerTest, ConcurrentLinesStayWhole) {
  myo_core::SetWorker(std::make_shared<myo_core::LoggerWorker>());
  constexpr int kThreads = 8;
  constexpr int kLinesPerThread = 500;
  std::string printed;
  {
    CoutCapture out;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([t] {
        const std::string message = "thread " + std::to_string(t) + " " + std::string(40, 'a' + t);
        for (int i = 0; i < kLinesPerThread; ++i) myo_core::LogInfo(message);
      });
    for (std::thread& thread : threads) thread.join();
    printed = out.text();
  }

  std::set<std::string> expected;
  for (int t = 0; t < kThreads; ++t)
    expected.insert("[MyoForge][Info] thread " + std::to_string(t) + " " + std::string(40, 'a' + t));
  std::istringstream lines(printed);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) ASSERT_EQ(expected.count(line), 1u) << "torn line: " << line;
  EXPECT_EQ(count, kThreads * kLinesPerThread);
}

}  // namespace
