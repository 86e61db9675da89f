#include "maya/nodes/myo_sensor_nodes.h"

#include <maya/MDataHandle.h>
#include <maya/MFloatVector.h>
#include <maya/MFnAttribute.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MNodeMessage.h>
#include <maya/MTime.h>

#include "core/log/logger.h"
#include "core/plugin/registration_table.h"
#include "maya/plugin/helper_cleanup.h"
#include "maya/plugin/maya_conversions.h"

using myo_core::SensorKind;
using myo_core::SensorOutputs;
using myo_maya::NodeAttributes;

const std::vector<std::string> MyoSensorNode::cleanup_types_ = {myo_core::kRemapValueTypeName};

const MTypeId MyoSensorDistance::id(myo_core::kMyoSensorDistanceId);
const MTypeId MyoSensorPosition::id(myo_core::kMyoSensorPositionId);
const MTypeId MyoSensorRotation::id(myo_core::kMyoSensorRotationId);
NodeAttributes MyoSensorDistance::attributes_;
NodeAttributes MyoSensorPosition::attributes_;
NodeAttributes MyoSensorRotation::attributes_;

namespace {

myo_core::Vec3 ReadVector(MDataBlock& block, const MObject& attribute) {
  const MFloatVector v = block.inputValue(attribute).asFloatVector();
  return {v.x, v.y, v.z};
}

float ReadFloat(MDataBlock& block, const MObject& attribute) { return block.inputValue(attribute).asFloat(); }

void WriteFloat(MDataBlock& block, const MObject& attribute, float value) {
  MDataHandle handle = block.outputValue(attribute);
  handle.setFloat(value);
  handle.setClean();
}

}  // namespace

MyoSensorNode::~MyoSensorNode() {
  if (about_to_delete_callback_ != 0) MMessage::removeCallback(about_to_delete_callback_);
}

void MyoSensorNode::postConstructor() {
  MObject node = thisMObject();
  // The callback only reads the list; Maya's signature wants it mutable.
  auto* types = const_cast<std::vector<std::string>*>(&cleanup_types_);
  MStatus status;
  about_to_delete_callback_ =
      MNodeMessage::addNodeAboutToDeleteCallback(node, myo_maya::OnNodeAboutToDelete, types, &status);
  if (!status) about_to_delete_callback_ = 0;
}

MStatus MyoSensorNode::CreateAttributes(NodeAttributes& attributes, SensorKind kind) {
  MStatus status = attributes.Create(
      myo_core::SensorAttributes(kind), [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject&, const MObject&) { return MStatus(MS::kSuccess); }, MObject::kNullObj);
  if (!status) return status;
  for (const auto& [input, output] : myo_core::SensorAffects(kind)) {
    status = attributeAffects(attributes[input], attributes[output]);
    if (!status) {
      myo_core::LogError("Could not make the attribute " + input + " affect " + output + ".");
      return status;
    }
  }
  return MS::kSuccess;
}

myo_core::SensorClock MyoSensorNode::ReadClock(MDataBlock& block, const NodeAttributes& attributes) {
  myo_core::SensorClock clock;
  clock.start_time = static_cast<float>(block.inputValue(attributes["startTime"]).asTime().asUnits(MTime::kSeconds));
  clock.current_time =
      static_cast<float>(block.inputValue(attributes["currentTime"]).asTime().asUnits(MTime::kSeconds));
  clock.time_scale = ReadFloat(block, attributes["timeScale"]);
  return clock;
}

void MyoSensorNode::WriteOutputs(MDataBlock& block, const NodeAttributes& attributes, const SensorOutputs& out,
                                 const std::string& value_name) {
  if (out.was_reset)
    myo_core::LogDebug("Initializing " + myo_maya::ToStdString(MFnDependencyNode(thisMObject()).name()) +
                       " data...");
  if (out.value_written && !value_name.empty()) WriteFloat(block, attributes[value_name], out.value);
  if (out.rates_written) {
    WriteFloat(block, attributes["outVelocity"], out.velocity);
    WriteFloat(block, attributes["outAcceleration"], out.acceleration);
  }
}

bool MyoSensorNode::Requests(const MPlug& plug, const NodeAttributes& attributes, SensorKind kind) {
  return plug.attribute() == attributes[myo_core::SensorPrimaryOutput(kind)];
}

void* MyoSensorDistance::creator() { return new MyoSensorDistance(); }
MStatus MyoSensorDistance::initialize() { return CreateAttributes(attributes_, SensorKind::kDistance); }

MStatus MyoSensorDistance::compute(const MPlug& plug, MDataBlock& block) {
  if (Requests(plug, attributes_, SensorKind::kDistance)) {
    const SensorOutputs out =
        EvaluateDistanceSensor(state_, ReadClock(block, attributes_), ReadFloat(block, attributes_["spaceScale"]),
                               ReadVector(block, attributes_["startPosition"]),
                               ReadVector(block, attributes_["endPosition"]));
    WriteOutputs(block, attributes_, out, "outDistance");
  }
  block.setClean(plug);
  return MS::kSuccess;
}

void* MyoSensorPosition::creator() { return new MyoSensorPosition(); }
MStatus MyoSensorPosition::initialize() { return CreateAttributes(attributes_, SensorKind::kPosition); }

MStatus MyoSensorPosition::compute(const MPlug& plug, MDataBlock& block) {
  if (Requests(plug, attributes_, SensorKind::kPosition)) {
    const SensorOutputs out =
        EvaluatePositionSensor(state_, ReadClock(block, attributes_), ReadFloat(block, attributes_["spaceScale"]),
                               ReadVector(block, attributes_["position"]));
    WriteOutputs(block, attributes_, out, "");
  }
  block.setClean(plug);
  return MS::kSuccess;
}

void* MyoSensorRotation::creator() { return new MyoSensorRotation(); }
MStatus MyoSensorRotation::initialize() { return CreateAttributes(attributes_, SensorKind::kRotation); }

MStatus MyoSensorRotation::compute(const MPlug& plug, MDataBlock& block) {
  if (Requests(plug, attributes_, SensorKind::kRotation)) {
    const SensorOutputs out = EvaluateRotationSensor(
        state_, ReadClock(block, attributes_), ReadVector(block, attributes_["startPosition"]),
        ReadVector(block, attributes_["midPosition"]), ReadVector(block, attributes_["endPosition"]));
    WriteOutputs(block, attributes_, out, "outAngle");
  }
  block.setClean(plug);
  return MS::kSuccess;
}
