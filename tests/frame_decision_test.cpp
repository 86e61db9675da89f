// The time line of a simulation deformer, frame by frame.

#include <gtest/gtest.h>

#include "core/solver/frame_decision.h"

using namespace myo_core;

namespace {

constexpr float kFrame = 1.0f / 24.0f;

// Preroll at frame 24, start at frame 48.
FrameTimes At(float current_frame, float last_frame, bool empty = false) {
  FrameTimes t;
  t.current = current_frame * kFrame;
  t.last = last_frame * kFrame;
  t.preroll = 24 * kFrame;
  t.start = 48 * kFrame;
  t.frames_per_second = 24.0f;
  t.solver_empty = empty;
  return t;
}

}  // namespace

TEST(FrameDecisionTest, TheTimeLineFromPrerollThroughStart) {
  // First evaluation, anywhere: build from the mesh; step only after the
  // preroll or the start, with the raw difference from the last time.
  FrameDecision first = DecideFrame(At(30, 0, true));
  EXPECT_TRUE(first.initialize);
  EXPECT_TRUE(first.reset_positions);
  EXPECT_TRUE(first.simulate);
  EXPECT_FLOAT_EQ(first.dt, 30 * kFrame);
  EXPECT_FALSE(DecideFrame(At(10, 0, true)).simulate);

  // The preroll frame: build from the mesh, no step.
  const FrameDecision preroll = DecideFrame(At(24, 23));
  EXPECT_TRUE(preroll.initialize);
  EXPECT_TRUE(preroll.reset_positions);
  EXPECT_FALSE(preroll.simulate);

  // Between preroll and start: regular steps.
  const FrameDecision between = DecideFrame(At(25, 24));
  EXPECT_FALSE(between.initialize);
  EXPECT_TRUE(between.simulate);
  EXPECT_NEAR(between.dt, kFrame, 1e-6f);  // within the tolerance, the raw difference is kept

  // The start frame coming from the preroll: rebuild keeping the settled shape.
  const FrameDecision start = DecideFrame(At(48, 47));
  EXPECT_TRUE(start.initialize);
  EXPECT_FALSE(start.reset_positions);
  EXPECT_TRUE(start.simulate);

  // After start: steps. Before preroll: nothing, the last result stays.
  EXPECT_TRUE(DecideFrame(At(49, 48)).simulate);
  const FrameDecision before = DecideFrame(At(10, 60));
  EXPECT_FALSE(before.initialize);
  EXPECT_FALSE(before.simulate);

  // Scrubbing back after start: one positive frame of the time scale (the
  // jump's own rules are tested with it).
  FrameTimes back = At(50, 70);
  back.time_scale = 0.5f;
  const FrameDecision scrubbed = DecideFrame(back);
  EXPECT_TRUE(scrubbed.simulate);
  EXPECT_NEAR(scrubbed.dt, 0.5f * kFrame, 1e-6f);
}

TEST(FrameDecisionTest, PrerollEqualToStart) {
  FrameTimes t = At(48, 47);
  t.preroll = t.start;
  const FrameDecision d = DecideFrame(t);
  EXPECT_TRUE(d.initialize);
  EXPECT_TRUE(d.reset_positions);
  EXPECT_FALSE(d.simulate);
}
