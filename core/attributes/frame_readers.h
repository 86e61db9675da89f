#pragma once
// Fill a node's frame values from its attributes, by the long names of its
// attribute table. Connections (matrices of influences, targets, the
// reference mesh) and the deformer's own inputs (envelope, local-to-world
// matrix, geometry index) are filled by the host.

#include "core/attributes/attribute_source.h"
#include "core/muscle/muscle_frame.h"
#include "core/skin/skin_deformer.h"

namespace myo_core {

// The attributes every simulation deformer shares.
void ReadSolverFrameValues(const AttributeSource& source, SolverFrameValues& frame);
// The shared ones, the muscle's own, and "volumePreservation" and
// "volumeRatio" when `with_volume` (not for the ribbon muscle).
void ReadMuscleFrameValues(const AttributeSource& source, bool with_volume, MuscleFrameValues& frame);
void ReadSkinFrameValues(const AttributeSource& source, SkinFrameValues& frame);

}  // namespace myo_core
