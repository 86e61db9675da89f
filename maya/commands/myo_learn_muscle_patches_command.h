#pragma once
// MyoLearnMusclePatches: learns muscle patches from a neutral mesh and target
// meshes and writes a ".mmp" file; with -drawMuscles it paints the patches
// onto the neutral mesh. The course is core's (core/learning/); this class
// reads flags and meshes, shows progress and sets the colours. It cannot be
// undone.

#include <maya/MArgList.h>
#include <maya/MPxCommand.h>
#include <maya/MStatus.h>
#include <maya/MSyntax.h>

class MyoLearnMusclePatchesCommand : public MPxCommand {
 public:
  MStatus doIt(const MArgList& args) override;

  static void* creator();
  static MSyntax newSyntax();
};
