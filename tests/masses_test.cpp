#include "core/solver/masses.h"

#include <gtest/gtest.h>

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

// By density with uniform paint: the total spread evenly, and the lines the
// log shows, labelled after the measure of the mesh.
TEST(EvaluateMasses, ByDensitySpreadsTheTotalAndLogsTheMeasure) {
  struct Case {
    int32_t dimension;
    float density, measure, point_mass;
    std::vector<std::string> lines;
  };
  const Case cases[] = {
      {kMeshVolume, 1.06f, 100.0f, 1.06f,
       {"Volume (cm3):  100", "Density (g/cm3):  1.06", "Total mass (g):  106", "Avg point mass (g):  1.06"}},
      {kMeshPerimeter, 0.5f, 400.0f, 2.0f,
       {"Perimeter (cm):  400", "Density (g/cm3):  0.5", "Total mass (g):  200", "Avg point mass (g):  2"}},
      {kMeshArea, 0.5f, 2.5f, 0.0125f,
       {"Area (cm2):  2.5", "Density (g/cm3):  0.5", "Total mass (g):  1.25", "Avg point mass (g):  0.0125"}},
  };
  for (const Case& c : cases) {
    LogCapture capture;
    std::vector<float> masses(100, 0.0f);
    // Forces mode: the space scale leaves masses alone.
    EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, c.dimension, c.density, c.measure, 1.0f, 10.0f, true,
                   true, std::vector<float>(100, 1.0f), masses);
    for (const float mass : masses) ASSERT_FLOAT_EQ(mass, c.point_mass) << c.lines[0];
    std::vector<std::string> expected;
    for (const std::string& line : c.lines) expected.push_back("[MyoForge][Debug] " + line);
    EXPECT_EQ(capture.lines(), expected);
  }
}

TEST(EvaluateMasses, SpaceScaleMultipliesMassesByTheMeasureItFills) {
  struct Case {
    int32_t space_scale_mode;
    int32_t mesh_dimension;
    float factor;  // global multiplier 2 times the space scale 10 to some power
  };
  const Case cases[] = {
      {kSpaceScaleMasses, kMeshPerimeter, 20.0f},
      {kSpaceScaleMasses, kMeshArea, 200.0f},
      {kSpaceScaleMassesAndForces, kMeshVolume, 2000.0f},
      {kSpaceScaleForces, kMeshVolume, 2.0f},
  };
  const std::vector<float> painted = {1.0f, 4.0f, 0.25f};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "mode " << c.space_scale_mode << " dimension " << c.mesh_dimension);
    const std::vector<float> expected = {c.factor, 4.0f * c.factor, 0.25f * c.factor};
    std::vector<float> masses(3, 0.0f);
    EvaluateMasses(kPointMassByUniformValue, c.space_scale_mode, c.mesh_dimension, 1.0f, 1.0f, 2.0f, 10.0f, false,
                   false, painted, masses);
    EXPECT_EQ(masses, expected);
    // By density over a measure of 3 at density -1 (counted by magnitude): one
    // gram a point before the paint, which keeps its own total of 5.25 points.
    EvaluateMasses(kPointMassByDensity, c.space_scale_mode, c.mesh_dimension, -1.0f, 3.0f, 2.0f, 10.0f, false,
                   false, painted, masses);
    EXPECT_EQ(masses, expected);
  }
}

TEST(EvaluateMasses, SmallDensityOrMeasureFallsBackToPaintedValuesAndEmptyPaintChangesNothing) {
  const std::vector<float> painted = {1.0f, 3.0f};
  const float small_inputs[][2] = {{1e-6f, 100.0f}, {1.0f, -1e-7f}};
  for (const auto& input : small_inputs) {
    SCOPED_TRACE(testing::Message() << "density " << input[0] << " measure " << input[1]);
    LogCapture capture;
    std::vector<float> masses(2, 0.0f);
    EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshVolume, input[0], input[1], 1.0f, 1.0f, true, true,
                   painted, masses);
    EXPECT_EQ(masses, painted);
    const std::vector<std::string> expected = {kSmallDensityWarning, "[MyoForge][Debug] Total mass (g):  4",
                                               "[MyoForge][Debug] Avg point mass (g):  2"};
    EXPECT_EQ(capture.lines(), expected);
  }
  // By Uniform Value never looks at the density.
  LogCapture capture;
  std::vector<float> masses(2, 0.0f);
  EvaluateMasses(kPointMassByUniformValue, kSpaceScaleForces, kMeshVolume, 0.0f, 0.0f, 1.0f, 1.0f, true, false,
                 painted, masses);
  EXPECT_EQ(masses, painted);
  EXPECT_TRUE(capture.lines().empty());

  // Empty paint, or masses of another size, leave the masses untouched.
  const std::vector<float> before = masses;
  EvaluateMasses(kPointMassByUniformValue, kSpaceScaleMasses, kMeshVolume, 1.0f, 1.0f, 1.0f, 1.0f, true, true, {},
                 masses);
  EXPECT_EQ(masses, before);
  EXPECT_EQ(capture.lines(),
            std::vector<std::string>{"[MyoForge][Warning] Empty masses list. Bypassing mass evaluation."});
  EvaluateMasses(kPointMassByDensity, kSpaceScaleForces, kMeshVolume, 1.0f, 3.0f, 1.0f, 1.0f, false, false,
                 {1.0f, 1.0f, 1.0f}, masses);
  EXPECT_EQ(masses, before);
}

TEST(CombineMasses, ValuesBelowTheMinimumAreRaisedWithOneMessage) {
  LogCapture capture;
  const std::vector<float> input = {0.0f, 1e-8f, 2.0f, -1.0f, 1e-7f};
  std::vector<float> output(input.size(), 0.0f);
  CombineMasses(input, 1.0f, 1.0f, kSpaceScaleMasses, kMeshVolume, true, output);
  EXPECT_EQ(output, (std::vector<float>{1e-6f, 1e-6f, 2.0f, 1e-6f, 1e-6f}));
  EXPECT_EQ(capture.lines(), std::vector<std::string>{kMinimumMassLine});

  // The global multiplier is at least the minimum; exactly the minimum is no
  // replacement, and no message.
  capture.Clear();
  std::vector<float> scaled(2, 0.0f);
  CombineMasses({1.0f, 3.0f}, -5.0f, 1.0f, kSpaceScaleForces, kMeshVolume, true, scaled);
  EXPECT_EQ(scaled, (std::vector<float>{1e-6f, 1e-6f * 3.0f}));
  EXPECT_TRUE(capture.lines().empty());
  // An output of another size is left alone.
  CombineMasses({1.0f, 2.0f, 3.0f}, 1.0f, 1.0f, kSpaceScaleForces, kMeshVolume, true, scaled);
  EXPECT_EQ(scaled, (std::vector<float>{1e-6f, 1e-6f * 3.0f}));
}

}  // namespace
