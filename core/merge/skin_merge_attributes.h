#pragma once
// The attributes of the "MyoSkinMerge" deformer, in the order the node
// creates them, and the two per-vertex maps it hands to Maya's own paint
// tool.

#include <string>
#include <vector>

#include "core/attributes/attribute_info.h"

namespace myo_core {

const AttributeTable& SkinMergeAttributes();

// "weights" (the deformer's own) and "blend", in order.
const std::vector<std::string>& SkinMergePaintableMaps();

}  // namespace myo_core
