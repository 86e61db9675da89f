#pragma once
// A scene of the standalone host in a temporary folder: a closed spindle
// written as "spindle.obj" beside a JSON scene that each test edits, then
// reads and plays.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include <nlohmann/json.hpp>

#include "app/run/scene_run.h"
#include "app/scene/scene_reader.h"
#include "support/command_runner.h"

namespace myo_test {

// The spindle of these scenes (12 rings of 8, 10 long, radius 1) as OBJ text.
std::string SpindleObjText();
std::size_t SpindlePointCount();

class SpindleSceneTest : public ::testing::Test {
 protected:
  explicit SpindleSceneTest(const char* scene_json);

  // Writes scene_ to scene.json and reads it; a refusal fails the test.
  myo_app::Scene Read();
  // The reader's message for scene_, which must be refused.
  std::string Refusal();
  // Reads scene_ and plays it into out/ (unless `options` names a folder);
  // the run must finish. The files written, as ListFiles gives them.
  std::string Run(myo_app::RunOptions options = {});
  // The text of a file the run wrote, by its name inside out/.
  std::string Output(const std::string& name) const { return ReadFile(dir_.File("out/" + name)); }

  TemporaryDirectory dir_;
  nlohmann::json scene_;
};

}  // namespace myo_test
