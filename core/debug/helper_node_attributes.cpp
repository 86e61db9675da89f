#include "core/debug/helper_node_attributes.h"

#include "core/attributes/attribute_builders.h"

namespace myo_core {

using namespace attribute_builders;

const AttributeTable& DataNodeAttributes() {
  static const AttributeTable table = {Typed("inputs", "in", AttributeType::kMessage, kArray)};
  return table;
}

const AttributeTable& DebugLocatorAttributes() {
  static const AttributeTable table = {Typed("data", "d", AttributeType::kMessage, 0)};
  return table;
}

const AttributeTable& WeightsDisplayNodeAttributes() {
  static const AttributeTable table = {
      Typed("inMesh", "im", AttributeType::kMesh, kAffectsOutput),
      // Its value means nothing: a change forces the colours to be redone.
      Scalar("trigger", "tr", AttributeType::kBool, 0, kAffectsOutput),
      Typed("outMesh", "om", AttributeType::kMesh, kNotWritable),
      ResetOnDisconnect(Scalar("currentInfluence", "ci", AttributeType::kInt, -1, kHidden | kAffectsOutput, -1)),
  };
  return table;
}

}  // namespace myo_core
