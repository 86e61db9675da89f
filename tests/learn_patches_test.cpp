// The learning's course through a host: validation messages in their order,
// the failed targets listed, progress as a bar or as log lines, fibers from
// the target with the longest mean, and the file's ids addressed by the mask
// as given.

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "core/learning/learn_muscle_patches.h"
#include "support/command_runner.h"
#include "support/log_capture.h"

namespace {

using myo_core::LearnPatchesRequest;
using myo_core::LearnPatchesResult;

class FakeHost : public myo_core::LearnPatchesHost {
 public:
  bool UserInterface(bool& has_interface) override {
    has_interface = interface_;
    return state_known_;
  }
  std::vector<float> NeutralPoints(const std::string& name) override {
    const auto found = meshes_.find(name);
    return found == meshes_.end() ? std::vector<float>() : found->second;
  }
  bool TargetPoints(const std::string& name, std::vector<float>& points) override {
    const auto found = meshes_.find(name);
    if (found == meshes_.end()) return false;
    points = found->second;
    return true;
  }
  void BeginProgress(int32_t count, const std::string& status) override {
    events_.push_back("begin " + std::to_string(count) + status);
  }
  void AdvanceProgress(const std::string& status) override { events_.push_back("advance" + status); }
  void EndProgress() override { events_.push_back("end"); }
  void SetNeutralColors(const std::vector<float>&) override {}

