// Runs that go on from a checkpoint: stopped after any frame (the preroll,
// the start, in between, just before the end) and resumed with another
// number of threads, a scene of every node type writes the very bytes of a
// run that was never stopped. Checkpoints of a changed scene, mesh, map or
// format are refused, damaged ones passed over for the one before.

#include <gtest/gtest.h>

#include <omp.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/run/run_checkpoint.h"
#include "io/map_file.h"
#include "support/log_capture.h"
#include "support/spindle_scene.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// Every node type: sensors of distance, position and angle, a remap driving
// the muscle, a muscle attached to two bones, sliding on a segment and on a
// target mesh, with its debug lines; a ribbon on the muscle's output; a skin
// bound to the ribbon; a shape activated from a patches file and kept off a
// collider; an edge evaluator and a skin merge whose rest and sources move,
// so that a binding made again at the wrong frame would show; a data node
// and a debug locator.
constexpr const char* kEveryNodeType = R"({
  "timeline": {"preroll": -2, "start": 1, "end": 6, "fps": 24},
  "transforms": [
    {"name": "root", "keys": [{"frame": -2}, {"frame": 6, "translate": [0, 2, 0], "rotate": [0, 0, 20]}]},
    {"name": "tip", "parent": "root",
     "keys": [{"frame": -2, "translate": [5, 0, 0]}, {"frame": 6, "translate": [5, 0, 0], "rotate": [0, 0, 40]}]},
    {"name": "squeeze", "keys": [{"frame": -2}, {"frame": 6, "scale": [0.7, 0.8, 0.9]}]}
  ],
  "meshes": [
    {"name": "mesh", "file": "spindle.obj"},
    {"name": "bone", "file": "spindle.obj", "parent": "root"},
    {"name": "skinMesh", "file": "spindle.obj"},
    {"name": "jiggleMesh", "file": "spindle.obj", "follows": "root"},
    {"name": "half", "file": "spindle.obj", "follows": "squeeze"}
  ],
  "nodes": [
    {"name": "length", "type": "MyoSensorDistance", "connections": {"startPosition": "root", "endPosition": "tip"}},
    {"name": "speed", "type": "MyoSensorPosition", "connections": {"position": "tip"}},
    {"name": "angle", "type": "MyoSensorRotation",
     "connections": {"startPosition": "root", "midPosition": "tip", "endPosition": "half.vtx[3]"}},
    {"name": "drive", "type": "remapValue", "attributes": {"inputMin": 5, "inputMax": 4.5},
     "connections": {"inputValue": "length.outDistance"}},
    {"name": "muscle", "type": "MyoMuscle", "input": "mesh",
     "attributes": {"gravity": 9.8, "debug": true, "debugFeature": "Muscle Fibers", "maxSlidingDistance": 2},
     "connections": {"activation": "drive.outValue",
                     "attachmentConstraintsList[0].attachmentMatrix": "root",
                     "attachmentConstraintsList[1].attachmentMatrix": "tip",
                     "slideOnSegmentConstraintsList[0].slideOnSegmentRootMatrix": "root",
                     "slideOnSegmentConstraintsList[0].slideOnSegmentTipMatrix": "tip",
                     "targets[0].targetWorldMesh": "bone", "targets[0].targetWorldMatrix": "root"},
     "maps": [{"name": "attachmentConstraints", "set": 0, "value": 0.2},
              {"name": "attachmentConstraints", "set": 1, "value": 0.1},
              {"name": "slideOnSegmentConstraints", "set": 0, "value": 0.2},
              {"name": "slideOnGeometryConstraints", "set": 0, "value": 0.3},
              {"name": "shapePreservation", "value": 0.3}]},
    {"name": "ribbon", "type": "MyoRibbonMuscle", "input": "muscle", "attributes": {"gravity": 9.8}},
    {"name": "skin", "type": "MyoSkin", "input": "skinMesh", "attributes": {"maxSlidingDistance": 1},
     "connections": {"referenceMesh": "ribbon"},
     "maps": [{"name": "slideConstraints", "value": 0.5}, {"name": "hardConstraints", "value": 0.3}]},
    {"name": "jiggle", "type": "MyoSimshape", "input": "jiggleMesh",
     "attributes": {"activationMode": "Muscle Patches", "musclesFile": "belly.mmp", "writeOutActivation": true,
                    "maxCollisionSlidingDistance": 2, "debug": true},
     "connections": {"collisionMesh": "mesh", "deformMesh": "half"},
     "maps": [{"name": "slideCollisionConstraints", "value": 1}, {"name": "attractForce", "file": "attract.txt"}]},
    {"name": "edges", "type": "MyoEdgeEvaluator", "connections": {"deformMesh": "skin", "restMesh": "half"}},
    {"name": "merged", "type": "MyoSkinMerge", "input": "mesh",
     "connections": {"simList[0].simWorldMesh": "skin", "simList[0].simWorldMatrix": "root",
                     "animList[0].animWorldMesh": "half",
                     "animList[0].animWorldMatrix": "squeeze"},
     "maps": [{"name": "blend", "value": 0.5}]},
    {"name": "gather", "type": "MyoDataNode", "connections": {"inputs[0]": "muscle", "inputs[1]": "jiggle"}},
    {"name": "view", "type": "MyoDebugLocator", "connections": {"data": "gather"}}
  ]
})";

