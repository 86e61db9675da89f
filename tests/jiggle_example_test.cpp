// The bundled jiggle example through the standalone host: a belly on a torso
// that lunges forward and back. The collider holds the belly off the torso
// (and without collisions the same scene goes through it, so the check can
// fail), the jiggle dies down once the body stops, a long run stays finite,
// and the result does not depend on the number of threads.

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <array>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/run/scene_run.h"
#include "app/scene/scene_reader.h"
#include "support/command_runner.h"

namespace {

using nlohmann::json;

const std::string kJiggleDir = std::string(MYO_EXAMPLES_DIR) + "/jiggle";

// The torso is a capsule of radius 8 and 32 sides around the y axis of
// "hips", its straight part from y -8 to 8: a point is inside when it is
// nearer to the axis than the sides' inner radius.
const double kTorsoInnerRadius = 8.0 * std::cos(3.14159265358979323846 / 32.0);

std::vector<double> ObjPoints(const std::string& text) {
  std::vector<double> points;
  std::size_t at = 0;
  while ((at = text.find("\nv ", at)) != std::string::npos) {
    double x = 0, y = 0, z = 0;
    std::sscanf(text.c_str() + at + 3, "%lf %lf %lf", &x, &y, &z);
    points.insert(points.end(), {x, y, z});
    ++at;
  }
  return points;
}

class JiggleExample : public ::testing::Test {
 protected:
  JiggleExample() {
    std::ifstream in(kJiggleDir + "/jiggle.json");
    scene_ = json::parse(in);
    // The scene is written to a temporary folder: its files are named whole.
    for (json& mesh : scene_["meshes"]) mesh["file"] = kJiggleDir + "/" + mesh["file"].get<std::string>();
    for (json& map : scene_["nodes"][0]["maps"])
      if (map.contains("file")) map["file"] = kJiggleDir + "/" + map["file"].get<std::string>();
  }

  // Runs the scene with `threads` threads; fills the belly's points per
  // written frame and the torso's offset per frame.
  void Run(int threads, const std::string& name) {
    dir_.Write(name + ".json", scene_.dump());
    myo_app::Scene scene;
    std::string error;
    ASSERT_TRUE(myo_app::ReadScene(dir_.File(name + ".json"), scene, error)) << error;
    myo_app::RunOptions options;
    options.output_directory = dir_.File(name);
    const int before = omp_get_max_threads();
    omp_set_num_threads(threads);
    const myo_app::RunResult result = myo_app::RunScene(scene, options, error);
    omp_set_num_threads(before);
    ASSERT_EQ(result, myo_app::RunResult::kDone) << error;
    frames_.clear();
    hips_.clear();
    for (long long frame = static_cast<long long>(scene.timeline.start);
         frame <= static_cast<long long>(scene.timeline.end); ++frame) {
      const std::string file =
          dir_.File(name + "/bellyJiggle/" + myo_app::FrameFileName("bellyJiggle", static_cast<double>(frame)));
      frames_.push_back(myo_test::ReadFile(file));
      const myo_app::Matrix4d hips = scene.WorldMatrix("hips", static_cast<double>(frame));
      hips_.push_back({hips[12], hips[13], hips[14]});
    }
  }

  // The least distance of a belly point from the torso's surface over all
  // frames, negative inside the torso.
  double LeastGap() const {
    double least = 1e30;
    for (std::size_t f = 0; f < frames_.size(); ++f) {
      const std::vector<double> points = ObjPoints(frames_[f]);
      for (std::size_t i = 0; i + 2 < points.size(); i += 3) {
        const double x = points[i] - hips_[f][0], z = points[i + 2] - hips_[f][2];
        least = std::min(least, std::hypot(x, z) - kTorsoInnerRadius);
      }
    }
    return least;
  }

  // The largest distance of a point from where its animated shape puts it,
  // over frames [first, last) of the written ones.
  double LargestDeviation(std::size_t first, std::size_t last) const {
    const std::vector<double> rest = ObjPoints(frames_.front());
    double largest = 0.0;
    for (std::size_t f = first; f < last && f < frames_.size(); ++f) {
      const std::vector<double> points = ObjPoints(frames_[f]);
      for (std::size_t i = 0; i + 2 < points.size(); i += 3) {
        double d2 = 0.0;
        for (int k = 0; k < 3; ++k) {
          const double target = rest[i + k] + hips_[f][k] - hips_[0][k];
          d2 += (points[i + k] - target) * (points[i + k] - target);
        }
        largest = std::max(largest, std::sqrt(d2));
      }
    }
    return largest;
  }

  myo_test::TemporaryDirectory dir_;
  json scene_;
  std::vector<std::string> frames_;
  std::vector<std::array<double, 3>> hips_;
};

// One long run per thread count, compared byte for byte; the checks of the
// collider and the jiggle read the two-thread run.
TEST_F(JiggleExample, TheColliderHoldsTheBellyThreadCountsGiveTheSameBytesAndALongRunStaysFinite) {
  scene_["timeline"]["end"] = 500;
  Run(1, "one");
  const std::vector<std::string> one = frames_;
  ASSERT_EQ(one.size(), 500u);
  for (const std::string& frame : one)
    for (double value : ObjPoints(frame)) ASSERT_TRUE(std::isfinite(value));
  EXPECT_LT(LargestDeviation(400, 500), 0.01);
  for (int threads : {3, 2}) {
    Run(threads, "t" + std::to_string(threads));
    ASSERT_EQ(frames_.size(), one.size());
    for (std::size_t f = 0; f < one.size(); ++f) ASSERT_EQ(frames_[f], one[f]) << threads << " threads, frame " << f;
  }

  EXPECT_GT(LeastGap(), 0.0) << "a belly point went into the torso";
  // It jiggles: points leave their animated place by centimetres as the body
  // lunges, and settle within a millimetre once it stands still.
  EXPECT_GT(LargestDeviation(0, 30), 2.0);
  EXPECT_LT(LargestDeviation(110, 120), 0.1);

  scene_["timeline"]["end"] = 120;
  scene_["nodes"][0]["attributes"]["computeCollisions"] = false;
  Run(2, "off");
  EXPECT_LT(LeastGap(), -1.0) << "without collisions the belly should sink into the torso";
}

}  // namespace
