#include "core/tables/enum_tables.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "core/tables/material_type.h"
#include "core/tables/table_lookup.h"

namespace {

using Rows = std::vector<std::pair<int, std::string>>;

// The rows in the order a node walks them to fill an enum attribute.
Rows InWalkOrder(const std::map<int, std::string>& table) {
  return Rows(table.begin(), table.end());
}

// Saved scenes store these numbers; renumbering breaks them.
TEST(EnumTables, KeysAndNamesAreThoseScenesStore) {
  EXPECT_EQ(InWalkOrder(myo_core::RemapMode()),
            (Rows{{0, "Linear"}, {1, "Logarithmic"}, {2, "Square Root"}, {3, "Cube Root"}}));
  EXPECT_EQ(InWalkOrder(myo_core::ActivationMode()),
            (Rows{{0, "Muscle Patches"}, {1, "Plug Values"}, {2, "No Activation"}}));
  EXPECT_EQ(InWalkOrder(myo_core::PointMassMode()),
            (Rows{{0, "By Density"}, {1, "By Uniform Value"}}));
  EXPECT_EQ(InWalkOrder(myo_core::SpaceScaleMode()),
            (Rows{{0, "Masses"}, {1, "Forces"}, {2, "Masses + Forces"}}));
  EXPECT_EQ(InWalkOrder(myo_core::NormalizationMode()),
            (Rows{{0, "Uniform"}, {1, "Priority"}, {2, "Reversed Priority"}}));
  EXPECT_EQ(InWalkOrder(myo_core::WeightsType()),
            (Rows{{0, "Hard Constraints"},
                  {1, "Soft Constraints"},
                  {2, "Slide Constraints"},
                  {3, "Attachments To Transform"},
                  {4, "Tendons"},
                  {5, "Fibers"},
                  {6, "Compression Resistance"},
                  {7, "Stretching Resistance"},
                  {8, "Global Damping"},
                  {9, "Sliding Distance Multiplier"},
                  {10, "Masses"},
                  {11, "Slide On Segment"},
                  {12, "Attachments To Geometry"},
                  {13, "Slide On Geometry"},
                  {14, "Shape Preservation"}}));
  EXPECT_EQ(InWalkOrder(myo_core::MaterialType()),
            (Rows{{0, "Fat"}, {1, "Muscle"}, {2, "Rubber"}, {3, "Tendon"}, {4, "Leather"},
                  {5, "Wood"}, {6, "Concrete"}}));
}

TEST(EnumTables, NamedConstantsMatchTheirRows) {
  EXPECT_EQ(myo_core::PointMassMode().at(myo_core::kPointMassByUniformValue), "By Uniform Value");
  EXPECT_EQ(myo_core::SpaceScaleMode().at(myo_core::kSpaceScaleMassesAndForces), "Masses + Forces");
  EXPECT_EQ(myo_core::MaterialType().at(myo_core::kMaterialLeather), "Leather");
  EXPECT_EQ(myo_core::ConstraintPriorityOrder().at(myo_core::kSkinConstraintPriorityOrder), "Hard - Slide - Soft");
}

TEST(EnumTables, ReverseLookupFindsTheNumberOfAName) {
  // "Masses" is 0 as a space scale mode and 10 as a paintable map.
  EXPECT_EQ(myo_core::FindKeyByName(myo_core::SpaceScaleMode(), "Masses"), 0);
  EXPECT_EQ(myo_core::FindKeyByName(myo_core::WeightsType(), "Masses"), 10);
  EXPECT_EQ(myo_core::FindKeyByName(myo_core::WeightsType(), "Shape Preservation"), 14);
  // "Priority" belongs to the normalisation modes alone.
  EXPECT_EQ(myo_core::FindKeyByName(myo_core::NormalizationMode(), "Priority"), 1);
  EXPECT_FALSE(myo_core::FindKeyByName(myo_core::ConstraintPriorityOrder(), "Priority"));
  EXPECT_FALSE(myo_core::FindKeyByName(myo_core::WeightsType(), "masses"));
  EXPECT_FALSE(myo_core::FindKeyByName(myo_core::WeightsType(), ""));
}

TEST(EnumTables, CheckedLookupThrowsForAMissingKey) {
  EXPECT_EQ(myo_core::CheckedLookup(myo_core::RemapMode(), 2), "Square Root");
  const std::map<int, float> broken = {{0, 1.0f}};
  try {
    myo_core::CheckedLookup(broken, 1);
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "invalid map<K, T> key");
  }
  EXPECT_THROW(myo_core::CheckedLookup(myo_core::WeightsType(), 15), std::out_of_range);
  EXPECT_THROW(myo_core::CheckedLookup(myo_core::WeightsType(), -1), std::out_of_range);
}

