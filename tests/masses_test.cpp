#include "core/solver/masses.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "core/tables/enum_tables.h"
#include "support/log_capture.h"

namespace {

using namespace myo_core;
using myo_test::LogCapture;

const char kSmallDensityWarning[] =
    "[MyoForge][Warning] Very small density, mesh volume or mesh area detected for mass "
    "computation. Evaluating masses by Uniform Value.";
const char kMinimumMassLine[] =
    "[MyoForge][Debug] Mass combination values between input masses, global mass multiplier and "
    "space scale lower than 1e-06 are not supported. Non supported mass values are replaced with "
    "1e-06 minimum mass values.";

TEST(EvaluateMasses, ByDensitySpreadsTheTotalOverThePoints) {
  LogCapture capture;
  const std::vector<float> painted(100, 1.0f);
  std::vector<float> masses(100, 0.0f);
  // Forces mode: the space scale leaves masses alone.
  EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshVolume, 1.06f, 100.0f, 1.0f, 10.0f,
                 true, true, painted, masses);
  for (const float mass : masses) EXPECT_FLOAT_EQ(mass, 1.06f);
  const std::vector<std::string> expected = {
      "[MyoForge][Debug] Volume (cm3):  100", "[MyoForge][Debug] Density (g/cm3):  1.06",
      "[MyoForge][Debug] Total mass (g):  106", "[MyoForge][Debug] Avg point mass (g):  1.06"};
  EXPECT_EQ(capture.lines(), expected);
}

TEST(EvaluateMasses, ByDensityFollowsThePaintAndTheSignlessTotal) {
  const std::vector<float> painted = {1.0f, 3.0f, 0.5f, 0.5f};
  std::vector<float> masses(4, 0.0f);
  // Total 8 (negative density counts by magnitude), 2 a point before the paint.
  EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshArea, -2.0f, 4.0f, 1.0f, 1.0f,
                 false, false, painted, masses);
  // The paint sums to 5 points' worth, not 4: a deviating paint keeps its own
  // total, it is not normalised.
  EXPECT_EQ(masses, (std::vector<float>{2.0f, 6.0f, 1.0f, 1.0f}));
}

TEST(EvaluateMasses, OnlyASumAlreadyWithinTheToleranceIsTouchedUp) {
  const float total = 1.0f;  // density 1 times measure 1, 0.5 a point
  {
    // Off by 2^-22: rescaled to the total.
    const std::vector<float> painted = {1.0f, 1.0f + std::ldexp(1.0f, -21)};
    std::vector<float> masses(2, 0.0f);
    EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshVolume, 1.0f, 1.0f, 1.0f, 1.0f,
                   false, false, painted, masses);
    const float sum = 0.5f + (0.5f + std::ldexp(1.0f, -22));
    const float correction = total / sum;
    EXPECT_LT(masses[0], 0.5f);
    EXPECT_EQ(masses[0], 0.5f * correction);
    EXPECT_EQ(masses[1], (0.5f + std::ldexp(1.0f, -22)) * correction);
  }
  {
    // Off by 2^-19, about 1.9e-6: left as painted.
    const std::vector<float> painted = {1.0f, 1.0f + std::ldexp(1.0f, -18)};
    std::vector<float> masses(2, 0.0f);
    EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshVolume, 1.0f, 1.0f, 1.0f, 1.0f,
                   false, false, painted, masses);
    EXPECT_EQ(masses, (std::vector<float>{0.5f, 0.5f + std::ldexp(1.0f, -19)}));
  }
}

struct SpaceScaleCase {
  int32_t space_scale_mode;
  int32_t mesh_dimension;
  float factor;  // global multiplier 2 times the space scale 10 to some power
};

