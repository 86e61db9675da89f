#pragma once
// The attributes of the "MyoSimshape" deformer, in the order the node creates
// them, and the eight per-vertex maps it hands to Maya's own paint tool.

#include <string>
#include <vector>

#include "core/attributes/attribute_info.h"

namespace myo_core {

const AttributeTable& ShapeAttributes();

// The maps made paintable, in order.
const std::vector<std::string>& ShapePaintableMaps();

// The one command that makes them paintable: a line
// "makePaintable -attrType multiFloat -sm deformer <type> <map>;" per map.
std::string MakePaintableScript(const std::string& node_type, const std::vector<std::string>& maps);

}  // namespace myo_core
