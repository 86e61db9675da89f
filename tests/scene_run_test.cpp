// Playing a scene through the library: the values a node reads at each
// frame, nodes chained through their outputs, and a stop that leaves no
// partial file.

#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>

#include "app/run/scene_attribute_source.h"
#include "app/run/scene_run.h"
#include "app/scene/scene_reader.h"
#include "scenes/muscle_meshes.h"
#include "support/command_runner.h"

namespace {

using nlohmann::json;

// A small closed spindle as OBJ text.
std::string SpindleObj() {
  const myo_core::PolygonMesh mesh = myo_scenes::MakeSpindle(12, 8, 10.0f, 1.0f);
  std::string text;
  for (std::size_t i = 0; i < mesh.points.size(); i += 3)
    text += "v " + std::to_string(mesh.points[i]) + " " + std::to_string(mesh.points[i + 1]) + " " +
            std::to_string(mesh.points[i + 2]) + "\n";
  std::size_t corner = 0;
  for (int32_t count : mesh.vertex_counts) {
    text += "f";
    for (int32_t k = 0; k < count; ++k) text += " " + std::to_string(mesh.vertices[corner++] + 1);
    text += "\n";
  }
  return text;
}

class SceneRunTest : public ::testing::Test {
 protected:
  SceneRunTest() {
    dir_.Write("spindle.obj", SpindleObj());
    scene_ = json::parse(R"({
      "timeline": {"preroll": -2, "start": 1, "end": 6, "fps": 30},
      "transforms": [{"name": "bone", "keys": [{"frame": 1}, {"frame": 6, "translate": [0, 3, 0]}]}],
      "meshes": [{"name": "mesh", "file": "spindle.obj"}],
      "nodes": [{"name": "outer", "type": "MyoRibbonMuscle", "input": "inner",
                 "attributes": {"startTime": 2, "envelope": 0.5}},
                {"name": "inner", "type": "MyoMuscle", "input": "mesh",
                 "attributes": {"gravity": 9.8, "stiffness": {"keys": [[1, 1000], [6, 2000]]}},
                 "connections": {"attenuationMatrix": "bone"}}]
    })");
  }

  myo_app::Scene Read() {
    dir_.Write("scene.json", scene_.dump());
    myo_app::Scene scene;
    std::string error;
    EXPECT_TRUE(myo_app::ReadScene(dir_.File("scene.json"), scene, error)) << error;
    return scene;
  }

  myo_test::TemporaryDirectory dir_;
  json scene_;
};

TEST_F(SceneRunTest, NodesReadTimesInSecondsKeysAndConnectedMatrices) {
  const myo_app::Scene scene = Read();
  const myo_app::SceneNode& inner = *scene.FindNode("inner");
  const myo_app::SceneNode& outer = *scene.FindNode("outer");
  const myo_app::SceneAttributeSource at_four(scene, inner, 4);
  EXPECT_DOUBLE_EQ(at_four.Number("currentTime"), 4.0 / 30.0);
  EXPECT_DOUBLE_EQ(at_four.Number("startTime"), 1.0 / 30.0);
  EXPECT_DOUBLE_EQ(at_four.Number("prerollStartTime"), -2.0 / 30.0);
  EXPECT_DOUBLE_EQ(at_four.Number("stiffness"), 1600.0);
  EXPECT_EQ(at_four.Number("iterations"), 10.0);  // the table's default
  EXPECT_EQ(at_four.MatrixValue("attenuationMatrix")[13], static_cast<float>(3.0 * 3.0 / 5.0));
  EXPECT_EQ(at_four.MatrixValue("attachmentMatrix"), myo_core::IdentityMatrix());
  // The components of a colour default to the colour's default, red.
  EXPECT_EQ(at_four.Number("debugColorRed"), 1.0);
  EXPECT_EQ(at_four.Number("debugColorGreen"), 0.0);
  const myo_app::SceneAttributeSource outer_source(scene, outer, 4);
  EXPECT_DOUBLE_EQ(outer_source.Number("startTime"), 2.0 / 30.0);  // set on the node, in frames
  EXPECT_EQ(outer_source.Number("envelope"), 0.5);
}

TEST_F(SceneRunTest, ChainedNodesRunInOrderAndAStopLeavesNothingHalfWritten) {
  const myo_app::Scene scene = Read();
  ASSERT_EQ(scene.nodes[0].name, "inner");
  myo_app::RunOptions options;
  options.output_directory = dir_.File("out");
  std::size_t last_done = 0, last_total = 0;
  options.progress = [&](std::size_t done, std::size_t total) {
    last_done = done;
    last_total = total;
  };
  std::string error;
  ASSERT_EQ(myo_app::RunScene(scene, options, error), myo_app::RunResult::kDone) << error;
  EXPECT_EQ(last_done, 9u);
  EXPECT_EQ(last_total, 9u);

  // The inner muscle is carried along by its attenuation matrix, which rises
  // by 3; the outer one takes its output as input and deforms it further.
  const std::string inner = myo_test::ReadFile(dir_.File("out/inner/inner.0006.obj"));
  const std::string outer = myo_test::ReadFile(dir_.File("out/outer/outer.0006.obj"));
  const std::string rest = myo_test::ReadFile(dir_.File("spindle.obj"));
  EXPECT_NE(inner, outer);
  auto first_y = [](const std::string& obj) {
    const std::size_t v = obj.find("\nv ");
    double x = 0, y = 0, z = 0;
    std::sscanf(obj.c_str() + v + 3, "%lf %lf %lf", &x, &y, &z);
    return y;
  };
  EXPECT_GT(first_y(inner) - first_y("\n" + rest), 1.0);
  EXPECT_NE(first_y(outer), first_y(inner));

  // A stop before the first frame: the point caches are discarded, nothing
  // else was written.
  std::atomic<bool> stop{true};
  options.output_directory = dir_.File("stopped");
  options.format = myo_app::OutputFormat::kPc2;
  options.interrupted = &stop;
  EXPECT_EQ(myo_app::RunScene(scene, options, error), myo_app::RunResult::kInterrupted);
  EXPECT_EQ(myo_test::ListFiles(dir_.File("stopped")), "");
}

}  // namespace
