#pragma once
// `myoforge run`: plays the scenes of a batch one after the other, each into
// its own folder with its own exit status, prints what each one wrote, and
// when several scenes ran in one call writes runs.json, the outcome of every
// one, into the folder above theirs.

#include <atomic>
#include <string>
#include <vector>

#include "app/cli/scene_batch.h"
#include "app/run/scene_run.h"

namespace myo_app {

struct RunCommandOptions {
  SceneBatch batch;
  // Format, viewer, checkpoints, ... for every scene; the output folder is
  // each job's own.
  RunOptions run;
  bool quiet = false;
  bool progress_bar = false;  // draw the progress bar (standard error is a terminal)
};

// What became of one scene.
struct SceneOutcome {
  const SceneJob* job = nullptr;
  int exit_code = -1;  // -1: not run (the call was interrupted before it)
  std::string error;   // one line for a failure
  double seconds = 0.0;
};

// Plays every job; failures of one scene are reported as they come and the
// next scene still runs; an interruption stops the call. Returns the exit
// code of the call: the one of a single scene, and for several the highest
// of theirs (0 when all succeeded, 130 when interrupted).
int RunSceneBatch(const RunCommandOptions& options);

// The file that holds every outcome of a call that ran several scenes.
inline constexpr const char* kRunsFileName = "runs.json";

}  // namespace myo_app