  bool interface_ = false;
  bool state_known_ = true;
  std::map<std::string, std::vector<float>> meshes_;
  std::vector<std::string> events_;
};

// A strip of 8 vertices: 0-3 bulge up in "up" and stay in "side"; 4-7 slide
// sideways in "side" and stay in "up"; each vertex moves a little more than
// the one before, so that no two rows are equal.
FakeHost StripHost() {
  FakeHost host;
  std::vector<float> neutral, up, side;
  for (int v = 0; v < 8; ++v) {
    const float x = static_cast<float>(v), extra = 0.01f * static_cast<float>(v);
    neutral.insert(neutral.end(), {x, 0.0f, 0.0f});
    up.insert(up.end(), {x, v < 4 ? 1.0f + extra : 0.0f, 0.0f});
    side.insert(side.end(), {v < 4 ? x : x + 2.0f + extra, 0.0f, 0.0f});
  }
  host.meshes_ = {{"neutral", neutral}, {"up", up}, {"side", side}};
  return host;
}

LearnPatchesRequest StripRequest(const std::string& path) {
  LearnPatchesRequest request;
  request.output_path = path;
  request.patch_count = 2;
  request.neutral_name = "neutral";
  request.targets = {"up", "side"};
  return request;
}

TEST(LearnPatches, ValidationMessagesComeInTheirOrderAndNothingIsWritten) {
  myo_test::TemporaryDirectory folder;
  FakeHost host = StripHost();
  LearnPatchesRequest request;  // everything missing: the first check speaks
  const std::vector<std::string> expected = {
      "Missing output file path argument.", "Missing or invalid number of muscle patches argument.",
      "Missing neutral mesh argument.", "Missing or empty target meshes array."};
  auto error = [&]() { return myo_core::LearnMusclePatches(request, host).error; };
  EXPECT_EQ(error(), expected[0]);
  request.output_path = folder.File("out.mmp");
  request.patch_count = -3;
  EXPECT_EQ(error(), expected[1]);
  request.patch_count = 2;
  EXPECT_EQ(error(), expected[2]);
  request.neutral_name = "neutral";
  EXPECT_EQ(error(), expected[3]);
  request.targets = {"up"};
  request.vertices_mask = {3};
  EXPECT_EQ(myo_core::LearnMusclePatches(request, host).error,
            "Less number of selected vertices than number of muscle patches.");
  request.vertices_mask = {5, 1, 5};
  EXPECT_EQ(myo_core::LearnMusclePatches(request, host).error, "The vertices mask holds the vertex 5 twice (entry 2).");
  host.state_known_ = false;
  const LearnPatchesResult no_state = myo_core::LearnMusclePatches(request, host);
  EXPECT_TRUE(no_state.launch_state_failed);
  EXPECT_EQ(no_state.error,
            "Could not retrieve a valid Maya launch state in MyoLearnMusclePatches command. Aborting Learn Muscle "
            "Patches command");
  EXPECT_EQ(myo_test::ListFiles(folder.path()), "");
  EXPECT_TRUE(host.events_.empty());
}

TEST(LearnPatches, FailingTargetsAreListedTogetherAndAMissingNeutralFailsThemAll) {
  myo_test::TemporaryDirectory folder;
  FakeHost host = StripHost();
  host.meshes_["short"] = {0, 0, 0, 1, 1, 1};
  host.meshes_["empty"] = {};
  host.interface_ = true;
  LearnPatchesRequest request = StripRequest(folder.File("out.mmp"));
  request.targets = {"short", "up", "missing", "empty"};
  const LearnPatchesResult result = myo_core::LearnMusclePatches(request, host);
  EXPECT_EQ(result.error, "Something failed querying target points for targets: 'short', 'missing', 'empty'");
  // The bar was begun, so it is ended.
  EXPECT_EQ(host.events_, (std::vector<std::string>{"begin 5 Learning Muscle Patches...",
                                                    "advance Building dataset...", "end"}));

  request.neutral_name = "nowhere";
  request.targets = {"up", "side"};
  EXPECT_EQ(myo_core::LearnMusclePatches(request, host).error,
            "Something failed querying target points for targets: 'up', 'side'");
  EXPECT_EQ(myo_test::ListFiles(folder.path()), "");
}

TEST(LearnPatches, SplitsTheRegionsAndTakesEachFiberFromItsLongestTarget) {
  myo_test::TemporaryDirectory folder;
  FakeHost host = StripHost();
  myo_test::LogCapture log;
  std::srand(11);
  const LearnPatchesRequest request = StripRequest(folder.File("strip.mmp"));
  const LearnPatchesResult result = myo_core::LearnMusclePatches(request, host);
  ASSERT_TRUE(result.ok) << result.error;
  ASSERT_EQ(result.ids.size(), 8u);
  for (size_t v = 1; v < 4; ++v) EXPECT_EQ(result.ids[v], result.ids[0]);
  for (size_t v = 5; v < 8; ++v) EXPECT_EQ(result.ids[v], result.ids[4]);
  ASSERT_NE(result.ids[0], result.ids[4]);
  const auto& up = result.fibers[static_cast<size_t>(result.ids[0] - 1)];
  const auto& side = result.fibers[static_cast<size_t>(result.ids[4] - 1)];
  EXPECT_NEAR(up[1], 1.015, 1e-6);  // the mean of "up", not of "side"
  EXPECT_NEAR(side[0], 2.055, 1e-6);

  // The batch log: the limit line, then percent and stage lines.
  const std::vector<std::string> expected = {
      "[MyoForge][Info] Running muscle patches calculation until optimal solution is found.",
      "[MyoForge][Info] MyoLearnMusclePatches progress: 0%",
      "[MyoForge][Info] MyoLearnMusclePatches progress: 20%",
      "[MyoForge][Info] Building dataset...",
      "[MyoForge][Info] MyoLearnMusclePatches progress: 40%",
      "[MyoForge][Info] Learning muscle patches...",
      "[MyoForge][Info] MyoLearnMusclePatches progress: 60%",
      "[MyoForge][Info] Generating output...",
      "[MyoForge][Info] MyoLearnMusclePatches progress: 80%",
      "[MyoForge][Info] Writing results...",
      "[MyoForge][Info] MyoLearnMusclePatches progress: 100%",
      "[MyoForge][Info] Output file correctly saved at: " + request.output_path};
  EXPECT_EQ(log.lines(), expected);
}

TEST(LearnPatches, ABarWithDrawingAndAMaskTakenAsGiven) {
  myo_test::TemporaryDirectory folder;
  FakeHost host = StripHost();
  host.interface_ = true;
  myo_test::LogCapture log;
  LearnPatchesRequest request = StripRequest(folder.File("strip.mmp"));
  request.draw = true;
  request.max_iterations_set = true;
  request.max_iterations = 1;
  // Not ascending: row 0 is vertex 1 (it rises), row 1 is vertex 6 (it
  // slides), but the ids are written to the mask's entries as given.
  request.vertices_mask = {6, 1};
  const LearnPatchesResult result = myo_core::LearnMusclePatches(request, host);
  ASSERT_TRUE(result.ok) << result.error;
  EXPECT_EQ(result.passes, 1);
  EXPECT_EQ(host.events_, (std::vector<std::string>{
                              "begin 6 Learning Muscle Patches...", "advance Building dataset...",
                              "advance Learning muscle patches...", "advance Generating output...",
                              "advance Drawing muscle patches...", "advance Writing results...", "end"}));
  EXPECT_EQ(log.Count("[MyoForge][Info] Running muscle patches calculation until optimal solution is found or a "
                      "limit of 1 iterations is reached."),
            1u);
  EXPECT_EQ(log.Count("[MyoForge][Info] Building dataset..."), 0u);  // the bar shows the stages
  // Vertex 6 carries the id of the rising row, vertex 1 that of the sliding one.
  EXPECT_GT(result.fibers[static_cast<size_t>(result.ids[6] - 1)][1], 0.5);
  EXPECT_GT(result.fibers[static_cast<size_t>(result.ids[1] - 1)][0], 1.0);
  for (size_t v : {0u, 2u, 3u, 4u, 5u, 7u}) EXPECT_EQ(result.ids[v], -1);
}

}  // namespace
