#pragma once
// What a "MyoDebugLocator" shows in the standalone host: the debug lines of
// every deformer connected to the "MyoDataNode" its "data" takes, together
// in one OBJ per written frame, one object per deformer.

#include <string>
#include <vector>

#include "app/scene/scene.h"
#include "core/debug/debug_data.h"

namespace myo_app {

// The deformers a debug locator shows: the sources of the connected
// "inputs" of its data node, by input index, each once. Empty without a
// data node.
std::vector<std::string> DebugViewDeformers(const Scene& scene, const SceneNode& locator);

// One deformer's record as the view takes it; null when its "debug" was off
// at its last evaluation.
struct DebugViewEntry {
  std::string deformer;
  const myo_core::DebugData* record;
};

// The OBJ of the view: a comment naming the locator and frame, then
// "o <deformer>" with its lines for each entry whose record is enabled.
std::string DebugViewText(const std::string& locator, const std::string& frame_tag,
                          const std::vector<DebugViewEntry>& entries);

}  // namespace myo_app