// Every file below `folder` but the run's timings and manifest, with its bytes.
std::vector<std::pair<std::string, std::string>> Results(const std::string& folder) {
  std::vector<std::pair<std::string, std::string>> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const std::string name = fs::relative(entry.path(), folder).string();
    if (name == "figures.csv" || name == "summary.json" || name == ".myoforge-run") continue;
    files.emplace_back(name, myo_test::ReadFile(entry.path().string()));
  }
  std::sort(files.begin(), files.end());
  return files;
}

class CheckpointResumeTest : public myo_test::SpindleSceneTest {
 protected:
  CheckpointResumeTest() : SpindleSceneTest(kEveryNodeType) {
    const std::size_t points = myo_test::SpindlePointCount();
    std::string ids;
    for (std::size_t i = 0; i < points; ++i) ids += std::string(i ? " " : "") + (i % 2 ? "1" : "2");
    dir_.Write("belly.mmp", "1\n" + std::to_string(points) + "\n" + ids + "\n1 0 0 0 1 0\n");
    dir_.Write("attract.txt", myo_io::MapFileText(std::vector<float>(points, 0.3f), "attraction"));
  }

  ~CheckpointResumeTest() override { omp_set_num_threads(threads_); }

  // Plays the scene into `folder` with a checkpoint after every frame and
  // `threads` threads, stopped after `last` when given.
  myo_app::RunResult Play(const std::string& folder, int threads, std::optional<long long> last, bool resume,
                          std::string& error, myo_app::OutputFormat format = myo_app::OutputFormat::kObj) {
    omp_set_num_threads(threads);
    const myo_app::Scene scene = Read();
    std::atomic<bool> stop{false};
    myo_app::RunOptions options;
    options.output_directory = folder;
    options.format = format;
    options.checkpoint_every = 1;
    options.resume = resume;
    options.interrupted = &stop;
    const long long preroll = static_cast<long long>(scene.timeline.preroll);
    options.progress = [&](std::size_t done, std::size_t) {
      if (last && preroll + static_cast<long long>(done) - 1 == *last) stop = true;
    };
    return myo_app::RunScene(scene, options, error);
  }

  // Stops a run after `last`, goes on with it, and returns its results.
  std::vector<std::pair<std::string, std::string>> StoppedAndResumed(long long last, int threads_before,
                                                                     int threads_after,
                                                                     myo_app::OutputFormat format) {
    const std::string folder = dir_.File("resumed");
    fs::remove_all(folder);
    std::string error;
    EXPECT_EQ(Play(folder, threads_before, last, false, error, format), myo_app::RunResult::kInterrupted) << error;
    const std::vector<myo_app::CheckpointFile> checkpoints = myo_app::FindCheckpoints(folder);
    EXPECT_FALSE(checkpoints.empty());
    if (!checkpoints.empty()) {
      EXPECT_EQ(checkpoints[0].frame, last);
    }
    EXPECT_EQ(Play(folder, threads_after, std::nullopt, true, error, format), myo_app::RunResult::kDone) << error;
    EXPECT_TRUE(myo_app::FindCheckpoints(folder).empty()) << "a finished run keeps no checkpoint";
    return Results(folder);
  }

