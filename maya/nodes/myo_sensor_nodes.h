#pragma once
// The three sensor nodes: "MyoSensorDistance", "MyoSensorPosition" and
// "MyoSensorRotation". Each reads its time, scales and positions, lets the
// core evaluate one step and writes the outputs. Only a request for the
// primary output evaluates; the other outputs are written along with it.
// Deleting a sensor deletes the "remapValue" nodes that only it feeds.

#include <maya/MDataBlock.h>
#include <maya/MMessage.h>
#include <maya/MPlug.h>
#include <maya/MPxNode.h>
#include <maya/MTypeId.h>

#include <string>
#include <vector>

#include "core/sensors/sensor_attributes.h"
#include "core/sensors/sensor_evaluation.h"
#include "maya/plugin/node_attributes.h"

// What the three sensors share: attribute creation from the core's tables,
// the reading of the clock and the writing of outputs, and the clean-up
// callback.
class MyoSensorNode : public MPxNode {
 public:
  ~MyoSensorNode() override;
  void postConstructor() override;

 protected:
  // Creates the table's attributes and declares which input affects which
  // output.
  static MStatus CreateAttributes(myo_maya::NodeAttributes& attributes, myo_core::SensorKind kind);
  static myo_core::SensorClock ReadClock(MDataBlock& block, const myo_maya::NodeAttributes& attributes);
  // Writes the outputs the evaluation wrote and logs the reset at the start
  // time. The value goes to `value_name` when it is not empty.
  void WriteOutputs(MDataBlock& block, const myo_maya::NodeAttributes& attributes, const myo_core::SensorOutputs& out,
                    const std::string& value_name);
  static bool Requests(const MPlug& plug, const myo_maya::NodeAttributes& attributes, myo_core::SensorKind kind);

 private:
  // The node types the clean-up callback deletes with the sensor.
  static const std::vector<std::string> cleanup_types_;
  MCallbackId about_to_delete_callback_ = 0;
};

class MyoSensorDistance : public MyoSensorNode {
 public:
  static void* creator();
  static MStatus initialize();
  static const MTypeId id;
  MStatus compute(const MPlug& plug, MDataBlock& block) override;

 private:
  static myo_maya::NodeAttributes attributes_;
  myo_core::ScalarSensorState state_;
};

class MyoSensorPosition : public MyoSensorNode {
 public:
  static void* creator();
  static MStatus initialize();
  static const MTypeId id;
  MStatus compute(const MPlug& plug, MDataBlock& block) override;

 private:
  static myo_maya::NodeAttributes attributes_;
  myo_core::PositionSensorState state_;
};

class MyoSensorRotation : public MyoSensorNode {
 public:
  static void* creator();
  static MStatus initialize();
  static const MTypeId id;
  MStatus compute(const MPlug& plug, MDataBlock& block) override;

 private:
  static myo_maya::NodeAttributes attributes_;
  myo_core::ScalarSensorState state_;
};
