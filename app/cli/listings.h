#pragma once
// The texts of "myoforge nodes" and "myoforge attributes NODE", straight
// from the attribute tables.

#include <string>

#include "app/scene/node_types.h"

namespace myo_app {

std::string NodeListing();
// One line per attribute: long and short name, type, default, limits, then
// its notes (array, keyable, hidden, children, enum fields), all within 100
// columns, and under it the attribute's help text where the catalogue has
// one. The deformer's own "envelope" comes last.
std::string AttributeListing(const NodeType& type);

}  // namespace myo_app
