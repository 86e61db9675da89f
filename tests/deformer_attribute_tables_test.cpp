// The attribute tables of the muscle, ribbon muscle and skin deformers: what
// Maya needs to build them (compounds made from their children, unique
// names, lists of array elements), defaults within their limits, and the
// flags the host reads.

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "core/muscle/muscle_attributes.h"
#include "core/skin/skin_attributes.h"

using namespace myo_core;

namespace {

using T = AttributeType;

const std::vector<const AttributeTable*> kTables = {&MuscleAttributes(), &RibbonMuscleAttributes(), &SkinAttributes()};

// Maya needs a compound's children to exist when the compound is made and
// adds them with it, so every child must be declared once, in one compound
// only, and each list must name its element among its children.
TEST(DeformerAttributeTablesTest, CompoundsCanBeBuiltFromTheirChildrenAndNamesAreUnique) {
  for (const AttributeTable* table : kTables) {
    std::set<std::string> names, children;
    for (const AttributeInfo& info : *table) {
      SCOPED_TRACE(info.long_name);
      EXPECT_TRUE(names.insert(info.long_name).second);
      EXPECT_TRUE(names.insert(info.short_name).second) << info.short_name;
      if (info.type != T::kCompound && info.type != T::kColor) {
        EXPECT_TRUE(info.children.empty());
        continue;
      }
      EXPECT_FALSE(info.children.empty());
      for (const std::string& child : info.children) {
        const AttributeInfo* found = FindAttribute(*table, child);
        ASSERT_NE(found, nullptr) << child;
        EXPECT_TRUE(info.type != T::kColor || found->type == T::kFloat) << child;
        EXPECT_TRUE(children.insert(child).second) << child << " has two parents";
      }
      if (!info.array_of.empty()) {
        EXPECT_TRUE(info.Has(kArray));
        ASSERT_EQ(info.children.size(), 1u);
        EXPECT_EQ(info.children.front(), info.array_of);
        EXPECT_TRUE(FindAttribute(*table, info.array_of)->Has(kArray));
      }
    }
  }
}

// A new node shows its defaults: each must pass the limits the node sets,
// and an enum's must be one of its fields.
TEST(DeformerAttributeTablesTest, DefaultsLieWithinTheirLimitsAndFields) {
  for (const AttributeTable* table : kTables) {
    for (const AttributeInfo& info : *table) {
      SCOPED_TRACE(info.long_name);
      const double value = info.Default();
      const double low = info.min.value_or(-HUGE_VAL), high = info.max.value_or(HUGE_VAL);
      EXPECT_LE(low, info.soft_min.value_or(low));
      EXPECT_GE(high, info.soft_max.value_or(high));
      EXPECT_LE(info.soft_min.value_or(low), value);
      EXPECT_GE(info.soft_max.value_or(high), value);
      if (info.type != T::kEnum) continue;
      bool found = false;
      for (const EnumField& field : info.fields) found = found || field.value == value;
      EXPECT_TRUE(found) << value;
    }
  }
}

TEST(DeformerAttributeTablesTest, TheRibbonIsTheMuscleWithoutItsVolume) {
  std::vector<std::string> muscle, ribbon;
  for (const AttributeInfo& info : MuscleAttributes())
    if (info.long_name != "volumePreservation" && info.long_name != "volumeRatio") muscle.push_back(info.long_name);
  for (const AttributeInfo& info : RibbonMuscleAttributes()) ribbon.push_back(info.long_name);
  EXPECT_EQ(ribbon, muscle);
}

TEST(DeformerAttributeTablesTest, FlagsTheHostNeeds) {
  for (const AttributeTable* table : kTables) {
    // Time, the switch and what the debug lines show make the node evaluate.
    for (const char* name : {"currentTime", "enable", "debug", "debugFeature", "debugWidth", "debugColor"})
      EXPECT_TRUE(FindAttribute(*table, name)->Has(kAffectsOutput)) << name;
    // The solver's own settings are read at each step and do not.
    for (const char* name : {"iterations", "stiffness", "gravity"})
      EXPECT_FALSE(FindAttribute(*table, name)->Has(kAffectsOutput)) << name;
  }
  for (const char* name : {"referenceMesh", "hardConstraints"})
    EXPECT_TRUE(FindAttribute(SkinAttributes(), name)->Has(kAffectsOutput)) << name;
  EXPECT_TRUE(FindAttribute(MuscleAttributes(), "fibers")->Has(kAffectsOutput));
}

}  // namespace
