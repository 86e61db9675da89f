// Reading and checking scene files: a valid scene resolves names, units and
// maps; every kind of fault stops the read with one line naming the file,
// the field or line, and what is wrong.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/scene/scene_reader.h"
#include "support/command_runner.h"

namespace {

using nlohmann::json;

// A closed tetrahedron: four points, four triangles.
const char* kTetrahedron =
    "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\n"
    "f 1 3 2\nf 1 2 4\nf 1 4 3\nf 2 3 4\n";

// A change to the scene, and the message that follows "<scene file>: " when
// the changed scene is read ("" when it reads).
using Change = std::function<void(json&)>;
using Cases = std::vector<std::pair<Change, std::string>>;

class SceneReaderTest : public ::testing::Test {
 protected:
  SceneReaderTest() {
    dir_.Write("meshes/body.obj", kTetrahedron);
    dir_.Write("meshes/bone.obj", kTetrahedron);
    scene_ = json::parse(R"({
      "timeline": {"start": 1, "end": 10, "preroll": -4, "fps": 25},
      "transforms": [{"name": "root", "keys": [{"frame": 1, "translate": [1, 2, 3]}]},
                     {"name": "tip", "parent": "root", "keys": [{"frame": 1, "rotate": [0, 0, 90]}]}],
      "meshes": [{"name": "body", "file": "meshes/body.obj"},
                 {"name": "bone", "file": "meshes/bone.obj", "parent": "root"}],
      "nodes": [{"name": "skin", "type": "MyoSkin", "input": "body",
                 "connections": {"referenceMesh": "muscle", "referenceMatrix": "root"},
                 "maps": [{"name": "hc", "values": [1, 0.5, 0.25, 0]}]},
                {"name": "muscle", "type": "MyoMuscle", "input": "body",
                 "attributes": {"it": 4, "material": "Tendon", "activation": {"keys": [[1, 0], [5, 1]]},
                                "startTime": 3},
                 "connections": {"attachmentConstraintsList[2].attachmentMatrix": "tip",
                                 "targets[0].targetWorldMesh": "bone", "targets[0].targetWorldMatrix": "root"},
                 "maps": [{"name": "attachmentConstraints", "set": 2, "value": 1},
                          {"name": "fibers", "values": [[1, 0, 0], [1, 0, 0], [0, 1, 0], [0, 1, 0]]}]}]
    })");
  }

  // Writes the scene and reads it; the error, or "" when it reads.
  std::string Read() {
    dir_.Write("scene.json", scene_.dump(2));
    std::string error;
    if (myo_app::ReadScene(Path(), result_, error)) return "";
    return error;
  }
  std::string Path() const { return dir_.File("scene.json"); }

  // Each change applied to the scene alone.
  void ExpectReads(const Cases& cases) {
    for (const auto& [change, message] : cases) {
      const json saved = scene_;
      change(scene_);
      EXPECT_EQ(Read(), message.empty() ? "" : Path() + ": " + message);
      scene_ = saved;
    }
  }

  // Sets an attribute of the muscle, whose iterations are then unset.
  static Change Attribute(const std::string& name, const json& value) {
    return [=](json& s) {
      s["nodes"][1]["attributes"].erase("it");
      s["nodes"][1]["attributes"][name] = value;
    };
  }

  myo_test::TemporaryDirectory dir_;
  json scene_;
  myo_app::Scene result_;
};

