#include "core/tables/enum_tables.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "core/tables/material_type.h"
#include "core/tables/table_lookup.h"

namespace {

TEST(EnumTables, ReverseLookupFindsTheNumberOfAName) {
  // "Masses" is 0 as a space scale mode and 10 as a paintable map.
  EXPECT_EQ(myo_core::FindKeyByName(myo_core::SpaceScaleMode(), "Masses"), 0);
  EXPECT_EQ(myo_core::FindKeyByName(myo_core::WeightsType(), "Masses"), 10);
  // "Priority" belongs to the normalisation modes alone.
  EXPECT_EQ(myo_core::FindKeyByName(myo_core::NormalizationMode(), "Priority"), 1);
  EXPECT_FALSE(myo_core::FindKeyByName(myo_core::ConstraintPriorityOrder(), "Priority"));
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
    std::istringstream words(name);
    std::vector<int32_t> from_highest;
    for (std::string word; words >> word;)
      if (word != "-") from_highest.push_back(kinds.at(word));
    ASSERT_EQ(from_highest.size(), 3u) << name;
    EXPECT_EQ(lists.at(key), (std::array<int32_t, 3>{from_highest[2], from_highest[1], from_highest[0]})) << name;
  }
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
