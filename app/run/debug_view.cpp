#include "app/run/debug_view.h"

#include <map>
#include <set>

#include "io/obj_mesh.h"

namespace myo_app {

std::vector<std::string> DebugViewDeformers(const Scene& scene, const SceneNode& locator) {
  std::vector<std::string> deformers;
  const SceneNode* data_node = nullptr;
  for (const SceneConnection& c : locator.connections)
    if (c.attribute == "data") data_node = scene.FindNode(c.source);
  if (data_node == nullptr) return deformers;
  std::map<uint32_t, std::string> by_index;
  for (const SceneConnection& c : data_node->connections)
    if (c.attribute == "inputs") by_index[c.index] = c.source;
  std::set<std::string> seen;
  for (const auto& [index, name] : by_index)
    if (seen.insert(name).second) deformers.push_back(name);
  return deformers;
}

std::string DebugViewText(const std::string& locator, const std::string& frame_tag,
                          const std::vector<DebugViewEntry>& entries) {
  std::vector<myo_io::ObjLineObject> objects;
  for (const DebugViewEntry& entry : entries)
    if (entry.record != nullptr && entry.record->enabled_) objects.push_back({entry.deformer, &entry.record->lines_});
  return myo_io::ObjLineObjectsText(objects, locator + " debug lines at frame " + frame_tag);
}

}  // namespace myo_app
