#include "maya/nodes/myo_ribbon_muscle_deformer.h"

#include "core/muscle/muscle_attributes.h"
#include "core/plugin/registration_table.h"

const MTypeId MyoRibbonMuscleDeformer::id(myo_core::kMyoRibbonMuscleId);

void* MyoRibbonMuscleDeformer::creator() { return new MyoRibbonMuscleDeformer(); }

MStatus MyoRibbonMuscleDeformer::initialize() { return InitializeAttributes(myo_core::RibbonMuscleAttributes()); }
