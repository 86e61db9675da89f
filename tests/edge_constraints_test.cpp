#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/kernels/edge_constraints.h"

using namespace myo_core;

namespace {

// One edge from point 0 to point 1 with its rest vector and fiber.
struct EdgeCase {
  std::vector<float> positions;
  std::vector<float> rest{1.0f, 0.0f, 0.0f};
  std::vector<float> fiber{1.0f, 0.0f, 0.0f};
  std::vector<float> lambdas{0.0f};
  float w_i = 1.0f, w_j = 1.0f, compliance = 0.0f, activation = 0.0f, rest_activation = 0.0f;
  float multiplier = 1.0f, compression = 1.0f, stretching = 1.0f;

  explicit EdgeCase(std::vector<float> p) : positions(std::move(p)) {}
  void Solve() {
    SolveEdgeConstraint(0, 0, 0, 1, w_i, w_j, compliance, activation, rest_activation, multiplier, compression,
                        stretching, rest.data(), fiber.data(), positions.data(), lambdas.data());
  }
  float Length() const {
    const float dx = positions[3] - positions[0], dy = positions[4] - positions[1], dz = positions[5] - positions[2];
    return std::sqrt(dx * dx + dy * dy + dz * dz);
  }
};

}  // namespace

TEST(EdgeKernelTest, AStretchIsRemovedInOneSolve) {
  // Rigid (compliance 0): the two points meet the rest length halfway each.
  EdgeCase stretched({0, 0, 0, 3, 0, 0});
  stretched.Solve();
  EXPECT_FLOAT_EQ(stretched.positions[0], 1.0f);
  EXPECT_FLOAT_EQ(stretched.positions[3], 2.0f);
  EXPECT_FLOAT_EQ(stretched.lambdas[0], -1.0f);

  // Unequal weights move the lighter point more.
  EdgeCase heavy({0, 0, 0, 3, 0, 0});
  heavy.w_i = 0.0f;
  heavy.Solve();
  EXPECT_EQ(heavy.positions[0], 0.0f);
  EXPECT_FLOAT_EQ(heavy.positions[3], 1.0f);
}

TEST(EdgeKernelTest, ComplianceAndResistanceScaleTheCorrection) {
  // With compliance a and W = 2: delta = -C / (2 + a).
  EdgeCase soft({0, 0, 0, 3, 0, 0});
  soft.compliance = 2.0f;
  soft.Solve();
  EXPECT_FLOAT_EQ(soft.lambdas[0], -0.5f);
  EXPECT_FLOAT_EQ(soft.Length(), 2.0f);
  // The accumulated multiplier balances the remaining violation: a second
  // solve in the same step leaves the points where they are.
  soft.Solve();
  EXPECT_FLOAT_EQ(soft.Length(), 2.0f);
  EXPECT_FLOAT_EQ(soft.lambdas[0], -0.5f);

  // Stretching resistance scales a stretch, compression a compression.
  EdgeCase half_stretch({0, 0, 0, 3, 0, 0});
  half_stretch.stretching = 0.5f;
  half_stretch.compression = 0.0f;
  half_stretch.Solve();
  EXPECT_FLOAT_EQ(half_stretch.Length(), 2.0f);
  EdgeCase squeezed({0, 0, 0, 0.5f, 0, 0});
  squeezed.compression = 0.0f;
  squeezed.Solve();
  EXPECT_EQ(squeezed.Length(), 0.5f);
  EXPECT_EQ(squeezed.lambdas[0], 0.0f);
}

TEST(EdgeKernelTest, GuardsOnWeightsAndCoincidentPoints) {
  EdgeCase light({0, 0, 0, 3, 0, 0});
  light.w_i = 4e-7f;
  light.w_j = 5e-7f;
  light.lambdas[0] = 0.75f;
  light.Solve();
  EXPECT_EQ(light.positions[3], 3.0f);
  EXPECT_EQ(light.lambdas[0], 0.75f);

  // Coincident points: the gradient is zero, the denominator is the
  // compliance alone; the multiplier changes and the points stay.
  EdgeCase coincident({1, 1, 1, 1, 1, 1});
  coincident.compliance = 4.0f;
  coincident.Solve();
  EXPECT_FLOAT_EQ(coincident.lambdas[0], 1.0f / 4.0f);
  EXPECT_EQ(coincident.positions[0], 1.0f);
  EXPECT_EQ(coincident.positions[3], 1.0f);
}

TEST(EdgeKernelTest, ActivationShortensAlongTheFiberOnly) {
  // Edge along the fiber: half activation asks for half the length.
  EdgeCase along({0, 0, 0, 1, 0, 0});
  along.activation = 0.5f;
  along.Solve();
  EXPECT_FLOAT_EQ(along.Length(), 0.5f);

  // Edge across the fiber: untouched.
  EdgeCase across({0, 0, 0, 0, 1, 0});
  across.rest = {0.0f, 1.0f, 0.0f};
  across.activation = 0.5f;
  across.Solve();
  EXPECT_EQ(across.Length(), 1.0f);

  // The sign of the fiber does not matter, and a diagonal fiber shortens each
  // axis by its own component.
  EdgeCase diagonal({0, 0, 0, 1, 1, 0});
  diagonal.rest = {1.0f, 1.0f, 0.0f};
  diagonal.fiber = {-0.6f, 0.8f, 0.0f};
  diagonal.activation = 1.0f;
  diagonal.Solve();
  EXPECT_FLOAT_EQ(diagonal.Length(), std::sqrt(0.4f * 0.4f + 0.2f * 0.2f));

  // A rest activation that is built into the rest shape is taken back: with
  // activation equal to rest activation the rest length holds.
  EdgeCase settled({0, 0, 0, 1, 0, 0});
  settled.activation = 0.5f;
  settled.rest_activation = 0.5f;
  settled.Solve();
  EXPECT_FLOAT_EQ(settled.Length(), 1.0f);

  EdgeCase longer({0, 0, 0, 1, 0, 0});
  longer.multiplier = 1.5f;
  longer.Solve();
  EXPECT_FLOAT_EQ(longer.Length(), 1.5f);
}
