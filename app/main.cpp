// myoforge: evaluates MyoForge deformers from a scene file on a time line,
// as Maya plays them, and writes the results.

#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>

#include <CLI/CLI.hpp>

#include "app/cli/exit_codes.h"
#include "app/cli/learn_command.h"
#include "app/cli/listings.h"
#include "app/cli/run_command.h"
#include "app/cli/scene_batch.h"
#include "app/scene/name_suggestion.h"
#include "app/cli/snapshot_command.h"
#include "app/cli/progress_bar.h"
#include "app/run/output_folder.h"
#include "app/run/run_checkpoint.h"
#include "app/run/scene_run.h"
#include "app/scene/scene_field.h"
#include "app/scene/scene_names.h"
#include "app/scene/scene_numbers.h"
#include "app/scene/scene_reader.h"
#include "core/log/logger.h"
#include "core/solver/stop_request.h"
#include "io/number_text.h"

namespace {

// Threads of the parallel passes: each takes a stack of its own.
constexpr int kMaxThreads = 256;

std::atomic<bool> g_interrupted{false};

// The first Ctrl-C or SIGTERM asks the run to stop: the step in progress
// stops between two iterations and the run ends after the last whole frame.
// A second one ends the process at once.
void OnSignal(int) {
  if (g_interrupted.exchange(true)) _exit(myo_app::kExitInterrupted);
  myo_core::RequestStop();
}

// The level of MYO_LOGGER_LEVEL as the plug-in reads it, then the flags.
void SetLogLevel(bool quiet, bool verbose) {
  myo_core::SetLevel(1);
  if (const char* level = std::getenv("MYO_LOGGER_LEVEL"))
    myo_core::SetLevel(static_cast<unsigned>(static_cast<signed char>(level[0]) - '0'));
  if (verbose) myo_core::SetLevel(0);
  if (quiet) myo_core::SetLevel(3);
}

// "-t": a whole number of threads from 1 to kMaxThreads.
CLI::Validator ThreadCount() {
  const std::string range = "1 to " + std::to_string(kMaxThreads);
  return CLI::Validator(
      [range](std::string& text) {
        long count = 0;
        if (myo_io::ParseIntText(text, count) && count >= 1 && count <= kMaxThreads) return std::string();
        return "expected a whole number from " + range + ", not " + myo_io::Quoted(text);
      },
      "INT in " + range);
}

// "--size": WIDTHxHEIGHT, each from 64 to 4096 pixels.
CLI::Validator SnapshotSize() {
  return CLI::Validator(
      [](std::string& text) {
        int width = 0, height = 0;
        char rest = 0;
        if (std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &rest) == 2 && width >= 64 && width <= 4096 &&
            height >= 64 && height <= 4096)
          return std::string();
        return "expected WIDTHxHEIGHT, each from 64 to 4096 pixels, not " + myo_io::Quoted(text);
      },
      "WIDTHxHEIGHT");
}

int Fail(int code, const std::string& message) {
  std::cerr << "myoforge: " << myo_app::OneLine(message) << std::endl;
  return code;
}

// What `myoforge run --help` tells beyond the options.
std::string RunFooter() {
  using myo_app::FormatNumber;
  return "Limits myoforge adds to a scene: at most " + FormatNumber(myo_app::kMaxIterations) +
         " \"iterations\" per step; frames from " + FormatNumber(myo_app::kEarliestFrame) + " to " +
         FormatNumber(myo_app::kLatestFrame) + "; " + FormatNumber(myo_app::kMinFramesPerSecond) + " to " +
         FormatNumber(myo_app::kMaxFramesPerSecond) +
         " frames per second;\nnames of letters, digits and underscores, not starting with a digit, at most " +
         std::to_string(myo_app::kMaxNameLength) + " characters, no two differing only in letter case.\n" +
         "Output folder: a new or empty folder, or one an earlier run wrote into (it holds " +
         myo_app::kManifestName + "):\nthat run's outputs are replaced. Any other folder with files in it is "
         "refused.\nCtrl-C (or SIGTERM) stops within moments and keeps the whole frames written so far (exit code "
         "130);\na second Ctrl-C quits at once. With --checkpoint-every or --resume, checkpoints go to "
         "<output>/checkpoints/\nand a stopped run goes on from the newest with --resume (docs/farm.md).\n"
         "Several scenes or a list: each scene writes into <output>/<scene name>, and runs.json sums them up.\n"
         "Exit codes: 0 done, 2 command line, 3 invalid scene, 4 run failed (for several scenes: the highest).";
}

