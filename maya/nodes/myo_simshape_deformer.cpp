#include "maya/nodes/myo_simshape_deformer.h"

#include <maya/MColor.h>
#include <maya/MDataHandle.h>
#include <maya/MFloatArray.h>
#include <maya/MFnAttribute.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MGlobal.h>
#include <maya/MIntArray.h>
#include <maya/MPlug.h>
#include <maya/MPointArray.h>
#include <maya/MRampAttribute.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "core/log/logger.h"
#include "core/plugin/plugin_lifecycle.h"
#include "core/plugin/registration_table.h"
#include "core/shape/shape_attributes.h"
#include "core/shape/shape_frame_reader.h"
#include "maya/plugin/data_block_attributes.h"
#include "maya/plugin/debug_link.h"
#include "maya/plugin/helper_cleanup.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_map_port.h"
#include "maya/plugin/node_helpers.h"
#include "maya/plugin/sliding_distance_callback.h"

const MTypeId MyoSimshapeDeformer::id(myo_core::kMyoSimshapeId);
myo_maya::NodeAttributes MyoSimshapeDeformer::attributes_;

namespace {

// Idle OpenMP threads yield instead of spinning, so that the solvers of many
// nodes and Maya's own threads do not compete for the cores.
void SetPassiveThreadWait() {
#ifdef _WIN32
  _putenv_s("OMP_WAIT_POLICY", "PASSIVE");
#else
  setenv("OMP_WAIT_POLICY", "PASSIVE", 1);
#endif
}

}  // namespace

MyoSimshapeDeformer::MyoSimshapeDeformer() = default;

MyoSimshapeDeformer::~MyoSimshapeDeformer() {
  if (about_to_delete_callback_ != 0) MMessage::removeCallback(about_to_delete_callback_);
  if (attribute_changed_callback_ != 0) MMessage::removeCallback(attribute_changed_callback_);
}

void* MyoSimshapeDeformer::creator() { return new MyoSimshapeDeformer(); }

MStatus MyoSimshapeDeformer::initialize() {
  // The table's attributes first; what affects the output is kept aside and
  // declared after the paintable maps are scheduled.
  std::vector<std::pair<MObject, MObject>> affects;
  MStatus status = attributes_.Create(
      myo_core::ShapeAttributes(), [](const MObject& attribute) { return addAttribute(attribute); },
      [&affects](const MObject& when_changes, const MObject& is_affected) {
        affects.emplace_back(when_changes, is_affected);
        return MStatus(MS::kSuccess);
      },
      outputGeom);
  if (!status) return status;

  const std::string paintable =
      myo_core::MakePaintableScript(myo_core::kMyoSimshapeTypeName, myo_core::ShapePaintableMaps());
  MGlobal::executeCommandOnIdle(myo_maya::ToMString(paintable), false);

  for (const auto& [when_changes, is_affected] : affects) {
    status = attributeAffects(when_changes, is_affected);
    if (!status) {
      myo_core::LogError("Could not make the attribute " +
                         myo_maya::ToStdString(MFnAttribute(when_changes).name()) +
                         " affect the output geometry.");
      return status;
    }
  }
  SetPassiveThreadWait();
  return MS::kSuccess;
}

void MyoSimshapeDeformer::postConstructor() {
  setDeformationDetails(4);
  SetDefaultRampEntries();
  MObject node = thisMObject();
  about_to_delete_callback_ = myo_maya::AddHelperCleanupCallback(node);
  attribute_changed_callback_ = MNodeMessage::addAttributeChangedCallback(node, OnCollisionDistanceChanged, this);
}

