#include "maya/commands/myo_paint_data_commands.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MIntArray.h>
#include <maya/MSelectionList.h>
#include <maya/MStringArray.h>

#include <string>
#include <vector>

#include "core/log/logger.h"
#include "core/paint/paint_vocabulary.h"
#include "core/plugin/registration_table.h"
#include "maya/commands/paint_context.h"
#include "maya/nodes/myo_paintable_deformer.h"
#include "maya/plugin/maya_conversions.h"

namespace myo_maya {

namespace {

constexpr char kDeformerShort[] = "-d";
constexpr char kWeightShort[] = "-w";
constexpr char kDeformerTypeShort[] = "-dt";
constexpr char kAttributesShort[] = "-a";
constexpr char kMultiInfluenceShort[] = "-mia";
constexpr char kInfluencesShort[] = "-i";
constexpr char kInfluenceIndicesShort[] = "-ii";
constexpr char kCurrentInfluenceShort[] = "-ci";
constexpr char kClearShort[] = "-cl";
constexpr char kUiValueShort[] = "-uiv";
constexpr char kPaintModeShort[] = "-pm";
constexpr char kUiOpacityShort[] = "-uio";
constexpr char kInitializedShort[] = "-ide";
constexpr char kVertexShort[] = "-v";

MStringArray ToStringArray(const std::vector<std::string>& names) {
  MStringArray out;
  for (const std::string& name : names) out.append(ToMString(name));
  return out;
}

MString FlagString(const MArgDatabase& parser, const char* flag) {
  MString value;
  parser.getFlagArgument(flag, 0, value);
  return value;
}

// The context's deformer while it still exists.
MyoPaintableDeformer* ContextDeformer(MayaPaintContext& context) {
  if (!context.deformer_.isValid()) return nullptr;
  return GetPaintableDeformer(context.deformer_.object(), context.core.deformer_type_);
}

// -weight NAME, or else -currentInfluence N: the map or influence shown.
MStatus SelectMap(const MArgDatabase& parser, myo_core::PaintableDeformer& paint, myo_core::WeightsDisplay& display) {
  MayaPaintContext& context = ThePaintContext();
  if (parser.isFlagSet(kWeightShort)) {
    const std::string weight = ToStdString(FlagString(parser, kWeightShort));
    return myo_core::SelectPaintWeights(context.core, paint, display, weight) ? MS::kSuccess : MS::kFailure;
  }
  if (parser.isFlagSet(kCurrentInfluenceShort)) {
    int influence = 0;
    parser.getFlagArgument(kCurrentInfluenceShort, 0, influence);
    myo_core::SelectPaintInfluence(context.core, paint, display, influence);
  }
  return MS::kSuccess;
}

}  // namespace

void* MyoPaintDataCommand::creator() { return new MyoPaintDataCommand(); }

MSyntax MyoPaintDataCommand::newSyntax() {
  MSyntax syntax;
  syntax.setObjectType(MSyntax::kStringObjects, 0, 1);
  syntax.enableEdit(true);
  syntax.enableQuery(true);
  syntax.addFlag(kDeformerShort, "-deformer", MSyntax::kString);
  syntax.addFlag(kWeightShort, "-weight", MSyntax::kString);
  syntax.addFlag(kDeformerTypeShort, "-deformerType", MSyntax::kString);
  syntax.addFlag(kAttributesShort, "-attributes", MSyntax::kString);
  syntax.addFlag(kMultiInfluenceShort, "-multiInflAttributes", MSyntax::kString);
  syntax.addFlag(kInfluencesShort, "-influences", MSyntax::kString);
  syntax.addFlag(kInfluenceIndicesShort, "-influencesIndices", MSyntax::kUnsigned);
  syntax.addFlag(kCurrentInfluenceShort, "-currentInfluence", MSyntax::kLong);
  syntax.addFlag(kClearShort, "-clear", MSyntax::kBoolean);
  syntax.addFlag(kUiValueShort, "-uiValue", MSyntax::kDouble);
  syntax.addFlag(kPaintModeShort, "-paintMode", MSyntax::kLong);
  syntax.addFlag(kUiOpacityShort, "-uiOpacity", MSyntax::kDouble);
  syntax.addFlag(kInitializedShort, "-initializedDeformer", MSyntax::kBoolean);
  return syntax;
}

MStatus MyoPaintDataCommand::doIt(const MArgList& args) {
  MStatus status;
  MArgDatabase parser(syntax(), args, &status);
  if (!status) return status;
  if (parser.isEdit()) return Edit(parser);
  if (parser.isQuery()) return Query(parser);
  return MS::kSuccess;
}

MStatus MyoPaintDataCommand::SelectDeformer(const MString& name, const MArgDatabase& parser) {
  MayaPaintContext& context = ThePaintContext();
  const std::string& type_name = context.core.deformer_type_;
  MSelectionList list;
  MObject object;
  if (list.add(name) == MS::kSuccess) list.getDependNode(0, object);
  // The name may be the deformer's or that of a geometry it deforms.
  const bool is_deformer = !object.isNull() && ToStdString(MFnDependencyNode(object).typeName()) == type_name;
  const MObject deformer = is_deformer ? object : FindInGraph(object, type_name);
  MyoPaintableDeformer* paintable = GetPaintableDeformer(deformer, type_name);
  if (paintable == nullptr) {
    myo_core::ReportError("Failed to retrieve a " + type_name + " from the current selection.", "");
    return MS::kFailure;
  }
  context.core.point_count_ = paintable->GetNumPoints();
  const std::string display_type = myo_core::kMyoWeightsDisplayNodeTypeName;
  const MObject display = FindInGraph(object, display_type);
  if (display.isNull()) {
    myo_core::ReportError(
        "Could not find an " + display_type + " in the dependency graph of the requested deformer.", "");
    return MS::kFailure;
  }
  std::unique_ptr<myo_core::WeightsDisplay> weights = OpenWeightsDisplay(display);
  if (weights == nullptr) {
    myo_core::ReportError(
        "Could not retrieve an " + display_type + " in the dependency graph of the requested deformer.", "");
    return MS::kFailure;
  }
  context.deformer_ = MObjectHandle(deformer);
  context.display_node_ = MObjectHandle(display);

  return SelectMap(parser, paintable->Paint(), *weights);
}

MStatus MyoPaintDataCommand::Edit(const MArgDatabase& parser) {
  MayaPaintContext& context = ThePaintContext();
  if (parser.isFlagSet(kDeformerShort)) {
    const MStatus status = SelectDeformer(FlagString(parser, kDeformerShort), parser);
    if (!status) return status;
  } else if (parser.isFlagSet(kWeightShort) || parser.isFlagSet(kCurrentInfluenceShort)) {
    // A new map or influence of the deformer already in use.
    PaintNodes nodes;
    if (!FindPaintNodes(context, nodes)) return MS::kFailure;
    const MStatus status = SelectMap(parser, nodes.deformer->Paint(), *nodes.display);
    if (!status) return status;
  }
  if (parser.isFlagSet(kDeformerTypeShort) &&
      !myo_core::SetPaintDeformerType(context.core, ToStdString(FlagString(parser, kDeformerTypeShort))))
    return MS::kFailure;
  if (parser.isFlagSet(kPaintModeShort)) {
    int mode = 0;
    parser.getFlagArgument(kPaintModeShort, 0, mode);
    context.core.paint_mode_ = mode;
  }
  if (parser.isFlagSet(kUiValueShort)) {
    double value = 0.0;
    parser.getFlagArgument(kUiValueShort, 0, value);
    context.core.ui_value_ = static_cast<float>(value);
  }
  if (parser.isFlagSet(kUiOpacityShort)) {
    double opacity = 0.0;
    parser.getFlagArgument(kUiOpacityShort, 0, opacity);
    context.core.ui_opacity_ = static_cast<float>(opacity);
  }
  return MS::kSuccess;
}

MStatus MyoPaintDataCommand::Query(const MArgDatabase& parser) {
  MayaPaintContext& context = ThePaintContext();
  const std::string& type_name = context.core.deformer_type_;
  if (parser.isFlagSet(kDeformerShort)) {
    setResult(context.deformer_.isValid() ? MFnDependencyNode(context.deformer_.object()).name() : MString());
    return MS::kSuccess;
  }
  if (parser.isFlagSet(kWeightShort)) {
    if (!myo_core::WeightsTypeByName(context.core.weight_name_)) {
      myo_core::ReportError("Could not find custom paintable attributes", "");
      return MS::kFailure;
    }
    setResult(ToMString(context.core.weight_name_));
    return MS::kSuccess;
  }
  if (parser.isFlagSet(kDeformerTypeShort)) {
    setResult(ToStringArray(myo_core::PaintDeformerTypes()));
    return MS::kSuccess;
  }
  if (parser.isFlagSet(kAttributesShort)) {
    const std::vector<std::string>* names = myo_core::PaintableAttributeNames(type_name);
    if (names == nullptr) {
      myo_core::ReportError("Could not find custom paintable attributes", "");
      return MS::kFailure;
    }
    setResult(ToStringArray(*names));
    return MS::kSuccess;
  }
  if (parser.isFlagSet(kMultiInfluenceShort)) {
    const std::vector<std::string>* names = myo_core::MultiInfluenceAttributeNames(type_name);
    setResult(names == nullptr ? MStringArray() : ToStringArray(*names));
    return MS::kSuccess;
  }
  if (parser.isFlagSet(kClearShort)) {
    myo_core::ClearPaintContext(context.core);
    return MS::kSuccess;
  }
  if (parser.isFlagSet(kUiValueShort)) {
    setResult(static_cast<double>(context.core.ui_value_));
    return MS::kSuccess;
  }
  if (parser.isFlagSet(kPaintModeShort)) {
    setResult(static_cast<int>(context.core.paint_mode_));
    return MS::kSuccess;
  }
  const bool needs_deformer = parser.isFlagSet(kInfluencesShort) || parser.isFlagSet(kInfluenceIndicesShort) ||
                              parser.isFlagSet(kCurrentInfluenceShort) || parser.isFlagSet(kInitializedShort);
  if (!needs_deformer) {
    myo_core::ReportError("Invalid flag in query mode.", "");
    return MS::kFailure;
  }
  MyoPaintableDeformer* deformer = ContextDeformer(context);
  if (deformer == nullptr) {
    myo_core::ReportError("No " + (type_name.empty() ? std::string("deformer") : type_name) +
                              " is in the paint context: set it with MyoPaintDataCommand -edit -deformer.",
                          "");
    return MS::kFailure;
  }
  if (parser.isFlagSet(kInfluencesShort))
    setResult(deformer->GetInfluencesNames());
  else if (parser.isFlagSet(kInfluenceIndicesShort))
    setResult(deformer->GetInfluencesIndices());
  else if (parser.isFlagSet(kCurrentInfluenceShort))
    setResult(static_cast<int>(deformer->GetCurrentInfluence()));
  else
    setResult(!deformer->IsSolverEmpty());
  return MS::kSuccess;
}

// ---- MyoPaintGetWeightCommand

void* MyoPaintGetWeightCommand::creator() { return new MyoPaintGetWeightCommand(); }

MSyntax MyoPaintGetWeightCommand::newSyntax() {
  MSyntax syntax;
  syntax.addFlag(kVertexShort, "-vertex", MSyntax::kLong);
  return syntax;
}

MStatus MyoPaintGetWeightCommand::doIt(const MArgList& args) {
  MStatus status;
  MArgDatabase parser(syntax(), args, &status);
  if (!status) return status;
  if (!parser.isFlagSet(kVertexShort)) {
    myo_core::ReportError("MyoPaintGetWeightCommand needs the vertex to read: -vertex INDEX.", "");
    return MS::kFailure;
  }
  int vertex = 0;
  parser.getFlagArgument(kVertexShort, 0, vertex);
  MayaPaintContext& context = ThePaintContext();
  // The live array is taken anew: a rebuilt solver has moved it.
  MyoPaintableDeformer* deformer = ContextDeformer(context);
  context.core.source_weights_ = deformer == nullptr ? nullptr : deformer->Paint().DisplayWeights();
  double value = 0.0;
  if (!myo_core::GetPaintWeight(context.core, vertex, value)) return MS::kFailure;
  setResult(value);
  return MS::kSuccess;
}

}  // namespace myo_maya