TEST_F(SceneReaderTest, ValidSceneResolvesNamesOrderAndValues) {
  ASSERT_EQ(Read(), "");
  // The skin reads the muscle's output, so the muscle is evaluated first.
  ASSERT_EQ(result_.nodes.size(), 2u);
  EXPECT_EQ(result_.nodes[0].name, "muscle");
  const myo_app::SceneNode& muscle = result_.nodes[0];
  // Short names are stored under long names; enums by name become numbers.
  EXPECT_EQ(muscle.attributes.at("iterations").At(1), 4.0);
  EXPECT_EQ(muscle.attributes.at("material").At(1), 3.0);
  // Maps: the list that holds them, the set, and vector components.
  ASSERT_EQ(muscle.maps.size(), 2u);
  EXPECT_EQ(muscle.maps[0].list, "attachmentConstraintsList");
  EXPECT_EQ(muscle.maps[0].values, std::vector<float>(4, 1.0f));
  EXPECT_EQ(result_.nodes[1].maps[0].element, "hardConstraints");
  // A mesh under a transform, and a child transform under its parent.
  const myo_app::Matrix4d world = result_.WorldMatrix("tip", 1);
  EXPECT_NEAR(world[1], 1.0, 1e-12);  // x turns into y
  EXPECT_DOUBLE_EQ(world[12], 1.0);
}

TEST_F(SceneReaderTest, MalformedFilesNameTheFileAndWhere) {
  dir_.Write("scene.json", "{\n  \"timeline\": {\"start\": 1,,\n}");
  std::string error;
  EXPECT_FALSE(myo_app::ReadScene(Path(), result_, error));
  EXPECT_EQ(error.rfind(Path() + ": line 2, column 27: invalid JSON: syntax error", 0), 0u) << error;

  EXPECT_FALSE(myo_app::ReadScene(dir_.File("missing.json"), result_, error));
  EXPECT_EQ(error, dir_.File("missing.json") + ": cannot open the scene file");

  dir_.Write("meshes/body.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 7\n");
  scene_["meshes"][0]["file"] = "meshes/body.obj";
  EXPECT_EQ(Read(), Path() + ": meshes[0].file: " + dir_.File("meshes/body.obj") +
                        ": line 4: vertex index 7 is out of range (the file has 3)");

  // A number beyond the double range is quoted by its start; the command
  // reports it as any invalid scene, rather than aborting.
  dir_.Write("scene.json", "{\n  \"timeline\": {\"start\": 1, \"end\": 1" + std::string(400, '0') + "}\n}");
  EXPECT_FALSE(myo_app::ReadScene(Path(), result_, error));
  EXPECT_EQ(error, Path() + ": line 2, column 35: invalid JSON: the number 1" + std::string(79, '0') +
                       "... is beyond the range of a 64-bit float");
}

TEST_F(SceneReaderTest, AttributesAreCheckedAgainstTheNodeTableAndTheNumberTypes) {
  const std::string at = "nodes[1].attributes.";
  ExpectReads({
      {Attribute("stiffnes", 1), at + "stiffnes: unknown attribute of MyoMuscle; did you mean \"stiffness\"?"},
      {Attribute("iterations", 0), at + "iterations: 0 is below the minimum 1"},
      {Attribute("iterations", 2.5), at + "iterations: expected a whole number, not 2.5"},
      {Attribute("attenuationMatrix", 1), at + "attenuationMatrix: a matrix attribute takes a connection, not a value"},
      {[](json& s) { s["nodes"][1]["attributes"]["iterations"] = 3; },
       at + "iterations: \"iterations\" is set twice (by its long and its short name)"},
  });
}

