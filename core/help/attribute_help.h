#pragma once
// Which help text belongs to which attribute of which node type. The
// catalogue itself is not keyed; this table ties an entry to every
// attribute whose meaning it describes. Attributes with no fitting entry
// have none, and entries for options no node has are tied to nothing.

#include <string>
#include <vector>

#include "core/help/help_texts.h"

namespace myo_core {

struct AttributeHelp {
  std::string node_type;  // a registered node type name
  std::string attribute;  // the attribute's long name
  HelpTextId text;
};

// Every (node type, attribute) pair that has a help text, grouped by text in
// catalogue order.
const std::vector<AttributeHelp>& AttributeHelpTable();

// The help text of an attribute given by its long name, or null when the
// catalogue has none for it.
const char* FindAttributeHelp(const std::string& node_type, const std::string& attribute);

}  // namespace myo_core