void MyoSimshapeDeformer::SetDefaultRampEntries() {
  const MObject node = thisMObject();
  MStatus status;
  MRampAttribute remap(node, attributes_["activationRemap"], &status);
  if (status) {
    MFloatArray values, positions;
    MIntArray interpolations;
    values.append(0.0f);
    values.append(1.0f);
    positions.append(0.0f);
    positions.append(1.0f);
    interpolations.append(MRampAttribute::kLinear);
    interpolations.append(MRampAttribute::kLinear);
    status = remap.setRamp(values, positions, interpolations);
    if (!status) myo_core::LogDebug("Could not set the default entries of activationRemap.");
  }

  // Two colour entries addressed to "debugColor", which is a plain colour:
  // Maya refuses them and nothing depends on them, so their statuses are not
  // looked at.
  MRampAttribute debug_color(node, attributes_["debugColor"], &status);
  MColor red(1.0f, 0.0f, 0.0f, 1.0f);
  MColor blue(0.0f, 0.0f, 1.0f, 1.0f);
  debug_color.setPositionAtIndex(0.0f, 0, &status);
  debug_color.setColorAtIndex(red, 0, &status);
  debug_color.setInterpolationAtIndex(MRampAttribute::kLinear, 0, &status);
  debug_color.setPositionAtIndex(1.0f, 1, &status);
  debug_color.setColorAtIndex(blue, 1, &status);
  debug_color.setInterpolationAtIndex(MRampAttribute::kLinear, 1, &status);
}

MStatus MyoSimshapeDeformer::deform(MDataBlock& block, MItGeometry& iterator, const MMatrix& local_to_world,
                                    unsigned int multi_index) {
  // With "enable" off the input passes through and nothing else is read.
  if (!block.inputValue(attributes_["enable"]).asBool()) return MS::kSuccess;
  const bool timed = myo_core::GetLevel() == 0;
  const auto start = std::chrono::steady_clock::now();

  myo_maya::DataBlockAttributes source(thisMObject(), block, attributes_);
  myo_core::ShapeFrameValues frame;
  myo_core::ReadShapeFrameValues(source, frame);
  frame.envelope = block.inputValue(envelope).asFloat();
  frame.local_to_world = myo_maya::ToCoreMatrix(local_to_world);
  frame.geometry_index = multi_index;

  MPointArray points;
  iterator.allPositions(points, MSpace::kObject);
  const std::vector<double> input = myo_maya::ToFlatPoints(points);  // 3N
  // The core logic asks the host for each mesh when it comes to it, and for
  // the activation plugs and the colour display.
  myo_maya::MayaShapeHost host(thisMObject(), block, multi_index, attributes_, points.length(), color_buffers_);
  myo_maya::MayaMapPort maps(thisMObject(), &block, attributes_);
  std::vector<double> output;  // 3N
  const myo_core::ShapeEvaluation result = deformer_.Evaluate(frame, input, host, maps, output);
  if (result.decision.initialize) myo_maya::RegisterDebugData(thisMObject(), &deformer_.solver().debug_data_);

  myo_maya::FromFlatPoints(output, points);
  iterator.setAllPositions(points, MSpace::kObject);
  if (timed) {
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start);
    myo_core::LogDebug("Deform time (ns): " + std::to_string(ns.count()));
  }
  return MS::kSuccess;
}

// The dialog on a large "maxCollisionSlidingDistance", or on any distance for
// a running node without collider: only with a user interface, only for a
// value set on that plug.
void MyoSimshapeDeformer::OnCollisionDistanceChanged(MNodeMessage::AttributeMessage message, MPlug& plug, MPlug&,
                                                     void*) {
  auto* node = myo_maya::NodeOfSlidingDistanceSet<MyoSimshapeDeformer>(message, plug, "mcsld");
  if (node == nullptr) return;
  if (!node->warn_sliding_distance_) return;
  const bool no_collider = !node->deformer_.has_collider() && !node->deformer_.solver().positions_.empty();
  node->warn_sliding_distance_ = myo_maya::ConfirmAttributeWarning(node->deformer_.mesh_diagonal(), no_collider,
                                                                   node->warn_sliding_distance_, plug);
}
