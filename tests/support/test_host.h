#pragma once
// A deformer host for tests: a fixed input mesh, a frame rate and a playing
// flag that the test sets.

#include <string>
#include <utility>

#include "core/host/deformer_host.h"

namespace myo_test {

class TestHost : public myo_core::DeformerHost {
 public:
  explicit TestHost(myo_core::MeshData mesh) : mesh_(std::move(mesh)) {}

  bool IsPlaying() const override { return playing; }
  float FramesPerSecond() const override { return frames_per_second; }
  bool ReadInputMesh(myo_core::MeshData& mesh) override {
    ++mesh_reads;
    mesh = mesh_;
    return true;
  }
  std::string NodeName() const override { return "muscle1"; }

  bool playing = false;
  float frames_per_second = 24.0f;
  int mesh_reads = 0;

 private:
  myo_core::MeshData mesh_;
};

}  // namespace myo_test
