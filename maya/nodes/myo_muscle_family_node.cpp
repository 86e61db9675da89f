#include "maya/nodes/myo_muscle_family_node.h"

#include <maya/MArrayDataHandle.h>
#include <maya/MDataHandle.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MGlobal.h>
#include <maya/MPlug.h>
#include <maya/MPointArray.h>

#include <string>

#include "core/muscle/muscle_frame_reader.h"
#include "core/debug/muscle_debug.h"
#include "core/kernels/edge_constraints_build.h"
#include "core/log/logger.h"
#include "core/paint/weight_normalization.h"
#include "core/plugin/plugin_lifecycle.h"
#include "core/plugin/registration_table.h"
#include "maya/plugin/data_block_attributes.h"
#include "maya/plugin/debug_link.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_deformer_host.h"
#include "maya/plugin/maya_map_port.h"
#include "maya/plugin/node_helpers.h"

using myo_core::InfluenceKind;
using myo_maya::NodeAttributes;

template <class Solver>
NodeAttributes MyoMuscleFamilyNode<Solver>::attributes_;


template <class Solver>
MyoMuscleFamilyNode<Solver>::MyoMuscleFamilyNode() {
  deformer_.node().consolidate_fibers_ = true;
  display_weight_ = myo_core::kWeightsAttachmentsToGeometry;
  display_weights_ = &deformer_.node().attachment_to_geo_map_;
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
const char* MyoMuscleFamilyNode<Solver>::TypeName() const {
  return kWithVolume ? myo_core::kMyoMuscleTypeName : myo_core::kMyoRibbonMuscleTypeName;
}

template <class Solver>
const std::vector<myo_core::WeightMapInfo>& MyoMuscleFamilyNode<Solver>::WeightMaps() const {
  return myo_core::MuscleWeightMaps();
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
  frame.displayed_weights = display_weight_;

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
    KeepVertexNeighbors();
    display_weights_ = LiveArray(display_weight_);
  }
  return MS::kSuccess;
}

template <class Solver>
void MyoMuscleFamilyNode<Solver>::KeepVertexNeighbors() {
  const myo_core::MuscleNodeState& node = deformer_.node();
  vertex_neighbors_.assign(node.vertex_neighbor_counts_.size(), {});
  for (size_t v = 0; v < vertex_neighbors_.size(); ++v) {
    const auto first = node.vertex_neighbors_.begin() + node.vertex_neighbor_offsets_[v];
    vertex_neighbors_[v].assign(first, first + node.vertex_neighbor_counts_[v]);
  }
}

template <class Solver>
std::vector<float>* MyoMuscleFamilyNode<Solver>::LiveArray(int32_t type) {
  myo_core::MuscleNodeState& node = deformer_.node();
  Solver& solver = deformer_.solver();
  switch (type) {
    case myo_core::kWeightsAttachmentsToTransform: return &node.attachment_map_;
    case myo_core::kWeightsTendons: return &solver.edge_constraints_->tendons_;
    case myo_core::kWeightsFibers: return &solver.edge_constraints_->fibers_;
    case myo_core::kWeightsCompressionResistance: return &node.compression_map_;
    case myo_core::kWeightsStretchingResistance: return &node.stretching_map_;
    case myo_core::kWeightsGlobalDamping: return &solver.damping_weights_;
    case myo_core::kWeightsSlidingDistanceMultiplier: return &node.max_sliding_map_;
    case myo_core::kWeightsMasses: return &node.masses_map_;
    case myo_core::kWeightsSlideOnSegment: return &node.slide_on_segment_map_;
    case myo_core::kWeightsAttachmentsToGeometry: return &node.attachment_to_geo_map_;
    case myo_core::kWeightsSlideOnGeometry: return &node.slide_on_geometry_map_;
    case myo_core::kWeightsShapePreservation: return &node.shape_map_;
    default: return nullptr;
  }
}

template <class Solver>
uint32_t MyoMuscleFamilyNode<Solver>::SolverInfluences(InfluenceKind kind) {
  Solver& solver = deformer_.solver();
  switch (kind) {
    case InfluenceKind::kAttachments:
      return static_cast<uint32_t>(solver.attachment_constraints_->matrices_.size());
    case InfluenceKind::kSegments:
      return static_cast<uint32_t>(solver.slide_on_segment_constraints_->matrices_.size() / 2);
    case InfluenceKind::kTargets: return static_cast<uint32_t>(solver.targets_.size());
    case InfluenceKind::kNone: break;
  }
  return 0;
}

