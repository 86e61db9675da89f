#pragma once
// The host services a deformer asks of the standalone host: whether the time
// line is playing, its frame rate, the input mesh and the node's name. The
// host's own progress bar counts frames, so a build shows none of its own.

#include <string>

#include "core/host/deformer_host.h"

namespace myo_app {

class SceneHost : public myo_core::DeformerHost {
 public:
  SceneHost(std::string name, float fps) : name_(std::move(name)), fps_(fps) {}

  bool IsPlaying() const override { return playing_; }
  float FramesPerSecond() const override { return fps_; }
  bool ReadInputMesh(myo_core::MeshData& mesh) override {
    if (input_ == nullptr) return false;
    mesh = *input_;
    return true;
  }
  std::string NodeName() const override { return name_; }

  void SetFrame(bool playing, const myo_core::MeshData* input) {
    playing_ = playing;
    input_ = input;
  }

 private:
  std::string name_;
  float fps_;
  bool playing_ = false;
  const myo_core::MeshData* input_ = nullptr;
};

}  // namespace myo_app
