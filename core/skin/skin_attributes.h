#pragma once
// The attributes of the "MyoSkin" deformer, in the order the node creates them.

#include "core/attributes/attribute_info.h"

namespace myo_core {

const AttributeTable& SkinAttributes();

}  // namespace myo_core
