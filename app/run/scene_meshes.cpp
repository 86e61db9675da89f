#include "app/run/scene_meshes.h"

#include "app/run/scene_attribute_source.h"
#include "core/mesh/world_space.h"

namespace myo_app {

RunMeshes::RunMeshes(const Scene& scene, NodeOutput output) : scene_(scene), output_(std::move(output)) {}

void RunMeshes::SetFrame(double frame) { frame_ = frame; }

const myo_core::MeshData* RunMeshes::ObjectMesh(const std::string& name) {
  if (const myo_core::MeshData* output = output_(name)) return output;
  const SceneMesh* mesh = scene_.FindMesh(name);
  if (mesh == nullptr || mesh->follows.empty()) return mesh != nullptr ? &mesh->data : nullptr;
  // A mesh that follows a transform: its points carried by the transform's
  // matrix of this frame, as a mesh bound to one joint moves.
  FramedMesh& followed = followed_[name];
  if (followed.filled && followed.frame == frame_) return &followed.mesh;
  if (!followed.filled) followed.mesh = mesh->data;
  const myo_core::Matrix matrix = ToFloatMatrix(scene_.WorldMatrix(mesh->follows, frame_));
  for (uint32_t v = 0; v < mesh->data.PointCount(); ++v)
    myo_core::Store3(followed.mesh.points.data(), v,
                     myo_core::TransformPoint(myo_core::Load3(mesh->data.points.data(), v), matrix));
  followed.frame = frame_;
  followed.filled = true;
  return &followed.mesh;
}

const myo_core::MeshData* RunMeshes::WorldMesh(const std::string& name) {
  const myo_core::MeshData* source = ObjectMesh(name);
  if (source == nullptr) return nullptr;
  FramedMesh& entry = world_[name];
  // A node's output changes within a frame only when that node evaluates,
  // and every node evaluates before the nodes that read it.
  if (entry.filled && entry.frame == frame_) return &entry.mesh;
  if (!entry.filled) {
    entry.mesh = *source;
  } else {
    entry.mesh.points = source->points;
  }
  const SceneMesh* placed = scene_.FindMesh(name);
  if (placed == nullptr) {
    const SceneNode* node = scene_.FindNode(name);
    placed = node != nullptr ? scene_.BaseMesh(*node) : nullptr;
  }
  const std::string parent = placed != nullptr ? placed->parent : std::string();
  myo_core::FillWorldSpace(ToFloatMatrix(scene_.WorldMatrix(parent, frame_)), entry.mesh);
  entry.frame = frame_;
  entry.filled = true;
  return &entry.mesh;
}

}  // namespace myo_app
