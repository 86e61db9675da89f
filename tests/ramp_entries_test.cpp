// Ramp entries as plain data: which ramps count as normalised.

#include <gtest/gtest.h>

#include <cmath>

#include "core/ramp/ramp_entries.h"

using myo_core::IsRampNormalized;
using myo_core::RampEntries;

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
