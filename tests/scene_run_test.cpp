// Playing a scene through the library: nodes chained through their outputs,
// what each kind of node writes, and runs that stop or fail leaving no
// partial file.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/solver/stop_request.h"
#include "io/map_file.h"
#include "support/spindle_scene.h"

namespace {

using nlohmann::json;

// The first vertex of an OBJ text.
std::array<double, 3> FirstPoint(const std::string& obj) {
  const std::string text = "\n" + obj;
  std::array<double, 3> p{};
  std::sscanf(text.c_str() + text.find("\nv ") + 3, "%lf %lf %lf", &p[0], &p[1], &p[2]);
  return p;
}

std::vector<float> MapFile(const std::string& path) {
  std::vector<float> values;
  std::string error;
  EXPECT_TRUE(myo_io::ReadMapFile(path, values, error)) << error;
  return values;
}

class SceneRunTest : public myo_test::SpindleSceneTest {
 protected:
  SceneRunTest()
      : SpindleSceneTest(R"({
      "timeline": {"preroll": -2, "start": 1, "end": 6, "fps": 30},
      "transforms": [{"name": "bone", "keys": [{"frame": 1}, {"frame": 6, "translate": [0, 3, 0]}]}],
      "meshes": [{"name": "mesh", "file": "spindle.obj"}],
      "nodes": [{"name": "outer", "type": "MyoRibbonMuscle", "input": "inner",
                 "attributes": {"startTime": 2, "envelope": 0.5}},
                {"name": "inner", "type": "MyoMuscle", "input": "mesh",
                 "attributes": {"gravity": 9.8, "stiffness": {"keys": [[1, 1000], [6, 2000]]}},
                 "connections": {"attenuationMatrix": "bone"}}]
    })") {}

  // Reads and plays the scene into out/; the result, and the error in `error`.
  myo_app::RunResult RunExpecting(std::string& error, myo_app::RunOptions options = {}) {
    const myo_app::Scene scene = Read();
    if (options.output_directory.empty()) options.output_directory = dir_.File("out");
    return myo_app::RunScene(scene, options, error);
  }
};

TEST_F(SceneRunTest, ChainedNodesRunInOrderWithDebugLinesOfTheWrittenFrames) {
  scene_["nodes"][1]["attributes"]["debug"] = true;
  scene_["nodes"][1]["attributes"]["debugFeature"] = "Muscle Fibers";
  const myo_app::Scene scene = Read();
  ASSERT_EQ(scene.nodes[0].name, "inner");
  myo_app::RunOptions options;
  options.output_directory = dir_.File("out");
  std::size_t last_done = 0, last_total = 0;
  options.progress = [&](std::size_t done, std::size_t total) { last_done = done, last_total = total; };
  std::string error;
  ASSERT_EQ(myo_app::RunScene(scene, options, error), myo_app::RunResult::kDone) << error;
  EXPECT_EQ(last_done + last_total, 18u);

  // The inner muscle is carried along by its attenuation matrix, which rises
  // by 3; the outer one takes its output as input and deforms it further.
  const double inner = FirstPoint(Output("inner/inner.0006.obj"))[1];
  EXPECT_GT(inner - FirstPoint(myo_test::ReadFile(dir_.File("spindle.obj")))[1], 1.0);
  EXPECT_NE(FirstPoint(Output("outer/outer.0006.obj"))[1], inner);

  // Debug lines of the node that shows them, for the written frames only.
  const std::string files = myo_test::ListFiles(dir_.File("out"));
  EXPECT_NE(files.find("inner/inner.debug.0001.obj\n"), std::string::npos);
  EXPECT_EQ(files.find("inner/inner.debug.0000.obj\n"), std::string::npos);
  EXPECT_NE(Output("inner/inner.debug.0006.obj").find("\nl 1 2\n"), std::string::npos);
}

