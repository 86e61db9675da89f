#pragma once
// The logger worker installed while the plug-in is loaded: lines go through
// Maya's own output instead of standard output. Warnings and errors carry the
// common tag alone, since Maya marks those lines itself.

#include <string>

#include "core/log/logger_worker.h"

namespace myo_maya {

class MayaLoggerWorker : public myo_core::LoggerWorker {
 public:
  ~MayaLoggerWorker() override;

  void LogDebug(const std::string& message) override;
  void LogInfo(const std::string& message) override;
  void LogWarning(const std::string& message) override;
  void LogError(const std::string& message) override;
};

}  // namespace myo_maya
