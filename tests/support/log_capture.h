#pragma once
// Helpers for tests that look at what goes through the process-wide logger.
// Tests share that logger, so each helper puts back what it found.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/log/logger.h"

namespace myo_test {

// Saves the current worker and its threshold; restores both on destruction.
class LoggerStateGuard {
 public:
  LoggerStateGuard();
  ~LoggerStateGuard();
  LoggerStateGuard(const LoggerStateGuard&) = delete;
  LoggerStateGuard& operator=(const LoggerStateGuard&) = delete;

 private:
  std::shared_ptr<myo_core::LoggerWorker> worker_;
  int32_t level_ = 0;
};

// Records each line as the default worker would print it, without printing.
class RecordingWorker : public myo_core::LoggerWorker {
 public:
  void LogDebug(const std::string& message) override;
  void LogInfo(const std::string& message) override;
  void LogWarning(const std::string& message) override;
  void LogError(const std::string& message) override;

  std::vector<std::string> lines() const;
  void Clear();

 private:
  void Record(const char* level_tag, const std::string& message);

  std::vector<std::string> lines_;  // guarded by the logger's mutex
};

// Installs a RecordingWorker at level 0 for its lifetime.
class LogCapture {
 public:
  LogCapture();
  std::vector<std::string> lines() const { return recorder_->lines(); }
  // How many recorded lines equal `line`.
  size_t Count(const std::string& line) const;
  void Clear() { recorder_->Clear(); }

 private:
  LoggerStateGuard guard_;
  std::shared_ptr<RecordingWorker> recorder_;
};

}  // namespace myo_test
