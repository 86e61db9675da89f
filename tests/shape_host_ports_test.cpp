// What the shape deformer asks of its host and hands to it: the activation
// plugs read by logical index and written back per point, the vertex colours
// of the activation, and the form in which each mesh input is read. The Maya
// node answers exactly these calls, so they are pinned down here.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/maps/map_store.h"
#include "core/shape/shape_attributes.h"
#include "core/shape/shape_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"
#include "support/test_host.h"

using namespace myo_core;

namespace {

constexpr float kFrame = 1.0f / 24.0f;

// Records the shape ports; mesh inputs as TestHost gives them.
class ShapePortsHost : public myo_test::TestHost {
 public:
  using TestHost::TestHost;

  MeshInput ReadMesh(const std::string& attribute, MeshRead what, const MeshData*& mesh) override {
    mesh_reads.emplace_back(attribute, what);
    return TestHost::ReadMesh(attribute, what, mesh);
  }
  void WriteOutActivation(const std::vector<float>& activations) override { written.push_back(activations); }
  bool ReadActivationValues(std::vector<std::optional<float>>& values) override {
    ++plug_reads;
    if (!plug_values) {
      values.clear();
      return false;
    }
    values = *plug_values;
    return true;
  }
  void ShowVertexColors(const std::vector<float>* rgba) override {
    shown.push_back(rgba == nullptr ? std::nullopt : std::optional<std::vector<float>>(*rgba));
  }

  // Whether `attribute` was read as `what` since the last Forget.
  bool Read(const std::string& attribute, MeshRead what) const {
    for (const auto& read : mesh_reads)
      if (read.first == attribute && read.second == what) return true;
    return false;
  }
  bool ReadAtAll(const std::string& attribute) const {
    for (const auto& read : mesh_reads)
      if (read.first == attribute) return true;
    return false;
  }
  void Forget() { mesh_reads.clear(); }

  std::optional<std::vector<std::optional<float>>> plug_values;  // none: the list has no element
  int plug_reads = 0;
  std::vector<std::pair<std::string, MeshRead>> mesh_reads;
  std::vector<std::vector<float>> written;
  std::vector<std::optional<std::vector<float>>> shown;  // none: the display switched off
};

struct ShapeOnTimeLine {
  MeshData mesh = myo_test::BuildMesh(myo_scenes::MakeSpindle(6, 8, 4.0f, 1.0f));
  ShapePortsHost host{mesh};
  MapStore maps;
  ShapeDeformer deformer;
  ShapeFrameValues frame;
  std::vector<double> input{mesh.points.begin(), mesh.points.end()};
  std::vector<double> output;
  myo_test::LogCapture log;  // keeps the build's messages off the test output

  ShapeOnTimeLine() {
    frame.preroll_start_time = kFrame;
    frame.start_time = kFrame;
    // The identity remap the node sets on its ramp.
    frame.activation_remap.positions = {0.0f, 1.0f};
    frame.activation_remap.values = {0.0f, 1.0f};
    frame.activation_remap.interpolations = {1, 1};
  }
  uint32_t Points() const { return mesh.PointCount(); }
  ShapeEvaluation At(float f) {
    frame.current_time = f * kFrame;
    return deformer.Evaluate(frame, input, host, maps, output);
  }
  // Plug values by logical index; the other points have no element.
  void SetPlugValues(const std::vector<std::pair<uint32_t, float>>& elements) {
    std::vector<std::optional<float>> values(Points());
    for (const auto& [index, value] : elements) values[index] = value;
    host.plug_values = values;
  }
};

}  // namespace

TEST(ShapeHostPortsTest, PlugActivationsAreReadByLogicalIndexAndWrittenBackPerPoint) {
  ShapeOnTimeLine t;
  t.frame.activation_mode = kActivationPlugValues;
  t.frame.write_out_activation = true;
  t.SetPlugValues({{0, 0.25f}, {2, 0.75f}});
  t.At(1);  // the build writes zeros first, then what it read of the plugs
  ASSERT_EQ(t.host.written.size(), 2u);
  EXPECT_EQ(t.host.written.front(), std::vector<float>(t.Points(), 0.0f));
  ASSERT_EQ(t.host.written.back().size(), t.Points());
  EXPECT_FLOAT_EQ(t.host.written.back()[0], 0.25f);
  EXPECT_FLOAT_EQ(t.host.written.back()[1], 0.0f);
  EXPECT_FLOAT_EQ(t.host.written.back()[2], 0.75f);

  // A point without an element keeps its activation; values out of 0 to 1
  // are clamped by the remap.
  t.SetPlugValues({{1, 0.5f}, {2, 3.0f}});
  ASSERT_TRUE(t.At(2).stepped);
  EXPECT_FLOAT_EQ(t.host.written.back()[0], 0.25f);
  EXPECT_FLOAT_EQ(t.host.written.back()[1], 0.5f);
  EXPECT_FLOAT_EQ(t.host.written.back()[2], 1.0f);

  // A list without the geometry's element zeroes every activation for the frame.
  t.host.plug_values.reset();
  t.At(3);
  EXPECT_EQ(t.host.written.back(), std::vector<float>(t.Points(), 0.0f));
  EXPECT_EQ(t.host.plug_reads, 3);

  // Without a source of activation the plugs are not read, and only the
  // build's zeros are written, whatever the switch says.
  ShapeOnTimeLine none;
  none.frame.write_out_activation = true;
  none.SetPlugValues({{0, 1.0f}});
  none.At(1);
  none.At(2);
  ASSERT_EQ(none.host.written.size(), 1u);
  EXPECT_EQ(none.host.written[0], std::vector<float>(none.Points(), 0.0f));
  EXPECT_EQ(none.host.plug_reads, 0);

  // With the switch off the plugs are read but only the build's zeros are written.
  ShapeOnTimeLine quiet;
  quiet.frame.activation_mode = kActivationPlugValues;
  quiet.SetPlugValues({{0, 1.0f}});
  quiet.At(1);
  quiet.At(2);
  EXPECT_EQ(quiet.host.written.size(), 1u);
  EXPECT_EQ(quiet.host.plug_reads, 2);
}