  std::vector<std::pair<std::string, std::string>> Uninterrupted(myo_app::OutputFormat format) {
    myo_app::RunOptions options;
    options.output_directory = dir_.File("whole");
    options.format = format;
    Run(options);
    return Results(options.output_directory);
  }

  const int threads_ = omp_get_max_threads();
  myo_test::LogCapture log_;
};

TEST_F(CheckpointResumeTest, EveryNodeTypeGoesOnBitForBitFromAnyFrameWithAnyThreads) {
  const auto whole = Uninterrupted(myo_app::OutputFormat::kObj);
  // Every node writes what it does, so a difference cannot hide.
  for (const char* file : {"muscle/muscle.0006.obj", "ribbon/ribbon.0006.obj", "skin/skin.0006.obj",
                           "jiggle/jiggle.0006.obj", "jiggle/jiggle.outActivation.0006.txt",
                           "muscle/muscle.debug.0006.obj", "edges/edges.compression.0006.txt",
                           "merged/merged.0006.obj", "view/view.debug.0006.obj", "values.csv", "viewer.html"})
    EXPECT_TRUE(std::any_of(whole.begin(), whole.end(), [&](const auto& f) { return f.first == file; })) << file;

  // The preroll frame, the one after it, the frame before the start, the
  // start frame, the one after, and the last but one.
  const std::vector<std::pair<long long, std::pair<int, int>>> cases = {
      {-2, {1, 2}}, {-1, {2, 1}}, {0, {1, 1}}, {1, {2, 1}}, {2, {1, 2}}, {5, {2, 2}}};
  for (const auto& [last, threads] : cases) {
    const auto resumed = StoppedAndResumed(last, threads.first, threads.second, myo_app::OutputFormat::kObj);
    ASSERT_EQ(resumed.size(), whole.size()) << "stopped after " << last;
    for (std::size_t k = 0; k < whole.size(); ++k) {
      EXPECT_EQ(resumed[k].first, whole[k].first);
      EXPECT_TRUE(resumed[k].second == whole[k].second) << resumed[k].first << " differs, stopped after " << last;
    }
  }
}

TEST_F(CheckpointResumeTest, PointCachesAndThePageGoOnFromTheirCheckpoint) {
  const auto whole = Uninterrupted(myo_app::OutputFormat::kPc2);
  const auto resumed = StoppedAndResumed(3, 2, 1, myo_app::OutputFormat::kPc2);
  ASSERT_EQ(resumed.size(), whole.size());
  for (std::size_t k = 0; k < whole.size(); ++k)
    EXPECT_TRUE(resumed[k].second == whole[k].second) << resumed[k].first;
}

TEST_F(CheckpointResumeTest, AChangedSceneMeshMapOrPatchesFileOrAnotherFormatIsRefusedByName) {
  const std::string folder = dir_.File("resumed");
  std::string error;
  ASSERT_EQ(Play(folder, 1, 2, false, error), myo_app::RunResult::kInterrupted) << error;
  const std::string manifest = myo_test::ReadFile(folder + "/.myoforge-run");

  // Each change is refused naming the file; the folder is left as it was.
  const std::vector<std::pair<std::string, std::string>> changes = {
      {"scene.json", ""}, {"spindle.obj", "# touched\n"}, {"attract.txt", "# touched\n"}, {"belly.mmp", " "}};
  for (const auto& [file, appended] : changes) {
    const std::string before = myo_test::ReadFile(dir_.File(file));
    if (file == "scene.json") scene_["nodes"][4]["attributes"]["gravity"] = 9.81;
    else dir_.Write(file, before + appended);
    EXPECT_EQ(Play(folder, 1, std::nullopt, true, error), myo_app::RunResult::kFailed) << file;
    EXPECT_EQ(error, folder + "/checkpoints/" + myo_app::CheckpointFileName(2) +
                         ": the checkpoint belongs to another state of the scene: " + dir_.File(file) +
                         " changed since the checkpoint was written; run without --resume to start again");
    if (file == "scene.json") scene_["nodes"][4]["attributes"]["gravity"] = 9.8;
    else dir_.Write(file, before);
    EXPECT_EQ(myo_app::FindCheckpoints(folder).size(), 2u);
    EXPECT_EQ(myo_test::ReadFile(folder + "/.myoforge-run"), manifest);
  }
  EXPECT_EQ(Play(folder, 1, std::nullopt, true, error, myo_app::OutputFormat::kPc2), myo_app::RunResult::kFailed);
  EXPECT_EQ(error, folder + "/checkpoints/" + myo_app::CheckpointFileName(2) +
                       ": the run before the checkpoint wrote OBJ frames; go on with the same format, or run without "
                       "--resume to start again");
  // As it was, the scene goes on.
  EXPECT_EQ(Play(folder, 1, std::nullopt, true, error), myo_app::RunResult::kDone) << error;
}

