// Consolidation of painted maps and the tables that say where each map lives.

#include <gtest/gtest.h>

#include <vector>

#include "core/muscle/muscle_attributes.h"
#include "core/paint/weight_maps.h"
#include "core/paint/weight_normalization.h"
#include "core/skin/skin_attributes.h"
#include "core/tables/enum_tables.h"

using namespace myo_core;

TEST(NormalizeInfluencesTest, TheInfluenceUnderTheBrushWinsAndOthersShareTheRest) {
  // Three influences of two points, influence-major; influence 1 is current.
  // Point 0 sums past one: the others share what is left in proportion.
  // Point 1 sums below one and is left alone: the test is one-sided.
  std::vector<float> weights = {0.6f, 0.1f, 0.5f, 0.2f, 0.2f, 0.3f};
  ASSERT_TRUE(NormalizeInfluences(weights, 2, 1));
  EXPECT_FLOAT_EQ(weights[2], 0.5f);
  EXPECT_NEAR(weights[0], 0.5f * 0.6f / 0.8f, 1e-6f);
  EXPECT_NEAR(weights[4], 0.5f * 0.2f / 0.8f, 1e-6f);
  EXPECT_EQ(weights[1], 0.1f);
  // A current weight past one is clamped; tiny others stay as they are.
  std::vector<float> over = {1.2f, 0.3f};
  ASSERT_TRUE(NormalizeInfluences(over, 1, 0));
  EXPECT_EQ(over, (std::vector<float>{1.0f, 0.0f}));
  std::vector<float> tiny = {1e-7f, 0.9f, 0.6f};
  ASSERT_TRUE(NormalizeInfluences(tiny, 1, 1));
  EXPECT_EQ(tiny[0], 1e-7f);
  EXPECT_NEAR(tiny[2], 0.1f, 1e-6f);

  // Arrays that are not whole blocks, and influences outside them, are refused.
  std::vector<float> odd = {0.9f, 0.9f, 0.9f}, empty;
  EXPECT_FALSE(NormalizeInfluences(odd, 2, 0));
  EXPECT_FALSE(NormalizeInfluences(odd, 0, 0));
  EXPECT_FALSE(NormalizeInfluences(odd, 3, 1));
  EXPECT_FALSE(NormalizeInfluences(odd, 1, -1));
  EXPECT_FALSE(NormalizeInfluences(empty, 1, 0));
  EXPECT_EQ(odd, (std::vector<float>{0.9f, 0.9f, 0.9f}));
}

TEST(NormalizeUberWeightsTest, TheMapOnDisplayIsThePrimary) {
  std::vector<float> hard = {0.5f, 0.2f}, soft = {0.6f, 0.3f}, slide = {0.2f, 0.1f};
  EXPECT_TRUE(NormalizeUberWeights(hard, soft, slide, 2, 0));
  EXPECT_EQ(hard[0], 0.5f);
  EXPECT_FLOAT_EQ(soft[0], 0.375f);
  EXPECT_FLOAT_EQ(slide[0], 0.125f);
  EXPECT_EQ(soft[1], 0.3f);

  // Slide on display: it is clamped, hard and soft make room.
  hard = {0.5f}, soft = {0.5f}, slide = {1.5f};
  EXPECT_TRUE(NormalizeUberWeights(hard, soft, slide, 1, 2));
  EXPECT_EQ(slide[0], 1.0f);
  EXPECT_EQ(hard[0], 0.0f);
  EXPECT_EQ(soft[0], 0.0f);

  // Soft on display: hard and slide keep their ratio.
  hard = {0.3f}, soft = {0.8f}, slide = {0.1f};
  EXPECT_TRUE(NormalizeUberWeights(hard, soft, slide, 1, 1));
  EXPECT_NEAR(hard[0], 0.15f, 1e-6f);
  EXPECT_NEAR(slide[0], 0.05f, 1e-6f);

  // Another map on display, or arrays of the wrong size: nothing happens.
  EXPECT_FALSE(NormalizeUberWeights(hard, soft, slide, 1, 6));
  EXPECT_FALSE(NormalizeUberWeights(hard, soft, slide, 2, 0));
  std::vector<float> short_slide;
  EXPECT_FALSE(NormalizeUberWeights(hard, soft, short_slide, 1, 0));
  EXPECT_EQ(soft[0], 0.8f);
}

namespace {

// Every map must name a list and element of the node's own table, with the
// element's default, and a type the paint tool knows.
void ExpectMapsMatchTheNode(const std::vector<WeightMapInfo>& maps, const AttributeTable& table) {
  for (const WeightMapInfo& map : maps) {
    SCOPED_TRACE(map.element);
    EXPECT_NE(WeightsType().find(map.weights_type), WeightsType().end());
    const AttributeInfo* list = FindAttribute(table, map.list);
    const AttributeInfo* element = FindAttribute(table, map.element);
    ASSERT_NE(list, nullptr);
    ASSERT_NE(element, nullptr);
    EXPECT_TRUE(list->Has(kArray));
    EXPECT_TRUE(element->Has(kArray));
    bool is_child = false;
    for (const std::string& child : list->children) is_child = is_child || child == map.element;
    EXPECT_TRUE(is_child);
    for (size_t c = 0; c < map.components.size(); ++c) {
      ASSERT_LT(c, element->children.size());
      EXPECT_EQ(element->children[c], map.components[c]);
    }
    if (!map.MultiInfluence() && map.components.empty()) {
      EXPECT_EQ(map.default_value, static_cast<float>(element->Default()));
    }
    for (const std::string& child : InfluenceConnectionChildren(map.influence)) {
      bool found = false;
      for (const std::string& sibling : list->children) found = found || sibling == child;
      EXPECT_TRUE(found) << child;
    }
  }
}

}  // namespace

TEST(WeightMapsTest, MapsLiveInTheNodesOwnAttributesAndSkinMapsHaveNoInfluences) {
  ExpectMapsMatchTheNode(MuscleWeightMaps(), MuscleAttributes());
  ExpectMapsMatchTheNode(MuscleWeightMaps(), RibbonMuscleAttributes());
  ExpectMapsMatchTheNode(SkinWeightMaps(), SkinAttributes());
  for (const WeightMapInfo& map : SkinWeightMaps()) EXPECT_FALSE(map.MultiInfluence()) << map.element;
  EXPECT_EQ(FindWeightMap(SkinWeightMaps(), kWeightsTendons), nullptr);
}
