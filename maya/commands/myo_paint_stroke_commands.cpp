#include "maya/commands/myo_paint_stroke_commands.h"

#include <maya/MArgDatabase.h>
#include <maya/MDoubleArray.h>
#include <maya/MGlobal.h>
#include <maya/MPlug.h>
#include <maya/MPlugArray.h>
#include <maya/MSelectionList.h>

#include <string>

#include "core/log/logger.h"
#include "core/plugin/registration_table.h"
#include "maya/commands/paint_context.h"
#include "maya/nodes/myo_paintable_deformer.h"
#include "maya/plugin/maya_conversions.h"

namespace myo_maya {

namespace {

constexpr char kFloodShort[] = "-f";
constexpr char kFloodLong[] = "-flood";

// Records a stroke's maps in the deformer's plugs through the command's
// modifier: element i of a map's plug gets the array's value of vertex i.
class ModifierMapWriter : public myo_core::MapWriter {
 public:
  ModifierMapWriter(MyoPaintableDeformer& deformer, MDGModifier& modifier)
      : deformer_(deformer), modifier_(modifier) {}

  void Write(const myo_core::WeightMapInfo& map, uint32_t blocks, const std::vector<float>& values,
             uint32_t points) override {
    MPlugArray plugs;
    deformer_.GetDisplayPlugs(map.weights_type, blocks, plugs);
    if (!map.components.empty()) {
      if (plugs.length() == 0) return;
      const uint32_t width = map.Width();
      for (uint32_t i = 0; i < points && static_cast<size_t>(i + 1) * width <= values.size(); ++i) {
        MPlug element = plugs[0].elementByLogicalIndex(i);
        for (uint32_t k = 0; k < width; ++k)
          modifier_.newPlugValueFloat(element.child(k), values[static_cast<size_t>(i) * width + k]);
      }
      return;
    }
    for (unsigned b = 0; b < plugs.length() && static_cast<size_t>(b + 1) * points <= values.size(); ++b)
      for (uint32_t i = 0; i < points; ++i)
        modifier_.newPlugValueFloat(plugs[b].elementByLogicalIndex(i), values[static_cast<size_t>(b) * points + i]);
  }

