#pragma once
// The attributes of the "MyoMuscle" and "MyoRibbonMuscle" deformers, in the
// order the node creates them.

#include "core/attributes/attribute_info.h"

namespace myo_core {

const AttributeTable& MuscleAttributes();
// The muscle's table without "volumePreservation" and "volumeRatio".
const AttributeTable& RibbonMuscleAttributes();

}  // namespace myo_core
