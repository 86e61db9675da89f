// The debug view of the standalone host: a "MyoDataNode" gathers deformers,
// a "MyoDebugLocator" writes their lines together per frame; what the scene
// reader refuses in that wiring; the OBJ of several line objects.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/run/debug_view.h"
#include "app/run/scene_run.h"
#include "app/scene/scene_reader.h"
#include "io/obj_mesh.h"
#include "scenes/muscle_meshes.h"
#include "support/command_runner.h"

namespace {

using nlohmann::json;

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

// The lines of `text` that start with `prefix`, between "o <object>" and the
// next object (the whole file for an empty `object`).
std::vector<std::string> Lines(const std::string& text, const std::string& prefix, const std::string& object = "") {
  std::vector<std::string> out;
  std::istringstream in(text);
  bool inside = object.empty();
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("o ", 0) == 0) inside = object.empty() || line == "o " + object;
    if (inside && line.rfind(prefix, 0) == 0) out.push_back(line);
  }
  return out;
}

class DebugViewTest : public ::testing::Test {
 protected:
  DebugViewTest() {
    dir_.Write("spindle.obj", SpindleObj());
    scene_ = json::parse(R"({
      "timeline": {"preroll": -1, "start": 2, "end": 4, "fps": 24},
      "transforms": [{"name": "bone", "keys": [{"frame": 1}, {"frame": 4, "translate": [0, 2, 0]}]}],
      "meshes": [{"name": "mesh", "file": "spindle.obj"}, {"name": "other", "file": "spindle.obj"}],
      "nodes": [{"name": "view", "type": "MyoDebugLocator", "connections": {"data": "gather"}},
                {"name": "gather", "type": "MyoDataNode",
                 "connections": {"inputs[3]": "second", "inputs[0]": "first", "inputs[5]": "first"}},
                {"name": "first", "type": "MyoMuscle", "input": "mesh",
                 "attributes": {"gravity": 9.8, "debug": true, "debugFeature": "Muscle Fibers"},
                 "connections": {"attenuationMatrix": "bone"}},
                {"name": "second", "type": "MyoMuscle", "input": "other",
                 "attributes": {"gravity": 9.8, "debug": true, "debugFeature": "Muscle Fibers", "debugFibersScale": 2}}]
    })");
  }

  bool Read(myo_app::Scene& scene, std::string& error) {
    dir_.Write("scene.json", scene_.dump());
    return myo_app::ReadScene(dir_.File("scene.json"), scene, error);
  }

  // The reader's message for the scene, which must be refused.
  std::string Refusal() {
    myo_app::Scene scene;
    std::string error;
    EXPECT_FALSE(Read(scene, error));
    return error;
  }

  std::string Run() {
    myo_app::Scene scene;
    std::string error;
    EXPECT_TRUE(Read(scene, error)) << error;
    myo_app::RunOptions options;
    options.output_directory = dir_.File("out");
    EXPECT_EQ(myo_app::RunScene(scene, options, error), myo_app::RunResult::kDone) << error;
    return myo_test::ListFiles(dir_.File("out"));
  }

  myo_test::TemporaryDirectory dir_;
  json scene_;
};

TEST_F(DebugViewTest, ALocatorWritesEveryConnectedDeformersLinesAsOneObjectEach) {
  const std::string files = Run();
  EXPECT_NE(files.find("view/view.debug.0002.obj\n"), std::string::npos);
  EXPECT_NE(files.find("view/view.debug.0004.obj\n"), std::string::npos);
  EXPECT_EQ(files.find("view/view.debug.0001.obj\n"), std::string::npos);  // before the start
  EXPECT_EQ(files.find("gather/"), std::string::npos);                     // a data node writes nothing

  const std::string text = myo_test::ReadFile(dir_.File("out/view/view.debug.0004.obj"));
  EXPECT_EQ(text.rfind("# view debug lines at frame 0004\n", 0), 0u);
  // By input index, a deformer connected twice shown once.
  EXPECT_EQ(Lines(text, "o "), std::vector<std::string>({"o first", "o second"}));

  // Each object holds exactly the lines of its deformer's own debug file.
  for (const char* node : {"first", "second"}) {
    const std::string own =
        myo_test::ReadFile(dir_.File(std::string("out/") + node + "/" + node + ".debug.0004.obj"));
    EXPECT_FALSE(Lines(own, "v ").empty()) << node;
    EXPECT_EQ(Lines(text, "v ", node), Lines(own, "v ")) << node;
    EXPECT_EQ(Lines(text, "l ", node).size(), Lines(own, "l ").size()) << node;
  }
  // Vertex numbers run on across the objects.
  const std::size_t first_vertices = Lines(text, "v ", "first").size();
  EXPECT_EQ(Lines(text, "l ", "second").front(),
            "l " + std::to_string(first_vertices + 1) + " " + std::to_string(first_vertices + 2));
  EXPECT_EQ(Lines(text, "v ").size(), 2 * Lines(text, "l ").size());

  const json summary = json::parse(myo_test::ReadFile(dir_.File("out/summary.json")));
  for (const json& node : summary["nodes"])
    if (node["name"] == "view") {
      EXPECT_EQ(node["output"], "view/view.debug.####.obj");
    }
}

