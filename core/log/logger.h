#pragma once
// The process-wide logging facade. Callers hand in finished strings (built by
// plain concatenation); the current worker decides where they go. A default
// LoggerWorker, printing to standard output at threshold 0, is in place before
// any other code runs; a host swaps in its own with SetWorker.
//
// The threshold is the `level_` of the current worker: SetLevel and GetLevel
// read and write that field, so SetLevel filters whatever worker is installed
// at the time. A worker installed with SetWorker brings its own `level_` (0 when
// freshly constructed); a host sets the level after installing its worker.
//
// SetWorker, ResetWorker, SetLevel and GetLevel take no lock: call them from one
// thread while no other thread logs (load and unload of the host). The log
// calls may come from any thread; every line is written under one mutex.

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "core/log/logger_worker.h"

namespace myo_core {

constexpr uint32_t kLogLevelDebug = 0;
constexpr uint32_t kLogLevelInfo = 1;
constexpr uint32_t kLogLevelWarning = 2;
constexpr uint32_t kLogLevelError = 3;
constexpr uint32_t kLogLevelCount = 4;  // levels from here on are never logged

// Tags of a line: common tag, then the level's tag, then one blank and the
// message.
inline constexpr char kLogCommonTag[] = "[MyoForge]";
inline constexpr char kLogDebugTag[] = "[Debug]";
inline constexpr char kLogInfoTag[] = "[Info]";
inline constexpr char kLogWarningTag[] = "[Warning]";
inline constexpr char kLogErrorTag[] = "[Error]";

// Replaces the current worker and releases the old one; null is ignored.
void SetWorker(std::shared_ptr<LoggerWorker> worker);
// The current worker, or null after ResetWorker.
std::shared_ptr<LoggerWorker> GetWorker();
// Drops the worker. Until the next SetWorker every log call is a no-op and
// SetLevel is ignored.
void ResetWorker();

// Sets the current worker's threshold when `level` is below 4; any other value
// is ignored.
void SetLevel(uint32_t level);
// The current worker's threshold; with no worker, kLogLevelCount (nothing
// passes). Level 0 also switches on the timing lines of the solvers.
int32_t GetLevel();

// Call the current worker's Log with 0, 1, 2, 3.
void LogDebug(const std::string& message);
void LogInfo(const std::string& message);
void LogWarning(const std::string& message);
void LogError(const std::string& message);

// The line is `message` when `context` is empty, else context + " " + message.
void ReportError(const std::string& message, const std::string& context);
void ReportWarning(const std::string& message, const std::string& context);
void ReportDebug(const std::string& message, const std::string& context);

// The one mutex under which every line is written (LoggerWorker::Log).
std::mutex& LoggerMutex();

}  // namespace myo_core
