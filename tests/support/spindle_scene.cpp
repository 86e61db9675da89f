#include "support/spindle_scene.h"

#include "scenes/muscle_meshes.h"

namespace myo_test {

namespace {

myo_core::PolygonMesh Spindle() { return myo_scenes::MakeSpindle(12, 8, 10.0f, 1.0f); }

}  // namespace

std::string SpindleObjText() {
  const myo_core::PolygonMesh mesh = Spindle();
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

std::size_t SpindlePointCount() { return Spindle().points.size() / 3; }

SpindleSceneTest::SpindleSceneTest(const char* scene_json) : scene_(nlohmann::json::parse(scene_json)) {
  dir_.Write("spindle.obj", SpindleObjText());
}

myo_app::Scene SpindleSceneTest::Read() {
  dir_.Write("scene.json", scene_.dump());
  myo_app::Scene scene;
  std::string error;
  EXPECT_TRUE(myo_app::ReadScene(dir_.File("scene.json"), scene, error)) << error;
  return scene;
}

std::string SpindleSceneTest::Refusal() {
  dir_.Write("scene.json", scene_.dump());
  myo_app::Scene scene;
  std::string error;
  EXPECT_FALSE(myo_app::ReadScene(dir_.File("scene.json"), scene, error));
  return error;
}

std::string SpindleSceneTest::Run(myo_app::RunOptions options) {
  const myo_app::Scene scene = Read();
  if (options.output_directory.empty()) options.output_directory = dir_.File("out");
  std::string error;
  EXPECT_EQ(myo_app::RunScene(scene, options, error), myo_app::RunResult::kDone) << error;
  return ListFiles(options.output_directory);
}

}  // namespace myo_test
