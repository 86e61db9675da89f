#pragma once
// "Did you mean": the known name nearest to a mistyped one, for the messages
// about unknown node types, attributes and keys.

#include <cstddef>
#include <string>
#include <vector>

#include "app/scene/node_types.h"

namespace myo_app {

// Edits (insert, delete, replace a letter, swap two neighbours) that turn
// `a` into `b`, letter case ignored.
std::size_t EditDistance(const std::string& a, const std::string& b);

// The candidate nearest to `name` when it is near enough to be a slip of
// the fingers: at most one edit per three letters of `name` (at least one,
// at most three). The first of equally near candidates; empty when none is
// near enough.
std::string NearestName(const std::string& name, const std::vector<std::string>& candidates);

// "; did you mean \"stiffness\"?" for the nearest candidate, or empty: the
// ending of a message about an unknown name.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates);

// The long and short names of a type's attributes, the deformer's own
// included: what an unknown attribute name is compared with.
std::vector<std::string> AttributeNames(const NodeType& type);

}  // namespace myo_app
