#include "core/plugin/plugin_lifecycle.h"

#include "core/log/logger.h"

namespace myo_core {

bool HasUserInterface(int32_t state) { return state == kLaunchInteractive || state == kLaunchBaseUi; }

int32_t LoggerLevelFromEnvironment(const char* value) {
  if (value == nullptr || value[0] == '\0') return -1;
  return static_cast<int32_t>(static_cast<signed char>(value[0])) - '0';
}

bool LoadPlugin(PluginHost& host, const char* logger_level) {
  const std::string failure = "Error occurred registering ";
  SetLevel(kLogLevelInfo);
  if (logger_level != nullptr) SetLevel(static_cast<uint32_t>(LoggerLevelFromEnvironment(logger_level)));

  int32_t state = 0;
  if (!host.LaunchState(state)) {
    ReportError("Could not retrieve a valid Maya launch state. Aborting MyoForge plugin loading.", "");
    return false;
  }
  if (HasUserInterface(state)) host.RunPython(kLoadMenuScript);

  for (const RegistrationStep& step : LoadOrder()) {
    if (!host.Register(step)) {
      LogError(failure + step.failure_name);
      return false;
    }
  }
  return true;
}

bool UnloadPlugin(PluginHost& host) {
  const std::string failure = "Error occurred deregistering ";
  int32_t state = 0;
  if (!host.LaunchState(state)) {
    ReportError("Could not retrieve a valid Maya launch state. Aborting MyoForge plugin unloading.", "");
    return false;
  }
  if (HasUserInterface(state)) host.RunPython(kUnloadMenuScript);

  // Without the first node the load never got as far as the nodes.
  if (!host.IsNodeRegistered(LoadOrder().front().name)) return true;

  for (const RegistrationStep& step : LoadOrder()) {
    if (!host.Deregister(step)) {
      LogError(failure + step.failure_name);
      return false;
    }
  }
  ResetWorker();
  return true;
}

}  // namespace myo_core
