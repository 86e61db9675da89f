#pragma once
// The texts of "myoforge nodes" and "myoforge attributes NODE", straight
// from the attribute tables.

#include <string>

#include "app/scene/node_types.h"

namespace myo_app {

std::string NodeListing();
// Every attribute of a type, the deformer's own "envelope" last: its long
// and short name, type, default, limits, soft limits and notes (array,
// keyable, hidden, children, enum fields), and under it the attribute's help
// text where the catalogue has one. Compact: within 80 columns, lines broken
// between items and words. Wide: a table, one line per attribute, no line
// broken.
std::string AttributeListing(const NodeType& type, bool wide = false);
// The same for one attribute.
std::string AttributeEntry(const NodeType& type, const myo_core::AttributeInfo& info, bool wide = false);

// The node type of this name in any letter case; null for none.
const NodeType* FindNodeTypeAnyCase(const std::string& name);
// "unknown node type \"X\" (see myoforge nodes)", with the nearest type's
// name suggested at the end.
std::string UnknownNodeTypeMessage(const std::string& name);

}  // namespace myo_app
