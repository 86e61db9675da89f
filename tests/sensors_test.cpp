// The three sensors over a time line: the reset at the start time, the
// difference quotients of the following frames, jumps, scales and the
// angles at the ends of their range.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "core/sensors/sensor_evaluation.h"

namespace {

using myo_core::PositionSensorState;
using myo_core::ScalarSensorState;
using myo_core::SensorClock;
using myo_core::SensorOutputs;
using myo_core::SensorOutputValues;
using myo_core::Vec3;

constexpr float kFps = 24.0f;

SensorClock At(float frame, float start_frame = 1.0f, float time_scale = 1.0f) {
  return {start_frame / kFps, frame / kFps, time_scale};
}

// A distance sensor between the origin and a point on the x axis, played
// frame by frame; the outputs are held as a node holds them.
class DistanceTimeline {
 public:
  explicit DistanceTimeline(float time_scale = 1.0f, float space_scale = 1.0f)
      : time_scale_(time_scale), space_scale_(space_scale) {}
  SensorOutputs Play(float frame, float x) {
    const SensorOutputs out =
        EvaluateDistanceSensor(state_, At(frame, 1.0f, time_scale_), space_scale_, {0, 0, 0}, {x, 0, 0});
    ApplySensorOutputs(out, held_);
    return out;
  }
  const SensorOutputValues& held() const { return held_; }
  ScalarSensorState& state() { return state_; }

 private:
  float time_scale_, space_scale_;
  ScalarSensorState state_;
  SensorOutputValues held_;
};

TEST(DistanceSensorTest, StartFrameResetsLaterFramesDifferenceAndJumpsBackFreezeTheRates) {
  DistanceTimeline line;
  line.state() = {7.0f, 100.0f, -3.0f};  // left over from a run elsewhere on the time line
  const SensorOutputs start = EvaluateDistanceSensor(line.state(), At(1), 1.0f, {1, 2, 3}, {4, 6, 3});
  EXPECT_TRUE(start.was_reset && start.value_written && start.rates_written);
  EXPECT_EQ(start.value, 5.0f);
  EXPECT_EQ(start.velocity, 0.0f);
  EXPECT_EQ(start.acceleration, 0.0f);

  // The second frame differences against the start frame's distance, not 0.
  line.Play(1, 2.0f);
  const float dt = 2.0f / kFps - 1.0f / kFps;
  const SensorOutputs second = line.Play(2, 2.5f);
  EXPECT_FALSE(second.was_reset);
  EXPECT_FLOAT_EQ(second.velocity, 0.5f / dt);
  EXPECT_FLOAT_EQ(second.acceleration, second.velocity / dt);
  // A jump forward differences across the whole gap.
  EXPECT_FLOAT_EQ(line.Play(12, 3.5f).velocity, 1.0f / (12.0f / kFps - 2.0f / kFps));

  // The same time again, or back: the distance is written, the rates frozen.
  for (float frame : {12.0f, 2.0f}) {
    const SensorOutputValues before = line.held();
    EXPECT_FALSE(line.Play(frame, 7.0f).rates_written) << frame;
    EXPECT_EQ(line.held().value, 7.0f) << frame;
    EXPECT_EQ(line.held().velocity, before.velocity) << "frozen, not negated, at " << frame;
  }
  // The next frame differences from the jump.
  EXPECT_FLOAT_EQ(line.Play(3, 8.0f).velocity, 1.0f / dt);

  // A start time never met exactly never resets.
  ScalarSensorState state{0.0f, 10.0f, 0.0f};
  EXPECT_FALSE(EvaluateDistanceSensor(state, {1.5f / kFps, 1.0f / kFps, 1.0f}, 1.0f, {0, 0, 0}, {1, 0, 0}).was_reset);
}

TEST(DistanceSensorTest, TimeScaleStretchesTheStepAndSpaceScaleDividesDistances) {
  DistanceTimeline plain, slow(2.0f), large(1.0f, 4.0f);
  const float xs[] = {1.0f, 1.5f, 2.5f, 4.0f};
  for (int k = 0; k < 4; ++k) {
    const SensorOutputs p = plain.Play(1.0f + k, xs[k]);
    const SensorOutputs s = slow.Play(1.0f + k, xs[k]);
    const SensorOutputs l = large.Play(1.0f + k, xs[k]);
    EXPECT_FLOAT_EQ(s.velocity, p.velocity / 2.0f);
    EXPECT_FLOAT_EQ(s.acceleration, p.acceleration / 4.0f);
    EXPECT_FLOAT_EQ(l.value, p.value / 4.0f);  // a larger scale, a smaller distance
    EXPECT_FLOAT_EQ(l.velocity, p.velocity / 4.0f);
  }
}

TEST(PositionSensorTest, SpeedIsNeverNegativeAndAccelerationFollowsItsChange) {
  PositionSensorState state;
  const SensorOutputs first = EvaluatePositionSensor(state, At(1), 1.0f, {5, 5, 5});
  EXPECT_TRUE(first.was_reset);
  EXPECT_FALSE(first.value_written);
  const float dt = 2.0f / kFps - 1.0f / kFps;
  // Moving back along x: the speed is positive all the same.
  const SensorOutputs second = EvaluatePositionSensor(state, At(2), 1.0f, {5, 5, 3});
  EXPECT_FLOAT_EQ(second.velocity, 2.0f / dt);
  // Slowing down (at space scale 2): the acceleration turns negative.
  const SensorOutputs third = EvaluatePositionSensor(state, At(3), 2.0f, {5, 5, 2});
  EXPECT_NEAR(third.velocity, 0.5f / dt, 1e-3f);
  EXPECT_LT(third.acceleration, 0.0f);
}

TEST(RotationSensorTest, AnglesStayInTheirRangeAndADegenerateLegIsFinite) {
  const float pi = std::acos(-1.0f);
  ScalarSensorState state;
  const Vec3 mid{0.25f, -1.5f, 2.0f};
  EXPECT_EQ(EvaluateRotationSensor(state, At(1), mid + Vec3{3, 0, 0}, mid, mid + Vec3{0.5f, 0, 0}).value, 0.0f);
  EXPECT_EQ(EvaluateRotationSensor(state, At(1), mid + Vec3{0, 0, 2}, mid, mid - Vec3{0, 0, 7}).value, pi);

  // Legs along one line in general directions: rounding takes the dot product
  // of the unit legs past 1 now and then, and the angle must still be a number
  // at the end of its range.
  int past_the_range = 0;
  for (float a = 0.1f; a < 9.0f; a += 0.113f) {
    for (float k : {0.3f, 1.7f, 13.0f}) {
      const Vec3 leg{a, a * 0.7f + 0.1f, -a * 1.3f};
      const float dot = Dot(myo_core::NormalizeSafe(leg), myo_core::NormalizeSafe(leg * k));
      if (dot > 1.0f) ++past_the_range;
      const float same = EvaluateRotationSensor(state, At(1), mid + leg, mid, mid + leg * k).value;
      EXPECT_TRUE(same >= 0.0f && same < 1e-3f) << a << " " << k;
      const float folded = EvaluateRotationSensor(state, At(1), mid + leg, mid, mid - leg * k).value;
      EXPECT_TRUE(folded <= pi && folded > pi - 1e-3f) << a << " " << k;
    }
  }
  EXPECT_GT(past_the_range, 0);

  // A leg of length 0.
  const SensorOutputs degenerate = EvaluateRotationSensor(state, At(3), mid, mid, mid + Vec3{0, 1, 0});
  EXPECT_TRUE(std::isfinite(degenerate.value) && std::isfinite(degenerate.velocity));
}

}  // namespace
