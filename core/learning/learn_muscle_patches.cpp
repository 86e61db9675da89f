#include "core/learning/learn_muscle_patches.h"

#include <utility>

#include "core/learning/kmeans.h"
#include "core/learning/patch_dataset.h"
#include "core/log/logger.h"
#include "core/patches/muscle_patches_file.h"

namespace myo_core {

bool LearnPatchesHost::WritePatchesFile(const std::string& path, int32_t vertex_count,
                                        const std::vector<int32_t>& ids,
                                        const std::vector<std::array<double, 3>>& fibers) {
  return WriteMusclePatchesFile(path, vertex_count, ids, fibers);
}

namespace {

// Progress of the stages: a bar with a user interface, log lines without.
class LearnProgress {
 public:
  LearnProgress(LearnPatchesHost& host, bool has_interface, int32_t stage_count)
      : host_(host), has_interface_(has_interface), stage_count_(stage_count) {}

  void Begin() {
    if (has_interface_)
      host_.BeginProgress(stage_count_, " Learning Muscle Patches...");
    else
      LogPercent(0);
  }

  void Stage(const std::string& text) {
    ++stage_;
    if (has_interface_) {
      host_.AdvanceProgress(" " + text);
      return;
    }
    LogPercent(stage_ * 100 / stage_count_);
    LogInfo(text);
  }

  void End() {
    if (has_interface_)
      host_.EndProgress();
    else
      LogPercent(100);
  }

  // A failure after the start closes the bar; batch logs no 100%.
  void Abort() {
    if (has_interface_) host_.EndProgress();
  }

 private:
  void LogPercent(int32_t percent) {
    LogInfo(std::string(kLearnMusclePatchesCommandName) + " progress: " + std::to_string(percent) + "%");
  }

  LearnPatchesHost& host_;
  bool has_interface_;
  int32_t stage_count_;
  int32_t stage_ = 0;
};

LearnPatchesResult Failure(std::string message) {
  LearnPatchesResult result;
  result.error = std::move(message);
  return result;
}

std::string Validate(const LearnPatchesRequest& request) {
  if (request.output_path.empty()) return "Missing output file path argument.";
  if (request.patch_count <= 0) return "Missing or invalid number of muscle patches argument.";
  if (request.neutral_name.empty()) return "Missing neutral mesh argument.";
  if (request.targets.empty()) return "Missing or empty target meshes array.";
  return std::string();
}

std::string FailedTargetsMessage(const std::vector<std::string>& names) {
  std::string message = "Something failed querying target points for targets: ";
  for (size_t i = 0; i < names.size(); ++i) message += (i == 0 ? "'" : ", '") + names[i] + "'";
  return message;
}

}  // namespace

LearnPatchesResult LearnMusclePatches(const LearnPatchesRequest& request, LearnPatchesHost& host) {
  bool has_interface = false;
  if (!host.UserInterface(has_interface)) {
    LearnPatchesResult result = Failure(std::string("Could not retrieve a valid Maya launch state in ") +
                                        kLearnMusclePatchesCommandName +
                                        " command. Aborting Learn Muscle Patches command");
    result.launch_state_failed = true;
    return result;
  }
  const std::string invalid = Validate(request);
  if (!invalid.empty()) return Failure(invalid);

  const int32_t limit = request.max_iterations_set ? request.max_iterations : 0;
  if (limit > 0)
    LogInfo("Running muscle patches calculation until optimal solution is found or a limit of " +
            std::to_string(limit) + " iterations is reached.");
  else
    LogInfo("Running muscle patches calculation until optimal solution is found.");

  const int32_t k = request.patch_count;
  if (!request.vertices_mask.empty() && request.vertices_mask.size() < static_cast<size_t>(k))
    return Failure("Less number of selected vertices than number of muscle patches.");

  LearnProgress progress(host, has_interface, request.draw ? 6 : 5);
  progress.Begin();
  auto fail = [&progress](std::string message) {
    progress.Abort();
    return Failure(std::move(message));
  };

  const std::vector<float> neutral = host.NeutralPoints(request.neutral_name);
  const int32_t vertex_count = static_cast<int32_t>(neutral.size() / 3);
  std::vector<int32_t> mask = request.vertices_mask;
  if (mask.empty())
    for (int32_t v = 0; v < vertex_count; ++v) mask.push_back(v);

  progress.Stage("Building dataset...");
  std::vector<std::vector<float>> targets(request.targets.size());
  std::vector<std::string> failed;
  for (size_t t = 0; t < request.targets.size(); ++t) {
    std::vector<float>& points = targets[t];
    if (!host.TargetPoints(request.targets[t], points) || points.empty() || points.size() != neutral.size())
      failed.push_back(request.targets[t]);
  }
  if (!failed.empty()) return fail(FailedTargetsMessage(failed));
  std::string error;
  if (!CheckVerticesMask(mask, vertex_count, error)) return fail(error);

  std::vector<std::vector<double>> displacements(targets.size());
  const int64_t target_count = static_cast<int64_t>(targets.size());
#pragma omp parallel for schedule(static)
  for (int64_t t = 0; t < target_count; ++t)
    displacements[static_cast<size_t>(t)] = MaskedDisplacements(neutral, targets[static_cast<size_t>(t)], mask);
  targets.clear();
  std::vector<KMeansPoint> rows = BuildKMeansRows(displacements, mask.size());

  progress.Stage("Learning muscle patches...");
  KMeans kmeans(k, 0);
  if (request.max_iterations_set) kmeans.max_iterations = request.max_iterations;
  std::vector<int32_t> cluster_ids;
  std::vector<std::array<double, 3>> centroids;
  if (!kmeans.Run(rows, cluster_ids, centroids, error)) return fail(error);
  rows.clear();

  LearnPatchesResult result;
  result.vertex_count = vertex_count;
  result.passes = kmeans.passes();

  progress.Stage("Generating output...");
  result.fibers = PatchFibers(displacements, cluster_ids);

  if (request.draw) {
    progress.Stage("Drawing muscle patches...");
    result.colors = PatchColors(vertex_count, mask, cluster_ids, centroids.size());
    host.SetNeutralColors(result.colors);
  }

  progress.Stage("Writing results...");
  result.ids = PatchFileIds(vertex_count, mask, cluster_ids);
  const bool written = host.WritePatchesFile(request.output_path, vertex_count, result.ids, result.fibers);
  if (!written && request.require_written_file)
    return fail("Could not write the muscle patches file \"" + request.output_path + "\".");

  progress.End();
  LogInfo("Output file correctly saved at: " + request.output_path);
  result.ok = true;
  return result;
}

}  // namespace myo_core
