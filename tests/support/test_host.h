#pragma once
// A deformer host for tests: a fixed input mesh, a frame rate, a playing
// flag and the node's connections, all set by the test; it counts what the
// deformer asks of it.

#include <map>
#include <string>
#include <utility>
#include <vector>

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

  void ReadAttachmentMatrices(myo_core::ConnectedMatrices& out) override { out = attachments; }
  void ReadSegmentMatrices(myo_core::ConnectedMatrices& out) override { out = segments; }
  void ReadTargets(bool whole, std::vector<myo_core::TargetInput>& out) override {
    whole_reads += whole ? 1 : 0;
    out = targets;
  }
  void WriteCurrentInfluence(int32_t value) override {
    written_influences.push_back(value);
    reads_at_last_write = mesh_reads;
  }
  // Meshes by attribute; "referenceMesh" is `reference`.
  myo_core::MeshInput ReadMesh(const std::string& attribute, myo_core::MeshRead what,
                               const myo_core::MeshData*& mesh) override {
    whole_reads += what == myo_core::MeshRead::kWhole ? 1 : 0;
    const auto found = meshes.find(attribute);
    mesh = attribute == "referenceMesh" ? reference : found != meshes.end() ? found->second : nullptr;
    if (attribute == "referenceMesh" && reference_unreadable) return myo_core::MeshInput::kUnreadable;
    return mesh != nullptr ? myo_core::MeshInput::kRead : myo_core::MeshInput::kMissing;
  }

  bool playing = false;
  float frames_per_second = 24.0f;
  int mesh_reads = 0;   // input mesh reads
  int whole_reads = 0;  // whole-mesh reads of targets or the reference

  // Connections.
  myo_core::ConnectedMatrices attachments;
  myo_core::ConnectedMatrices segments;
  std::vector<myo_core::TargetInput> targets;
  const myo_core::MeshData* reference = nullptr;
  std::map<std::string, const myo_core::MeshData*> meshes;  // other mesh attributes
  bool reference_unreadable = false;
  std::vector<int32_t> written_influences;  // every "currentInfluence" written, in order
  int reads_at_last_write = -1;             // input mesh reads when the last one was written

 private:
  myo_core::MeshData mesh_;
};

}  // namespace myo_test
