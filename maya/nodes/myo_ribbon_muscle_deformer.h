#pragma once
// "MyoRibbonMuscle": an open sheet of muscle, without the volume row.

#include <maya/MTypeId.h>

#include "maya/nodes/myo_muscle_family_node.h"

class MyoRibbonMuscleDeformer : public MyoMuscleFamilyNode<myo_core::RibbonMuscleSolver> {
 public:
  static void* creator();
  static MStatus initialize();
  static const MTypeId id;
};
