// Curve ramps evaluated from their entries: order, ends, the four
// interpolations at the edges of their segments, the clamped remap, and
// which entries count as normalised.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/ramp/ramp_curve.h"
#include "core/ramp/ramp_entries.h"

using myo_core::IsRampNormalized;
using myo_core::RampCurve;
using myo_core::RampEntries;
using myo_core::RemapClamped;

namespace {

constexpr int32_t kNone = myo_core::kRampNone;
constexpr int32_t kLinear = myo_core::kRampLinear;
constexpr int32_t kSmooth = myo_core::kRampSmooth;
constexpr int32_t kSpline = myo_core::kRampSpline;

// Uniform Catmull-Rom in float, written out independently of the curve.
float ExpectedSpline(float p0, float p1, float p2, float p3, float t) {
  return 0.5f * ((2.0f * p1) + (p2 - p0) * t + (2.0f * p0 - 5.0f * p1 + 4.0f * p2 - p3) * (t * t) +
                 (3.0f * p1 - p0 - 3.0f * p2 + p3) * (t * t * t));
}

}  // namespace

TEST(RampCurveTest, EndsHoldTheirValuesAndEntriesAreTakenInOrderOfPosition) {
  // The default remap: (0, 0) and (1, 1), linear, given in reverse order.
  const RampCurve identity(RampEntries{{1.0f, 0.0f}, {1.0f, 0.0f}, {kLinear, kLinear}});
  EXPECT_EQ(identity.positions(), (std::vector<float>{0.0f, 1.0f}));
  for (float x : {0.0f, 0.3f, 0.999f}) EXPECT_FLOAT_EQ(identity.ValueAt(x), x);
  EXPECT_EQ(identity.ValueAt(-std::numeric_limits<float>::infinity()), 0.0f);
  EXPECT_EQ(identity.ValueAt(std::numeric_limits<float>::infinity()), 1.0f);
  EXPECT_EQ(identity.ValueAt(std::nanf("")), 0.0f);

  // Ends of a ramp that does not span 0 to 1.
  const RampCurve inner(RampEntries{{0.2f, 0.6f}, {0.3f, 0.9f}, {kLinear, kNone}});
  EXPECT_EQ(inner.ValueAt(0.1f), 0.3f);
  EXPECT_EQ(inner.ValueAt(0.6f), 0.9f);

  EXPECT_EQ(RampCurve(RampEntries{}).ValueAt(0.5f), 0.0f);
  EXPECT_EQ(RampCurve(RampEntries{{0.4f}, {0.7f}, {kSpline}}).ValueAt(0.9f), 0.7f);
}

TEST(RampCurveTest, LeftEntryInterpolatesEachSegmentFromItsStart) {
  // None, then linear, then smooth, then spline, over four segments.
  const RampCurve ramp(
      RampEntries{{0.0f, 0.25f, 0.5f, 0.75f, 1.0f}, {0.2f, 0.8f, 0.4f, 1.0f, 0.0f}, {kNone, kLinear, kSmooth, kSpline, kLinear}});
  // None: the left value up to the next entry, which takes over exactly there.
  EXPECT_EQ(ramp.ValueAt(0.0f), 0.2f);
  EXPECT_EQ(ramp.ValueAt(0.2499f), 0.2f);
  EXPECT_EQ(ramp.ValueAt(0.25f), 0.8f);
  // Linear.
  EXPECT_FLOAT_EQ(ramp.ValueAt(0.375f), 0.6f);
  // Smooth: t t (3 - 2 t), level at both ends of the segment.
  EXPECT_EQ(ramp.ValueAt(0.5f), 0.4f);
  EXPECT_FLOAT_EQ(ramp.ValueAt(0.5625f), 0.4f + 0.6f * 0.15625f);
  EXPECT_NEAR(ramp.ValueAt(0.7499f), 1.0f, 1e-6f);
  // Spline through the neighbouring entries; it meets the entries' values.
  EXPECT_FLOAT_EQ(ramp.ValueAt(0.75f), 1.0f);
  for (float t : {0.25f, 0.5f, 0.75f})
    EXPECT_FLOAT_EQ(ramp.ValueAt(0.75f + 0.25f * t), ExpectedSpline(0.4f, 1.0f, 0.0f, 0.0f, t)) << t;
  EXPECT_EQ(ramp.ValueAt(1.0f), 0.0f);
}

