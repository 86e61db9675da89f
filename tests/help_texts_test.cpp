#include "core/help/help_texts.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "app/cli/listings.h"
#include "app/scene/node_types.h"
#include "core/help/attribute_help.h"
#include "core/locators/locator_attributes.h"

namespace {

using myo_core::HelpText;
using myo_core::HelpTextId;

// The attribute table of a node type by name: the runner's types and the
// locators, which only the plug-in creates.
const myo_core::AttributeInfo* FindAttributeOfType(const std::string& type_name, const std::string& attribute) {
  if (const myo_app::NodeType* type = myo_app::FindNodeType(type_name))
    return myo_app::FindNodeAttribute(*type, attribute);
  for (auto kind : {myo_core::LocatorKind::kMarker, myo_core::LocatorKind::kDistance,
                    myo_core::LocatorKind::kPosition, myo_core::LocatorKind::kRotation})
    if (type_name == myo_core::LocatorTypeName(kind))
      return myo_core::FindAttribute(myo_core::LocatorAttributes(kind), attribute);
  ADD_FAILURE() << "unknown node type " << type_name;
  return nullptr;
}

TEST(AttributeHelp, EveryBoundAttributeExistsOnItsNodeType) {
  std::set<std::pair<std::string, std::string>> seen;
  for (const myo_core::AttributeHelp& row : myo_core::AttributeHelpTable()) {
    const myo_core::AttributeInfo* info = FindAttributeOfType(row.node_type, row.attribute);
    ASSERT_NE(info, nullptr) << row.node_type << "." << row.attribute;
    EXPECT_EQ(info->long_name, row.attribute) << "bound by its short name: " << row.node_type << "." << row.attribute;
    EXPECT_TRUE(seen.insert({row.node_type, row.attribute}).second)
        << "bound twice: " << row.node_type << "." << row.attribute;
  }
  EXPECT_GT(seen.size(), 150u);
  // One attribute name, a text per node type; looked up by long name only.
  EXPECT_STREQ(myo_core::FindAttributeHelp("MyoSimshape", "activation"), HelpText(HelpTextId::kActivationAttribute));
  EXPECT_STREQ(myo_core::FindAttributeHelp("MyoMuscle", "activation"), HelpText(HelpTextId::kActivation));
  EXPECT_EQ(myo_core::FindAttributeHelp("MyoSkin", "hc"), nullptr);
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(AttributeListing, EveryLineFitsATerminalAndNothingIsLost) {
  for (const myo_app::NodeType& type : myo_app::NodeTypes()) {
    const std::string listing = myo_app::AttributeListing(type);
    for (const std::string& line : Lines(listing)) EXPECT_LE(line.size(), 80u) << type.name << ": " << line;
    // Every attribute starts a line of its own in both forms.
    const std::string wide = myo_app::AttributeListing(type, true);
    for (const myo_core::AttributeInfo& info : *type.attributes) {
      EXPECT_NE(("\n" + listing).find("\n" + info.long_name + " (" + info.short_name + "): "), std::string::npos)
          << type.name << "." << info.long_name;
      EXPECT_NE(wide.find("\n" + info.long_name + " "), std::string::npos) << type.name << "." << info.long_name;
    }
  }
  // The material's seven fields are wrapped, not cut.
  const myo_app::NodeType& skin_type = *myo_app::FindNodeType("MyoSkin");
  const std::string skin = myo_app::AttributeListing(skin_type);
  EXPECT_NE(skin.find("6=\"Concrete\""), std::string::npos);
  EXPECT_NE(skin.find("\nmaterial (mat): enum, default 4 \"Leather\", keyable, fields: 0=\"Fat\" 1=\"Muscle\"\n"
                      "        2=\"Rubber\" 3=\"Tendon\""),
            std::string::npos);
}

TEST(AttributeListing, HelpTextStandsUnderItsAttribute) {
  const std::vector<std::string> skin = Lines(myo_app::AttributeListing(*myo_app::FindNodeType("MyoSkin")));
  std::size_t at = 0;
  while (at < skin.size() && skin[at].rfind("hardConstraints (hc)", 0) != 0) ++at;
  ASSERT_LT(at + 3, skin.size());
  EXPECT_EQ(skin[at], "hardConstraints (hc): float, default 1, array");
  EXPECT_EQ(skin[at + 1], "    Specifies the name of the per-point attribute to read the hard constraint");
  EXPECT_EQ(skin[at + 2], "    values from. Expected range 0 to 1.");
  EXPECT_EQ(skin[at + 3].rfind("hardConstraintsList (hcl): ", 0), 0u) << skin[at + 3];

  // Each paragraph of a text starts a line of its own.
  const std::string shape = myo_app::AttributeListing(*myo_app::FindNodeType("MyoSimshape"));
  EXPECT_NE(shape.find("\n    Mode to drive the muscle activations:\n    Muscle Patches: an MyoForge"), std::string::npos)
      << shape;
}

}  // namespace