TEST(ShapeHostPortsTest, ActivationColorsFollowTheDrawSwitchOfTheLastBuild) {
  ShapeOnTimeLine t;
  t.frame.activation_mode = kActivationPlugValues;
  t.frame.draw_activation = true;
  t.SetPlugValues({{1, 0.5f}});
  t.At(1);
  ASSERT_EQ(t.host.shown.size(), 1u);
  ASSERT_TRUE(t.host.shown[0].has_value());
  const std::vector<float>& rgba = *t.host.shown[0];
  ASSERT_EQ(rgba.size(), 4u * t.Points());
  EXPECT_FLOAT_EQ(rgba[0], 0.0f);  // point 0: no activation
  EXPECT_FLOAT_EQ(rgba[3], 1.0f);
  EXPECT_FLOAT_EQ(rgba[4], 0.5f);  // point 1: red is its activation
  EXPECT_FLOAT_EQ(rgba[5], 0.0f);
  EXPECT_FLOAT_EQ(rgba[6], 0.0f);
  EXPECT_FLOAT_EQ(rgba[7], 1.0f);

  // The switch counts at a build only: the colours go on showing.
  t.frame.draw_activation = false;
  t.At(2);
  ASSERT_EQ(t.host.shown.size(), 2u);
  EXPECT_TRUE(t.host.shown[1].has_value());

  // A build with the switch off turns the display off once, then leaves it.
  t.At(1);
  t.At(2);
  t.At(3);
  ASSERT_EQ(t.host.shown.size(), 3u);
  EXPECT_FALSE(t.host.shown[2].has_value());
}

TEST(ShapeHostPortsTest, MeshInputsAreAskedInTheFormTheHostReadsThem) {
  ShapeOnTimeLine t;
  MeshData rest = t.mesh;
  MeshData anim = t.mesh;
  MeshData deform = t.mesh;
  MeshData collider = myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeSpindle(6, 8, 3.0f, 0.5f)),
                                       IdentityMatrix());
  t.host.meshes = {{"restMesh", &rest}, {"animMesh", &anim}, {"deformMesh", &deform}, {"collisionMesh", &collider}};
  t.frame.activation_mode = kActivationMusclePatches;
  t.frame.muscles_file = "no-such-file.mmp";
  t.frame.animatable_rest_mesh = true;

  // A build reads the rest mesh and the colliders whole, the anim and the
  // deform mesh by their points.
  t.At(1);
  EXPECT_TRUE(t.host.Read("restMesh", MeshRead::kWhole));
  EXPECT_TRUE(t.host.Read("collisionMesh", MeshRead::kWhole));
  EXPECT_TRUE(t.host.Read("collisionRestMesh", MeshRead::kWhole));
  EXPECT_TRUE(t.host.Read("animMesh", MeshRead::kPoints));
  EXPECT_TRUE(t.host.Read("deformMesh", MeshRead::kPoints));
  EXPECT_TRUE(t.deformer.has_collider());

  // A step reads the collider in world space, the anim mesh by its points
  // and the moving rest mesh for its edges.
  t.host.Forget();
  ASSERT_TRUE(t.At(2).stepped);
  EXPECT_TRUE(t.host.Read("collisionMesh", MeshRead::kWorldSpace));
  EXPECT_TRUE(t.host.Read("animMesh", MeshRead::kPoints));
  EXPECT_TRUE(t.host.Read("restMesh", MeshRead::kWhole));

  // Collisions off: the collider is not read at all.
  t.host.Forget();
  t.frame.compute_collisions = false;
  t.At(3);
  EXPECT_FALSE(t.host.ReadAtAll("collisionMesh"));
}

TEST(ShapeHostPortsTest, TheNodeMakesItsEightMapsPaintableInOneScriptInOrder) {
  const std::string script = MakePaintableScript("MyoSimshape", ShapePaintableMaps());
  std::string expected;
  for (const char* map : {"attractForce", "collisionThresholdMultiplier", "compressionResistance", "globalDamping",
                          "mass", "shapePreservation", "slideCollisionConstraints", "stretchingResistance"}) {
    expected += std::string("makePaintable -attrType multiFloat -sm deformer MyoSimshape ") + map + ";\n";
    // Each map is a per-point array of the node's table.
    const AttributeInfo* info = FindAttribute(ShapeAttributes(), map);
    ASSERT_NE(info, nullptr) << map;
    EXPECT_TRUE(info->Has(kArray)) << map;
  }
  EXPECT_EQ(script, expected);
}