int Main(int argc, char** argv) {
  CLI::App app{"myoforge: runs MyoForge muscle, ribbon muscle and skin deformers from a scene file"};
  app.require_subcommand(1);
  app.fallthrough();  // --quiet and --verbose also after the subcommand
  app.set_version_flag("--version", std::string("myoforge ") + MYOFORGE_VERSION_TEXT);
  bool quiet = false, verbose = false;
  app.add_flag("-q,--quiet", quiet, "Show errors only");
  app.add_flag("-v,--verbose", verbose, "Show debug messages of the deformers");

  myo_app::SceneBatchRequest batch_request;
  std::string format = "obj";
  int threads = 0;
  bool no_progress = false;
  CLI::App* run = app.add_subcommand("run", "Simulate the scenes' time lines and write the results");
  run->add_option("scenes", batch_request.scenes, "Scene files (JSON)");
  run->add_option("--list", batch_request.list_file,
                  "A file that lists scene files, one per line ('#' starts a comment)");
  run->add_option("--index", batch_request.index,
                  "Play only this scene of those named, from 0 (default: $SLURM_ARRAY_TASK_ID when set and several "
                  "scenes or a list are named)");
  run->add_option("-o,--output", batch_request.output,
                  "Output directory (default: myoforge-out/<scene name>); with several scenes or a list, the folder "
                  "that holds one folder per scene (default: myoforge-out)");
  run->add_option("-f,--format", format, "obj: one OBJ per node and frame; pc2: one point cache per node")
      ->check(CLI::IsMember({"obj", "pc2"}));
  run->add_option("-t,--threads", threads,
                  "Threads for the parallel passes, 1 to " + std::to_string(kMaxThreads) + " (default: all cores)")
      ->check(ThreadCount());
  run->add_flag("--no-progress", no_progress, "Do not draw the progress bar");
  bool no_viewer = false;
  run->add_flag("--no-viewer", no_viewer, "Do not write viewer.html, the page that plays the run in a browser");
  std::optional<uint32_t> checkpoint_every;
  run->add_option("--checkpoint-every", checkpoint_every,
                  "Write a checkpoint after every N simulated frames (0: none; default none, or " +
                      std::to_string(myo_app::kDefaultCheckpointInterval) + " with --resume)")
      ->check(CLI::Range(0u, 1000000u));
  bool resume = false;
  run->add_flag("--resume", resume,
                "Go on from the newest checkpoint in the output folder; start from the first frame when it has none");
  run->footer(RunFooter());

  myo_app::SnapshotOptions snapshot_options;
  std::string snapshot_size = "480x360";
  CLI::App* snapshot = app.add_subcommand("snapshot", "Draw chosen frames of a run into one PNG with headless Chromium");
  snapshot->add_option("folder", snapshot_options.run_folder, "The run's output folder (it holds viewer.html)")
      ->required();
  snapshot->add_option("--frames", snapshot_options.frames, "Frames to draw, as 1,24,48 (default: four spread evenly)")
      ->delimiter(',');
  snapshot->add_option("-o,--output", snapshot_options.output, "The PNG to write (default: FOLDER/snapshot.png)");
  snapshot->add_option("--columns", snapshot_options.columns, "Pictures per row (default: about square)")
      ->check(CLI::Range(1, 16));
  snapshot->add_option("--size", snapshot_size, "Size of one picture in pixels, WIDTHxHEIGHT (default 480x360)")
      ->check(SnapshotSize());
  snapshot->add_option("--color", snapshot_options.colors,
                       "Colour a mesh by a channel, as skin:compression (names as in the viewer's panel)")
      ->delimiter(',');

  std::string validate_path;
  CLI::App* validate = app.add_subcommand("validate", "Check a scene, its meshes and maps without simulating");
  validate->add_option("scene", validate_path, "Scene file (JSON)")->required();

  CLI::App* nodes = app.add_subcommand("nodes", "List the node types");
  std::string node_type;
  CLI::App* attributes = app.add_subcommand("attributes", "List the attributes of a node type");
  attributes->add_option("type", node_type, "Node type, as in \"myoforge nodes\" (any letter case)")->required();
  bool wide = false;
  std::string only_attribute;
  attributes->add_flag("--wide", wide, "A table, one line per attribute, no line broken (wider than 80 columns)");
  attributes->add_option("--attribute", only_attribute, "Only this attribute (long or short name)");

  myo_app::LearnOptions learn_options;
  bool learn_no_progress = false;
  CLI::App* learn = app.add_subcommand("learn", "Learn a muscle patches file (.mmp) from a neutral mesh and target poses");
  learn->add_option("neutral", learn_options.neutral, "Neutral mesh (OBJ)")->required();
  learn->add_option("targets", learn_options.targets, "Target meshes (OBJ), same vertex count as the neutral mesh")
      ->required();
  learn->add_option("-k,--patches", learn_options.patches, "Number of patches K, above 0")->required();
  learn->add_option("-o,--output", learn_options.output, "The muscle patches file to write (.mmp)")->required();
  learn->add_option("--max-iterations", learn_options.max_iterations,
                    "Limit of clustering passes; 0 (default) runs until no vertex changes its patch");
  learn->add_option("--mask", learn_options.mask_file,
                    "File of vertex indices to learn from (map file format); default all vertices");
  learn->add_option("--vertices", learn_options.vertices, "Vertex indices to learn from, as 0,1,2")->delimiter(',');
  learn->add_option("--colors", learn_options.colors,
                    "Also write the neutral mesh with a colour per patch (OBJ with v x y z r g b)");
  learn->add_flag("--no-progress", learn_no_progress, "Do not draw the progress bar");
  learn->footer("Vertex indices start at 0. Exit codes: 0 done, 2 command line, 3 invalid input, 4 writing failed.");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) return app.exit(e);  // --help, --version
    return Fail(myo_app::kExitUsage, std::string(e.what()) + " (see myoforge --help)");
  }
  SetLogLevel(quiet, verbose);

  if (nodes->parsed()) {
    std::cout << myo_app::NodeListing();
    return myo_app::kExitSuccess;
  }
  if (attributes->parsed()) {
    const myo_app::NodeType* type = myo_app::FindNodeTypeAnyCase(node_type);
    if (type == nullptr) return Fail(myo_app::kExitUsage, myo_app::UnknownNodeTypeMessage(node_type));
    if (only_attribute.empty()) {
      std::cout << myo_app::AttributeListing(*type, wide);
      return myo_app::kExitSuccess;
    }
    const myo_core::AttributeInfo* info = myo_app::FindNodeAttribute(*type, only_attribute);
    if (info == nullptr)
      return Fail(myo_app::kExitUsage, "unknown attribute " + myo_io::Quoted(only_attribute) + " of " + type->name +
                                           " (see myoforge attributes " + type->name + ")" +
                                           myo_app::DidYouMean(only_attribute, myo_app::AttributeNames(*type)));
    std::cout << myo_app::AttributeEntry(*type, *info, wide);
    return myo_app::kExitSuccess;
  }

  if (snapshot->parsed()) {
    std::sscanf(snapshot_size.c_str(), "%dx%d", &snapshot_options.width, &snapshot_options.height);
    const myo_app::SnapshotOutcome outcome = myo_app::RunSnapshot(snapshot_options);
    if (outcome.exit_code != myo_app::kExitSuccess) return Fail(outcome.exit_code, outcome.error);
    if (!quiet) std::cout << "Wrote " << outcome.output << std::endl;
    return myo_app::kExitSuccess;
  }

  if (learn->parsed()) {
    learn_options.progress_bar = !quiet && !learn_no_progress && myo_app::StandardErrorIsTerminal();
    const myo_app::LearnOutcome outcome = myo_app::RunLearn(learn_options);
    if (outcome.exit_code != myo_app::kExitSuccess) return Fail(outcome.exit_code, outcome.error);
    if (!quiet)
      std::cout << "Wrote " << learn_options.output << ": " << outcome.patches_with_vertices
                << " patches with vertices of " << learn_options.patches << ", " << outcome.vertex_count
                << " vertices, " << outcome.passes << " passes" << std::endl;
    return myo_app::kExitSuccess;
  }

  if (validate->parsed()) {
    myo_app::Scene scene;
    std::string error;
    if (!myo_app::ReadScene(validate_path, scene, error)) return Fail(myo_app::kExitInvalidScene, error);
    if (!quiet)
      std::cout << validate_path << ": valid: " << scene.nodes.size() << " nodes, " << scene.meshes.size()
                << " meshes, " << scene.transforms.size() << " transforms, frames " << scene.timeline.preroll
                << " to " << scene.timeline.end << std::endl;
    return myo_app::kExitSuccess;
  }

  if (const char* array_index = std::getenv("SLURM_ARRAY_TASK_ID"); array_index != nullptr && *array_index != '\0')
    batch_request.array_index = array_index;
  myo_app::RunCommandOptions options;
  std::string error;
  if (!myo_app::PlanSceneBatch(batch_request, options.batch, error))
    return Fail(myo_app::kExitUsage, error + " (see myoforge run --help)");
  if (threads > 0) omp_set_num_threads(threads);
  std::signal(SIGINT, OnSignal);
  std::signal(SIGTERM, OnSignal);
  options.run.format = format == "pc2" ? myo_app::OutputFormat::kPc2 : myo_app::OutputFormat::kObj;
  options.run.interrupted = &g_interrupted;
  options.run.viewer = !no_viewer;
  options.run.resume = resume;
  options.run.checkpoint_every = checkpoint_every.value_or(resume ? myo_app::kDefaultCheckpointInterval : 0u);
  options.quiet = quiet;
  options.progress_bar = !quiet && !no_progress && myo_app::StandardErrorIsTerminal();
  return myo_app::RunSceneBatch(options);
}

}  // namespace

int main(int argc, char** argv) {
  // Every fault has its message where it is found; this is the last guard.
  try {
    return Main(argc, argv);
  } catch (const std::bad_alloc&) {
    return Fail(myo_app::kExitRunFailed, "out of memory");
  } catch (const std::exception& e) {
    return Fail(myo_app::kExitRunFailed, std::string("unexpected error: ") + e.what());
  }
}