TEST_F(SceneRunTest, ARunThatLeavesTheFiniteNumbersStopsNamingTheNodeAndFrame) {
  // A time scale of 1e30 is a float, but the steps it makes are not.
  scene_["nodes"][1]["attributes"]["timeScale"] = json::parse(R"({"keys": [[2, 1], [3, 1e30]]})");
  std::string error;
  EXPECT_EQ(RunExpecting(error), myo_app::RunResult::kFailed);
  EXPECT_EQ(error.rfind("inner at frame 3: the simulation produced a point that is not a finite number (vertex ", 0),
            0u)
      << error;
  // The frames before are whole, nothing of frame 3 on is written, and no
  // table or summary pretends the run was complete.
  EXPECT_EQ(myo_test::ListFiles(dir_.File("out")),
            ".myoforge-run\ninner/inner.0001.obj\ninner/inner.0002.obj\nouter/outer.0001.obj\n"
            "outer/outer.0002.obj\n");
}

TEST_F(SceneRunTest, TheSummaryShowsASignedVolumeRatioAndNoneForARibbon) {
  // The attenuation matrix mirrors the muscle at frame 3 and carries its
  // points with it: the muscle is inside out from then on.
  scene_["transforms"] = json::parse(R"([{"name": "bone", "keys": [{"frame": 2}, {"frame": 3, "scale": [-1, 1, 1]}]}])");
  scene_["nodes"][1]["attributes"] = json::parse(R"({"volumePreservation": 0})");
  Run();
  const json summary = json::parse(Output("summary.json"));
  EXPECT_NEAR(summary["nodes"][0]["min_volume_ratio"].get<double>(), -1.0, 1e-3);
  EXPECT_NEAR(summary["nodes"][0]["max_volume_ratio"].get<double>(), 1.0, 1e-3);
  EXPECT_FALSE(summary["nodes"][1].contains("min_volume_ratio"));  // a ribbon has no volume
}

TEST_F(SceneRunTest, AStopRequestCutsAStepShortAndItsFrameIsNotWritten) {
  // Enough iterations that a frame would take minutes: a stop requested
  // during the third frame makes its step return between two iterations,
  // and the point caches begun are discarded.
  scene_["nodes"][1]["attributes"]["iterations"] = 10000;
  std::atomic<bool> stop{false};
  myo_app::RunOptions options;
  options.format = myo_app::OutputFormat::kPc2;
  options.interrupted = &stop;
  options.progress = [&stop](std::size_t done, std::size_t) {
    if (done == 2) {
      stop = true;
      myo_core::RequestStop();
    }
  };
  std::string error;
  EXPECT_EQ(RunExpecting(error, options), myo_app::RunResult::kInterrupted);
  myo_core::ClearStopRequest();
  EXPECT_EQ(myo_test::ListFiles(dir_.File("out")), ".myoforge-run\n");  // frames -2 and -1 are preroll
}

TEST_F(SceneRunTest, AShapeNodeActivatesFromItsPatchesFile) {
  // Every point in patch 1, whose fiber runs along x; the deform mesh is the
  // spindle carried along x by "bone", so the patch activates as it moves.
  const std::size_t points = myo_test::SpindlePointCount();
  std::string ids;
  for (std::size_t i = 0; i < points; ++i) ids += (i ? " 1" : "1");
  const std::string patches = "1\n" + std::to_string(points) + "\n" + ids + "\n1.0 0.0 0.0\n";
  dir_.Write("belly.mmp", patches);
  scene_["transforms"][0]["keys"] = json::parse(R"([{"frame": 1}, {"frame": 6, "translate": [4, 0, 0]}])");
  scene_["meshes"].push_back({{"name", "moving"}, {"file", "spindle.obj"}, {"follows", "bone"}});
  scene_["nodes"] = json::parse(R"([{"name": "jiggle", "type": "MyoSimshape", "input": "mesh",
      "attributes": {"activationMode": "Muscle Patches", "musclesFile": "belly.mmp", "writeOutActivation": true},
      "connections": {"deformMesh": "moving"}}])");
  Run();
  const std::vector<float> activations = MapFile(dir_.File("out/jiggle/jiggle.outActivation.0006.txt"));
  ASSERT_EQ(activations.size(), points);
  for (float a : activations) EXPECT_GT(a, 0.1f);
}