// Each name lists the kinds from highest priority to lowest; the list must be
// the same kinds from lowest to highest (0 hard, 1 soft, 2 slide).
TEST(EnumTables, PriorityListsReverseTheirNames) {
  const std::map<std::string, int32_t> kinds = {
      {"Hard", myo_core::kPriorityHard},
      {"Soft", myo_core::kPrioritySoft},
      {"Slide", myo_core::kPrioritySlide}};
  const auto& names = myo_core::ConstraintPriorityOrder();
  const auto& lists = myo_core::ConstraintPriorityOrderLists();
  ASSERT_EQ(names.size(), 6u);
  ASSERT_EQ(lists.size(), names.size());
  for (const auto& [key, name] : names) {
    SCOPED_TRACE(name);
    std::istringstream words(name);
    std::vector<int32_t> from_highest;
    std::string word;
    while (words >> word) {
      if (word != "-") from_highest.push_back(kinds.at(word));
    }
    ASSERT_EQ(from_highest.size(), 3u);
    const std::array<int32_t, 3> from_lowest = {from_highest[2], from_highest[1],
                                                from_highest[0]};
    EXPECT_EQ(lists.at(key), from_lowest);
  }
  EXPECT_EQ(lists.at(myo_core::kSkinConstraintPriorityOrder), (std::array<int32_t, 3>{1, 2, 0}));
}

TEST(MaterialType, StiffnessAndDensityTables) {
  const std::map<int, float> expected_stiffness = {
      {0, 1000.0f},      {1, 5000.0f},       {2, 1000000.0f},    {3, 50000000.0f},
      {4, 100000000.0f}, {5, 6000000000.0f}, {6, 24999999488.0f}};
  EXPECT_EQ(myo_core::MaterialStiffness(), expected_stiffness);
  // Concrete is the float nearest to 2.5e10.
  uint32_t bits = 0;
  const float concrete = myo_core::MaterialStiffness().at(6);
  std::memcpy(&bits, &concrete, sizeof bits);
  EXPECT_EQ(bits, 0x50BA43B7u);

  EXPECT_EQ(myo_core::MaterialDensity(), (std::map<int, float>{{1, 1060.0f}, {4, 1100.0f}}));
  EXPECT_EQ(myo_core::DefaultMuscleDensity(), 1060.0f);
  EXPECT_EQ(myo_core::DefaultSkinDensity(), 1100.0f);
}

TEST(MaterialType, ComputeStiffness) {
  // A custom value is taken as it is; the multiplier does not apply to it.
  EXPECT_EQ(myo_core::ComputeStiffness(1, 2.0f, 7.0f, true), 7.0f);
  EXPECT_EQ(myo_core::ComputeStiffness(0, 0.5f, 7.0f, false), 500.0f);
  // Keys just outside the table mean "Muscle".
  EXPECT_EQ(myo_core::ComputeStiffness(-1, 3.0f, 0.0f, false), 15000.0f);
  EXPECT_EQ(myo_core::ComputeStiffness(7, 1.0f, 0.0f, false), 5000.0f);
}

}  // namespace