TEST_F(SceneReaderTest, MapsMustFitTheirMeshAndTheLimitsOfTheirAttribute) {
  dir_.Write("maps/hard.txt", "# hard\n1 1\n0.5, x\n");
  dir_.Write("maps/resistance.txt", "1\n0.5\n1.5\n0\n");
  auto skin_map = [](const char* text) -> Change { return [=](json& s) { s["nodes"][0]["maps"][0] = json::parse(text); }; };
  auto muscle_map = [](const char* text) -> Change {
    return [=](json& s) { s["nodes"][1]["maps"].push_back(json::parse(text)); };
  };
  auto fibers = [](const char* values) -> Change {
    return [=](json& s) { s["nodes"][1]["maps"][1]["values"] = json::parse(values); };
  };
  const std::string skin = "nodes[0].maps[0]", muscle = "nodes[1].maps[2]";
  const std::string mixed = "nodes[1].maps[1].values[1]: mixes numbers and arrays: give every point as an array "
                            "of 3 numbers, or every value as a number";
  ExpectReads({
      {skin_map(R"({"name": "hc", "values": [1, 1, 1]})"), skin + ": the map has 3 values; the mesh has 4 points"},
      {skin_map(R"({"name": "hardConstraints", "file": "maps/hard.txt"})"),
       skin + ".file: " + dir_.File("maps/hard.txt") + ": line 3: \"x\" is not a number"},
      {skin_map(R"({"name": "hardConstraints", "set": 1, "value": 1})"),
       skin + ".set: \"hardConstraints\" has one set per deformed mesh: use set 0"},
      {muscle_map(R"({"name": "mass", "value": 0})"), muscle + ".value: 0 is below the minimum 1e-06"},
      {muscle_map(R"({"name": "mass", "value": 1e-6})"), ""},  // the minimum itself passes
      {muscle_map(R"({"name": "stretchingResistance", "file": "maps/resistance.txt"})"),
       muscle + ".file: " + dir_.File("maps/resistance.txt") + ": point 2: 1.5 is above the maximum 1"},
      // Vector maps: each component on its own, as arrays or numbers in a
      // row but never a mix, which would shift the components after it.
      {fibers("[0.5, [1, 0, 0], 0, 0, [0, 1, 0], [0, 1, 0]]"), mixed},
  });
  scene_["nodes"][1]["maps"][1]["values"] = {1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0};
  dir_.Write("maps/hard.txt", "# hard\n1 1\n0.5, 0.25 # last\n");
  scene_["nodes"][0]["maps"][0] = json::parse(R"({"name": "hardConstraints", "file": "maps/hard.txt"})");
  ASSERT_EQ(Read(), "");
  EXPECT_EQ(result_.nodes[0].maps[1].values[7], 1.0f);
  EXPECT_EQ(result_.nodes[1].maps[0].values, (std::vector<float>{1, 1, 0.5f, 0.25f}));
}

TEST_F(SceneReaderTest, ConnectionsTheGraphAndTheTransformsAreChecked) {
  const std::string plug = "nodes[1].connections.";
  auto connect = [](const char* attribute, const char* source) -> Change {
    return [=](json& s) { s["nodes"][1]["connections"][attribute] = source; };
  };
  ExpectReads({
      {connect("attachmentMatrix", "tip"),
       plug + "attachmentMatrix: needs an index: connect \"attachmentConstraintsList[0].attachmentMatrix\""},
      {connect("targets[1].targetWorldMesh", "root"),
       plug + "targets[1].targetWorldMesh: a mesh attribute takes a mesh or a node, and \"root\" is a transform"},
      // The muscle slides on the skin's output while the skin rides the muscle.
      {connect("targets[0].targetWorldMesh", "skin"), "nodes: a cycle of connections: skin -> muscle -> skin"},
      {[](json& s) { s["nodes"][0]["connections"].erase("referenceMesh"); },
       "nodes[0]: a MyoSkin needs \"referenceMesh\" connected to a mesh or a node"},
      {[](json& s) { s["transforms"][0]["parent"] = "tip"; },
       "transforms[0].parent: a cycle of parents: root -> tip -> root"},
      {[](json& s) { s["transforms"][1]["keys"] = json::parse(R"([{"frame": 2}, {"frame": 2}])"); },
       "transforms[1].keys[1].frame: keyframes out of order: frame 2 follows frame 2"},
  });
}

TEST_F(SceneReaderTest, TheTimeLineHasWholeFramesInRangeAndABoundedRate) {
  auto timeline = [](const char* key, double value) -> Change { return [=](json& s) { s["timeline"][key] = value; }; };
  ExpectReads({
      {timeline("preroll", -1000001),
       "timeline.preroll: frame -1000001 is outside the frames myoforge plays (-1000000 to 1000000)"},
      {timeline("start", 1.5), "timeline.start: expected a whole frame number, not 1.5"},
      {timeline("fps", 1e6),
       "timeline.fps: 1000000 frames per second is outside the range myoforge plays (0.0001 to 48000)"},
      {timeline("fps", 48000), ""},
  });
}

