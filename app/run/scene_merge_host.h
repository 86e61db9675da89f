#pragma once
// What a skin merge and an edge evaluator of a scene read of the rest of it
// at the current frame: the meshes connected to their plugs (a mesh of the
// file or a deformer's output) and the transforms on their matrix plugs.

#include <string>
#include <vector>

#include "app/run/scene_host.h"
#include "app/scene/scene.h"
#include "core/evaluator/edge_evaluator.h"
#include "core/merge/skin_merge.h"

namespace myo_app {

// Sources of "simList" and "animList". A source's points are its world-space
// points, as a mesh's world mesh gives them; its matrix is the world matrix
// of the transform on "simWorldMatrix" or "animWorldMatrix".
class SceneMergeHost : public myo_core::SkinMergeHost {
 public:
  SceneMergeHost(const Scene& scene, const SceneNode& node) : scene_(scene), node_(node) {}
  void SetFrame(double frame, bool playing, SceneMeshes& meshes);

  bool IsPlaying() const override { return playing_; }
  void ReadConnections(myo_core::MergeSourceKind kind, myo_core::MergeConnections& out) override;
  bool ReadSource(myo_core::MergeSourceKind kind, uint32_t logical_index, myo_core::MeshRead read,
                  myo_core::MeshData& mesh, myo_core::Matrix& matrix) override;
  // No paint tool sets a merge's own weights here: all 1.
  void ReadMergeWeights(uint32_t count, std::vector<float>& out) override { out.assign(count, 1.0f); }

 private:
  const SceneConnection* Find(const std::string& list, const std::string& attribute, uint32_t index) const;

  const Scene& scene_;
  const SceneNode& node_;
  double frame_ = 0.0;
  bool playing_ = false;
  SceneMeshes* meshes_ = nullptr;
};

// "deformMesh" and "restMesh" of an edge evaluator, object space.
class SceneEdgeInputs : public myo_core::EdgeEvaluatorInputs {
 public:
  SceneEdgeInputs(const SceneNode& node, SceneMeshes& meshes) : node_(node), meshes_(meshes) {}
  myo_core::MeshInput ReadDeformMesh(myo_core::MeshRead read, myo_core::MeshData& mesh) override;
  myo_core::MeshInput ReadRestMesh(myo_core::MeshRead read, myo_core::MeshData& mesh) override;

 private:
  myo_core::MeshInput Read(const std::string& attribute, myo_core::MeshRead read, myo_core::MeshData& mesh);

  const SceneNode& node_;
  SceneMeshes& meshes_;
};

// The mesh connected to a node's plug `attribute` (no list), or "".
std::string ConnectedSource(const SceneNode& node, const std::string& attribute);

}  // namespace myo_app
