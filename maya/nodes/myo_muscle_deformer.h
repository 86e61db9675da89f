#pragma once
// "MyoMuscle": a closed muscle simulated on the deformed mesh.

#include <maya/MTypeId.h>

#include "maya/nodes/myo_muscle_family_node.h"

class MyoMuscleDeformer : public MyoMuscleFamilyNode<myo_core::MuscleSolver> {
 public:
  static void* creator();
  static MStatus initialize();
  static const MTypeId id;
};
