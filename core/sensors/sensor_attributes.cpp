#include "core/sensors/sensor_attributes.h"

#include "core/attributes/attribute_builders.h"
#include "core/plugin/registration_table.h"

namespace myo_core {

namespace {

using namespace attribute_builders;
using T = AttributeType;
constexpr uint32_t kOutput = kNotWritable;

void AppendClock(AttributeTable& t, bool with_space_scale) {
  t.push_back(Scalar("startTime", "st", T::kTime, 0, 0));
  t.push_back(Scalar("currentTime", "t", T::kTime, 0, 0));
  t.push_back(Scalar("timeScale", "ts", T::kFloat, 1, kKeyable, 0.001, {}, {}, 10.0));
  if (with_space_scale) t.push_back(Scalar("spaceScale", "ss", T::kFloat, 1, kKeyable, 0.001, {}, {}, 100.0));
}

void AppendPosition(AttributeTable& t, const std::string& name, const std::string& short_name) {
  AppendFloat3(t, name, short_name, {"X", "Y", "Z"}, {0.0, 0.0, 0.0});
}

void AppendOutput(AttributeTable& t, const char* long_name, const char* short_name) {
  t.push_back(Scalar(long_name, short_name, T::kFloat, 0, kOutput));
}

AttributeTable BuildDistance() {
  AttributeTable t;
  AppendClock(t, true);
  AppendPosition(t, "startPosition", "spos");
  AppendPosition(t, "endPosition", "epos");
  AppendOutput(t, "outDistance", "odst");
  AppendOutput(t, "outVelocity", "ovel");
  AppendOutput(t, "outAcceleration", "oacc");
  return t;
}

AttributeTable BuildPosition() {
  AttributeTable t;
  AppendClock(t, true);
  AppendPosition(t, "position", "pos");
  AppendOutput(t, "outVelocity", "ovel");
  AppendOutput(t, "outAcceleration", "oacc");
  return t;
}

AttributeTable BuildRotation() {
  AttributeTable t;
  AppendClock(t, false);  // an angle has no space unit
  AppendPosition(t, "startPosition", "spos");
  AppendPosition(t, "midPosition", "mpos");
  AppendPosition(t, "endPosition", "epos");
  AppendOutput(t, "outAngle", "oang");
  AppendOutput(t, "outVelocity", "ovel");
  AppendOutput(t, "outAcceleration", "oacc");
  return t;
}

}  // namespace

const AttributeTable& SensorDistanceAttributes() {
  static const AttributeTable table = BuildDistance();
  return table;
}

const AttributeTable& SensorPositionAttributes() {
  static const AttributeTable table = BuildPosition();
  return table;
}

const AttributeTable& SensorRotationAttributes() {
  static const AttributeTable table = BuildRotation();
  return table;
}

const AttributeTable& SensorAttributes(SensorKind kind) {
  switch (kind) {
    case SensorKind::kDistance: return SensorDistanceAttributes();
    case SensorKind::kPosition: return SensorPositionAttributes();
    case SensorKind::kRotation: break;
  }
  return SensorRotationAttributes();
}

const std::vector<std::pair<std::string, std::string>>& SensorAffects(SensorKind kind) {
  // The time drives every output; a position only the primary one, whose
  // evaluation writes the rest.
  static const std::vector<std::pair<std::string, std::string>> distance = {
      {"currentTime", "outDistance"},   {"currentTime", "outVelocity"}, {"currentTime", "outAcceleration"},
      {"startPosition", "outDistance"}, {"endPosition", "outDistance"},
  };
  static const std::vector<std::pair<std::string, std::string>> position = {
      {"currentTime", "outVelocity"}, {"currentTime", "outAcceleration"}, {"position", "outVelocity"}};
  static const std::vector<std::pair<std::string, std::string>> rotation = {
      {"currentTime", "outAngle"},   {"currentTime", "outVelocity"}, {"currentTime", "outAcceleration"},
      {"startPosition", "outAngle"}, {"midPosition", "outAngle"},    {"endPosition", "outAngle"},
  };
  switch (kind) {
    case SensorKind::kDistance: return distance;
    case SensorKind::kPosition: return position;
    case SensorKind::kRotation: break;
  }
  return rotation;
}

const std::string& SensorPrimaryOutput(SensorKind kind) {
  static const std::string distance = "outDistance", velocity = "outVelocity", angle = "outAngle";
  switch (kind) {
    case SensorKind::kDistance: return distance;
    case SensorKind::kPosition: return velocity;
    case SensorKind::kRotation: break;
  }
  return angle;
}

const char* SensorTypeName(SensorKind kind) {
  switch (kind) {
    case SensorKind::kDistance: return kMyoSensorDistanceTypeName;
    case SensorKind::kPosition: return kMyoSensorPositionTypeName;
    case SensorKind::kRotation: break;
  }
  return kMyoSensorRotationTypeName;
}

}  // namespace myo_core
