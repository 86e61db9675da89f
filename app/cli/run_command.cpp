#include "app/cli/run_command.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>

#include <nlohmann/json.hpp>

#include "app/cli/exit_codes.h"
#include "app/cli/progress_bar.h"
#include "app/cli/run_report.h"
#include "app/scene/scene_reader.h"
#include "io/atomic_file.h"
#include "io/one_line.h"

namespace myo_app {

namespace {

namespace fs = std::filesystem;

void PrintError(const std::string& message) { std::cerr << "myoforge: " << myo_io::OneLine(message) << std::endl; }

std::string ResultName(int exit_code) {
  switch (exit_code) {
    case kExitSuccess: return "done";
    case kExitInvalidScene: return "invalid scene";
    case kExitRunFailed: return "failed";
    case kExitInterrupted: return "interrupted";
    default: return "not run";
  }
}

// "Wrote 96 frames of 5 nodes to DIR (summary.json, figures.csv, values.csv)".
std::string WroteLine(const Scene& scene, const std::string& folder) {
  const bool values = std::any_of(scene.nodes.begin(), scene.nodes.end(),
                                  [](const SceneNode& node) { return !node.type->deformer; });
  return "Wrote " + std::to_string(static_cast<long long>(scene.timeline.end - scene.timeline.start + 1)) +
         " frames of " + std::to_string(scene.nodes.size()) + " nodes to " + folder + " (summary.json, figures.csv" +
         (values ? ", values.csv" : "") + ")\n";
}

SceneOutcome RunOne(const RunCommandOptions& options, const SceneJob& job) {
  SceneOutcome outcome;
  outcome.job = &job;
  const auto begin = std::chrono::steady_clock::now();
  Scene scene;
  if (!ReadScene(job.scene, scene, outcome.error)) {
    outcome.exit_code = kExitInvalidScene;
    return outcome;
  }
  RunOptions run = options.run;
  run.output_directory = job.output;
  ProgressBar bar(fs::path(job.scene).filename().string(), options.progress_bar);
  run.progress = [&bar](std::size_t done, std::size_t total) { bar.Update(done, total); };
  const RunResult result = RunScene(scene, run, outcome.error);
  bar.Finish();
  outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  switch (result) {
    case RunResult::kInterrupted:
      outcome.exit_code = kExitInterrupted;
      outcome.error = "interrupted; the frames written so far are complete";
      return outcome;
    case RunResult::kFailed: outcome.exit_code = kExitRunFailed; return outcome;
    case RunResult::kDone: break;
  }
  outcome.exit_code = kExitSuccess;
  if (!options.quiet) std::cout << WroteLine(scene, job.output) << RunReport(job.output) << std::flush;
  return outcome;
}

// runs.json's text: the scenes in order with their folder, exit code,
// result ("done", "invalid scene", "failed", "interrupted", "not run"),
// error and seconds, and the counts.
std::string RunsSummaryText(const std::vector<SceneOutcome>& outcomes) {
  nlohmann::json runs = nlohmann::json::array();
  std::size_t done = 0, failed = 0;
  for (const SceneOutcome& outcome : outcomes) {
    nlohmann::json entry = {{"index", outcome.job->index},
                            {"scene", outcome.job->scene},
                            {"output", outcome.job->output},
                            {"result", ResultName(outcome.exit_code)},
                            {"seconds", outcome.seconds}};
    if (outcome.exit_code >= 0) entry["exit_code"] = outcome.exit_code;
    if (!outcome.error.empty()) entry["error"] = myo_io::OneLine(outcome.error);
    runs.push_back(entry);
    done += outcome.exit_code == kExitSuccess ? 1 : 0;
    failed += outcome.exit_code > 0 ? 1 : 0;
  }
  const nlohmann::json summary = {
      {"scenes", outcomes.size()}, {"done", done}, {"failed", failed}, {"runs", runs}};
  return summary.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace

int RunSceneBatch(const RunCommandOptions& options) {
  const std::vector<SceneJob>& jobs = options.batch.jobs;
  std::vector<SceneOutcome> outcomes;
  for (const SceneJob& job : jobs) outcomes.push_back({&job, -1, "", 0.0});
  const bool several = jobs.size() > 1;
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    if (options.run.interrupted != nullptr && options.run.interrupted->load()) break;
    if (several && !options.quiet)
      std::cout << "[" << (i + 1) << "/" << jobs.size() << "] " << myo_io::OneLine(jobs[i].scene) << std::endl;
    outcomes[i] = RunOne(options, jobs[i]);
    if (outcomes[i].exit_code != kExitSuccess) PrintError(outcomes[i].error);
    if (outcomes[i].exit_code == kExitInterrupted) break;
  }

  int code = kExitSuccess;
  for (const SceneOutcome& outcome : outcomes) code = std::max(code, outcome.exit_code);
  if (!several) return code;

  std::string error;
  std::error_code ec;
  fs::create_directories(options.batch.root, ec);
  const std::string runs_file = (fs::path(options.batch.root) / kRunsFileName).string();
  if (!myo_io::WriteFileAtomically(runs_file, RunsSummaryText(outcomes), error)) {
    PrintError(error);
    code = std::max<int>(code, kExitRunFailed);
  }
  if (!options.quiet) {
    std::size_t done = 0;
    for (const SceneOutcome& outcome : outcomes) done += outcome.exit_code == kExitSuccess ? 1 : 0;
    std::cout << jobs.size() << " scenes: " << done << " done, " << (jobs.size() - done) << " not done (" << runs_file
              << ")" << std::endl;
  }
  return code;
}

}  // namespace myo_app