TEST_F(SceneReaderTest, NamesAreNodeNamesThatCannotLeaveTheOutputFolder) {
  for (const char* name : {"../x", "1st"}) {
    scene_["nodes"][0]["name"] = name;
    const std::string error = Read();
    EXPECT_EQ(error.rfind(Path() + ": nodes[0].name: \"" + name + "\" ", 0), 0u) << error;
    EXPECT_NE(error.find(name[0] == '1' ? "starts with a digit" : "use letters, digits and underscores only"),
              std::string::npos)
        << error;
  }
  scene_["nodes"][0]["name"] = "skin";
  scene_["nodes"][1]["name"] = "BODY";
  EXPECT_EQ(Read(), Path() + ": nodes[1].name: the names \"body\" and \"BODY\" differ only in letter case, and would "
                             "share output files where case is ignored");
}

TEST_F(SceneReaderTest, MessagesStayOnOneLineAndShort) {
  // Keys from the file, echoed in the field path: every character that could
  // break or rewrite the line is escaped, UTF-8 letters stay, long text is cut.
  const std::vector<std::pair<std::string, std::string>> keys = {
      {"line\nbreak\x1b\t\x7f", "line\\nbreak\\x1b\\t\\x7f"},
      {"next\u0085line\u2028", "next\\u0085line\\u2028"},  // C1 and Unicode line breaks
      {std::string(100000, 'x'), std::string(80, 'x') + "..."},
  };
  for (const auto& [key, shown] : keys) {
    scene_["nodes"][1]["attributes"] = {{key, 1}};
    EXPECT_EQ(Read(), Path() + ": nodes[1].attributes." + shown + ": unknown attribute of MyoMuscle");
  }
}

TEST_F(SceneReaderTest, LongChainsOfNodesAndTransformsReadInOneWalk) {
  // 50000 muscles, each deforming the next one's output, and as many
  // transforms, each under the next: no walk may recurse or repeat per link.
  constexpr int kLinks = 50000;
  json nodes = json::array(), transforms = json::array();
  for (int i = 0; i < kLinks; ++i) {
    const std::string next = std::to_string(i + 1);
    nodes.push_back({{"name", "n" + std::to_string(i)}, {"type", "MyoMuscle"},
                     {"input", i + 1 < kLinks ? "n" + next : "body"}});
    transforms.push_back({{"name", "t" + std::to_string(i)}});
    if (i + 1 < kLinks) transforms.back()["parent"] = "t" + next;
  }
  nodes[kLinks - 1]["maps"] = json::parse(R"([{"name": "tendons", "values": [0, 0, 1, 1]}])");
  scene_["nodes"] = nodes;
  scene_["transforms"] = transforms;
  scene_["meshes"] = json::parse(R"([{"name": "body", "file": "meshes/body.obj", "parent": "t0"}])");
  ASSERT_EQ(Read(), "");
  ASSERT_EQ(result_.nodes.size(), static_cast<std::size_t>(kLinks));
  EXPECT_EQ(result_.nodes.front().name, "n" + std::to_string(kLinks - 1));  // the one on the mesh goes first
  EXPECT_EQ(result_.nodes.back().name, "n0");
}

TEST_F(SceneReaderTest, MeshesAndMapsAreReadOnlyFromRegularFiles) {
  // A pipe would wait for a writer for ever, a folder reads as empty.
  ASSERT_EQ(::mkfifo(dir_.File("pipe").c_str(), 0600), 0);
  ExpectReads({
      {[](json& s) { s["meshes"][0]["file"] = "meshes"; }, "meshes[0].file: " + dir_.File("meshes") + " is a folder, not a file"},
      {[](json& s) { s["nodes"][1]["maps"].push_back({{"name", "tendons"}, {"file", "pipe"}}); },
       "nodes[1].maps[2].file: " + dir_.File("pipe") + " is not a regular file"},
  });
  // The scene file itself may be a pipe, but not a folder.
  std::string error;
  EXPECT_FALSE(myo_app::ReadScene(dir_.path(), result_, error));
  EXPECT_EQ(error, dir_.path() + ": cannot read the scene file: it is a folder");
}

