#include "maya/plugin/maya_logger_worker.h"

#include <maya/MGlobal.h>
#include <maya/MString.h>

#include "core/log/logger.h"

namespace myo_maya {

namespace {

MString Line(const char* level_tag, const std::string& message) {
  return MString((std::string(myo_core::kLogCommonTag) + level_tag + " " + message).c_str());
}

}  // namespace

MayaLoggerWorker::~MayaLoggerWorker() = default;

void MayaLoggerWorker::LogDebug(const std::string& message) {
  MGlobal::displayInfo(Line(myo_core::kLogDebugTag, message));
}

void MayaLoggerWorker::LogInfo(const std::string& message) {
  MGlobal::displayInfo(Line(myo_core::kLogInfoTag, message));
}

void MayaLoggerWorker::LogWarning(const std::string& message) { MGlobal::displayWarning(Line("", message)); }

void MayaLoggerWorker::LogError(const std::string& message) { MGlobal::displayError(Line("", message)); }

}  // namespace myo_maya
