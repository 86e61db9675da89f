#pragma once
// The one paint context that the paint commands share for as long as the
// plug-in is loaded: core's PaintContext plus the two nodes in use, and the
// look-ups with which each command finds them again.

#include <maya/MObject.h>
#include <maya/MObjectHandle.h>

#include <memory>
#include <string>

#include "core/paint/paint_context.h"
#include "core/paint/paint_session.h"

class MyoPaintableDeformer;

namespace myo_maya {

struct MayaPaintContext {
  myo_core::PaintContext core;
  MObjectHandle deformer_;      // the deformer in use
  MObjectHandle display_node_;  // the MyoWeightsDisplayNode in use
};

MayaPaintContext& ThePaintContext();

// The paintable deformer behind `object` when `type_name` is one of the
// three deformer types painted with these commands; null (with a debug line
// for another type name) otherwise.
MyoPaintableDeformer* GetPaintableDeformer(const MObject& object, const std::string& type_name);

// The display copy of a MyoWeightsDisplayNode, or null when `node` is not
// one whose user node can be had.
std::unique_ptr<myo_core::WeightsDisplay> OpenWeightsDisplay(const MObject& node);

// The first node of type `type_name` met in a walk of the graph from
// `start` (downstream first, then upstream); a null object when none.
MObject FindInGraph(const MObject& start, const std::string& type_name);

// The context's deformer and display node, found again for a command that
// changes weights. With either missing (deleted, or never set) it warns that
// the paint tool must refresh its context and returns false.
struct PaintNodes {
  MyoPaintableDeformer* deformer = nullptr;
  std::unique_ptr<myo_core::WeightsDisplay> display;
};
bool FindPaintNodes(MayaPaintContext& context, PaintNodes& nodes);

}  // namespace myo_maya
