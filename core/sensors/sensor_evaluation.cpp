#include "core/sensors/sensor_evaluation.h"

#include <algorithm>
#include <cmath>

namespace myo_core {

namespace {

// At the start time exactly the rates restart from 0. Only exact equality
// resets: a start time the time line never meets never resets the sensor.
bool ResetAtStart(const SensorClock& clock, float& previous_time, float& previous_velocity, SensorOutputs& out) {
  if (clock.current_time != clock.start_time) return false;
  previous_time = clock.current_time;
  previous_velocity = 0.0f;
  out.velocity = 0.0f;
  out.acceleration = 0.0f;
  out.rates_written = true;
  out.was_reset = true;
  return true;
}

// Velocity and acceleration of `value` over `dt`, only for a step forward:
// a repeated time or a jump backward leaves the rates as they were.
void DifferenceForward(float value, float dt, float previous_value, float& previous_velocity, SensorOutputs& out) {
  if (!(dt > 0.0f)) return;
  const float velocity = (value - previous_value) / dt;
  const float acceleration = (velocity - previous_velocity) / dt;
  previous_velocity = velocity;
  out.velocity = velocity;
  out.acceleration = acceleration;
  out.rates_written = true;
}

// Writes a scalar sensor's value and its rates, and remembers the value and
// the time for the next evaluation.
void TakeScalar(ScalarSensorState& state, const SensorClock& clock, float value, float dt, SensorOutputs& out) {
  out.value = value;
  out.value_written = true;
  DifferenceForward(value, dt, state.previous_value_, state.previous_velocity_, out);
  state.previous_value_ = value;
  state.previous_time_ = clock.current_time;
}

}  // namespace

void ApplySensorOutputs(const SensorOutputs& outputs, SensorOutputValues& held) {
  if (outputs.value_written) held.value = outputs.value;
  if (outputs.rates_written) {
    held.velocity = outputs.velocity;
    held.acceleration = outputs.acceleration;
  }
}

SensorOutputs EvaluateDistanceSensor(ScalarSensorState& state, const SensorClock& clock, float space_scale,
                                     Vec3 start, Vec3 end) {
  SensorOutputs out;
  if (ResetAtStart(clock, state.previous_time_, state.previous_velocity_, out)) state.previous_value_ = 0.0f;
  const float dt = (clock.current_time - state.previous_time_) * clock.time_scale;
  const float distance = Length(end - start) / space_scale;
  TakeScalar(state, clock, distance, dt, out);
  return out;
}

SensorOutputs EvaluatePositionSensor(PositionSensorState& state, const SensorClock& clock, float space_scale,
                                     Vec3 position) {
  SensorOutputs out;
  if (ResetAtStart(clock, state.previous_time_, state.previous_velocity_, out)) state.previous_position_ = position;
  const float dt = (clock.current_time - state.previous_time_) * clock.time_scale;
  if (dt > 0.0f) {
    const float speed = Length(position - state.previous_position_) / space_scale / dt;
    const float acceleration = (speed - state.previous_velocity_) / dt;
    state.previous_velocity_ = speed;
    out.velocity = speed;
    out.acceleration = acceleration;
    out.rates_written = true;
  }
  state.previous_position_ = position;
  state.previous_time_ = clock.current_time;
  return out;
}

SensorOutputs EvaluateRotationSensor(ScalarSensorState& state, const SensorClock& clock, Vec3 start, Vec3 mid,
                                     Vec3 end) {
  SensorOutputs out;
  if (ResetAtStart(clock, state.previous_time_, state.previous_velocity_, out)) state.previous_value_ = 0.0f;
  const float dt = (clock.current_time - state.previous_time_) * clock.time_scale;
  // A leg of length 0 stays a zero vector, which makes the angle pi / 2.
  const Vec3 u = NormalizeSafe(start - mid);
  const Vec3 w = NormalizeSafe(end - mid);
  // Rounding can take the dot product of two unit vectors past 1.
  const float cosine = std::min(1.0f, std::max(-1.0f, Dot(u, w)));
  const float angle = std::acos(cosine);
  TakeScalar(state, clock, angle, dt, out);
  return out;
}

}  // namespace myo_core
