#pragma once
// The attributes of the four locators, in the order the nodes create them.
// Locators only draw: none of their inputs affects anything.

#include <string>
#include <vector>

#include "core/attributes/attribute_info.h"

namespace myo_core {

enum class LocatorKind { kMarker, kDistance, kPosition, kRotation };

const AttributeTable& LocatorAttributes(LocatorKind kind);

// The activation inputs in the order of the fields of "drawOutput"; empty
// for the marker, which has no activation.
const std::vector<std::string>& LocatorActivationInputs(LocatorKind kind);

// The locator's node type name.
const char* LocatorTypeName(LocatorKind kind);

}  // namespace myo_core
