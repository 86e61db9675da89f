#pragma once
// The frame values of the skin from its attributes: the shared ones and
// "referenceMatrix".

#include "core/attributes/attribute_source.h"
#include "core/skin/skin_frame.h"

namespace myo_core {

void ReadSkinFrameValues(const AttributeSource& source, SkinFrameValues& frame);

}  // namespace myo_core
