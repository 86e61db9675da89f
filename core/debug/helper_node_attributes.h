#pragma once
// The attributes of the helper nodes: "MyoDataNode", which gathers the
// deformers a debug view draws, "MyoDebugLocator", which draws them, and
// "MyoWeightsDisplayNode", which colours a mesh by the map being painted.

#include "core/attributes/attribute_info.h"

namespace myo_core {

// "inputs" ("in"): a list of messages, one per deformer shown.
const AttributeTable& DataNodeAttributes();

// "data" ("d"): the message of the data node drawn.
const AttributeTable& DebugLocatorAttributes();

// "inMesh" ("im"), "trigger" ("tr"), "outMesh" ("om") and
// "currentInfluence" ("ci"); the three inputs affect "outMesh".
const AttributeTable& WeightsDisplayNodeAttributes();

}  // namespace myo_core
