#pragma once
// The frame values of the shape deformer from its attributes: the shared
// ones and the shape's own.

#include "core/attributes/attribute_source.h"
#include "core/shape/shape_frame.h"

namespace myo_core {

void ReadShapeFrameValues(const AttributeSource& source, ShapeFrameValues& frame);

}  // namespace myo_core