TEST_F(SceneReaderTest, AKeyGivenTwiceInOneObjectIsRefused) {
  // The parser would keep the last value and drop the first without a word.
  const std::string head = R"({"timeline": {"start": 1, "end": 2}, "meshes": [{"name": "body", "file": "meshes/body.obj"}], )";
  std::string error;
  dir_.Write("scene.json", head + R"("nodes": [{"name": "a", "type": "MyoMuscle", "input": "body",
                                                "maps": [[], {"name": "tendons", "value": 1, "value": 0}]}]})");
  EXPECT_FALSE(myo_app::ReadScene(Path(), result_, error));
  EXPECT_EQ(error, Path() + ": nodes[0].maps[1].value: the key is given twice");
}

TEST_F(SceneReaderTest, RefusalsNameTheValueFoundInsteadOfTheOneExpected) {
  ExpectReads({
      {[](json& s) { s["timeline"] = json::array({1, 96}); }, "timeline: expected an object, not an array of 2"},
      {[](json& s) { s["version"] = 2; }, "version: version 2 is not supported (this host reads version 1)"},
      {[](json& s) { s["nodes"][1]["attributes"]["hardAttachments"] = 2; },
       "nodes[1].attributes.hardAttachments: expected true or false (or 1 or 0), not 2"},
      {[](json& s) { s["nodes"][1]["attributes"]["material"] = {{"keys", {{1, nullptr}}}}; },
       "nodes[1].attributes.material.keys[0][1]: expected one of \"Fat\" (0), \"Muscle\" (1), \"Rubber\" (2), "
       "\"Tendon\" (3), \"Leather\" (4), \"Wood\" (5), \"Concrete\" (6), not null"},
  });
}

TEST_F(SceneReaderTest, SensorsAndValueConnectionsAreChecked) {
  // A sensor between the transform "root" and the body's second point drives
  // the muscle's activation through a remap.
  scene_["nodes"].push_back(json::parse(R"({"name": "gap", "type": "MyoSensorDistance",
      "connections": {"startPosition": "root", "endPosition": "body.vtx[1]"}})"));
  scene_["nodes"].push_back(json::parse(R"({"name": "drive", "type": "remapValue",
      "attributes": {"inputMax": 10}, "connections": {"inputValue": "gap.outDistance"}})"));
  scene_["nodes"][1]["attributes"].erase("activation");
  scene_["nodes"][1]["connections"]["activation"] = "drive.outValue";
  ASSERT_EQ(Read(), "");

  const std::string activation = "nodes[1].connections.activation: ";
  auto drive = [](const char* source) -> Change {
    return [=](json& s) { s["nodes"][1]["connections"]["activation"] = source; };
  };
  auto measure = [](const char* source) -> Change {
    return [=](json& s) { s["nodes"][2]["connections"]["endPosition"] = source; };
  };
  ExpectReads({
      {drive("drive.inputMin"), activation + "\"inputMin\" is not a single value output of remapValue"},
      {[](json& s) { s["nodes"][1]["attributes"]["activation"] = 0.5; },
       activation + "\"activation\" is both set in \"attributes\" and connected"},
      // The muscle's own points would close a loop through its activation.
      {measure("muscle.vtx[0]"), "nodes: a cycle of connections: muscle -> drive -> gap -> muscle"},
      {[](json& s) { s["nodes"][1]["connections"]["targets[0].targetWorldMesh"] = "gap"; },
       "nodes[1].connections.targets[0].targetWorldMesh: a mesh attribute takes a mesh or a deformer, and \"gap\" "
       "outputs no mesh"},
  });
}

}  // namespace