TEST(RampCurveTest, SplineRepeatsTheEndValuesBesideMissingNeighbours) {
  const RampCurve spline(RampEntries{{0.0f, 0.5f, 1.0f}, {0.0f, 1.0f, 0.0f}, {kSpline, kSpline, kSpline}});
  // First segment: the entry before the first is the first again.
  EXPECT_FLOAT_EQ(spline.ValueAt(0.25f), ExpectedSpline(0.0f, 0.0f, 1.0f, 0.0f, 0.5f));
  // Last segment: the entry after the last is the last again.
  EXPECT_FLOAT_EQ(spline.ValueAt(0.75f), ExpectedSpline(0.0f, 1.0f, 0.0f, 0.0f, 0.5f));
  EXPECT_EQ(spline.ValueAt(0.5f), 1.0f);

  // Four entries: the middle segment sees both real neighbours, and the
  // curve overshoots between entries.
  const RampCurve wave(
      RampEntries{{0.0f, 0.25f, 0.5f, 0.75f}, {0.0f, 1.0f, 0.0f, 1.0f}, {kSpline, kSpline, kSpline, kSpline}});
  EXPECT_FLOAT_EQ(wave.ValueAt(0.375f), ExpectedSpline(0.0f, 1.0f, 0.0f, 1.0f, 0.5f));
  EXPECT_GT(RampCurve(RampEntries{{0.0f, 0.5f, 1.0f}, {0.0f, 1.0f, 1.0f}, {kSpline, kSpline, kSpline}}).ValueAt(0.7f),
            1.0f);
}

TEST(RampCurveTest, TiesStepAndDubiousEntriesAreLeftOut) {
  // Two entries at 0.5: the curve runs to the first and leaves from the last.
  const RampCurve step(
      RampEntries{{0.0f, 0.5f, 0.5f, 1.0f}, {0.0f, 0.2f, 0.8f, 1.0f}, {kLinear, kLinear, kLinear, kLinear}});
  EXPECT_FLOAT_EQ(step.ValueAt(0.49f), 0.196f);
  EXPECT_EQ(step.ValueAt(0.5f), 0.8f);
  EXPECT_FLOAT_EQ(step.ValueAt(0.75f), 0.9f);
  // Ties keep the host's order whatever their values.
  const RampCurve reversed(
      RampEntries{{1.0f, 0.5f, 0.5f, 0.0f}, {1.0f, 0.8f, 0.2f, 0.0f}, {kLinear, kLinear, kLinear, kLinear}});
  EXPECT_EQ(reversed.ValueAt(0.5f), 0.2f);

  // Positions that are no finite number are dropped; the shortest list
  // decides how many entries there are.
  const float nan = std::nanf("");
  const float inf = std::numeric_limits<float>::infinity();
  const RampCurve dubious(
      RampEntries{{nan, 0.0f, inf, 1.0f, 0.5f}, {9.0f, 0.0f, 9.0f, 1.0f, 9.0f}, {kLinear, kLinear, kLinear, kLinear}});
  EXPECT_EQ(dubious.positions(), (std::vector<float>{0.0f, 1.0f}));
  EXPECT_FLOAT_EQ(dubious.ValueAt(0.5f), 0.5f);

  // An interpolation the host does not define counts as linear.
  EXPECT_FLOAT_EQ(RampCurve(RampEntries{{0.0f, 1.0f}, {0.0f, 1.0f}, {7, -1}}).ValueAt(0.25f), 0.25f);

  // Positions at the ends of the float range stay finite.
  const RampCurve wide(RampEntries{{-3e38f, 3e38f}, {0.0f, 1.0f}, {kSmooth, kLinear}});
  for (float x : {-2e38f, 0.0f, 2e38f}) EXPECT_TRUE(std::isfinite(wide.ValueAt(x))) << x;
}

TEST(RampCurveTest, RemapIsClampedToTheUnitRange) {
  const RampCurve steep(RampEntries{{0.0f, 1.0f}, {-0.5f, 1.5f}, {kLinear, kLinear}});
  EXPECT_EQ(RemapClamped(steep, 0.1f), 0.0f);
  EXPECT_FLOAT_EQ(RemapClamped(steep, 0.5f), 0.5f);
  EXPECT_EQ(RemapClamped(steep, 0.9f), 1.0f);
  // An overshooting spline is clamped too.
  const RampCurve overshoot(RampEntries{{0.0f, 0.5f, 1.0f}, {0.0f, 1.0f, 1.0f}, {kSpline, kSpline, kSpline}});
  EXPECT_EQ(RemapClamped(overshoot, 0.7f), 1.0f);
}

TEST(RampEntriesTest, NormalizedOnlyWithPositionsAndValuesWithinTheUnitRange) {
  const RampEntries ramp{{0.0f, 0.4f, 1.0f}, {1.0f, 0.2f, 0.0f}, {1, 2, 3}};
  EXPECT_TRUE(IsRampNormalized(ramp));
  EXPECT_TRUE(IsRampNormalized(RampEntries{}));
  for (const auto& spoil : {+[](RampEntries& r) { r.positions[1] = -0.01f; },
                            +[](RampEntries& r) { r.values[2] = 1.0001f; },
                            +[](RampEntries& r) { r.values[0] = std::nanf(""); },
                            +[](RampEntries& r) { r.interpolations.pop_back(); }}) {
    RampEntries bad = ramp;
    spoil(bad);
    EXPECT_FALSE(IsRampNormalized(bad));
  }
}
