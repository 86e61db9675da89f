// Several scenes in one call: the list file, the index a farm task plays,
// each scene's own folder and exit status, and runs.json of the whole call.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "app/cli/scene_batch.h"
#include "support/command_runner.h"
#include "support/spindle_scene.h"

namespace {

using myo_app::SceneBatch;
using myo_app::SceneBatchRequest;

std::string PlanError(const SceneBatchRequest& request) {
  SceneBatch batch;
  std::string error;
  EXPECT_FALSE(myo_app::PlanSceneBatch(request, batch, error));
  return error;
}

SceneBatch Plan(const SceneBatchRequest& request) {
  SceneBatch batch;
  std::string error;
  EXPECT_TRUE(myo_app::PlanSceneBatch(request, batch, error)) << error;
  return batch;
}

TEST(SceneList, ReadsOneSceneALineFromTheListsFolder) {
  myo_test::TemporaryDirectory dir;
  dir.Write("shots/list.txt", "# shots of the week\n\n  a.json  \r\n/abs/b.json\n\t# indented comment\nsub/c.json");
  std::vector<std::string> scenes;
  std::string error;
  ASSERT_TRUE(myo_app::ReadSceneList(dir.File("shots/list.txt"), scenes, error)) << error;
  EXPECT_EQ(scenes, (std::vector<std::string>{dir.File("shots/a.json"), "/abs/b.json", dir.File("shots/sub/c.json")}));

  dir.Write("empty.txt", "# nothing\n\n");
  scenes.clear();
  EXPECT_FALSE(myo_app::ReadSceneList(dir.File("empty.txt"), scenes, error));
  EXPECT_EQ(error, dir.File("empty.txt") + ": the list names no scene (one scene file per line; '#' starts a comment)");
  dir.Write("control.txt", "a.json\nb\x01.json\n");
  EXPECT_FALSE(myo_app::ReadSceneList(dir.File("control.txt"), scenes, error));
  EXPECT_EQ(error.rfind(dir.File("control.txt") + ": line 2: ", 0), 0u) << error;
  EXPECT_FALSE(myo_app::ReadSceneList(dir.File("missing.txt"), scenes, error));
  EXPECT_EQ(error, dir.File("missing.txt") + ": cannot read the list of scenes");
  EXPECT_FALSE(myo_app::ReadSceneList(dir.path(), scenes, error));
}

TEST(SceneBatchPlan, OneSceneKeepsItsFolderSeveralGetOneFolderEachUnderTheRoot) {
  SceneBatchRequest one;
  one.scenes = {"shots/arm.json"};
  SceneBatch batch = Plan(one);
  ASSERT_EQ(batch.jobs.size(), 1u);
  EXPECT_EQ(batch.jobs[0].output, "myoforge-out/arm");
  EXPECT_TRUE(batch.root.empty());
  one.output = "results";
  EXPECT_EQ(Plan(one).jobs[0].output, "results");
  // The scheduler's index does not pick among one scene named alone.
  one.array_index = "3";
  EXPECT_EQ(Plan(one).jobs.size(), 1u);

  SceneBatchRequest two;
  two.scenes = {"shots/arm.json", "other/leg.json"};
  two.output = "farm";
  batch = Plan(two);
  ASSERT_EQ(batch.jobs.size(), 2u);
  EXPECT_EQ(batch.root, "farm");
  EXPECT_EQ(batch.jobs[1].output, "farm/leg");
  EXPECT_EQ(batch.jobs[1].index, 1u);

  // A task of an array plays its entry into the very folder a whole run uses.
  two.array_index = "1";
  batch = Plan(two);
  ASSERT_EQ(batch.jobs.size(), 1u);
  EXPECT_EQ(batch.jobs[0].scene, "other/leg.json");
  EXPECT_EQ(batch.jobs[0].output, "farm/leg");
  two.index = 0;  // --index wins over the variable
  EXPECT_EQ(Plan(two).jobs[0].scene, "shots/arm.json");
}

TEST(SceneBatchPlan, RefusesIndicesOutsideTheListAndScenesSharingAFolder) {
  SceneBatchRequest request;
  request.scenes = {"a.json", "b.json"};
  request.index = 2;
  EXPECT_EQ(PlanError(request), "--index 2: the call names 2 scenes (indices 0 to 1)");
  request.index = -1;
  EXPECT_EQ(PlanError(request), "--index -1: the call names 2 scenes (indices 0 to 1)");
  request.index.reset();
  request.array_index = "1x";
  EXPECT_EQ(PlanError(request), "SLURM_ARRAY_TASK_ID: expected a whole number, not \"1x\"");
  request.array_index = "7";
  EXPECT_EQ(PlanError(request), "SLURM_ARRAY_TASK_ID 7: the call names 2 scenes (indices 0 to 1)");
  SceneBatchRequest single;
  single.scenes = {"a.json"};
  single.index = 1;
  EXPECT_EQ(PlanError(single), "--index 1: the call names 1 scene (index 0)");

  SceneBatchRequest clash;
  clash.scenes = {"day1/arm.json", "b.json", "day2/arm.json"};
  EXPECT_EQ(PlanError(clash),
            "scenes \"day1/arm.json\" and \"day2/arm.json\" would both write into myoforge-out/arm; give the scene "
            "files different names");
  EXPECT_EQ(PlanError(SceneBatchRequest()), "no scene given: name scene files or a list of them (--list)");
}

TEST(SceneBatchCommand, EachSceneGetsItsFolderAndStatusAndTheCallSumsThemUp) {
  myo_test::TemporaryDirectory dir;
  dir.Write("spindle.obj", myo_test::SpindleObjText());
  const std::string good = R"({"timeline": {"start": 1, "end": 3},
      "meshes": [{"name": "mesh", "file": "spindle.obj"}],
      "nodes": [{"name": "muscle", "type": "MyoMuscle", "input": "mesh"}]})";
  dir.Write("first.json", good);
  dir.Write("broken.json", R"({"timeline": {"start": 1, "end": 3}, "nodes": [{"name": "m", "type": "MyoMusle"}]})");
  dir.Write("last.json", good);
  dir.Write("list.txt", "first.json\nbroken.json\nlast.json\n");
  const std::string binary = MYOFORGE_BINARY;
  const std::string out = dir.File("out");

  const auto all = myo_test::RunCommand(binary, "run --list '" + dir.File("list.txt") + "' --no-viewer -o '" + out + "'");
  // The broken scene does not stop the others; the call reports the worst.
  EXPECT_EQ(all.exit_code, 3) << all.err;
  EXPECT_EQ(std::count(all.err.begin(), all.err.end(), '\n'), 1) << all.err;
  EXPECT_NE(all.err.find("broken.json: nodes[0].type"), std::string::npos) << all.err;
  EXPECT_NE(all.out.find("[3/3] " + dir.File("last.json") + "\n"), std::string::npos) << all.out;
  const std::string files = myo_test::ListFiles(out);
  EXPECT_NE(files.find("first/muscle/muscle.0003.obj\n"), std::string::npos) << files;
  EXPECT_NE(files.find("last/muscle/muscle.0003.obj\n"), std::string::npos) << files;
  EXPECT_EQ(files.find("broken/"), std::string::npos) << files;
  const auto runs = nlohmann::json::parse(myo_test::ReadFile(dir.File("out/runs.json")));
  EXPECT_EQ(runs["scenes"], 3);
  EXPECT_EQ(runs["done"], 2);
  EXPECT_EQ(runs["runs"][1]["exit_code"], 3);
  EXPECT_EQ(runs["runs"][1]["result"], "invalid scene");
  EXPECT_EQ(runs["runs"][2]["output"], out + "/last");
  EXPECT_EQ(myo_test::ReadFile(dir.File("out/first/muscle/muscle.0003.obj")),
            myo_test::ReadFile(dir.File("out/last/muscle/muscle.0003.obj")));

  // One task of the array: its own exit status, no runs.json of its own.
  myo_test::TemporaryDirectory task;
  const auto one = myo_test::RunCommand(
      "env", "SLURM_ARRAY_TASK_ID=2 '" + binary + "' run -q --list '" + dir.File("list.txt") + "' --no-viewer -o '" +
                 task.path() + "'");
  EXPECT_EQ(one.exit_code, 0) << one.err;
  EXPECT_EQ(myo_test::ListFiles(task.path()).rfind("last/.myoforge-run\n", 0), 0u);
  EXPECT_EQ(myo_test::ReadFile(task.File("last/muscle/muscle.0003.obj")),
            myo_test::ReadFile(dir.File("out/last/muscle/muscle.0003.obj")));
  EXPECT_EQ(myo_test::RunCommand(binary, "run -q --list '" + dir.File("list.txt") + "' --index 1 -o '" +
                                             task.path() + "'").exit_code,
            3);
}

}  // namespace
