#pragma once
// What a deformer's logic asks of the host beyond the values of the frame.
// Maya answers with MAnimControl, MTime, MComputation and its mesh functions;
// the standalone host from its time line and scene.

#include <string>

#include "core/mesh/mesh_data.h"

namespace myo_core {

class DeformerHost {
 public:
  virtual ~DeformerHost() = default;

  // Whether the animation is playing: repeated warnings are given only
  // while it is not.
  virtual bool IsPlaying() const = 0;
  // One second expressed in the current time unit of the user interface.
  virtual float FramesPerSecond() const = 0;
  // The input mesh of the deformed geometry, object space. False when there
  // is none.
  virtual bool ReadInputMesh(MeshData& mesh) = 0;
  // The node's name and type name, for messages.
  virtual std::string NodeName() const = 0;

  // Progress of a long build: "[MyoForge]" + status over `count` steps.
  virtual void BeginProgress(int count, const std::string& status) {
    (void)count;
    (void)status;
  }
  virtual void AdvanceProgress() {}
  virtual void EndProgress() {}
};

}  // namespace myo_core
