#include "core/log/logger.h"

namespace myo_core {
namespace {

struct LoggerState {
  std::shared_ptr<LoggerWorker> worker = std::make_shared<LoggerWorker>();
  std::mutex mutex;
};

// Built on first use, so that logging works from any static initialiser.
LoggerState& State() {
  static LoggerState state;
  return state;
}

// Forces the default worker into place during static initialisation.
[[maybe_unused]] const bool kDefaultWorkerInstalled = (State(), true);

void LogAt(uint32_t level, const std::string& message) {
  LoggerWorker* worker = State().worker.get();
  if (worker != nullptr) worker->Log(level, message);
}

std::string WithContext(const std::string& message, const std::string& context) {
  if (context.empty()) return message;
  return context + " " + message;
}

}  // namespace

void SetWorker(std::shared_ptr<LoggerWorker> worker) {
  if (worker == nullptr) return;
  State().worker = std::move(worker);
}

std::shared_ptr<LoggerWorker> GetWorker() { return State().worker; }

void ResetWorker() { State().worker.reset(); }

void SetLevel(uint32_t level) {
  LoggerWorker* worker = State().worker.get();
  if (worker == nullptr || level >= kLogLevelCount) return;
  worker->level_ = static_cast<int32_t>(level);
}

int32_t GetLevel() {
  const LoggerWorker* worker = State().worker.get();
  if (worker == nullptr) return static_cast<int32_t>(kLogLevelCount);
  return worker->level_;
}

void LogDebug(const std::string& message) { LogAt(kLogLevelDebug, message); }
void LogInfo(const std::string& message) { LogAt(kLogLevelInfo, message); }
void LogWarning(const std::string& message) { LogAt(kLogLevelWarning, message); }
void LogError(const std::string& message) { LogAt(kLogLevelError, message); }

void ReportError(const std::string& message, const std::string& context) {
  LogError(WithContext(message, context));
}

void ReportWarning(const std::string& message, const std::string& context) {
  LogWarning(WithContext(message, context));
}

void ReportDebug(const std::string& message, const std::string& context) {
  LogDebug(WithContext(message, context));
}

std::mutex& LoggerMutex() { return State().mutex; }

}  // namespace myo_core