template <class Solver>
void MyoMuscleFamilyNode<Solver>::ProjectVertexFiber(uint32_t vertex, float direction[3]) {
  Solver& solver = deformer_.solver();
  if (vertex >= solver.point_count_) return;
  myo_core::ProjectVertexFiber(vertex, direction, deformer_.node(), solver, *solver.edge_constraints_);
}

template <class Solver>
void MyoMuscleFamilyNode<Solver>::UpdateVertexFiber(uint32_t vertex) {
  myo_core::UpdateMuscleVertexFiber(deformer_.solver(), vertex);
}

template <class Solver>
void MyoMuscleFamilyNode<Solver>::ConsolidateWeights() {
  switch (display_weight_) {
    case myo_core::kWeightsAttachmentsToTransform:
    case myo_core::kWeightsSlideOnSegment:
    case myo_core::kWeightsAttachmentsToGeometry:
    case myo_core::kWeightsSlideOnGeometry: {
      std::vector<float>* array = LiveArray(display_weight_);
      myo_core::NormalizeInfluences(*array, GetNumPoints(), GetCurrentInfluence());
      return;
    }
    default:
      if (myo_core::FindWeightMap(WeightMaps(), display_weight_) == nullptr)
        myo_core::ReportDebug(std::string("No implemented display_weight_ type provided in ") + TypeName() +
                                  "::ConsolidateWeights",
                              "");
  }
}

template <class Solver>
void MyoMuscleFamilyNode<Solver>::ConsolidateFibers(bool flag) {
  deformer_.node().consolidate_fibers_ = flag;
}

template <class Solver>
MStringArray MyoMuscleFamilyNode<Solver>::GetInfluencesNames() {
  MStringArray names;
  const myo_core::WeightMapInfo* map = myo_core::FindWeightMap(WeightMaps(), display_weight_);
  if (map == nullptr || !map->MultiInfluence()) return names;
  const MIntArray indices = ConnectedInfluences(map->influence);
  MPlug list(thisMObject(), attributes_[map->list]);
  for (unsigned k = 0; k < indices.length(); ++k) {
    MPlug element = list.elementByLogicalIndex(static_cast<unsigned>(indices[k]));
    for (const std::string& child : myo_core::InfluenceNameChildren(map->influence))
      names.append(myo_maya::ChildPlug(element, attributes_[child]).name());
  }
  return names;
}

template <class Solver>
MIntArray MyoMuscleFamilyNode<Solver>::GetInfluencesIndices() {
  const myo_core::WeightMapInfo* map = myo_core::FindWeightMap(WeightMaps(), display_weight_);
  if (map == nullptr || !map->MultiInfluence()) return MIntArray();
  return ConnectedInfluences(map->influence);
}

template <class Solver>
uint32_t MyoMuscleFamilyNode<Solver>::GetNumPoints() {
  return deformer_.solver().point_count_;
}

template <class Solver>
bool MyoMuscleFamilyNode<Solver>::IsSolverEmpty() {
  return deformer_.solver().positions_.empty();
}

// The dialog on a large "maxSlidingDistance": only with a user interface,
// only for a value set on that plug.
template <class Solver>
void MyoMuscleFamilyNode<Solver>::OnAttributeChanged(MNodeMessage::AttributeMessage message, MPlug& plug, MPlug&,
                                                     void*) {
  if ((message & MNodeMessage::kAttributeSet) == 0) return;
  MStatus status;
  const MGlobal::MMayaState state = MGlobal::mayaState(&status);
  if (!status || !myo_core::HasUserInterface(static_cast<int32_t>(state))) return;
  if (plug.partialName() != "msld") return;
  MFnDependencyNode fn(plug.node());
  auto* node = dynamic_cast<MyoMuscleFamilyNode<Solver>*>(fn.userNode());
  if (node == nullptr) {
    myo_core::ReportWarning(
        "Wrong node obtained when attempting to get max sliding distance information from callback.", "");
    return;
  }
  node->warn_sliding_distance_ = myo_maya::ConfirmAttributeWarning(
      node->deformer_.node().largest_target_size_, false, node->warn_sliding_distance_, plug);
}

template class MyoMuscleFamilyNode<myo_core::MuscleSolver>;
template class MyoMuscleFamilyNode<myo_core::RibbonMuscleSolver>;
