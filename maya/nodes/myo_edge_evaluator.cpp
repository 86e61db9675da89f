#include "maya/nodes/myo_edge_evaluator.h"

#include <maya/MAnimControl.h>
#include <maya/MArrayDataBuilder.h>
#include <maya/MArrayDataHandle.h>
#include <maya/MDataHandle.h>
#include <maya/MFloatArray.h>
#include <maya/MFnAttribute.h>
#include <maya/MIntArray.h>
#include <maya/MRampAttribute.h>
#include <maya/MTime.h>

#include <string>
#include <utility>
#include <vector>

#include "core/evaluator/edge_evaluator_attributes.h"
#include "core/log/logger.h"
#include "core/plugin/registration_table.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_mesh_data.h"
#include "maya/plugin/node_helpers.h"

const MTypeId MyoEdgeEvaluator::id(myo_core::kMyoEdgeEvaluatorId);
myo_maya::NodeAttributes MyoEdgeEvaluator::attributes_;

namespace {

// "restMesh" and "deformMesh" from the data block.
class MayaEdgeInputs : public myo_core::EdgeEvaluatorInputs {
 public:
  MayaEdgeInputs(MDataBlock& block, const MObject& rest, const MObject& deform)
      : block_(block), rest_(rest), deform_(deform) {}

  myo_core::MeshInput ReadDeformMesh(myo_core::MeshRead read, myo_core::MeshData& mesh) override {
    return Read(deform_, read, mesh);
  }
  myo_core::MeshInput ReadRestMesh(myo_core::MeshRead read, myo_core::MeshData& mesh) override {
    return Read(rest_, read, mesh);
  }

 private:
  myo_core::MeshInput Read(const MObject& attribute, myo_core::MeshRead read, myo_core::MeshData& mesh) {
    MStatus status;
    MDataHandle handle = block_.inputValue(attribute, &status);
    if (!status) return myo_core::MeshInput::kMissing;
    const MObject object = handle.asMesh();
    if (object.isNull()) return myo_core::MeshInput::kMissing;
    std::string error;
    const bool ok = read == myo_core::MeshRead::kPoints ? myo_maya::ReadMayaMeshPoints(object, mesh)
                                                        : myo_maya::ReadMayaMesh(object, false, mesh, error);
    return ok ? myo_core::MeshInput::kRead : myo_core::MeshInput::kUnreadable;
  }

  MDataBlock& block_;
  const MObject& rest_;
  const MObject& deform_;
};

}  // namespace

void* MyoEdgeEvaluator::creator() { return new MyoEdgeEvaluator(); }

MStatus MyoEdgeEvaluator::initialize() {
  return attributes_.Create(
      myo_core::EdgeEvaluatorAttributes(), [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject& when_changes, const MObject& is_affected) {
        return attributeAffects(when_changes, is_affected);
      },
      "compression");
}

void MyoEdgeEvaluator::postConstructor() {
  MStatus status;
  MRampAttribute remap(thisMObject(), attributes_["compressionRemap"], &status);
  if (!status) return;
  const myo_core::RampEntries entries = myo_core::DefaultCompressionRemap();
  MFloatArray positions, values;
  MIntArray interpolations;
  for (size_t k = 0; k < entries.positions.size(); ++k) {
    positions.append(entries.positions[k]);
    values.append(entries.values[k]);
    interpolations.append(MRampAttribute::kLinear);
  }
  status = remap.setRamp(values, positions, interpolations);
  if (!status) myo_core::LogDebug("Could not set the default entries of compressionRemap.");
}

MStatus MyoEdgeEvaluator::compute(const MPlug& plug, MDataBlock& block) {
  const MObject& compression = attributes_["compression"];
  if (plug.attribute() != compression) return MS::kUnknownParameter;

  myo_core::EdgeEvaluatorFrame frame;
  frame.initialization_time =
      static_cast<float>(block.inputValue(attributes_["initializationTime"]).asTime().as(MTime::kSeconds));
  frame.current_time = static_cast<float>(MAnimControl::currentTime().as(MTime::kSeconds));
  MayaEdgeInputs inputs(block, attributes_["restMesh"], attributes_["deformMesh"]);
  if (!myo_maya::ReadRamp(thisMObject(), attributes_["compressionRemap"], frame.compression_remap))
    frame.compression_remap = myo_core::RampEntries();

  const myo_core::EdgeEvaluation result = evaluator_.Evaluate(frame, inputs);
  if (result == myo_core::EdgeEvaluation::kEvaluated) {
    MStatus status;
    MArrayDataHandle output = block.outputArrayValue(compression, &status);
    const std::vector<float>& values = evaluator_.compression();
    MArrayDataBuilder builder(&block, compression, static_cast<unsigned>(values.size()), &status);
    for (unsigned i = 0; status && i < values.size(); ++i) {
      MDataHandle element = builder.addElement(i, &status);
      if (status) element.setFloat(values[i]);
    }
    if (status) output.set(builder);
    output.setAllClean();
  }
  block.setClean(plug);
  return result == myo_core::EdgeEvaluation::kFailed ? MStatus(MS::kFailure) : MStatus(MS::kSuccess);
}
