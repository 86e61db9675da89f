#pragma once
// The frame values of the muscle family from its attributes: the shared
// ones, the muscle's own, and "volumePreservation" and "volumeRatio" when
// `with_volume` (not for the ribbon muscle).

#include "core/attributes/attribute_source.h"
#include "core/muscle/muscle_frame.h"

namespace myo_core {

void ReadMuscleFrameValues(const AttributeSource& source, bool with_volume, MuscleFrameValues& frame);

}  // namespace myo_core
