#pragma once
// What a scene is made of, as a checkpoint remembers it: the hash of every
// file the scene reads (the scene file, its meshes and map files, and the
// files its nodes name, such as a muscle patches file). A run goes on from a
// checkpoint only when every one of them is as it was.

#include <cstdint>
#include <string>
#include <vector>

#include "app/scene/scene.h"
#include "core/state/state_archive.h"

namespace myo_app {

struct FingerprintEntry {
  std::string path;
  bool present = false;  // the file could be read
  uint64_t hash = 0;     // FNV-1a of its bytes
};

using SceneFingerprint = std::vector<FingerprintEntry>;

// Reads and hashes every file of the scene, each once, in the order read.
SceneFingerprint FingerprintScene(const Scene& scene);

// Empty when both are the same; otherwise what differs first, as
// "<path> changed since the checkpoint was written", "<path> is missing now"
// or "the scene now reads <path>, which it did not read then".
std::string FingerprintDifference(const SceneFingerprint& then, const SceneFingerprint& now);

template <class Archive>
void SceneFingerprintFields(Archive& a, myo_core::ArchiveRecord<Archive, SceneFingerprint>& fingerprint) {
  a.Section("scene files");
  a.Records(fingerprint, [&a](auto& entry) {
    a.Text(entry.path);
    a.Value(entry.present);
    a.Value(entry.hash);
  });
}

}  // namespace myo_app
