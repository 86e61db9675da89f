#include "maya/nodes/myo_weights_display_node.h"

#include <maya/MColor.h>
#include <maya/MDataHandle.h>
#include <maya/MFnMesh.h>

#include "core/debug/helper_node_attributes.h"
#include "core/log/logger.h"
#include "core/paint/weights_display_colors.h"
#include "core/plugin/registration_table.h"

const MTypeId MyoWeightsDisplayNode::id(myo_core::kMyoWeightsDisplayNodeId);
myo_maya::NodeAttributes MyoWeightsDisplayNode::attributes_;

void* MyoWeightsDisplayNode::creator() { return new MyoWeightsDisplayNode(); }

MStatus MyoWeightsDisplayNode::initialize() {
  // "outMesh" is made with the others, so the affects come after the table.
  MStatus status = attributes_.Create(
      myo_core::WeightsDisplayNodeAttributes(), [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject&, const MObject&) { return MStatus(MS::kSuccess); }, MObject::kNullObj);
  if (!status) return status;
  for (const char* input : {"inMesh", "trigger", "currentInfluence"}) {
    status = attributeAffects(attributes_[input], attributes_["outMesh"]);
    if (!status) {
      myo_core::LogError(std::string("Could not make the attribute ") + input + " affect outMesh.");
      return status;
    }
  }
  return MS::kSuccess;
}

MStatus MyoWeightsDisplayNode::compute(const MPlug& plug, MDataBlock& block) {
  if (plug != attributes_["outMesh"]) return MS::kUnknownParameter;
  MStatus status;
  MDataHandle input = block.inputValue(attributes_["inMesh"], &status);
  if (!status) return status;
  MDataHandle output = block.outputValue(attributes_["outMesh"], &status);
  if (!status) return status;
  output.copy(input);
  MObject mesh = output.asMesh();
  MFnMesh fn(mesh, &status);
  const int vertices = status ? fn.numVertices() : 0;
  const uint32_t vertex_count = vertices > 0 ? static_cast<uint32_t>(vertices) : 0;
  if (vertex_count != vertex_count_) {
    vertex_count_ = vertex_count;
    colors_.setLength(vertex_count);
    vertex_ids_.setLength(vertex_count);
    for (uint32_t v = 0; v < vertex_count; ++v) vertex_ids_[v] = static_cast<int>(v);
  }
  weight_count_ = weights_.size();
  const int32_t influence = block.inputValue(attributes_["currentInfluence"]).asInt();
  const myo_core::WeightsDisplayOutcome outcome =
      myo_core::WeightsDisplayColors(weights_, vertex_count_, influence, show_fibers_, rgba_);
  if (myo_core::IsDisplayError(outcome)) {
    myo_core::ReportError(myo_core::WeightsDisplayMessage(outcome), "");
    block.setClean(plug);
    return MS::kFailure;
  }
  if (myo_core::SetsColors(outcome)) {
    for (uint32_t v = 0; v < vertex_count_; ++v)
      colors_[v] = MColor(rgba_[4 * v], rgba_[4 * v + 1], rgba_[4 * v + 2], rgba_[4 * v + 3]);
    fn.setVertexColors(colors_, vertex_ids_);
  }
  block.setClean(plug);
  return MS::kSuccess;
}
