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

TEST(EdgeKernelTest, EachCaseGivesItsLengthAndMultiplier) {
  const float any = std::nanf("");
  struct Case {
    const char* name;
    void (*set_up)(EdgeCase&);
    std::vector<float> start;
    float length, lambda;
  };
  const Case cases[] = {
      // Rigid: the two points meet the rest length halfway each.
      {"stretched", [](EdgeCase&) {}, {0, 0, 0, 3, 0, 0}, 1.0f, -1.0f},
      {"one end pinned", [](EdgeCase& e) { e.w_i = 0.0f; }, {0, 0, 0, 3, 0, 0}, 1.0f, any},
      // With compliance a and W = 2: delta = -C / (2 + a).
      {"compliant", [](EdgeCase& e) { e.compliance = 2.0f; }, {0, 0, 0, 3, 0, 0}, 2.0f, -0.5f},
      // Stretching resistance scales a stretch, compression a compression.
      {"half stretch resistance",
       [](EdgeCase& e) {
         e.stretching = 0.5f;
         e.compression = 0.0f;
       },
       {0, 0, 0, 3, 0, 0}, 2.0f, any},
      {"no compression resistance", [](EdgeCase& e) { e.compression = 0.0f; }, {0, 0, 0, 0.5f, 0, 0}, 0.5f, 0.0f},
      {"weights below 1e-6",
       [](EdgeCase& e) {
         e.w_i = 4e-7f;
         e.w_j = 5e-7f;
         e.lambdas[0] = 0.75f;
       },
       {0, 0, 0, 3, 0, 0}, 3.0f, 0.75f},
      // Coincident points: the denominator is the compliance alone; the
      // multiplier changes and the points stay.
      {"coincident", [](EdgeCase& e) { e.compliance = 4.0f; }, {1, 1, 1, 1, 1, 1}, 0.0f, 0.25f},
      // Half activation along the fiber asks for half the length.
      {"activated along the fiber", [](EdgeCase& e) { e.activation = 0.5f; }, {0, 0, 0, 1, 0, 0}, 0.5f, any},
      {"activated across the fiber",
       [](EdgeCase& e) {
         e.rest = {0.0f, 1.0f, 0.0f};
         e.activation = 0.5f;
       },
       {0, 0, 0, 0, 1, 0}, 1.0f, any},
      // The fiber's sign does not matter; each axis shortens by its component.
      {"diagonal fiber",
       [](EdgeCase& e) {
         e.rest = {1.0f, 1.0f, 0.0f};
         e.fiber = {-0.6f, 0.8f, 0.0f};
         e.activation = 1.0f;
       },
       {0, 0, 0, 1, 1, 0}, std::sqrt(0.4f * 0.4f + 0.2f * 0.2f), any},
      // A rest activation built into the rest shape is taken back.
      {"activation at rest",
       [](EdgeCase& e) {
         e.activation = 0.5f;
         e.rest_activation = 0.5f;
       },
       {0, 0, 0, 1, 0, 0}, 1.0f, any},
      {"rest multiplier", [](EdgeCase& e) { e.multiplier = 1.5f; }, {0, 0, 0, 1, 0, 0}, 1.5f, any},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EdgeCase edge(c.start);
    c.set_up(edge);
    edge.Solve();
    EXPECT_NEAR(edge.Length(), c.length, 1e-6f);
    if (!std::isnan(c.lambda)) {
      EXPECT_FLOAT_EQ(edge.lambdas[0], c.lambda);
    }
    if (edge.w_i == 0.0f) {
      EXPECT_EQ(edge.positions[0], c.start[0]);  // a pinned end stays
    }
  }

  // The multiplier a compliant row leaves balances the remaining violation:
  // a second solve in the same step leaves the points where they are.
  EdgeCase soft({0, 0, 0, 3, 0, 0});
  soft.compliance = 2.0f;
  soft.Solve();
  soft.Solve();
  EXPECT_FLOAT_EQ(soft.Length(), 2.0f);
  EXPECT_FLOAT_EQ(soft.lambdas[0], -0.5f);
}
