#include "core/plugin/plugin_lifecycle.h"

#include "core/log/logger.h"

namespace myo_core {

namespace {

const RegistrationStep* FirstProvidedNode(const PluginHost& host) {
  for (const RegistrationStep& step : LoadOrder())
    if (step.kind == RegistrationKind::kNode && host.Provides(step)) return &step;
  return nullptr;
}

}  // namespace

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
    if (!host.Provides(step)) continue;
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

  const RegistrationStep* first_node = FirstProvidedNode(host);
  if (first_node == nullptr || !host.IsNodeRegistered(first_node->name)) return true;

  for (const RegistrationStep& step : LoadOrder()) {
    if (!host.Provides(step)) continue;
    if (!host.Deregister(step)) {
      LogError(failure + step.failure_name);
      return false;
    }
  }
  ResetWorker();
  return true;
}

}  // namespace myo_core
