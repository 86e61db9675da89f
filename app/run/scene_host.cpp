#include "app/run/scene_host.h"

#include <map>

#include "app/run/scene_attribute_source.h"
#include "core/paint/weight_maps.h"

namespace myo_app {

SceneHost::SceneHost(const Scene& scene, const SceneNode& node, const myo_core::MapPort& maps)
    : scene_(scene), node_(node), maps_(maps) {}

bool SceneHost::ReadActivationValues(std::vector<std::optional<float>>& values) {
  values.clear();
  const uint32_t count = maps_.ElementCount("activationList", "activation", geometry_index_);
  if (count == 0) return false;
  std::vector<float> read;
  maps_.ReadFloats("activationList", "activation", geometry_index_, count, 0.0f, read);
  values.assign(read.begin(), read.end());
  return true;
}

void SceneHost::SetFrame(double frame, bool playing, SceneMeshes& meshes) {
  frame_ = frame;
  playing_ = playing;
  meshes_ = &meshes;
}

bool SceneHost::ReadInputMesh(myo_core::MeshData& mesh) {
  const myo_core::MeshData* input = meshes_ ? meshes_->ObjectMesh(node_.input) : nullptr;
  if (input == nullptr) return false;
  mesh = *input;
  return true;
}

void SceneHost::ReadConnected(const std::string& list, const std::vector<std::string>& children,
                              myo_core::ConnectedMatrices& out) const {
  std::map<uint32_t, std::vector<const SceneConnection*>> by_index;
  for (const SceneConnection& c : node_.connections)
    if (c.list == list) by_index[c.index].push_back(&c);
  out = myo_core::ConnectedMatrices();
  for (const auto& [index, connections] : by_index) {
    std::vector<myo_core::Matrix> matrices;
    for (const std::string& child : children)
      for (const SceneConnection* c : connections)
        if (c->attribute == child) matrices.push_back(ToFloatMatrix(scene_.WorldMatrix(c->source, frame_)));
    if (matrices.size() != children.size()) continue;
    out.indices.push_back(index);
    out.matrices.insert(out.matrices.end(), matrices.begin(), matrices.end());
  }
}

void SceneHost::ReadAttachmentMatrices(myo_core::ConnectedMatrices& out) {
  ReadConnected("attachmentConstraintsList",
                myo_core::InfluenceConnectionChildren(myo_core::InfluenceKind::kAttachments), out);
}

void SceneHost::ReadSegmentMatrices(myo_core::ConnectedMatrices& out) {
  ReadConnected("slideOnSegmentConstraintsList",
                myo_core::InfluenceConnectionChildren(myo_core::InfluenceKind::kSegments), out);
}

// The whole mesh serves a step as well: the scene's meshes are in memory.
void SceneHost::ReadTargets(bool, std::vector<myo_core::TargetInput>& out) {
  std::map<uint32_t, myo_core::TargetInput> by_index;
  std::map<uint32_t, int> parts;
  for (const SceneConnection& c : node_.connections) {
    if (c.list != "targets") continue;
    myo_core::TargetInput& target = by_index[c.index];
    target.logical_index = c.index;
    if (c.attribute == "targetWorldMesh") {
      target.mesh = meshes_ ? meshes_->WorldMesh(c.source) : nullptr;
      target.name = c.source;
      ++parts[c.index];
    } else if (c.attribute == "targetWorldMatrix") {
      target.world_matrix = ToFloatMatrix(scene_.WorldMatrix(c.source, frame_));
      ++parts[c.index];
    }
  }
  out.clear();
  for (auto& [index, target] : by_index)
    if (parts[index] == 2) out.push_back(std::move(target));
}

// The whole mesh, with its world space, serves every kind of read: the
// scene's meshes are in memory.
myo_core::MeshInput SceneHost::ReadMesh(const std::string& attribute, myo_core::MeshRead,
                                        const myo_core::MeshData*& mesh) {
  mesh = nullptr;
  for (const SceneConnection& c : node_.connections)
    if (c.list.empty() && c.attribute == attribute && meshes_ != nullptr) mesh = meshes_->WorldMesh(c.source);
  return mesh != nullptr ? myo_core::MeshInput::kRead : myo_core::MeshInput::kMissing;
}

}  // namespace myo_app
