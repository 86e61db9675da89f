#include "maya/nodes/myo_muscle_deformer.h"

#include "core/muscle/muscle_attributes.h"
#include "core/plugin/registration_table.h"

const MTypeId MyoMuscleDeformer::id(myo_core::kMyoMuscleId);

void* MyoMuscleDeformer::creator() { return new MyoMuscleDeformer(); }

MStatus MyoMuscleDeformer::initialize() { return InitializeAttributes(myo_core::MuscleAttributes()); }
