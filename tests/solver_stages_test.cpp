#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/solver/solver_stages.h"
#include "support/solver_runs.h"

using namespace myo_core;

namespace {

// A small irregular body of four points.
std::vector<float> Body() { return {0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 1.5f}; }

}  // namespace

TEST(AttenuationTest, ATranslatedMatrixCarriesBodyWithoutVelocity) {
  std::vector<float> positions = Body(), previous = Body(), velocities(12, 0.0f);
  ApplyAttenuation(positions, previous, TranslationMatrix(2, 0, -1), IdentityMatrix(), 1.0f);
  for (int i = 0; i < 4; ++i) {
    EXPECT_FLOAT_EQ(positions[3 * i], Body()[3 * i] + 2.0f);
    EXPECT_FLOAT_EQ(previous[3 * i + 2], Body()[3 * i + 2] - 1.0f);
  }
  UpdateVelocities(1.0f / 24.0f, positions, previous, velocities);
  for (float v : velocities) EXPECT_EQ(v, 0.0f);
}

TEST(AttenuationTest, FactorScalesTheShareAndStillMatricesDoNothing) {
  std::vector<float> positions = Body(), previous = Body();
  ApplyAttenuation(positions, previous, TranslationMatrix(4, 0, 0), IdentityMatrix(), 0.25f);
  EXPECT_FLOAT_EQ(positions[3], 1.0f + 1.0f);

  // Factor 0, or a matrix equal to its previous value: nothing is touched,
  // not even positions that differ from the previous ones.
  positions = Body();
  positions[0] = 7.0f;
  previous = Body();
  ApplyAttenuation(positions, previous, TranslationMatrix(4, 0, 0), IdentityMatrix(), 0.0f);
  EXPECT_EQ(positions[0], 7.0f);
  ApplyAttenuation(positions, previous, TranslationMatrix(4, 0, 0), TranslationMatrix(4, 0, 0), 1.0f);
  EXPECT_EQ(positions[0], 7.0f);
  // The position is rebuilt from the previous position when the matrix moves.
  ApplyAttenuation(positions, previous, TranslationMatrix(1, 0, 0), IdentityMatrix(), 1.0f);
  EXPECT_EQ(positions[0], 1.0f);
}

TEST(DampingTest, FullRigidDampingLeavesOnlyTheRigidMotion) {
  const std::vector<float> positions = Body();
  // Heavy enough that the identity added to the inertia hardly counts.
  const std::vector<float> masses{100, 200, 100, 300}, weights(4, 1.0f);
  // A common drift plus a relative wobble on one point.
  std::vector<float> velocities{1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0};
  velocities[4] = 3.0f;
  ApplyDamping(velocities, positions, masses, weights, 1.0f, 0.0f);
  // Linear momentum is kept (the angular part adds none).
  float px = 0, py = 0;
  for (int i = 0; i < 4; ++i) {
    px += masses[i] * velocities[3 * i];
    py += masses[i] * velocities[3 * i + 1];
  }
  EXPECT_NEAR(px, 700.0f, 1e-2f);
  EXPECT_NEAR(py, 600.0f, 1e-2f);
  // A second pass changes almost nothing: the motion is rigid now, apart from
  // the identity regulariser of the inertia.
  std::vector<float> again = velocities;
  ApplyDamping(again, positions, masses, weights, 1.0f, 0.0f);
  for (int k = 0; k < 12; ++k) EXPECT_NEAR(again[k], velocities[k], 0.01f);
  // And it did change: the wobble was not rigid.
  EXPECT_NE(velocities[4], 3.0f);
}

TEST(DampingTest, ZeroRigidAndInertiaLoss) {
  const std::vector<float> positions = Body(), masses(4, 1.0f), weights(4, 1.0f);
  std::vector<float> velocities{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  ApplyDamping(velocities, positions, masses, weights, 0.0f, 0.0f);
  EXPECT_EQ(velocities[5], 6.0f);
  ApplyDamping(velocities, positions, masses, weights, 0.0f, 0.25f);
  EXPECT_EQ(velocities[5], 6.0f * 0.75f);
  // No masses at all: the inertia loss is skipped as well.
  ApplyDamping(velocities, positions, std::vector<float>{}, weights, 0.0f, 0.5f);
  EXPECT_EQ(velocities[5], 6.0f * 0.75f);
}

// Bodies large enough to share the per-point passes and the damping's sums
// out over the threads: the bits of one thread, for any number of them.
TEST(DampingTest, LargeBodiesGiveTheBitsOfOneThread) {
  const uint32_t n = 70000;
  std::vector<float> positions(3 * n), previous(3 * n), velocities(3 * n), masses(n), weights(n);
  for (uint32_t i = 0; i < n; ++i) {
    for (uint32_t k = 0; k < 3; ++k) {
      positions[3 * i + k] = std::sin(0.37f * static_cast<float>(3 * i + k)) * 5.0f;
      previous[3 * i + k] = positions[3 * i + k] - 0.01f * std::cos(0.11f * static_cast<float>(i + k));
      velocities[3 * i + k] = std::cos(0.23f * static_cast<float>(3 * i + k));
    }
    masses[i] = 0.5f + static_cast<float>(i % 7) * 0.25f;
    weights[i] = static_cast<float>(i % 4) * 0.25f;
  }
  weights.resize(n - 10);  // points past the map keep their velocity
  Matrix moved = TranslationMatrix(0.3f, -0.2f, 0.1f);
  moved[1] = 0.05f;
  const float gravity[3] = {0.0f, -9.8f, 0.0f};
  const auto run = [&](int threads, std::vector<float>& p, std::vector<float>& q, std::vector<float>& v) {
    myo_test::ScopedThreads team(threads);
    p = positions, q = previous, v = velocities;
    ApplyAttenuation(p, q, moved, IdentityMatrix(), 0.5f);
    ApplyDamping(v, p, masses, weights, 0.7f, 0.1f);
    PredictPositions(p, v, gravity, 1.0f / 24.0f);
    UpdateVelocities(1.0f / 24.0f, p, q, v);
  };
  std::vector<float> p1, q1, v1;
  run(1, p1, q1, v1);
  ASSERT_FALSE(myo_test::SameBits(v1, velocities));
  for (int threads = 2; threads <= 3; ++threads) {
    std::vector<float> p, q, v;
    run(threads, p, q, v);
    EXPECT_TRUE(myo_test::SameBits(p, p1) && myo_test::SameBits(q, q1) && myo_test::SameBits(v, v1))
        << threads << " threads";
  }
}
