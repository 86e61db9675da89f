#include "maya/nodes/myo_skin_deformer.h"

#include <maya/MDataHandle.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MGlobal.h>
#include <maya/MPlug.h>
#include <maya/MPointArray.h>

#include <string>

#include "core/skin/skin_frame_reader.h"
#include "core/log/logger.h"
#include "core/plugin/plugin_lifecycle.h"
#include "core/plugin/registration_table.h"
#include "core/skin/skin_attributes.h"
#include "core/skin/skin_paintable_solver.h"
#include "maya/plugin/data_block_attributes.h"
#include "maya/plugin/debug_link.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_deformer_host.h"
#include "maya/plugin/maya_map_port.h"
#include "maya/plugin/node_helpers.h"
#include "maya/plugin/sliding_distance_callback.h"

const MTypeId MyoSkinDeformer::id(myo_core::kMyoSkinId);
myo_maya::NodeAttributes MyoSkinDeformer::attributes_;

MyoSkinDeformer::MyoSkinDeformer() {
  AttachPaintSolver(std::make_unique<myo_core::SkinPaintableSolver>(deformer_), myo_core::kWeightsHardConstraints);
}

MyoSkinDeformer::~MyoSkinDeformer() {
  if (attribute_changed_callback_ != 0) MMessage::removeCallback(attribute_changed_callback_);
}

void* MyoSkinDeformer::creator() { return new MyoSkinDeformer(); }

MStatus MyoSkinDeformer::initialize() {
  return attributes_.Create(
      myo_core::SkinAttributes(), [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject& when_changes, const MObject& is_affected) {
        return attributeAffects(when_changes, is_affected);
      },
      outputGeom);
}

void MyoSkinDeformer::postConstructor() {
  setDeformationDetails(4);
  RegisterHelperCleanup();
  MObject node = thisMObject();
  attribute_changed_callback_ = MNodeMessage::addAttributeChangedCallback(node, OnSlidingDistanceChanged, this);
}

MStatus MyoSkinDeformer::deform(MDataBlock& block, MItGeometry& iterator, const MMatrix& local_to_world,
                                unsigned int multi_index) {
  // With "enable" off the input passes through, no time passes for the node
  // and nothing else is read.
  if (!block.inputValue(attributes_["enable"]).asBool()) return MS::kSuccess;

  myo_maya::DataBlockAttributes source(thisMObject(), block, attributes_);
  myo_core::SkinFrameValues frame;
  myo_core::ReadSkinFrameValues(source, frame);
  frame.envelope = block.inputValue(envelope).asFloat();
  frame.local_to_world = myo_maya::ToCoreMatrix(local_to_world);
  frame.geometry_index = multi_index;

  // The core logic decides the frame and asks the host for the reference
  // mesh, whole only when it rebuilds; a missing one is its error to report.
  myo_maya::MayaDeformerHost host(thisMObject(), block, multi_index, attributes_);
  MPointArray points;
  iterator.allPositions(points, MSpace::kObject);
  const std::vector<double> input = myo_maya::ToFlatPoints(points);  // 3N
  myo_maya::MayaMapPort maps(thisMObject(), &block, attributes_);
  std::vector<double> output;  // 3N
  const myo_core::SkinEvaluation result = deformer_.Evaluate(frame, input, host, maps, output);
  if (!result.succeeded) return MS::kInvalidParameter;

  myo_maya::FromFlatPoints(output, points);
  iterator.setAllPositions(points, MSpace::kObject);
  if (result.decision.initialize) {
    myo_maya::RegisterDebugData(thisMObject(), &deformer_.solver().debug_data_);
    Paint().RefreshDisplayWeights();
  }
  return MS::kSuccess;
}

// The dialog on a large "maxSlidingDistance": only with a user interface,
// only for a value set on that plug.
void MyoSkinDeformer::OnSlidingDistanceChanged(MNodeMessage::AttributeMessage message, MPlug& plug, MPlug&,
                                               void*) {
  auto* node = myo_maya::NodeOfSlidingDistanceSet<MyoSkinDeformer>(message, plug, "msld");
  if (node == nullptr) return;
  node->warn_sliding_distance_ =
      myo_maya::ConfirmAttributeWarning(node->deformer_.mesh_diagonal(), false, node->warn_sliding_distance_, plug);
}
