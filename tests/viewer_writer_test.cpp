// viewer.html: the page a run writes (one block per written frame with the run's own points, matrices of the
// animated meshes, channels and debug lines; text that cannot end a script
// early), a run without three.js or with --no-viewer, and the lines
// myoforge prints after a run.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/cli/run_report.h"
#include "app/viewer/page_encoding.h"
#include "io/obj_mesh.h"
#include "support/log_capture.h"
#include "support/spindle_scene.h"

namespace {

using nlohmann::json;

std::vector<unsigned char> FromBase64(const std::string& text) {
  std::vector<unsigned char> out;
  uint32_t word = 0;
  int bits = 0;
  for (char c : text) {
    const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const char* at = std::strchr(digits, c);
    if (c == '=' || at == nullptr) break;
    word = (word << 6) | static_cast<uint32_t>(at - digits);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      out.push_back(static_cast<unsigned char>((word >> bits) & 0xff));
    }
  }
  return out;
}

template <class T>
std::vector<T> ArrayOf(const std::string& base64) {
  const std::vector<unsigned char> bytes = FromBase64(base64);
  std::vector<T> values(bytes.size() / sizeof(T));
  std::memcpy(values.data(), bytes.data(), values.size() * sizeof(T));
  return values;
}

// Sets MYO_THREE_JS for a test and puts back what was there.
class ThreeJsOverride {
 public:
  explicit ThreeJsOverride(const std::string& path) {
    if (const char* old = std::getenv("MYO_THREE_JS")) old_ = old, had_ = true;
    setenv("MYO_THREE_JS", path.c_str(), 1);
  }
  ~ThreeJsOverride() {
    if (had_) setenv("MYO_THREE_JS", old_.c_str(), 1);
    else unsetenv("MYO_THREE_JS");
  }

 private:
  std::string old_;
  bool had_ = false;
};

class ViewerPageTest : public myo_test::SpindleSceneTest {
 protected:
  ViewerPageTest()
      : SpindleSceneTest(R"({
      "timeline": {"preroll": -1, "start": 1, "end": 4, "fps": 25},
      "transforms": [{"name": "arm", "keys": [{"frame": 1}, {"frame": 4, "translate": [0, 3, 0], "rotate": [0, 0, 30]}]}],
      "meshes": [{"name": "mesh", "file": "spindle.obj"}, {"name": "boneMesh", "file": "bone.obj", "parent": "arm"}],
      "nodes": [{"name": "muscle", "type": "MyoMuscle", "input": "mesh",
                 "attributes": {"gravity": 9.8, "debug": true, "debugFeature": "Muscle Fibers"},
                 "connections": {"attenuationMatrix": "arm"},
                 "maps": [{"name": "shapePreservation", "value": 0.25}]}]
    })") {
    dir_.Write("bone.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    // A stand-in for three.js that would end its script element early if
    // it were not escaped.
    dir_.Write("three.js", "var THREE = {}; var s = '</script><script>alert(1)</script>';\n");
  }

  // The JSON blocks of the page: the frames, then the scene's description.
  static std::vector<json> Blocks(const std::string& page, const std::string& opening) {
    std::vector<json> blocks;
    for (std::size_t at = page.find(opening); at != std::string::npos; at = page.find(opening, at + 1)) {
      const std::size_t begin = at + opening.size();
      blocks.push_back(json::parse(page.substr(begin, page.find("</script>", begin) - begin)));
    }
    return blocks;
  }
};