TEST(EvaluateMasses, SpaceScaleMultipliesMassesByTheMeasureItFills) {
  const SpaceScaleCase cases[] = {
      {kSpaceScaleMasses, kMeshPerimeter, 20.0f},
      {kSpaceScaleMasses, kMeshArea, 200.0f},
      {kSpaceScaleMassesAndForces, kMeshVolume, 2000.0f},
      {kSpaceScaleForces, kMeshVolume, 2.0f},
  };
  const std::vector<float> painted = {1.0f, 4.0f, 0.25f};
  for (const SpaceScaleCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "mode " << c.space_scale_mode << " dimension "
                                    << c.mesh_dimension);
    std::vector<float> masses(3, 0.0f);
    EvaluateMasses(kPointMassByUniformValue, c.space_scale_mode, c.mesh_dimension, 1.0f, 1.0f,
                   2.0f, 10.0f, false, false, painted, masses);
    EXPECT_EQ(masses, (std::vector<float>{c.factor, 4.0f * c.factor, 0.25f * c.factor}));

    // By density over a measure of 3 at density 1: one gram a point before scaling.
    EvaluateMasses(kPointMassByDensity, c.space_scale_mode, c.mesh_dimension, 1.0f, 3.0f, 2.0f,
                   10.0f, false, false, painted, masses);
    EXPECT_EQ(masses, (std::vector<float>{c.factor, 4.0f * c.factor, 0.25f * c.factor}));
  }
}

TEST(EvaluateMasses, SmallDensityOrMeasureFallsBackToPaintedValues) {
  const std::vector<float> painted = {1.0f, 3.0f};
  const float small_inputs[][2] = {{0.0f, 100.0f}, {1.0f, 0.0f}, {1e-6f, 100.0f}, {1.0f, -1e-7f}};
  for (const auto& input : small_inputs) {
    SCOPED_TRACE(testing::Message() << "density " << input[0] << " measure " << input[1]);
    LogCapture capture;
    std::vector<float> masses(2, 0.0f);
    EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshVolume, input[0], input[1], 1.0f,
                   1.0f, true, true, painted, masses);
    EXPECT_EQ(masses, painted);
    const std::vector<std::string> expected = {kSmallDensityWarning,
                                               "[MyoForge][Debug] Total mass (g):  4",
                                               "[MyoForge][Debug] Avg point mass (g):  2"};
    EXPECT_EQ(capture.lines(), expected);
  }

  LogCapture capture;
  std::vector<float> masses(2, 0.0f);
  EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshVolume, 0.0f, 100.0f, 1.0f, 1.0f,
                 false, false, painted, masses);
  EXPECT_EQ(masses, painted);
  // By Uniform Value never looks at the density.
  EvaluateMasses(kPointMassByUniformValue, kSpaceScaleForces, kMeshVolume, 0.0f, 0.0f, 1.0f,
                 1.0f, true, false, painted, masses);
  EXPECT_TRUE(capture.lines().empty());
}

TEST(EvaluateMasses, MeasureLabelFollowsTheDimension) {
  LogCapture capture;
  const std::vector<float> painted = {1.0f, 1.0f};
  std::vector<float> masses(2, 0.0f);
  EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshPerimeter, 0.5f, 8.0f, 1.0f, 1.0f,
                 false, true, painted, masses);
  EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshArea, 0.5f, 2.5f, 1.0f, 1.0f,
                 false, true, painted, masses);
  const std::vector<std::string> lines = capture.lines();
  ASSERT_EQ(lines.size(), 8u);
  EXPECT_EQ(lines[0], "[MyoForge][Debug] Perimeter (cm):  8");
  EXPECT_EQ(lines[1], "[MyoForge][Debug] Density (g/cm3):  0.5");
  EXPECT_EQ(lines[2], "[MyoForge][Debug] Total mass (g):  4");
  EXPECT_EQ(lines[3], "[MyoForge][Debug] Avg point mass (g):  2");
  EXPECT_EQ(lines[4], "[MyoForge][Debug] Area (cm2):  2.5");
  EXPECT_EQ(lines[6], "[MyoForge][Debug] Total mass (g):  1.25");
}

