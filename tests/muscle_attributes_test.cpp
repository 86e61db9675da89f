// The muscle nodes' attribute tables: what scenes and the Maya layer rely on.

#include <gtest/gtest.h>

#include <set>

#include "core/muscle/muscle_attributes.h"
#include "core/muscle/muscle_frame.h"

using namespace myo_core;

TEST(MuscleAttributesTest, NamesAreUniqueAndFindableByEither) {
  const AttributeTable& table = MuscleAttributes();
  std::set<std::string> names;
  for (const AttributeInfo& info : table) {
    EXPECT_TRUE(names.insert(info.long_name).second) << info.long_name;
    EXPECT_TRUE(names.insert(info.short_name).second) << info.short_name;
    for (const std::string& child : info.children) EXPECT_NE(FindAttribute(table, child), nullptr) << child;
  }
  EXPECT_EQ(FindAttribute(table, "stretm")->long_name, "stretchingMultiplier");
  EXPECT_EQ(FindAttribute(table, "idmp")->long_name, "inertiaDamper");
  EXPECT_EQ(FindAttribute(table, "nothing"), nullptr);
}

TEST(MuscleAttributesTest, OrderLimitsAndEnumFields) {
  const AttributeTable& table = MuscleAttributes();
  EXPECT_EQ(table.front().long_name, "enable");
  EXPECT_EQ(table[1].long_name, "iterations");
  EXPECT_EQ(table.back().long_name, "debugFibersScale");
  const AttributeInfo* rest = FindAttribute(table, "restActivation");
  EXPECT_EQ(*rest->max, 0.999);
  const AttributeInfo* iterations = FindAttribute(table, "it");
  EXPECT_EQ(*iterations->min, 1.0);
  EXPECT_EQ(*iterations->soft_max, 10.0);
  EXPECT_FALSE(iterations->max.has_value());
  const AttributeInfo* material = FindAttribute(table, "mat");
  ASSERT_EQ(material->fields.size(), 7u);
  EXPECT_EQ(material->fields[1].name, "Muscle");
  EXPECT_EQ(material->Default(), 1.0);
  const AttributeInfo* feature = FindAttribute(table, "debugFeature");
  ASSERT_EQ(feature->fields.size(), 6u);
  EXPECT_EQ(feature->fields[4].name, "Slide On Segment");
  EXPECT_EQ(feature->fields[4].value, 9);
  const AttributeInfo* color = FindAttribute(table, "dbc");
  EXPECT_EQ(color->defaults, (std::vector<double>{1.0, 0.0, 0.0}));
  EXPECT_TRUE(color->Has(kUsedAsColor));
  EXPECT_EQ(FindAttribute(table, "am")->disconnect_behavior, 1);
  EXPECT_TRUE(FindAttribute(table, "ci")->Has(kHidden));
}

TEST(MuscleAttributesTest, OnlyTheListedAttributesAffectTheOutput) {
  std::set<std::string> affecting;
  for (const AttributeInfo& info : MuscleAttributes())
    if (info.Has(kAffectsOutput)) affecting.insert(info.long_name);
  const std::set<std::string> expected{
      "currentTime", "tendons", "tendonsList", "fibers", "fibersList", "attachmentConstraints",
      "attachmentConstraintsList", "slideOnSegmentConstraints", "slideOnSegmentConstraintsList",
      "attachmentToGeoConstraints", "slideOnGeometryConstraints", "targets", "enable", "debug", "debugFeature",
      "debugWidth", "debugColor", "debugFibersScale"};
  EXPECT_EQ(affecting, expected);
}

TEST(MuscleAttributesTest, TheRibbonLacksOnlyTheVolumeAttributes) {
  const AttributeTable& muscle = MuscleAttributes();
  const AttributeTable& ribbon = RibbonMuscleAttributes();
  EXPECT_EQ(ribbon.size() + 2, muscle.size());
  EXPECT_EQ(FindAttribute(ribbon, "volumeRatio"), nullptr);
  EXPECT_EQ(FindAttribute(ribbon, "vp"), nullptr);
  std::size_t r = 0;
  for (const AttributeInfo& info : muscle) {
    if (info.long_name == "volumePreservation" || info.long_name == "volumeRatio") continue;
    ASSERT_EQ(ribbon[r++].long_name, info.long_name);
  }
}

TEST(MuscleAttributesTest, FrameValueDefaultsAreTheTableDefaults) {
  const AttributeTable& table = MuscleAttributes();
  const MuscleFrameValues frame;
  auto d = [&](const char* name) { return FindAttribute(table, name)->Default(); };
  EXPECT_EQ(frame.enable, d("enable") != 0.0);
  EXPECT_EQ(frame.iterations, d("iterations"));
  EXPECT_EQ(frame.material, d("material"));
  EXPECT_EQ(frame.point_mass_mode, d("pointMassMode"));
  EXPECT_FLOAT_EQ(frame.density, d("density"));
  EXPECT_EQ(frame.space_scale_mode, d("spaceScaleMode"));
  EXPECT_EQ(frame.gravity_direction[1], d("gravityDirectionY"));
  EXPECT_EQ(frame.stiffness, d("stiffness"));
  EXPECT_EQ(frame.stiffness_shape_preservation, d("stiffnessShapePreservation"));
  EXPECT_FLOAT_EQ(frame.global_damping_multiplier, d("globalDampingMultiplier"));
  EXPECT_EQ(frame.attenuation_velocity_factor, d("attenuationVelocityFactor"));
  EXPECT_EQ(frame.hard_attachments, d("hardAttachments") != 0.0);
  EXPECT_EQ(frame.debug_fibers_scale, d("debugFibersScale"));
  EXPECT_EQ(frame.max_sliding_distance, d("maxSlidingDistance"));
}