TEST_F(ViewerPageTest, ThePageCarriesTheRunsPointsMatricesChannelsAndLines) {
  ThreeJsOverride three(dir_.File("three.js"));
  const myo_app::Scene scene = Read();
  Run();
  const std::string page = Output("viewer.html");
  std::string error;

  // three.js is inlined, its closing tags escaped: the page has exactly its
  // own script elements.
  EXPECT_NE(page.find("var s = '<\\/script><script>alert(1)<\\/script>';"), std::string::npos);
  std::size_t closing = 0;
  for (std::size_t at = page.find("</script>"); at != std::string::npos; at = page.find("</script>", at + 1)) ++closing;
  const std::vector<json> frames = Blocks(page, "<script type=\"application/json\" class=\"myo-frame\">");
  const std::vector<json> described = Blocks(page, "<script type=\"application/json\" id=\"myo-scene\">");
  ASSERT_EQ(frames.size(), 4u);  // written frames only, not the preroll
  ASSERT_EQ(described.size(), 1u);
  EXPECT_EQ(closing, 1u /* error capture */ + 1u /* three.js */ + 4u + 1u + 1u /* the viewer */);

  // The deformer's output (not its input mesh) and the bone.
  const json& objects = described[0]["objects"];
  ASSERT_EQ(objects.size(), 2u);
  EXPECT_EQ(objects[1]["name"], "boneMesh");
  EXPECT_EQ(ArrayOf<float>(objects[0]["maps"]["shapePreservation"])[5], 0.25f);

  for (std::size_t f = 0; f < frames.size(); ++f) {
    const json& frame = frames[f];
    const double number = static_cast<double>(f + 1);
    EXPECT_EQ(frame["frame"], number);
    // The bone's matrix of the frame, as the scene computes it.
    const std::vector<float> matrix = ArrayOf<float>(frame["m"]["1"]);
    const myo_app::Matrix4d expected = scene.WorldMatrix("arm", number);
    ASSERT_EQ(matrix.size(), 16u);
    for (int k = 0; k < 16; ++k) EXPECT_EQ(matrix[k], static_cast<float>(expected[k])) << f << " " << k;
    // The muscle's points: those of the OBJ the run wrote, to the box's resolution.
    const json& p = frame["p"]["0"];
    myo_app::QuantizedPoints q;
    for (int a = 0; a < 3; ++a) q.low[a] = p[a].get<float>(), q.high[a] = p[3 + a].get<float>();
    q.values = ArrayOf<uint16_t>(p[6]);
    myo_io::ObjMesh written;
    ASSERT_TRUE(myo_io::ReadObjMesh(dir_.File("out/muscle/" + myo_app::FrameFileName("muscle", number)), written, error))
        << error;
    ASSERT_EQ(q.values.size(), written.polygons.points.size());
    for (std::size_t k = 0; k < q.values.size(); ++k) {
      const double extent = static_cast<double>(q.high[k % 3]) - q.low[k % 3];
      ASSERT_NEAR(myo_app::DequantizedCoordinate(q, k), written.polygons.points[k], extent / 100000.0 + 1e-6) << f << " " << k;
    }
    EXPECT_FALSE(ArrayOf<float>(frame["l"]["0"]["data"]).empty());  // the debug lines
  }
}

TEST_F(ViewerPageTest, WithoutThreeJsOrWithNoViewerTheRunGoesOnWithoutAPage) {
  {
    ThreeJsOverride three(dir_.File("missing/three.js"));
    myo_test::LogCapture log;
    const std::string files = Run();
    const std::vector<std::string> lines = log.lines();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
                return line.find("viewer.html not written: three.js not found") != std::string::npos &&
                       line.find("apt-get install libjs-three") != std::string::npos;
              }), 1);
    EXPECT_EQ(files.find("viewer.html"), std::string::npos);
    EXPECT_NE(files.find("muscle/muscle.0004.obj"), std::string::npos);
  }
  // A page of an earlier run is replaced by nothing when the next run asks
  // for none: no page of another run stays beside these results.
  ThreeJsOverride three(dir_.File("three.js"));
  ASSERT_NE(Run().find("viewer.html"), std::string::npos);
  myo_app::RunOptions options;
  options.viewer = false;
  const std::string files = Run(options);
  EXPECT_EQ(files.find("viewer.html"), std::string::npos) << files;
  EXPECT_EQ(files.find(".partial"), std::string::npos) << files;
}

TEST(RunReport, SummarisesTheRunFromItsSummary) {
  myo_test::TemporaryDirectory dir;
  EXPECT_EQ(myo_app::RunReport(dir.path()), "");  // no summary: nothing to tell
  dir.Write("summary.json", R"({"frames_simulated": 108, "frames_written": 96, "seconds": 0.8449,
    "nodes": [{"name": "sensor"}, {"name": "biceps", "min_volume_ratio": 0.98123, "max_volume_ratio": 1.01204},
              {"name": "triceps", "min_volume_ratio": 0.9, "max_volume_ratio": 1.0}]})");
  EXPECT_EQ(myo_app::RunReport(dir.path()),
            "Simulated 108 frames (96 written) of 3 nodes in 0.84 s\n"
            "Volume ratio: biceps 0.9812 to 1.0120, triceps 0.9000 to 1.0000\n");
  dir.Write("viewer.html", "<!doctype html>");
  EXPECT_NE(myo_app::RunReport(dir.path()).find("\nViewer: " + dir.path() + "/viewer.html (open it in a browser)\n"),
            std::string::npos);
}

}  // namespace