TEST(EvaluateMasses, EmptyPaintOrMassesOfAnotherSizeLeaveMassesUntouched) {
  LogCapture capture;
  const std::vector<float> before = {7.0f, 8.0f};
  std::vector<float> masses = before;
  EvaluateMasses(kPointMassByDensity, kSpaceScaleMasses, kMeshVolume, 1.0f, 1.0f, 1.0f, 1.0f,
                 false, true, {}, masses);
  EXPECT_TRUE(capture.lines().empty());
  EvaluateMasses(kPointMassByUniformValue, kSpaceScaleMasses, kMeshVolume, 1.0f, 1.0f, 1.0f, 1.0f,
                 true, true, {}, masses);
  EXPECT_EQ(masses, before);
  EXPECT_EQ(capture.lines(), std::vector<std::string>{
                                 "[MyoForge][Warning] Empty masses list. Bypassing mass evaluation."});
  for (const int32_t mode : {kPointMassByDensity, kPointMassByUniformValue}) {
    EvaluateMasses(mode, kSpaceScaleForces, kMeshVolume, 1.0f, 3.0f, 1.0f, 1.0f, false, false,
                   {1.0f, 1.0f, 1.0f}, masses);
    EXPECT_EQ(masses, before);
  }
}

TEST(CombineMasses, ValuesBelowTheMinimumAreRaisedWithOneMessage) {
  LogCapture capture;
  const std::vector<float> input = {0.0f, 1e-8f, 2.0f, -1.0f, 1e-7f};
  std::vector<float> output(input.size(), 0.0f);
  CombineMasses(input, 1.0f, 1.0f, kSpaceScaleMasses, kMeshVolume, true, output);
  EXPECT_EQ(output, (std::vector<float>{1e-6f, 1e-6f, 2.0f, 1e-6f, 1e-6f}));
  EXPECT_EQ(capture.lines(), std::vector<std::string>{kMinimumMassLine});

  capture.Clear();
  CombineMasses(input, 1.0f, 1.0f, kSpaceScaleMasses, kMeshVolume, false, output);
  EXPECT_EQ(output, (std::vector<float>{1e-6f, 1e-6f, 2.0f, 1e-6f, 1e-6f}));
  EXPECT_TRUE(capture.lines().empty());

  // A small space scale can push masses below the minimum too.
  std::vector<float> scaled(2, 0.0f);
  CombineMasses({1.0f, 1e9f}, 1.0f, 0.001f, kSpaceScaleMasses, kMeshVolume, true, scaled);
  EXPECT_EQ(scaled[0], 1e-6f);
  EXPECT_FLOAT_EQ(scaled[1], 1.0f);
  EXPECT_EQ(capture.lines(), std::vector<std::string>{kMinimumMassLine});
}

TEST(CombineMasses, GlobalMultiplierIsAtLeastTheMinimumInPlaceOrNot) {
  LogCapture capture;
  std::vector<float> output(2, 0.0f);
  CombineMasses({1.0f, 3.0f}, 0.0f, 1.0f, kSpaceScaleForces, kMeshVolume, true, output);
  EXPECT_EQ(output, (std::vector<float>{1e-6f, 1e-6f * 3.0f}));
  CombineMasses({1.0f, 3.0f}, -5.0f, 1.0f, kSpaceScaleForces, kMeshVolume, true, output);
  EXPECT_EQ(output, (std::vector<float>{1e-6f, 1e-6f * 3.0f}));
  // Exactly the minimum is no replacement.
  EXPECT_TRUE(capture.lines().empty());

  // In place, and mismatched sizes are skipped.
  std::vector<float> masses = {1.0f, 2.0f, 3.0f};
  CombineMasses(masses, 2.0f, 10.0f, kSpaceScaleMasses, kMeshArea, false, masses);
  EXPECT_EQ(masses, (std::vector<float>{200.0f, 400.0f, 600.0f}));
  output = {9.0f, 9.0f};
  CombineMasses({1.0f, 2.0f, 3.0f}, 1.0f, 1.0f, kSpaceScaleForces, kMeshVolume, true, output);
  EXPECT_EQ(output, (std::vector<float>{9.0f, 9.0f}));
}

}  // namespace