TEST_F(DebugViewTest, DeformersWithDebugOffOrNoDataNodeLeaveTheirObjectsOut) {
  scene_["nodes"][3]["attributes"]["debug"] = false;
  Run();
  std::string text = myo_test::ReadFile(dir_.File("out/view/view.debug.0003.obj"));
  EXPECT_EQ(Lines(text, "o "), std::vector<std::string>({"o first"}));

  // A locator without a data node writes a file with its comment alone.
  scene_["nodes"][0].erase("connections");
  Run();
  text = myo_test::ReadFile(dir_.File("out/view/view.debug.0003.obj"));
  EXPECT_EQ(text, "# view debug lines at frame 0003\n");
}

TEST_F(DebugViewTest, TheReaderRefusesWiringThatShowsNothing) {
  const json original = scene_;
  scene_["nodes"][1]["connections"]["inputs[1]"] = "mesh";
  EXPECT_NE(Refusal().find("\"mesh\" is not a node of the scene"), std::string::npos);

  scene_ = original;
  scene_["nodes"][1]["connections"]["inputs[1]"] = "view";
  EXPECT_NE(Refusal().find("takes the message of a MyoMuscle, MyoRibbonMuscle, MyoSkin or MyoSimshape, and "
                           "\"view\" is a MyoDebugLocator"),
            std::string::npos);

  scene_ = original;
  scene_["nodes"][0]["connections"]["data"] = "first";
  EXPECT_NE(Refusal().find("takes the message of a MyoDataNode, and \"first\" is a MyoMuscle"), std::string::npos);

  scene_ = original;
  scene_["nodes"][1]["connections"] = {{"inputs", "first"}};
  EXPECT_NE(Refusal().find("needs an index: connect \"inputs[0]\""), std::string::npos);

  scene_ = original;
  scene_["nodes"][1]["connections"] = {{"inputs[x]", "first"}};
  EXPECT_NE(Refusal().find("expected a plug \"inputs[index]\""), std::string::npos);

  scene_ = original;
  scene_["nodes"][0]["connections"] = {{"data[0]", "gather"}};
  EXPECT_NE(Refusal().find("\"data\" is not a list of messages of MyoDebugLocator"), std::string::npos);

  scene_ = original;
  scene_["nodes"][1]["attributes"] = {{"inputs", 1}};
  EXPECT_NE(Refusal().find("a message attribute takes a connection, not a value"), std::string::npos);

  scene_ = original;
  scene_["nodes"][1]["input"] = "mesh";
  EXPECT_NE(Refusal().find("deforms no mesh and takes no input"), std::string::npos);
}

TEST(ObjLineObjects, NamesEachObjectAndCountsVerticesAcrossThem) {
  const std::vector<float> two = {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3};
  const std::vector<float> one_and_a_half = {4, 4, 4, 5, 5, 5, 9};
  const std::vector<float> none;
  const std::string text = myo_io::ObjLineObjectsText(
      {{"a", &two}, {"empty", &none}, {"b", &one_and_a_half}, {"missing", nullptr}}, "frame 0001");
  EXPECT_EQ(text,
            "# frame 0001\n"
            "o a\nv 0 0 0\nv 1 1 1\nv 2 2 2\nv 3 3 3\nl 1 2\nl 3 4\n"
            "o empty\n"
            "o b\nv 4 4 4\nv 5 5 5\nl 5 6\n"
            "o missing\n");
}

}  // namespace
