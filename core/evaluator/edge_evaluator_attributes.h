#pragma once
// The attributes of the "MyoEdgeEvaluator" node, in the order the node
// creates them. Those marked kAffectsOutput affect "compression".

#include "core/attributes/attribute_info.h"

namespace myo_core {

const AttributeTable& EdgeEvaluatorAttributes();

}  // namespace myo_core
