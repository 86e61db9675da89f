#include "app/run/scene_fingerprint.h"

#include <filesystem>
#include <set>

#include "core/state/state_checksum.h"
#include "io/file_text.h"

namespace myo_app {

SceneFingerprint FingerprintScene(const Scene& scene) {
  std::vector<std::string> paths = scene.inputs;
  // Files the nodes read themselves, named by their file name attributes.
  for (const SceneNode& node : scene.nodes)
    for (const auto& [attribute, text] : node.texts) {
      const myo_core::AttributeInfo* info = FindNodeAttribute(*node.type, attribute);
      if (info != nullptr && info->Has(myo_core::kUsedAsFilename) && !text.empty()) paths.push_back(text);
    }
  SceneFingerprint fingerprint;
  std::set<std::string> seen;
  for (const std::string& path : paths) {
    if (!seen.insert(path).second) continue;
    FingerprintEntry entry;
    entry.path = path;
    std::string bytes;
    std::error_code ec;
    entry.present = std::filesystem::is_regular_file(path, ec) && myo_io::ReadFileText(path, bytes);
    entry.hash = entry.present ? myo_core::Fnv1a64(bytes) : 0;
    fingerprint.push_back(entry);
  }
  return fingerprint;
}

std::string FingerprintDifference(const SceneFingerprint& then, const SceneFingerprint& now) {
  for (const FingerprintEntry& old : then) {
    const FingerprintEntry* current = nullptr;
    for (const FingerprintEntry& entry : now)
      if (entry.path == old.path) current = &entry;
    if (current == nullptr) return "the scene no longer reads " + old.path + ", which it read then";
    if (old.present && !current->present) return old.path + " is missing now";
    if (old.present != current->present || old.hash != current->hash)
      return old.path + " changed since the checkpoint was written";
  }
  for (const FingerprintEntry& entry : now) {
    bool known = false;
    for (const FingerprintEntry& old : then) known = known || old.path == entry.path;
    if (!known) return "the scene now reads " + entry.path + ", which it did not read then";
  }
  return {};
}

}  // namespace myo_app
