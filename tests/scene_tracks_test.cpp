// Values over the time line: keyed scalars and transforms, and the frame
// values a node reads from them.

#include <gtest/gtest.h>

#include "app/run/scene_attribute_source.h"
#include "app/scene/keyframe_track.h"
#include "app/scene/transform_track.h"
#include "core/muscle/muscle_frame_reader.h"
#include "core/shape/shape_attributes.h"
#include "core/shape/shape_frame_reader.h"
#include "core/skin/skin_frame_reader.h"
#include "core/muscle/muscle_attributes.h"
#include "core/skin/skin_attributes.h"

namespace {

using myo_app::ScalarTrack;

TEST(SceneTracks, ScalarsHoldOutsideTheirKeysAndInterpolateOrStepBetween) {
  ScalarTrack track{{10, 20, 40}, {0, 1, -1}, false};
  EXPECT_EQ(track.At(0), 0.0);
  EXPECT_DOUBLE_EQ(track.At(15), 0.5);
  EXPECT_DOUBLE_EQ(track.At(30), 0.0);
  EXPECT_EQ(track.At(99), -1.0);
  track.stepped = true;
  EXPECT_EQ(track.At(19.9), 0.0);
  EXPECT_EQ(track.At(20), 1.0);
  EXPECT_EQ(ScalarTrack::Constant(7).At(-100), 7.0);
}

TEST(SceneTracks, TransformsScaleThenRotateXYZThenTranslate) {
  myo_app::TransformKeyTRS key;
  key.rotate = {90, 0, 0};
  // Points are row vectors: p * M. A quarter turn about x takes y to z.
  myo_app::Matrix4d m = myo_app::ComposeTRS(key);
  EXPECT_NEAR(m[4 + 2], 1.0, 1e-12);
  // About x first, then y: z (from y) turns into x.
  key.rotate = {90, 90, 0};
  key.scale = {2, 1, 1};
  key.translate = {5, 6, 7};
  m = myo_app::ComposeTRS(key);
  EXPECT_NEAR(m[4 + 0], 1.0, 1e-12);   // y -> z -> x
  EXPECT_NEAR(m[0 + 2], -2.0, 1e-12);  // x, scaled by 2, -> -z under the turn about y
  EXPECT_EQ(m[14], 7.0);

  myo_app::TransformTrack track;
  track.frames = {0, 10};
  track.trs.resize(2);
  track.trs[1].rotate = {0, 0, 90};
  track.trs[1].translate = {10, 0, 0};
  const myo_app::Matrix4d half = track.LocalAt(5);
  EXPECT_NEAR(half[0], std::cos(3.14159265358979323846 / 4), 1e-12);
  EXPECT_DOUBLE_EQ(half[12], 5.0);
  EXPECT_EQ(track.LocalAt(-3), myo_app::IdentityMatrix4d());
}

// A source that answers every attribute with the table's default, and fails
// the test for a name the table does not have.
class TableDefaults : public myo_core::AttributeSource {
 public:
  explicit TableDefaults(const myo_core::AttributeTable& table) : table_(table) {}
  double Number(const std::string& name) const override {
    const myo_core::AttributeInfo* info = myo_core::FindAttribute(table_, name);
    EXPECT_NE(info, nullptr) << name;
    return info != nullptr ? info->Default() : 0.0;
  }
  myo_core::Matrix MatrixValue(const std::string& name) const override {
    EXPECT_NE(myo_core::FindAttribute(table_, name), nullptr) << name;
    return myo_core::IdentityMatrix();
  }

 private:
  const myo_core::AttributeTable& table_;
};

// Every attribute the frame readers ask for is in the node's table: a name
// missing there would silently read a default on every host.
TEST(SceneTracks, FrameReadersAskOnlyForAttributesOfTheirTable) {
  myo_core::MuscleFrameValues muscle, ribbon;
  myo_core::ReadMuscleFrameValues(TableDefaults(myo_core::MuscleAttributes()), true, muscle);
  myo_core::ReadMuscleFrameValues(TableDefaults(myo_core::RibbonMuscleAttributes()), false, ribbon);
  myo_core::SkinFrameValues skin;
  myo_core::ReadSkinFrameValues(TableDefaults(myo_core::SkinAttributes()), skin);
  myo_core::ShapeFrameValues shape;
  myo_core::ReadShapeFrameValues(TableDefaults(myo_core::ShapeAttributes()), shape);
  // The table's defaults reach the values read.
  EXPECT_EQ(muscle.iterations, myo_core::FindAttribute(myo_core::MuscleAttributes(), "iterations")->Default());
}

}  // namespace
