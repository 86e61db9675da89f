#pragma once
// The paint context's set-up and queries: MyoPaintDataCommand (edit: the
// deformer type, deformer, map, influence and brush; query: those and the
// vocabulary of maps and influences) and MyoPaintGetWeightCommand (the live
// value of one vertex).

#include <maya/MArgDatabase.h>
#include <maya/MArgList.h>
#include <maya/MPxCommand.h>
#include <maya/MStatus.h>
#include <maya/MSyntax.h>

namespace myo_maya {

class MyoPaintDataCommand : public MPxCommand {
 public:
  MStatus doIt(const MArgList& args) override;
  static void* creator();
  static MSyntax newSyntax();

 private:
  MStatus Edit(const MArgDatabase& parser);
  MStatus Query(const MArgDatabase& parser);
  // -deformer NAME: the deformer of that name (or in its graph) and its
  // weights display node become the context's.
  MStatus SelectDeformer(const MString& name, const MArgDatabase& parser);
};

class MyoPaintGetWeightCommand : public MPxCommand {
 public:
  MStatus doIt(const MArgList& args) override;
  static void* creator();
  static MSyntax newSyntax();
};

}  // namespace myo_maya
