#include "maya/nodes/myo_muscle_family_node.h"

#include <maya/MArrayDataHandle.h>
#include <maya/MDataHandle.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MGlobal.h>
#include <maya/MPlug.h>
#include <maya/MPointArray.h>

#include <string>

#include "core/muscle/muscle_frame_reader.h"
#include "core/muscle/muscle_paintable_solver.h"
#include "core/log/logger.h"
#include "core/plugin/plugin_lifecycle.h"
#include "core/plugin/registration_table.h"
#include "maya/plugin/data_block_attributes.h"
#include "maya/plugin/debug_link.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_deformer_host.h"
#include "maya/plugin/maya_map_port.h"
#include "maya/plugin/node_helpers.h"
#include "maya/plugin/sliding_distance_callback.h"

using myo_maya::NodeAttributes;

template <class Solver>
NodeAttributes MyoMuscleFamilyNode<Solver>::attributes_;


template <class Solver>
MyoMuscleFamilyNode<Solver>::MyoMuscleFamilyNode() {
  deformer_.node().consolidate_fibers_ = true;
  AttachPaintSolver(std::make_unique<myo_core::MusclePaintableSolver<Solver>>(deformer_),
                    myo_core::kWeightsAttachmentsToGeometry);
}

template <class Solver>
MyoMuscleFamilyNode<Solver>::~MyoMuscleFamilyNode() {
  if (attribute_changed_callback_ != 0) MMessage::removeCallback(attribute_changed_callback_);
}

template <class Solver>
void MyoMuscleFamilyNode<Solver>::postConstructor() {
  setDeformationDetails(4);
  RegisterHelperCleanup();
  MObject node = thisMObject();
  attribute_changed_callback_ = MNodeMessage::addAttributeChangedCallback(node, OnAttributeChanged, this);
}

template <class Solver>
MStatus MyoMuscleFamilyNode<Solver>::InitializeAttributes(const myo_core::AttributeTable& table) {
  return attributes_.Create(
      table, [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject& when_changes, const MObject& is_affected) {
        return attributeAffects(when_changes, is_affected);
      },
      outputGeom);
}

template <class Solver>
MStatus MyoMuscleFamilyNode<Solver>::deform(MDataBlock& block, MItGeometry& iterator, const MMatrix& local_to_world,
                                            unsigned int multi_index) {
  // With "enable" off the input passes through, no time passes for the node
  // and nothing else is read.
  if (!block.inputValue(attributes_["enable"]).asBool()) return MS::kSuccess;

  myo_maya::DataBlockAttributes source(thisMObject(), block, attributes_);
  myo_core::MuscleFrameValues frame;
  myo_core::ReadMuscleFrameValues(source, kWithVolume, frame);
  frame.envelope = block.inputValue(envelope).asFloat();
  frame.local_to_world = myo_maya::ToCoreMatrix(local_to_world);
  frame.geometry_index = multi_index;
  frame.displayed_weights = Paint().DisplayWeight();

  // The core logic decides the frame and asks the host for connections and
  // meshes as it comes to them.
  myo_maya::MayaDeformerHost host(thisMObject(), block, multi_index, attributes_);
  MPointArray points;
  iterator.allPositions(points, MSpace::kObject);
  const std::vector<double> input = myo_maya::ToFlatPoints(points);  // 3N
  myo_maya::MayaMapPort maps(thisMObject(), &block, attributes_);
  std::vector<double> output;  // 3N
  const myo_core::MuscleEvaluation result = deformer_.Evaluate(frame, input, host, maps, output);

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
template <class Solver>
void MyoMuscleFamilyNode<Solver>::OnAttributeChanged(MNodeMessage::AttributeMessage message, MPlug& plug, MPlug&,
                                                     void*) {
  auto* node = myo_maya::NodeOfSlidingDistanceSet<MyoMuscleFamilyNode<Solver>>(message, plug, "msld");
  if (node == nullptr) return;
  node->warn_sliding_distance_ = myo_maya::ConfirmAttributeWarning(
      node->deformer_.node().largest_target_size_, false, node->warn_sliding_distance_, plug);
}

template class MyoMuscleFamilyNode<myo_core::MuscleSolver>;
template class MyoMuscleFamilyNode<myo_core::RibbonMuscleSolver>;
