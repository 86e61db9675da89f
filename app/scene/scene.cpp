#include "app/scene/scene.h"

namespace myo_app {

namespace {

template <typename T>
const T* Lookup(const Scene& scene, const std::vector<T>& items, const std::string& name, SourceKind kind) {
  const auto kind_it = scene.kinds.find(name);
  if (kind_it == scene.kinds.end() || kind_it->second != kind) return nullptr;
  return &items[scene.index.at(name)];
}

}  // namespace

const SceneTransform* Scene::FindTransform(const std::string& name) const {
  return Lookup(*this, transforms, name, SourceKind::kTransform);
}

const SceneMesh* Scene::FindMesh(const std::string& name) const { return Lookup(*this, meshes, name, SourceKind::kMesh); }

const SceneNode* Scene::FindNode(const std::string& name) const { return Lookup(*this, nodes, name, SourceKind::kNode); }

const SceneMesh* Scene::BaseMesh(const SceneNode& node) const {
  if (!node.base_mesh.empty()) return FindMesh(node.base_mesh);
  const SceneNode* current = &node;
  for (std::size_t hops = 0; hops <= nodes.size(); ++hops) {
    if (const SceneMesh* mesh = FindMesh(current->input)) return mesh;
    current = FindNode(current->input);
    if (current == nullptr) return nullptr;
  }
  return nullptr;
}

Matrix4d Scene::WorldMatrix(const std::string& transform, double frame) const {
  Matrix4d world = IdentityMatrix4d();
  const SceneTransform* current = FindTransform(transform);
  for (std::size_t hops = 0; current != nullptr && hops <= transforms.size(); ++hops) {
    world = Multiply(world, current->track.LocalAt(frame));
    current = FindTransform(current->parent);
  }
  return world;
}

}  // namespace myo_app
