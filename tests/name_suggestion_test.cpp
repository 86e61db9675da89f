// "Did you mean": the distance between names, the nearest name within a
// typo's reach, and the suggestion at the end of the scene reader's messages.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "app/scene/name_suggestion.h"
#include "app/scene/node_types.h"

namespace {

using myo_app::DidYouMean;
using myo_app::EditDistance;
using myo_app::NearestName;

TEST(NameSuggestion, DistanceCountsEachKindOfEditOnce) {
  EXPECT_EQ(EditDistance("stifness", "stiffness"), 1u);   // a letter left out
  EXPECT_EQ(EditDistance("stiffnesss", "stiffness"), 1u); // one too many
  EXPECT_EQ(EditDistance("stiffnass", "stiffness"), 1u);  // one replaced
  EXPECT_EQ(EditDistance("stiffnses", "stiffness"), 1u);  // two neighbours swapped
  EXPECT_EQ(EditDistance("MYOMUSCLE", "MyoMuscle"), 0u);  // letter case is no edit
  EXPECT_EQ(EditDistance("", "abc"), 3u);
  EXPECT_EQ(EditDistance("kitten", "sitting"), 3u);
}

TEST(NameSuggestion, OnlyANearNameIsSuggested) {
  const std::vector<std::string> types = {"MyoMuscle", "MyoRibbonMuscle", "MyoSkin", "MyoSimshape"};
  EXPECT_EQ(NearestName("MyoMusle", types), "MyoMuscle");
  EXPECT_EQ(NearestName("MyoCloth", types), "");  // too far from every type
  // Short names allow one edit: "it" is near "id", "xyz" near nothing of two edits.
  EXPECT_EQ(NearestName("iy", {"it", "iterations"}), "it");
  EXPECT_EQ(NearestName("xyz", {"abz"}), "");
  // The first of equally near names.
  EXPECT_EQ(NearestName("ab", {"ac", "ad"}), "ac");
  // A name far longer than any in a table is compared with nothing.
  EXPECT_EQ(NearestName(std::string(100000, 'a'), types), "");
  EXPECT_EQ(DidYouMean("stifness", {"iterations", "stiffness"}), "; did you mean \"stiffness\"?");
}

TEST(NameSuggestion, AttributeNamesHoldLongShortAndTheDeformersOwn) {
  const myo_app::NodeType& muscle = *myo_app::FindNodeType("MyoMuscle");
  const std::vector<std::string> names = myo_app::AttributeNames(muscle);
  for (const char* name : {"iterations", "it", "envelope", "en"})
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
  EXPECT_EQ(NearestName("envelop", names), "envelope");
}

}  // namespace
