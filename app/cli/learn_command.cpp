#include "app/cli/learn_command.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "app/cli/exit_codes.h"
#include "app/cli/progress_bar.h"
#include "core/learning/learn_muscle_patches.h"
#include "core/patches/muscle_patches_file.h"
#include "io/atomic_file.h"
#include "io/map_file.h"
#include "io/number_text.h"
#include "io/obj_mesh.h"

namespace myo_app {
namespace {

// The host of the learning in myoforge: meshes read before the run, a bar on
// a terminal, the file written whole or not at all.
class FileLearnHost : public myo_core::LearnPatchesHost {
 public:
  FileLearnHost(const LearnOptions& options, const myo_io::ObjMesh& neutral,
                const std::vector<myo_io::ObjMesh>& targets)
      : options_(options), neutral_(neutral), targets_(targets),
        bar_(std::filesystem::path(options.output).filename().string(), options.progress_bar) {}

  bool UserInterface(bool& has_interface) override {
    has_interface = options_.progress_bar;
    return true;
  }
  std::vector<float> NeutralPoints(const std::string&) override { return neutral_.polygons.points; }
  bool TargetPoints(const std::string& name, std::vector<float>& points) override {
    for (size_t t = 0; t < options_.targets.size(); ++t)
      if (options_.targets[t] == name) {
        points = targets_[t].polygons.points;
        return true;
      }
    return false;
  }
  void BeginProgress(int32_t count, const std::string&) override {
    count_ = static_cast<size_t>(count);
    bar_.Update(0, count_);
  }
  void AdvanceProgress(const std::string&) override { bar_.Update(++step_, count_); }
  void EndProgress() override {
    bar_.Update(count_, count_);
    bar_.Finish();
  }
  bool WritePatchesFile(const std::string& path, int32_t vertex_count, const std::vector<int32_t>& ids,
                        const std::vector<std::array<double, 3>>& fibers) override {
    // The file's own writer, into a temporary file renamed into place.
    const std::string temporary = path + ".partial." + std::to_string(getpid());
    if (!myo_core::WriteMusclePatchesFile(temporary, vertex_count, ids, fibers)) {
      std::filesystem::remove(temporary, ignored_);
      return false;
    }
    std::filesystem::rename(temporary, path, ignored_);
    if (ignored_) std::filesystem::remove(temporary, ignored_);
    return !ignored_;
  }

 private:
  const LearnOptions& options_;
  const myo_io::ObjMesh& neutral_;
  const std::vector<myo_io::ObjMesh>& targets_;
  ProgressBar bar_;
  size_t count_ = 0, step_ = 0;
  std::error_code ignored_;
};

LearnOutcome Failed(int code, std::string error) {
  LearnOutcome outcome;
  outcome.exit_code = code;
  outcome.error = std::move(error);
  return outcome;
}

// Vertex indices of a mask file: whole numbers, as a map file holds them.
bool ReadMaskFile(const std::string& path, std::vector<int32_t>& mask, std::string& error) {
  std::vector<float> values;
  if (!myo_io::ReadMapFile(path, values, error)) return false;
  for (size_t i = 0; i < values.size(); ++i) {
    const float value = values[i];
    if (value != std::floor(value) || value < 0.0f || value > 16777216.0f) {
      char text[64];
      std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
      error = path + ": value " + std::to_string(i + 1) + ": expected a vertex index (a whole number from 0), not " +
              text;
      return false;
    }
    mask.push_back(static_cast<int32_t>(value));
  }
  return true;
}

// Which failures are the input's (exit 3) and which the command line's (2).
int ExitCodeOf(const std::string& error) {
  if (error == "Missing or invalid number of muscle patches argument." || error == "Missing output file path argument.")
    return kExitUsage;
  return kExitInvalidScene;
}

}  // namespace

LearnOutcome RunLearn(const LearnOptions& options) {
  if (options.patches <= 0)
    return Failed(kExitUsage, "--patches: expected a number of patches above 0, not " + std::to_string(options.patches));
  if (!options.mask_file.empty() && !options.vertices.empty())
    return Failed(kExitUsage, "--mask and --vertices: give the vertices one way, not both");
  std::string error;
  myo_io::ObjMesh neutral;
  if (!myo_io::ReadObjMesh(options.neutral, neutral, error)) return Failed(kExitInvalidScene, error);
  std::vector<myo_io::ObjMesh> targets(options.targets.size());
  for (size_t t = 0; t < targets.size(); ++t)
    if (!myo_io::ReadObjMesh(options.targets[t], targets[t], error)) return Failed(kExitInvalidScene, error);
  myo_core::LearnPatchesRequest request;
  request.vertices_mask = options.vertices;
  if (!options.mask_file.empty() && !ReadMaskFile(options.mask_file, request.vertices_mask, error))
    return Failed(kExitInvalidScene, error);

  request.output_path = options.output;
  request.patch_count = options.patches;
  request.neutral_name = options.neutral;
  request.targets = options.targets;
  request.max_iterations_set = true;
  request.max_iterations = options.max_iterations;
  request.draw = !options.colors.empty();
  request.require_written_file = true;

  FileLearnHost host(options, neutral, targets);
  const myo_core::LearnPatchesResult result = myo_core::LearnMusclePatches(request, host);
  if (!result.ok) {
    if (result.error.rfind("Something failed querying target points", 0) == 0)
      return Failed(kExitInvalidScene, result.error + " (the vertex count differs from the " +
                                           std::to_string(neutral.polygons.points.size() / 3) +
                                           " vertices of " + myo_io::Quoted(options.neutral) + ")");
    if (result.error.rfind("Could not write", 0) == 0) return Failed(kExitRunFailed, result.error);
    return Failed(ExitCodeOf(result.error), result.error);
  }
  if (!options.colors.empty()) {
    const std::string text = myo_io::ColoredObjText(
        myo_io::ObjText(neutral, neutral.polygons.points, "myoforge learn: patch colours per vertex (v x y z r g b)"),
        result.colors);
    if (!myo_io::WriteFileAtomically(options.colors, text, error)) return Failed(kExitRunFailed, error);
  }
  LearnOutcome outcome;
  outcome.vertex_count = result.vertex_count;
  outcome.patches_with_vertices = static_cast<int32_t>(result.fibers.size());
  outcome.passes = result.passes;
  return outcome;
}

}  // namespace myo_app
