#include "support/log_capture.h"

#include <algorithm>
#include <mutex>

namespace myo_test {

LoggerStateGuard::LoggerStateGuard()
    : worker_(myo_core::GetWorker()), level_(myo_core::GetLevel()) {}

LoggerStateGuard::~LoggerStateGuard() {
  if (worker_ == nullptr) {
    myo_core::ResetWorker();
    return;
  }
  myo_core::SetWorker(worker_);
  worker_->level_ = level_;
}

void RecordingWorker::LogDebug(const std::string& message) {
  Record(myo_core::kLogDebugTag, message);
}

void RecordingWorker::LogInfo(const std::string& message) {
  Record(myo_core::kLogInfoTag, message);
}

void RecordingWorker::LogWarning(const std::string& message) {
  Record(myo_core::kLogWarningTag, message);
}

void RecordingWorker::LogError(const std::string& message) {
  Record(myo_core::kLogErrorTag, message);
}

// Called from Log, which already holds the logger's mutex.
void RecordingWorker::Record(const char* level_tag, const std::string& message) {
  lines_.push_back(std::string(myo_core::kLogCommonTag) + level_tag + " " + message);
}

std::vector<std::string> RecordingWorker::lines() const {
  std::lock_guard<std::mutex> lock(myo_core::LoggerMutex());
  return lines_;
}

void RecordingWorker::Clear() {
  std::lock_guard<std::mutex> lock(myo_core::LoggerMutex());
  lines_.clear();
}

LogCapture::LogCapture() : recorder_(std::make_shared<RecordingWorker>()) {
  myo_core::SetWorker(recorder_);
}

size_t LogCapture::Count(const std::string& line) const {
  const std::vector<std::string> recorded = lines();
  return static_cast<size_t>(std::count(recorded.begin(), recorded.end(), line));
}

}  // namespace myo_test
