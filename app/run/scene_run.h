#pragma once
// Plays a scene's time line as Maya plays it: every frame from the preroll
// (or the start) to the end, each node evaluated once per frame in an order
// that respects the connections. The first frame is evaluated as a user
// standing on it would see it, not playing; the rest play. Results are
// written for the frames from the start to the end.

#include <atomic>
#include <functional>
#include <string>

#include "app/scene/scene.h"

namespace myo_app {

enum class OutputFormat { kObj, kPc2 };

struct RunOptions {
  std::string output_directory;
  OutputFormat format = OutputFormat::kObj;
  // Also write viewer.html, the page that plays the run in a browser.
  bool viewer = true;
  // Called after each frame with the frames done and the total.
  std::function<void(std::size_t, std::size_t)> progress;
  // Set from a signal handler: the run stops after the frame in progress.
  const std::atomic<bool>* interrupted = nullptr;
  // A checkpoint after every this many simulated frames; 0 for none.
  uint32_t checkpoint_every = 0;
  // Go on from the newest usable checkpoint in the output folder that
  // belongs to this scene; without any checkpoint the run starts from its
  // first frame. A checkpoint of a changed scene, mesh, map or format is
  // refused; a damaged one is passed over for the one before it.
  bool resume = false;
};

enum class RunResult { kDone, kFailed, kInterrupted };

// Outputs, in the output directory:
// - OBJ: <node>/<node>.<frame>.obj for every node and frame, or
//   PC2: <node>.pc2, one point cache per node;
// - <node>/<node>.outActivation.<frame>.txt for a shape node that writes
//   its activations;
// - figures.csv: one row per node and written frame;
// - summary.json: the run as a whole;
// - viewer.html when asked for and three.js is at hand (a missing three.js
//   is a warning, not a failure);
// - checkpoints/checkpoint.<frame>.myostate while the run goes on, when
//   asked for (see run_checkpoint.h); none are left when it finishes.
// Every file is written atomically. On a failure `error` names it.
RunResult RunScene(const Scene& scene, const RunOptions& options, std::string& error);

// Frame number as it appears in file names: at least four digits.
std::string FrameTag(double frame);
// The OBJ file of a node at a frame: "<node>.<frame>.obj".
std::string FrameFileName(const std::string& node, double frame);
// A shape node's "outActivation" at a frame, as a map file:
// "<node>.outActivation.<frame>.txt".
std::string ActivationFileName(const std::string& node, double frame);

// "<node>.debug.<frame>.obj": the debug lines of a node at a frame, as OBJ
// line elements.
std::string DebugFileName(const std::string& node, double frame);
// An edge evaluator's "compression" at a frame, as a map file:
// "<node>.compression.<frame>.txt"; its coloured deform mesh takes
// FrameFileName.
std::string CompressionFileName(const std::string& node, double frame);

}  // namespace myo_app
