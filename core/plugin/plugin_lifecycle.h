#pragma once
// The load and unload sequences of the plug-in, host-neutral: the host
// answers through PluginHost (its launch state, its script interpreter and
// its registry), and the sequences decide the order, the messages and where a
// failure stops.

#include <cstdint>
#include <string>

#include "core/plugin/registration_table.h"

namespace myo_core {

// The host's launch states, by their numbers.
constexpr int32_t kLaunchInteractive = 0;
constexpr int32_t kLaunchBatch = 1;
constexpr int32_t kLaunchLibrary = 2;
constexpr int32_t kLaunchBaseUi = 3;

inline constexpr char kLoadMenuScript[] = "from myo.ui.maya import menu as myo_menu;myo_menu.load_menu()";
inline constexpr char kUnloadMenuScript[] = "from myo.ui.maya import menu as myo_menu;myo_menu.unload_menu()";

class PluginHost {
 public:
  virtual ~PluginHost() = default;

  // The launch state; false when the host cannot tell.
  virtual bool LaunchState(int32_t& state) = 0;
  // Runs a Python script; its outcome does not matter to the sequences.
  virtual void RunPython(const std::string& script) = 0;
  // Registers or deregisters one step; false on failure.
  virtual bool Register(const RegistrationStep& step) = 0;
  virtual bool Deregister(const RegistrationStep& step) = 0;
  virtual bool IsNodeRegistered(const std::string& type_name) const = 0;
};

// Whether the launch state has a user interface, and so a menu and dialogs.
bool HasUserInterface(int32_t state);

// The threshold that MYO_LOGGER_LEVEL asks for: its first character, as a
// signed byte, minus '0'. Values that are no level (negative, 4 and up) come
// out as numbers SetLevel ignores. Null or empty asks for nothing: -1.
int32_t LoggerLevelFromEnvironment(const char* value);

// After the host installed its logger worker: level 1, then the level of
// `logger_level` (the value of MYO_LOGGER_LEVEL, may be null); the launch
// state (an error and false when unknown); the menu script with a user
// interface; then every step of the load order. The first failed
// step logs "Error occurred registering " + its name and stops the load with
// false; what was registered stays.
bool LoadPlugin(PluginHost& host, const char* logger_level);

// The launch state (an error and false when unknown), the unload script with
// a user interface, then, if the first node of the load order is registered,
// every step deregistered in load order and the logger
// worker dropped. A failed step logs "Error occurred deregistering " + its
// name and stops with false, the logger left installed. When the first node
// is not registered the load never got that far: true, nothing else done.
bool UnloadPlugin(PluginHost& host);

}  // namespace myo_core
