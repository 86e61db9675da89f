// "Did you mean": the distance between names, the nearest name within a
// typo's reach, and the suggestion at the end of the scene reader's messages.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/scene/name_suggestion.h"

namespace {

using myo_app::EditDistance;
using myo_app::NearestName;

// The scene reader's messages show a left-out letter end to end; the other
// kinds of edit, letter case, and names too far to suggest are checked here.
TEST(NameSuggestion, OnlyANameWithinATyposReachIsSuggested) {
  EXPECT_EQ(EditDistance("stiffnesss", "stiffness"), 1u); // one too many
  EXPECT_EQ(EditDistance("stiffnass", "stiffness"), 1u);  // one replaced
  EXPECT_EQ(EditDistance("stiffnses", "stiffness"), 1u);  // two neighbours swapped
  EXPECT_EQ(EditDistance("MYOMUSCLE", "MyoMuscle"), 0u);  // letter case is no edit
  const std::vector<std::string> types = {"MyoMuscle", "MyoRibbonMuscle", "MyoSkin", "MyoSimshape"};
  EXPECT_EQ(NearestName("MyoCloth", types), "");  // too far from every type
  // Short names allow one edit only.
  EXPECT_EQ(NearestName("iy", {"it", "iterations"}), "it");
  EXPECT_EQ(NearestName("xyz", {"abz"}), "");
  // A name far longer than any in a table is compared with nothing.
  EXPECT_EQ(NearestName(std::string(100000, 'a'), types), "");
}

}  // namespace
