// libFuzzer target of the scene reader: the input is a scene file (JSON).
//
// At start-up the target copies the bundled example's meshes/ and maps/ into
// a private directory; each input is written there as scene.json, so a
// fuzzed scene can name real meshes and maps beside it. Inputs that name a
// file outside that directory (an absolute path, "..") are skipped: the
// reader would open whatever they name, /dev/zero included.
//
// Beyond the sanitizers' checks: no exception escapes; a refused scene
// leaves the scene as it was and one line of message; the runner can play
// an accepted scene (FindSceneFault).

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "app/scene/scene_reader.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/reader_checks.h"

#ifndef MYO_FUZZ_EXAMPLE_DIR
#error "MYO_FUZZ_EXAMPLE_DIR names the example whose meshes and maps the scenes use"
#endif

namespace {

constexpr const char* kReader = "myo_app::ReadScene";

std::unique_ptr<myo_fuzz::PrivateDirectory> scene_directory;
std::string scene_path;

// The example comes from MYO_FUZZ_EXAMPLE_DIR in the environment, else from
// the source tree the target was built from.
void PrepareSceneDirectory() {
  const char* from_environment = std::getenv("MYO_FUZZ_EXAMPLE_DIR");
  const std::string example = from_environment != nullptr && *from_environment != '\0'
                                  ? std::string(from_environment)
                                  : std::string(MYO_FUZZ_EXAMPLE_DIR);
  scene_directory = std::make_unique<myo_fuzz::PrivateDirectory>("scene");
  for (const char* folder : {"meshes", "maps"})
    myo_fuzz::CopyFiles(example + "/" + folder, scene_directory->File(folder));
  scene_path = scene_directory->File("scene.json");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  PrepareSceneDirectory();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (myo_fuzz::NamesOutsideFile(data, size)) return -1;  // not run, not kept in the corpus
  myo_fuzz::WriteInput(scene_path, data, size);

  // A scene that is already there must survive a refusal.
  myo_app::Scene scene;
  scene.path = "earlier.json";
  scene.timeline.start = -7.0;
  scene.transforms.resize(1);
  scene.transforms[0].name = "earlier";
  std::string error;
  const std::optional<bool> read =
      myo_fuzz::CallReader(kReader, [&] { return myo_app::ReadScene(scene_path, scene, error); });
  if (!read) return 0;
  if (!*read) {
    myo_fuzz::CheckRefusalMessage(kReader, error);
    if (scene.path != "earlier.json" || scene.timeline.start != -7.0 || scene.transforms.size() != 1 ||
        scene.transforms[0].name != "earlier" || !scene.nodes.empty())
      myo_fuzz::Finding(kReader, "a refused scene changed the scene", error);
    return 0;
  }
  const myo_fuzz::Fault fault = myo_fuzz::FindSceneFault(scene);
  if (fault.Found()) myo_fuzz::Finding(kReader, "accepted a scene with " + fault.kind, fault.detail);
  return 0;
}
