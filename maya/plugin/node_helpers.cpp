#include "maya/plugin/node_helpers.h"

#include <maya/MAnimControl.h>
#include <maya/MArrayDataHandle.h>
#include <maya/MDataHandle.h>
#include <maya/MFnDagNode.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MGlobal.h>
#include <maya/MFloatArray.h>
#include <maya/MPxGeometryFilter.h>
#include <maya/MRampAttribute.h>
#include <maya/MSelectionList.h>

#include <string>

#include "maya/plugin/maya_conversions.h"

namespace myo_maya {

namespace {

void ExistingIndices(const MObject& node, const MObject& array, MPlug& plug, MIntArray& indices) {
  plug = MPlug(node, array);
  indices.clear();
  plug.getExistingArrayAttributeIndices(indices);
}

bool FindBool(const MFnDependencyNode& fn, const char* name, bool& value) {
  MStatus status;
  MPlug plug = fn.findPlug(name, true, &status);
  if (!status || plug.isNull()) return false;
  value = plug.asBool();
  return true;
}

constexpr char kDialogScriptHead[] =
    "from myo.ui.maya.window import main_window;from myo.ui.widgets.dialogs import AttributeWarningDialog;"
    "from myo.utils.constants import UiConstants;warning_dialog = AttributeWarningDialog(";
constexpr char kDialogScriptTail[] = ", parent=main_window());warning_dialog.exec_();";

}  // namespace

void ConnectedIndices(const MObject& node, const MObject& array, MIntArray& out) {
  out.clear();
  MPlug plug;
  MIntArray indices;
  ExistingIndices(node, array, plug, indices);
  for (unsigned k = 0; k < indices.length(); ++k)
    if (plug.elementByLogicalIndex(static_cast<unsigned>(indices[k])).isConnected()) out.append(indices[k]);
}

void ConnectedChildIndices(const MObject& node, const MObject& array, const MObject& child, MIntArray& out) {
  out.clear();
  MPlug plug;
  MIntArray indices;
  ExistingIndices(node, array, plug, indices);
  for (unsigned k = 0; k < indices.length(); ++k)
    if (ChildPlug(plug.elementByLogicalIndex(static_cast<unsigned>(indices[k])), child).isConnected())
      out.append(indices[k]);
}

void ConnectedChildrenIndices(const MObject& node, const MObject& array, std::vector<MObject>& children,
                              MIntArray& out) {
  out.clear();
  std::vector<MObject> consumed;
  consumed.swap(children);
  if (consumed.empty()) return;
  MPlug plug;
  MIntArray indices;
  ExistingIndices(node, array, plug, indices);
  for (unsigned k = 0; k < indices.length(); ++k) {
    MPlug element = plug.elementByLogicalIndex(static_cast<unsigned>(indices[k]));
    bool all = true;
    for (const MObject& child : consumed) all = all && ChildPlug(element, child).isConnected();
    if (all) out.append(indices[k]);
  }
}

bool IsNodeVisible(const MObject& node) {
  MStatus status;
  MFnDagNode dag(node, &status);
  if (!status) return false;

  bool lod_visible = true;
  if (FindBool(dag, "lodVisibility", lod_visible) && !lod_visible) return false;

  MPlug draw_override = dag.findPlug("drawOverride", true, &status);
  if (status && !draw_override.isNull() && draw_override.numChildren() > 6 && draw_override.child(5).asBool()) {
    if (!draw_override.child(6).asBool() || draw_override.child(1).asInt() != 0) return false;
  }

  bool hide_on_playback = false;
  if (FindBool(dag, "hideOnPlayback", hide_on_playback) && hide_on_playback &&
      (MAnimControl::isPlaying() || MAnimControl::isScrubbing()))
    return false;

  if (dag.parentCount() > 0) return IsNodeVisible(dag.parent(0));
  return true;
}

bool IsVisibleInView(const MDagPath& path, M3dView& view) {
  MStatus status;
  if (M3dView::displayStatus(path, &status) == M3dView::kInvisible) return false;
  MFnDagNode dag(path, &status);
  if (!status || dag.isIntermediateObject()) return false;
  if (view.viewIsFiltered()) {
    MSelectionList filtered;
    view.filteredObjectList(filtered);
    bool listed = false;
    for (MDagPath ancestor = path; !listed && ancestor.length() > 0; ancestor.pop())
      listed = filtered.hasItem(ancestor);
    if (!listed) return false;
  }
  if ((view.objectDisplay() & M3dView::kDisplayMeshes) == 0) return false;
  return IsNodeVisible(path.node());
}

bool ReadRamp(const MObject& node, const MObject& ramp, myo_core::RampEntries& entries) {
  MStatus status;
  MRampAttribute attribute(node, ramp, &status);
  if (!status) return false;
  MIntArray indices, interpolations;
  MFloatArray positions, values;
  attribute.getEntries(indices, positions, values, interpolations, &status);
  if (!status) return false;
  entries = myo_core::RampEntries();
  for (unsigned k = 0; k < positions.length(); ++k) {
    entries.positions.push_back(positions[k]);
    entries.values.push_back(k < values.length() ? values[k] : -1.0f);
    entries.interpolations.push_back(k < interpolations.length() ? interpolations[k] : 0);
  }
  return true;
}

bool IsRampNormalized(const MObject& node, const MObject& ramp) {
  myo_core::RampEntries entries;
  return ReadRamp(node, ramp, entries) && myo_core::IsRampNormalized(entries);
}

void GetInputMesh(MObject& mesh, MDataBlock& block, unsigned index) {
  mesh = MObject::kNullObj;
  MStatus status;
  MArrayDataHandle inputs = block.outputArrayValue(MPxGeometryFilter::input, &status);
  if (!status || !inputs.jumpToElement(index)) return;
  MDataHandle input = inputs.outputValue(&status);
  if (!status) return;
  mesh = input.child(MPxGeometryFilter::inputGeom).asMesh();
}

void ReadColorRGBA(float out[4], MDataBlock& block, const MObject& color) {
  const float3& rgb = block.inputValue(color).asFloat3();
  out[0] = rgb[0];
  out[1] = rgb[1];
  out[2] = rgb[2];
  out[3] = 1.0f;
}

void BeginProgress(MComputation& computation, bool show, int count, const MString& name) {
  if (!show) return;
  computation.beginComputation(true, false, true);
  computation.setProgressRange(0, count);
  computation.setProgressStatus(MString("[MyoForge]") + name);
}

void AdvanceProgress(MComputation& computation, bool show) {
  if (show) computation.setProgress(computation.progress() + 1);
}

void EndProgress(MComputation& computation, bool show) {
  if (show) computation.endComputation();
}

bool ConfirmAttributeWarning(float value, bool check_collider, bool check_max_sliding, MPlug& plug) {
  const float v = plug.asFloat();
  const char* constant = nullptr;
  if (check_collider && v > 1e-6f)
    constant = "UiConstants.NO_COLLIDER_SLIDING_WARNING";
  else if (check_max_sliding && value > 1e-6f && v > value * 0.1f)
    constant = "UiConstants.MAX_COLLISION_SLIDING_WARNING";
  if (constant == nullptr) return true;

  const std::string script = std::string(kDialogScriptHead) + constant + kDialogScriptTail;
  MGlobal::executePythonCommand(MString(script.c_str()), false, false);
  int response = 0;
  MGlobal::executePythonCommand("warning_dialog.response", response, false, false);
  if (response == 1) return false;
  if (response == 2) plug.setValue(0.0);
  return true;
}

}  // namespace myo_maya
