#pragma once
// The three simulation deformers ask the user about a large max sliding
// distance when it is set by hand: only with a user interface, only for a
// value set on that one plug. This finds the node such a set concerns.

#include <maya/MFnDependencyNode.h>
#include <maya/MNodeMessage.h>
#include <maya/MPlug.h>

#include "core/log/logger.h"

namespace myo_maya {

// Whether `message` sets the plug of short name `short_name` while Maya has a
// user interface.
bool IsSetWithUserInterface(MNodeMessage::AttributeMessage message, const MPlug& plug, const char* short_name);

// The node of type `Node` behind such a set; null when the set is none of
// that, or (with a warning) when the plug's node is not a `Node`.
template <class Node>
Node* NodeOfSlidingDistanceSet(MNodeMessage::AttributeMessage message, const MPlug& plug, const char* short_name) {
  if (!IsSetWithUserInterface(message, plug, short_name)) return nullptr;
  auto* node = dynamic_cast<Node*>(MFnDependencyNode(plug.node()).userNode());
  if (node == nullptr)
    myo_core::ReportWarning(
        "Wrong node obtained when attempting to get max sliding distance information from callback.", "");
  return node;
}

}  // namespace myo_maya
