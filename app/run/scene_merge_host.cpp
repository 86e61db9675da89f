#include "app/run/scene_merge_host.h"

#include <algorithm>

#include "app/run/scene_attribute_source.h"

namespace myo_app {

namespace {

const char* ListOf(myo_core::MergeSourceKind kind) {
  return kind == myo_core::MergeSourceKind::kSimulated ? "simList" : "animList";
}
const char* MeshOf(myo_core::MergeSourceKind kind) {
  return kind == myo_core::MergeSourceKind::kSimulated ? "simWorldMesh" : "animWorldMesh";
}
const char* MatrixOf(myo_core::MergeSourceKind kind) {
  return kind == myo_core::MergeSourceKind::kSimulated ? "simWorldMatrix" : "animWorldMatrix";
}

}  // namespace

std::string ConnectedSource(const SceneNode& node, const std::string& attribute) {
  for (const SceneConnection& c : node.connections)
    if (c.list.empty() && c.attribute == attribute) return c.source;
  return std::string();
}

void SceneMergeHost::SetFrame(double frame, bool playing, SceneMeshes& meshes) {
  frame_ = frame;
  playing_ = playing;
  meshes_ = &meshes;
}

const SceneConnection* SceneMergeHost::Find(const std::string& list, const std::string& attribute,
                                            uint32_t index) const {
  for (const SceneConnection& c : node_.connections)
    if (c.list == list && c.attribute == attribute && c.index == index) return &c;
  return nullptr;
}

void SceneMergeHost::ReadConnections(myo_core::MergeSourceKind kind, myo_core::MergeConnections& out) {
  out = myo_core::MergeConnections();
  for (const SceneConnection& c : node_.connections) {
    if (c.list != ListOf(kind)) continue;
    if (c.attribute == MeshOf(kind)) out.mesh_indices.push_back(c.index);
    if (c.attribute == MatrixOf(kind)) out.matrix_indices.push_back(c.index);
  }
  std::sort(out.mesh_indices.begin(), out.mesh_indices.end());
  std::sort(out.matrix_indices.begin(), out.matrix_indices.end());
}

bool SceneMergeHost::ReadSource(myo_core::MergeSourceKind kind, uint32_t logical_index, myo_core::MeshRead read,
                                myo_core::MeshData& mesh, myo_core::Matrix& matrix) {
  const SceneConnection* mesh_plug = Find(ListOf(kind), MeshOf(kind), logical_index);
  const myo_core::MeshData* source =
      mesh_plug != nullptr && meshes_ != nullptr ? meshes_->WorldMesh(mesh_plug->source) : nullptr;
  if (source == nullptr) return false;
  if (read == myo_core::MeshRead::kWhole) {
    mesh = *source;
  } else {
    mesh = myo_core::MeshData();
  }
  mesh.points = source->world_points;
  const SceneConnection* matrix_plug = Find(ListOf(kind), MatrixOf(kind), logical_index);
  matrix = matrix_plug != nullptr ? ToFloatMatrix(scene_.WorldMatrix(matrix_plug->source, frame_))
                                  : myo_core::IdentityMatrix();
  return true;
}

myo_core::MeshInput SceneEdgeInputs::Read(const std::string& attribute, myo_core::MeshRead read,
                                          myo_core::MeshData& mesh) {
  const std::string source = ConnectedSource(node_, attribute);
  const myo_core::MeshData* found = source.empty() ? nullptr : meshes_.ObjectMesh(source);
  if (found == nullptr) return myo_core::MeshInput::kMissing;
  if (read == myo_core::MeshRead::kWhole) {
    mesh = *found;
  } else {
    mesh.points = found->points;
  }
  return myo_core::MeshInput::kRead;
}

myo_core::MeshInput SceneEdgeInputs::ReadDeformMesh(myo_core::MeshRead read, myo_core::MeshData& mesh) {
  return Read("deformMesh", read, mesh);
}

myo_core::MeshInput SceneEdgeInputs::ReadRestMesh(myo_core::MeshRead read, myo_core::MeshData& mesh) {
  return Read("restMesh", read, mesh);
}

}  // namespace myo_app