TEST_F(CheckpointResumeTest, ADamagedOrTruncatedCheckpointGivesWayToTheOneBefore) {
  const auto whole = Uninterrupted(myo_app::OutputFormat::kObj);
  const std::string folder = dir_.File("resumed");
  std::string error;
  for (const char* damage : {"truncated", "damaged"}) {
    fs::remove_all(folder);
    ASSERT_EQ(Play(folder, 2, 3, false, error), myo_app::RunResult::kInterrupted) << error;
    const std::string newest = folder + "/checkpoints/" + myo_app::CheckpointFileName(3);
    std::string bytes = myo_test::ReadFile(newest);
    if (std::string(damage) == "truncated") bytes.resize(bytes.size() / 2);
    else bytes[bytes.size() / 2] ^= 1;
    fs::remove(newest);
    dir_.Write(fs::relative(newest, dir_.path()).string(), bytes);
    log_.Clear();
    EXPECT_EQ(Play(folder, 1, std::nullopt, true, error), myo_app::RunResult::kDone) << error;
    const std::vector<std::string> lines = log_.lines();
    const std::string refused = "[MyoForge][Warning] " + newest + ": checkpoint refused: " + damage;
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
      return line.rfind(refused, 0) == 0 && line.find("; trying the one before it") != std::string::npos;
    })) << damage;
    EXPECT_EQ(log_.Count("[MyoForge][Info] Going on from the checkpoint of frame 2 (" + folder + "/checkpoints/" +
                         myo_app::CheckpointFileName(2) + ")."),
              1u);
    EXPECT_TRUE(Results(folder) == whole) << damage;
  }

  // With no usable checkpoint left the run stops; with none at all it
  // starts from its first frame.
  fs::remove_all(folder);
  ASSERT_EQ(Play(folder, 1, 0, false, error), myo_app::RunResult::kInterrupted) << error;
  for (const myo_app::CheckpointFile& file : myo_app::FindCheckpoints(folder)) dir_.Write(
      fs::relative(file.path, dir_.path()).string(), "not a checkpoint");
  EXPECT_EQ(Play(folder, 1, std::nullopt, true, error), myo_app::RunResult::kFailed);
  EXPECT_EQ(error, folder + ": no usable checkpoint (2 refused); run without --resume to start again");
  fs::remove_all(folder + "/checkpoints");
  EXPECT_EQ(Play(folder, 2, std::nullopt, true, error), myo_app::RunResult::kDone) << error;
  EXPECT_TRUE(Results(folder) == whole);
}

TEST_F(CheckpointResumeTest, ACheckpointWhosePointCacheIsGoneGivesWayToTheOneBefore) {
  const auto whole = Uninterrupted(myo_app::OutputFormat::kPc2);
  const std::string folder = dir_.File("resumed");
  std::string error;
  // Frame 1 is the first one written: the checkpoint of frame 0 needs no
  // point cache yet, the one of frame 1 needs its first sample.
  ASSERT_EQ(Play(folder, 1, 1, false, error, myo_app::OutputFormat::kPc2), myo_app::RunResult::kInterrupted);
  fs::remove(folder + "/muscle.pc2.partial.resume");
  EXPECT_EQ(Play(folder, 1, std::nullopt, true, error, myo_app::OutputFormat::kPc2), myo_app::RunResult::kDone)
      << error;
  EXPECT_EQ(log_.Count("[MyoForge][Warning] " + folder + "/checkpoints/" + myo_app::CheckpointFileName(1) +
                       ": checkpoint refused: " + folder +
                       "/muscle.pc2.partial.resume is missing or shorter than at the checkpoint; trying the one "
                       "before it"),
            1u);
  EXPECT_TRUE(Results(folder) == whole);
}

}  // namespace
