// The debug view of the standalone host: a "MyoDataNode" gathers deformers,
// a "MyoDebugLocator" writes their lines together per frame; what the scene
// reader refuses in that wiring.

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/run/debug_view.h"
#include "support/spindle_scene.h"

namespace {

using nlohmann::json;

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

class DebugViewTest : public myo_test::SpindleSceneTest {
 protected:
  DebugViewTest()
      : SpindleSceneTest(R"({
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
    })") {}
};

TEST_F(DebugViewTest, ALocatorWritesEveryConnectedDeformersLinesAsOneObjectEach) {
  const std::string files = Run();
  EXPECT_NE(files.find("view/view.debug.0002.obj\n"), std::string::npos);
  EXPECT_EQ(files.find("view/view.debug.0001.obj\n"), std::string::npos);  // before the start
  EXPECT_EQ(files.find("gather/"), std::string::npos);                     // a data node writes nothing

  const std::string text = Output("view/view.debug.0004.obj");
  EXPECT_EQ(text.rfind("# view debug lines at frame 0004\n", 0), 0u);
  // By input index, a deformer connected twice shown once.
  EXPECT_EQ(Lines(text, "o "), std::vector<std::string>({"o first", "o second"}));

  // Each object holds exactly the lines of its deformer's own debug file.
  for (const char* node : {"first", "second"}) {
    const std::string own = Output(std::string(node) + "/" + node + ".debug.0004.obj");
    EXPECT_FALSE(Lines(own, "v ").empty()) << node;
    EXPECT_EQ(Lines(text, "v ", node), Lines(own, "v ")) << node;
    EXPECT_EQ(Lines(text, "l ", node).size(), Lines(own, "l ").size()) << node;
  }
  // Vertex numbers run on across the objects.
  const std::size_t first_vertices = Lines(text, "v ", "first").size();
  EXPECT_EQ(Lines(text, "l ", "second").front(),
            "l " + std::to_string(first_vertices + 1) + " " + std::to_string(first_vertices + 2));
}

TEST_F(DebugViewTest, DeformersWithDebugOffOrNoDataNodeLeaveTheirObjectsOut) {
  scene_["nodes"][3]["attributes"]["debug"] = false;
  Run();
  EXPECT_EQ(Lines(Output("view/view.debug.0003.obj"), "o "), std::vector<std::string>({"o first"}));

  // A locator without a data node writes a file with its comment alone.
  scene_["nodes"][0].erase("connections");
  Run();
  EXPECT_EQ(Output("view/view.debug.0003.obj"), "# view debug lines at frame 0003\n");
}

TEST_F(DebugViewTest, TheReaderRefusesWiringThatShowsNothing) {
  using Change = std::function<void(json&)>;
  const std::vector<std::pair<Change, std::string>> cases = {
      {[](json& n) { n[1]["connections"]["inputs[1]"] = "view"; },
       "takes the message of a MyoMuscle, MyoRibbonMuscle, MyoSkin or MyoSimshape, and \"view\" is a MyoDebugLocator"},
      {[](json& n) { n[0]["connections"]["data"] = "first"; },
       "takes the message of a MyoDataNode, and \"first\" is a MyoMuscle"},
      {[](json& n) { n[1]["connections"] = {{"inputs", "first"}}; }, "needs an index: connect \"inputs[0]\""},
      {[](json& n) { n[1]["attributes"] = {{"inputs", 1}}; }, "a message attribute takes a connection, not a value"},
      {[](json& n) { n[1]["input"] = "mesh"; }, "deforms no mesh and takes no input"},
  };
  const json original = scene_;
  for (const auto& [change, message] : cases) {
    change(scene_["nodes"]);
    EXPECT_NE(Refusal().find(message), std::string::npos) << message;
    scene_ = original;
  }
}

}  // namespace
