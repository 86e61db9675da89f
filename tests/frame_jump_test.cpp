#include "core/time/frame_jump.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/log_capture.h"

namespace {

using myo_core::ResolveFrameJump;
using myo_test::LogCapture;

const char kLongerJump[] =
    "[MyoForge][Debug] Frame jump greater than one frame. Defaulting to a single positive time "
    "step.";
const char kNegativeJump[] =
    "[MyoForge][Debug] Frame jump is negative. Defaulting to a single positive time step.";

const float kFrame24 = 1.0f / 24.0f;

TEST(ResolveFrameJump, OneFrameWithinTheToleranceIsKeptAndOtherJumpsBecomeOneFrameStep) {
  LogCapture capture;
  EXPECT_EQ(ResolveFrameJump(kFrame24 + 0.0009f, 1.0f, 24.0f, true), kFrame24 + 0.0009f);
  // A zero (or nearly zero) time moves on by one step without a word.
  EXPECT_EQ(ResolveFrameJump(0.0f, 1.0f, 24.0f, true), kFrame24);
  EXPECT_EQ(ResolveFrameJump(-9e-7f, 1.0f, 30.0f, true), 1.0f / 30.0f);
  EXPECT_TRUE(capture.lines().empty());

  EXPECT_EQ(ResolveFrameJump(kFrame24 + 0.0011f, 1.0f, 24.0f, true), kFrame24);
  // A jump shorter than a frame carries the same message.
  EXPECT_EQ(ResolveFrameJump(0.5f * kFrame24, 1.0f, 24.0f, true), kFrame24);
  EXPECT_EQ(ResolveFrameJump(-kFrame24, 1.0f, 24.0f, true), kFrame24);
  EXPECT_EQ(capture.lines(), (std::vector<std::string>{kLongerJump, kLongerJump, kNegativeJump}));

  // No message while playing.
  capture.Clear();
  EXPECT_EQ(ResolveFrameJump(3.0f * kFrame24, 1.0f, 24.0f, false), kFrame24);
  EXPECT_EQ(ResolveFrameJump(-kFrame24, 1.0f, 24.0f, false), kFrame24);
  EXPECT_TRUE(capture.lines().empty());
}

TEST(ResolveFrameJump, TimeScaleScalesTheFrameStep) {
  LogCapture capture;
  const float step = kFrame24 * 2.0f;
  EXPECT_EQ(ResolveFrameJump(step, 2.0f, 24.0f, true), step);
  // One unscaled frame is now a short jump.
  EXPECT_EQ(ResolveFrameJump(kFrame24, 2.0f, 24.0f, true), step);
  EXPECT_EQ(capture.lines(), std::vector<std::string>{kLongerJump});
}

TEST(ResolveFrameJump, RateNotAboveZeroGivesAZeroStep) {
  LogCapture capture;
  EXPECT_EQ(ResolveFrameJump(0.0f, 1.0f, -24.0f, true), 0.0f);
  // Within 0.001 of a zero step, the time passed is kept.
  EXPECT_EQ(ResolveFrameJump(0.0005f, 1.0f, 0.0f, true), 0.0005f);
  EXPECT_TRUE(capture.lines().empty());
  EXPECT_EQ(ResolveFrameJump(kFrame24, 1.0f, 0.0f, true), 0.0f);
  EXPECT_EQ(capture.lines(), std::vector<std::string>{kLongerJump});
}

}  // namespace
