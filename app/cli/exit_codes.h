#pragma once
// The exit codes of myoforge, as documented in docs/myoforge.md.

namespace myo_app {

enum ExitCode : int {
  kExitSuccess = 0,
  kExitUsage = 2,          // the command line is wrong
  kExitInvalidScene = 3,   // the scene, a mesh or a map is not valid; nothing was written
  kExitRunFailed = 4,      // evaluating or writing failed while running
  kExitInterrupted = 130,  // stopped by a signal; no partial file is left
};

}  // namespace myo_app
