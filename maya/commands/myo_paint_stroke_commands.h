#pragma once
// The per-stroke protocol of an external brush: MyoPaintInitializeCommand at
// the start of a stroke, MyoPaintGetValueCommand and MyoPaintSetValueCommand
// per stamp, MyoPaintFinalizeCommand at the end (undoable: it records the
// stroke's maps in the deformer's plugs through one MDGModifier), and
// MyoPaintFloodCommand for all vertices at once. The arithmetic is core's
// paint session; these classes find the nodes and talk to Maya.

#include <maya/MArgList.h>
#include <maya/MDGModifier.h>
#include <maya/MPxCommand.h>
#include <maya/MStatus.h>
#include <maya/MSyntax.h>

#include <cstdint>

namespace myo_maya {

// Argument: the surface being painted. Result "-dt worldV" for fibers.
class MyoPaintInitializeCommand : public MPxCommand {
 public:
  MStatus doIt(const MArgList& args) override;
  static void* creator();
  static MSyntax newSyntax();
};

// Arguments: surface, vertex. Result: the brush's base value.
class MyoPaintGetValueCommand : public MPxCommand {
 public:
  MStatus doIt(const MArgList& args) override;
  static void* creator();
  static MSyntax newSyntax();
};

// Arguments: surface, vertex, strength and, for fibers, the direction.
class MyoPaintSetValueCommand : public MPxCommand {
 public:
  MStatus doIt(const MArgList& args) override;
  MStatus redoIt() override;
  static void* creator();
  static MSyntax newSyntax();

 private:
  int32_t vertex_ = 0;
  double strength_ = 0.0;
  double raw_direction_[3] = {0.0, 0.0, 0.0};
};

// Argument: surface; flag -flood. Undo puts the plugs back and reloads them
// into the solver.
class MyoPaintFinalizeCommand : public MPxCommand {
 public:
  MStatus doIt(const MArgList& args) override;
  MStatus undoIt() override;
  MStatus redoIt() override;
  bool isUndoable() const override { return true; }
  static void* creator();
  static MSyntax newSyntax();

 private:
  // Undoes or redoes the plug changes and reloads them into the live arrays.
  MStatus Reload(bool undo);

  MDGModifier modifier_;
  int32_t stroke_weight_ = -1;  // the map the stroke painted
};

// No arguments and no syntax: the tool's mode over every vertex.
class MyoPaintFloodCommand : public MPxCommand {
 public:
  MStatus doIt(const MArgList& args) override;
  static void* creator();
};

}  // namespace myo_maya
