#pragma once
// One evaluation of each of the three sensors: the distance between two
// positions, the speed of one position, the angle at a middle position
// between two others. Velocity and acceleration come from differences with
// the previous evaluation, kept in a small state per node. Times are seconds
// as 32-bit floats; all arithmetic is 32-bit.

#include "core/math/vec3.h"

namespace myo_core {

// What a distance or rotation sensor remembers between evaluations.
struct ScalarSensorState {
  float previous_time_ = 0.0f;
  float previous_value_ = 0.0f;  // the last distance or angle
  float previous_velocity_ = 0.0f;
};

// What a position sensor remembers between evaluations.
struct PositionSensorState {
  float previous_time_ = 0.0f;
  Vec3 previous_position_{0.0f, 0.0f, 0.0f};
  float previous_velocity_ = 0.0f;
};

// The times and scales of one evaluation.
struct SensorClock {
  float start_time = 0.0f;    // seconds
  float current_time = 0.0f;  // seconds
  float time_scale = 1.0f;    // stretches the time between two evaluations
};

// What one evaluation produced. An output that was not written keeps, on the
// node, the value it had: a host applies only the written ones.
struct SensorOutputs {
  float value = 0.0f;  // distance or angle; the position sensor has none
  float velocity = 0.0f;
  float acceleration = 0.0f;
  bool value_written = false;
  bool rates_written = false;  // velocity and acceleration, always together
  bool was_reset = false;      // the evaluation was at the start time exactly
};

// The outputs as a node holds them from one evaluation to the next.
struct SensorOutputValues {
  float value = 0.0f;
  float velocity = 0.0f;
  float acceleration = 0.0f;
};

// Copies the written outputs of one evaluation into `held`.
void ApplySensorOutputs(const SensorOutputs& outputs, SensorOutputValues& held);

// The distance from `start` to `end` divided by `space_scale`; its velocity
// is signed, positive while the positions part.
SensorOutputs EvaluateDistanceSensor(ScalarSensorState& state, const SensorClock& clock, float space_scale,
                                     Vec3 start, Vec3 end);

// The speed of `position` divided by `space_scale`, never negative, and the
// change of that speed.
SensorOutputs EvaluatePositionSensor(PositionSensorState& state, const SensorClock& clock, float space_scale,
                                     Vec3 position);

// The angle in radians between the legs from `mid` to `start` and from `mid`
// to `end`, from 0 to pi.
SensorOutputs EvaluateRotationSensor(ScalarSensorState& state, const SensorClock& clock, Vec3 start, Vec3 mid,
                                     Vec3 end);

}  // namespace myo_core