 private:
  MyoPaintableDeformer& deformer_;
  MDGModifier& modifier_;
};

MObject NodeByName(const MString& name) {
  MSelectionList list;
  MObject node;
  if (list.add(name) != MS::kSuccess || list.getDependNode(0, node) != MS::kSuccess) return MObject();
  return node;
}

}  // namespace

// ---- MyoPaintInitializeCommand

void* MyoPaintInitializeCommand::creator() { return new MyoPaintInitializeCommand(); }

MSyntax MyoPaintInitializeCommand::newSyntax() {
  MSyntax syntax;
  syntax.addArg(MSyntax::kString);
  return syntax;
}

MStatus MyoPaintInitializeCommand::doIt(const MArgList& args) {
  MStatus status;
  const MString surface_name = args.asString(0, &status);
  if (!status) return status;
  MayaPaintContext& context = ThePaintContext();
  const std::string& type_name = context.core.deformer_type_;
  const MObject surface = NodeByName(surface_name);
  const MObject display = FindInGraph(surface, myo_core::kMyoWeightsDisplayNodeTypeName);
  const MObject deformer = FindInGraph(surface, type_name);
  if (display.isNull() || deformer.isNull()) {
    myo_core::ReportWarning(
        "Could not display painted weights for the current selected deformer. Please use the MyoForge Paint Tool "
        "to refresh the context of the current selection.",
        "");
    return MS::kFailure;
  }
  MyoPaintableDeformer* paintable = GetPaintableDeformer(deformer, type_name);
  std::unique_ptr<myo_core::WeightsDisplay> weights = OpenWeightsDisplay(display);
  if (paintable == nullptr || weights == nullptr) {
    myo_core::ReportError("Failed to retrieve a " + type_name + " or " + myo_core::kMyoWeightsDisplayNodeTypeName +
                              " from the current selection.",
                          "");
    return MS::kFailure;
  }
  context.deformer_ = MObjectHandle(deformer);
  context.display_node_ = MObjectHandle(display);

  int modifiers = 0;
  MGlobal::executeCommand("getModifiers", modifiers);
  if (myo_core::BeginPaintStroke(context.core, paintable->Paint(), *weights, modifiers)) setResult("-dt worldV");
  return MS::kSuccess;
}

// ---- MyoPaintGetValueCommand

void* MyoPaintGetValueCommand::creator() { return new MyoPaintGetValueCommand(); }

MSyntax MyoPaintGetValueCommand::newSyntax() {
  MSyntax syntax;
  syntax.addArg(MSyntax::kLong);
  syntax.addArg(MSyntax::kLong);
  return syntax;
}

MStatus MyoPaintGetValueCommand::doIt(const MArgList& args) {
  MStatus status;
  const int vertex = args.asInt(1, &status);
  if (!status) return status;
  MayaPaintContext& context = ThePaintContext();
  // Without its nodes the context's arrays may be gone: nothing to answer.
  if (!context.deformer_.isValid() || !context.display_node_.isValid()) return MS::kSuccess;
  MyoPaintableDeformer* deformer = GetPaintableDeformer(context.deformer_.object(), context.core.deformer_type_);
  if (deformer == nullptr) return MS::kSuccess;
  context.core.source_weights_ = deformer->Paint().DisplayWeights();  // a rebuilt solver has moved it
  const myo_core::PaintBaseValue base =
      myo_core::GetPaintBaseValue(context.core, deformer->Paint().DisplayWeight(), vertex);
  if (!base.present) return MS::kSuccess;
  if (base.fibers) {
    setResult(MDoubleArray(base.fiber, 3));
    return MS::kSuccess;
  }
  setResult(static_cast<double>(base.value));
  return MS::kSuccess;
}

// ---- MyoPaintSetValueCommand

void* MyoPaintSetValueCommand::creator() { return new MyoPaintSetValueCommand(); }

MSyntax MyoPaintSetValueCommand::newSyntax() {
  MSyntax syntax;
  syntax.addArg(MSyntax::kLong);
  syntax.addArg(MSyntax::kLong);
  syntax.addArg(MSyntax::kDouble);
  return syntax;
}

MStatus MyoPaintSetValueCommand::doIt(const MArgList& args) {
  MStatus status;
  vertex_ = args.asInt(1, &status);
  if (!status) return status;
  strength_ = args.asDouble(2, &status);
  if (!status) return status;
  // A fiber stamp brings its world-space direction as three more numbers.
  if (args.length() >= 6) {
    for (unsigned k = 0; k < 3; ++k) {
      raw_direction_[k] = args.asDouble(3 + k, &status);
      if (!status) return status;
    }
  }
  MayaPaintContext& context = ThePaintContext();
  PaintNodes nodes;
  if (!FindPaintNodes(context, nodes)) return MS::kFailure;
  if (vertex_ < 0 || static_cast<size_t>(vertex_) >= nodes.display->Weights().size()) {
    myo_core::ReportError("Cannot paint vertex " + std::to_string(vertex_) + ": the weights on display have " +
                              std::to_string(nodes.display->Weights().size()) + " values.",
                          "");
    return MS::kFailure;
  }
  return redoIt();
}

MStatus MyoPaintSetValueCommand::redoIt() {
  MayaPaintContext& context = ThePaintContext();
  PaintNodes nodes;
  if (!FindPaintNodes(context, nodes)) return MS::kFailure;
  myo_core::ApplyPaintStamp(context.core, nodes.deformer->Paint(), *nodes.display, static_cast<uint32_t>(vertex_),
                            strength_, raw_direction_);
  return MS::kSuccess;
}

// ---- MyoPaintFinalizeCommand

void* MyoPaintFinalizeCommand::creator() { return new MyoPaintFinalizeCommand(); }

MSyntax MyoPaintFinalizeCommand::newSyntax() {
  MSyntax syntax;
  syntax.addArg(MSyntax::kLong);
  syntax.addFlag(kFloodShort, kFloodLong, MSyntax::kBoolean);
  return syntax;
}

MStatus MyoPaintFinalizeCommand::doIt(const MArgList& args) {
  MStatus status;
  MArgDatabase parser(syntax(), args, &status);
  if (!status) return status;
  bool flood = false;
  if (parser.isFlagSet(kFloodShort)) parser.getFlagArgument(kFloodShort, 0, flood);

  MayaPaintContext& context = ThePaintContext();
  PaintNodes nodes;
  if (!FindPaintNodes(context, nodes)) return MS::kFailure;
  myo_core::PaintableDeformer& paint = nodes.deformer->Paint();
  stroke_weight_ = paint.DisplayWeight();
  ModifierMapWriter writer(*nodes.deformer, modifier_);
  if (!myo_core::FinishPaintStroke(context.core, paint, writer)) return MS::kFailure;
  status = modifier_.doIt();
  if (!status) return status;
  if (flood) myo_core::ShowConsolidatedWeights(context.core, paint, *nodes.display);
  return MS::kSuccess;
}

MStatus MyoPaintFinalizeCommand::Reload(bool undo) {
  MayaPaintContext& context = ThePaintContext();
  PaintNodes nodes;
  if (!FindPaintNodes(context, nodes)) return MS::kFailure;
  const MStatus status = undo ? modifier_.undoIt() : modifier_.doIt();
  if (!status) return status;
  myo_core::ReloadPaintedWeights(context.core, nodes.deformer->Paint(), *nodes.display, stroke_weight_);
  return MS::kSuccess;
}

MStatus MyoPaintFinalizeCommand::undoIt() { return Reload(true); }

MStatus MyoPaintFinalizeCommand::redoIt() { return Reload(false); }

// ---- MyoPaintFloodCommand

void* MyoPaintFloodCommand::creator() { return new MyoPaintFloodCommand(); }

MStatus MyoPaintFloodCommand::doIt(const MArgList&) {
  MayaPaintContext& context = ThePaintContext();
  PaintNodes nodes;
  if (!FindPaintNodes(context, nodes)) return MS::kFailure;
  return myo_core::FloodPaint(context.core, nodes.deformer->Paint(), *nodes.display) ? MS::kSuccess : MS::kFailure;
}

}  // namespace myo_maya
