#pragma once
// The host a deformer of a scene asks for what is not an attribute: whether
// the time line is playing, its frame rate, the input mesh, the node's name,
// and its connections at the current frame: the matrices of its
// influences, its targets and its reference mesh. The host's own progress
// bar counts frames, so a build shows none of its own. No paint tool shows a
// map here, so "currentInfluence" is never clamped and never written.

#include <string>
#include <vector>

#include "app/scene/scene.h"
#include "core/host/deformer_host.h"
#include "core/maps/map_port.h"

namespace myo_app {

// The meshes of a scene by name at the current frame: a mesh of the file or
// a node's output, in object space, and the same with its world space (that
// of the transform that places the mesh, or of the node's base mesh). Null
// for other names.
class SceneMeshes {
 public:
  virtual ~SceneMeshes() = default;
  virtual const myo_core::MeshData* ObjectMesh(const std::string& name) = 0;
  virtual const myo_core::MeshData* WorldMesh(const std::string& name) = 0;
};

class SceneHost : public myo_core::DeformerHost {
 public:
  // `maps` holds the node's painted maps; the shape's "activation" values
  // are read from it as a map of "activationList".
  SceneHost(const Scene& scene, const SceneNode& node, const myo_core::MapPort& maps);

  // The frame the next evaluation plays, whether the time line plays, and
  // where meshes come from.
  void SetFrame(double frame, bool playing, SceneMeshes& meshes);

  bool IsPlaying() const override { return playing_; }
  float FramesPerSecond() const override { return static_cast<float>(scene_.timeline.fps); }
  bool ReadInputMesh(myo_core::MeshData& mesh) override;
  std::string NodeName() const override { return node_.name; }

  void ReadAttachmentMatrices(myo_core::ConnectedMatrices& out) override;
  void ReadSegmentMatrices(myo_core::ConnectedMatrices& out) override;
  void ReadTargets(bool whole, std::vector<myo_core::TargetInput>& out) override;
  myo_core::MeshInput ReadMesh(const std::string& attribute, myo_core::MeshRead what,
                               const myo_core::MeshData*& mesh) override;

  // Shape. "outActivation" is kept for the runner to write; colours are not
  // shown anywhere here.
  void WriteOutActivation(const std::vector<float>& activations) override { out_activation_ = activations; }
  bool ReadActivationValues(std::vector<std::optional<float>>& values) override;
  // The values last written to "outActivation"; empty before the first build.
  const std::vector<float>& out_activation() const { return out_activation_; }
  // The geometry's element of the node's list attributes.
  void SetGeometryIndex(uint32_t index) { geometry_index_ = index; }

 private:
  // Logical indices with every child of `children` connected, ascending, and
  // the world matrices of the transforms connected to them.
  void ReadConnected(const std::string& list, const std::vector<std::string>& children,
                     myo_core::ConnectedMatrices& out) const;

  const Scene& scene_;
  const SceneNode& node_;
  double frame_ = 0.0;
  bool playing_ = false;
  SceneMeshes* meshes_ = nullptr;
  const myo_core::MapPort& maps_;
  uint32_t geometry_index_ = 0;
  std::vector<float> out_activation_;
};

}  // namespace myo_app
