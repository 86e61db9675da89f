#include "core/log/logger_worker.h"

#include <iostream>
#include <mutex>

#include "core/log/logger.h"

namespace myo_core {

LoggerWorker::~LoggerWorker() = default;

void LoggerWorker::Log(uint32_t level, const std::string& message) {
  // The test comes before the lock: a dropped message costs one comparison.
  if (static_cast<int32_t>(level) < level_ || level >= kLogLevelCount) return;

  std::lock_guard<std::mutex> lock(LoggerMutex());
  switch (level) {
    case kLogLevelDebug:
      LogDebug(message);
      break;
    case kLogLevelInfo:
      LogInfo(message);
      break;
    case kLogLevelWarning:
      LogWarning(message);
      break;
    default:
      LogError(message);
      break;
  }
}

void LoggerWorker::Print(const std::string& text) {
  std::cout << text << std::endl;
}

void LoggerWorker::LogDebug(const std::string& message) {
  Print(std::string(kLogCommonTag) + kLogDebugTag + " " + message);
}

void LoggerWorker::LogInfo(const std::string& message) {
  Print(std::string(kLogCommonTag) + kLogInfoTag + " " + message);
}

void LoggerWorker::LogWarning(const std::string& message) {
  Print(std::string(kLogCommonTag) + kLogWarningTag + " " + message);
}

void LoggerWorker::LogError(const std::string& message) {
  Print(std::string(kLogCommonTag) + kLogErrorTag + " " + message);
}

}  // namespace myo_core
