#pragma once
// The object behind the process-wide logger (logger.h) that decides where a
// line goes. This default worker prints to standard output; a host installs a
// subclass that sends the four levels elsewhere.

#include <cstdint>
#include <string>

namespace myo_core {

class LoggerWorker {
 public:
  LoggerWorker() = default;
  virtual ~LoggerWorker();

  // Drops the message when `level` is below `level_` (compared as a signed
  // number) or is 4 or more; otherwise calls the level operation under the
  // logger's one mutex. A failed lock throws std::system_error; the mutex is
  // released even when the level operation throws.
  virtual void Log(uint32_t level, const std::string& message);

  // Writes `text` and a line end to std::cout and flushes it.
  virtual void Print(const std::string& text);

  // One formatted line each, "[MyoForge][Debug] " + message and so on, through
  // Print. They run under the logger's mutex, so they must not log themselves.
  virtual void LogDebug(const std::string& message);
  virtual void LogInfo(const std::string& message);
  virtual void LogWarning(const std::string& message);
  virtual void LogError(const std::string& message);

  int32_t level_ = 0;  // threshold: messages of a lower level are dropped
};

}  // namespace myo_core
