#include "maya/commands/paint_context.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MItDependencyGraph.h>
#include <maya/MPlug.h>

#include "core/log/logger.h"
#include "core/plugin/registration_table.h"
#include "maya/nodes/myo_paintable_deformer.h"
#include "maya/nodes/myo_weights_display_node.h"
#include "maya/plugin/maya_conversions.h"

namespace myo_maya {

MayaPaintContext& ThePaintContext() {
  static MayaPaintContext context;
  return context;
}

MyoPaintableDeformer* GetPaintableDeformer(const MObject& object, const std::string& type_name) {
  if (type_name != myo_core::kMyoSkinTypeName && type_name != myo_core::kMyoMuscleTypeName &&
      type_name != myo_core::kMyoRibbonMuscleTypeName) {
    myo_core::ReportDebug("No implemented deformer name provided in GetPaintableDeformer", "");
    return nullptr;
  }
  if (object.isNull()) return nullptr;
  MStatus status;
  MFnDependencyNode fn(object, &status);
  if (!status || ToStdString(fn.typeName()) != type_name) return nullptr;
  return dynamic_cast<MyoPaintableDeformer*>(fn.userNode());
}

namespace {

// The display node's copy of the map and its "trigger", which the commands
// flip to have Maya colour the mesh again.
class DisplayNodeWeights : public myo_core::WeightsDisplay {
 public:
  DisplayNodeWeights(const MObject& node, MyoWeightsDisplayNode& display) : node_(node), display_(display) {}

  std::vector<float>& Weights() override { return display_.weights(); }
  void SetShowFibers(bool show) override { display_.show_fibers() = show; }
  void FlipTrigger() override {
    MPlug trigger(node_, MyoWeightsDisplayNode::attributes()["trigger"]);
    trigger.setBool(!trigger.asBool());
  }

 private:
  MObject node_;
  MyoWeightsDisplayNode& display_;
};

}  // namespace

std::unique_ptr<myo_core::WeightsDisplay> OpenWeightsDisplay(const MObject& node) {
  MStatus status;
  MFnDependencyNode fn(node, &status);
  if (!status || fn.typeId() != MyoWeightsDisplayNode::id) return nullptr;
  auto* display = dynamic_cast<MyoWeightsDisplayNode*>(fn.userNode());
  if (display == nullptr) return nullptr;
  return std::make_unique<DisplayNodeWeights>(node, *display);
}

MObject FindInGraph(const MObject& start, const std::string& type_name) {
  if (start.isNull()) return MObject();
  MObject root = start;
  for (MItDependencyGraph::Direction direction : {MItDependencyGraph::kDownstream, MItDependencyGraph::kUpstream}) {
    MStatus status;
    MItDependencyGraph it(root, MFn::kInvalid, direction, MItDependencyGraph::kDepthFirst,
                          MItDependencyGraph::kNodeLevel, &status);
    if (!status) continue;
    for (; !it.isDone(); it.next()) {
      MObject node = it.currentItem();
      if (ToStdString(MFnDependencyNode(node).typeName()) == type_name) return node;
    }
  }
  return MObject();
}

bool FindPaintNodes(MayaPaintContext& context, PaintNodes& nodes) {
  const MObject deformer = context.deformer_.isValid() ? context.deformer_.object() : MObject();
  const MObject display = context.display_node_.isValid() ? context.display_node_.object() : MObject();
  nodes.deformer = GetPaintableDeformer(deformer, context.core.deformer_type_);
  nodes.display = display.isNull() ? nullptr : OpenWeightsDisplay(display);
  if (nodes.deformer != nullptr && nodes.display != nullptr) return true;
  myo_core::ReportWarning("Could not display painted weights for the deformer " + context.core.deformer_type_ +
                              ". Please use the MyoForge Paint Tool to refresh the context of the current selection.",
                          "");
  return false;
}

}  // namespace myo_maya