TEST_F(SceneRunTest, SensorsAndRemapsWriteTheirValuesPerFrameAndDriveOtherNodes) {
  // "bone" rises by 3 from frame 1 to 6; the sensor measures it against a
  // transform left at the origin, and a remap brings 0..3 to 0..1.
  scene_["transforms"].push_back(json::parse(R"({"name": "anchor", "keys": [{"frame": 1}]})"));
  scene_["nodes"] = json::parse(R"([
    {"name": "lift", "type": "MyoSensorDistance", "connections": {"startPosition": "anchor", "endPosition": "bone"}},
    {"name": "drive", "type": "remapValue", "attributes": {"inputMax": 3},
     "connections": {"inputValue": "lift.outDistance"}},
    {"name": "muscle", "type": "MyoMuscle", "input": "mesh", "connections": {"activation": "drive.outValue"}}])");
  EXPECT_EQ(Run().find("lift/"), std::string::npos);  // no frames of a node that is no deformer

  std::istringstream csv(Output("values.csv"));
  std::string line;
  std::getline(csv, line);
  EXPECT_EQ(line, "frame,lift.outDistance,lift.outVelocity,lift.outAcceleration,drive.outValue");
  std::vector<std::vector<double>> rows;
  while (std::getline(csv, line)) {
    std::vector<double> row;
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, ',');) row.push_back(std::stod(cell));
    rows.push_back(row);
  }
  ASSERT_EQ(rows.size(), 6u);
  // The start frame resets the rate; the next frame differences against it
  // (0.6 in a thirtieth of a second).
  EXPECT_EQ(rows[0][2], 0.0);
  EXPECT_NEAR(rows[1][2], 18.0, 1e-3);
  for (const std::vector<double>& row : rows) {
    EXPECT_NEAR(row[1], 0.6 * (row[0] - 1.0), 1e-5);
    EXPECT_NEAR(row[4], row[1] / 3.0, 1e-6);
  }
}

TEST_F(SceneRunTest, AnEdgeEvaluatorWritesItsCompressionAsColouredFramesAndAMergeBlendsItsSources) {
  // "half" follows a transform that scales it to half by frame 6: its edges
  // shrink uniformly, so its compression goes from 0 to 0.5.
  scene_["transforms"].push_back(json::parse(
      R"({"name": "squeeze", "keys": [{"frame": 1}, {"frame": 6, "scale": [0.5, 0.5, 0.5]}]})"));
  scene_["meshes"].push_back(json::parse(R"({"name": "half", "file": "spindle.obj", "follows": "squeeze"})"));
  scene_["nodes"] = json::parse(R"([
    {"name": "edges", "type": "MyoEdgeEvaluator", "connections": {"deformMesh": "half", "restMesh": "mesh"}},
    {"name": "merged", "type": "MyoSkinMerge", "input": "mesh",
     "connections": {"simList[0].simWorldMesh": "half", "simList[0].simWorldMatrix": "squeeze",
                     "animList[0].animWorldMesh": "mesh", "animList[0].animWorldMatrix": "bone"},
     "maps": [{"name": "blend", "value": 1}]}])");
  Run();
  const std::vector<float> last = MapFile(dir_.File("out/edges/edges.compression.0006.txt"));
  ASSERT_FALSE(last.empty());
  for (float c : last) EXPECT_NEAR(c, 0.5f, 1e-5f);
  // Half compressed is half way from white to red.
  const std::string obj = Output("edges/edges.0006.obj");
  double v[6] = {};
  ASSERT_EQ(std::sscanf(obj.c_str() + obj.find("\nv ") + 3, "%lf %lf %lf %lf %lf %lf", v, v + 1, v + 2, v + 3, v + 4, v + 5), 6);
  EXPECT_EQ(v[3], 1.0);
  EXPECT_NEAR(v[4], 0.5, 1e-5);

  // The merge binds each point to its own vertex of the two sources at the
  // start frame; with the blend at 1 it shows the simulated source, whose
  // world points "squeeze" carries a second time through the source matrix.
  const std::array<double, 3> rest = FirstPoint(myo_test::ReadFile(dir_.File("spindle.obj")));
  const std::array<double, 3> first = FirstPoint(Output("merged/merged.0001.obj"));
  const std::array<double, 3> later = FirstPoint(Output("merged/merged.0006.obj"));
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(first[k], rest[k], 1e-5) << k;
    EXPECT_NEAR(later[k], 0.25 * rest[k], 1e-4) << k;
  }
}

}  // namespace
