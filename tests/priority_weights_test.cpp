// Normalisation of the skin's hard, soft and slide weights by priority order.

#include <gtest/gtest.h>
#include <omp.h>

#include <cstring>
#include <vector>

#include "core/kernels/priority_weights.h"
#include "core/tables/enum_tables.h"

namespace {

struct Weights {
  std::vector<float> hard, soft, slide;
};

// Three points: two whose sums are above 1 and one left as painted.
Weights Painted() { return {{0.8f, 0.2f, 0.1f}, {0.6f, 0.9f, 0.2f}, {0.4f, 0.7f, 0.3f}}; }

struct Expected {
  float hard, soft, slide;
};

void ExpectPoint(const Weights& w, uint32_t i, Expected e, const std::string& order) {
  EXPECT_NEAR(w.hard[i], e.hard, 1e-6f) << order << " point " << i;
  EXPECT_NEAR(w.soft[i], e.soft, 1e-6f) << order << " point " << i;
  EXPECT_NEAR(w.slide[i], e.slide, 1e-6f) << order << " point " << i;
}

TEST(PriorityWeights, EachOrderKeepsItsHighestAndSharesTheRestInProportion) {
  // Worked out by hand pass by pass, lowest priority first. For example
  // "Soft - Hard - Slide" on (0.8, 0.6, 0.4): slide keeps 0.4; hard 0.8
  // leaves 0.2 to slide alone (0.2); soft 0.6 leaves 0.4 to hard 0.8 and
  // slide 0.2 in proportion: 0.32 and 0.08.
  const Expected first[6] = {{0.32f, 0.6f, 0.08f}, {0.24f, 0.6f, 0.16f}, {0.8f, 0.12f, 0.08f},
                             {0.8f, 0.12f, 0.08f}, {0.24f, 0.36f, 0.4f}, {0.48f, 0.12f, 0.4f}};
  const Expected second[6] = {{0.2f / 9.0f, 0.9f, 0.7f / 9.0f}, {0.2f / 9.0f, 0.9f, 0.7f / 9.0f},
                              {0.2f, 0.72f, 0.08f}, {0.2f, 0.24f, 0.56f},
                              {0.03f, 0.27f, 0.7f}, {0.06f, 0.24f, 0.7f}};
  for (const auto& [key, list] : myo_core::ConstraintPriorityOrderLists()) {
    const std::string& name = myo_core::ConstraintPriorityOrder().at(key);
    Weights w = Painted();
    EXPECT_TRUE(myo_core::NormalizeByPriority(w.hard, w.soft, w.slide, list, 3)) << name;
    ExpectPoint(w, 0, first[key], name);
    ExpectPoint(w, 1, second[key], name);
    ExpectPoint(w, 2, {0.1f, 0.2f, 0.3f}, name);
  }
}

TEST(PriorityWeights, OutOfRangeValuesAreClampedAndAFullWeightTakesEverything) {
  // "Hard - Slide - Soft": hard 1.5 is clamped to 1 and leaves nothing.
  const auto& order = myo_core::ConstraintPriorityOrderLists().at(myo_core::kSkinConstraintPriorityOrder);
  Weights w = {{1.5f}, {0.3f}, {0.2f}};
  EXPECT_TRUE(myo_core::NormalizeByPriority(w.hard, w.soft, w.slide, order, 1));
  EXPECT_EQ(w.hard[0], 1.0f);
  EXPECT_EQ(w.soft[0], 0.0f);
  EXPECT_EQ(w.slide[0], 0.0f);

  // Sums of at most 1 (within 1e-6) change nothing.
  w = {{0.5f, 1.0f}, {0.25f, 0.0f}, {0.25f + 0.0000005f, 0.0f}};
  const Weights before = w;
  EXPECT_FALSE(myo_core::NormalizeByPriority(w.hard, w.soft, w.slide, order, 2));
  EXPECT_EQ(w.hard, before.hard);
  EXPECT_EQ(w.slide, before.slide);
}

TEST(PriorityWeights, MismatchedArraysAreRefusedUntouched) {
  const auto& order = myo_core::ConstraintPriorityOrderLists().at(0);
  Weights w = {{0.9f, 0.9f}, {0.9f, 0.9f}, {0.9f}};
  EXPECT_FALSE(myo_core::NormalizeByPriority(w.hard, w.soft, w.slide, order, 2));
  EXPECT_EQ(w.hard, (std::vector<float>{0.9f, 0.9f}));
}

TEST(PriorityWeights, OneAndTwoThreadsGiveTheSameBits) {
  const uint32_t n = 5000;
  Weights painted;
  for (uint32_t i = 0; i < n; ++i) {
    painted.hard.push_back(static_cast<float>(i % 17) / 10.0f);
    painted.soft.push_back(static_cast<float>(i % 11) / 9.0f);
    painted.slide.push_back(static_cast<float>(i % 7) / 5.0f);
  }
  auto run = [&](int threads) {
    Weights w = painted;
    const int previous = omp_get_max_threads();
    omp_set_num_threads(threads);
    EXPECT_TRUE(myo_core::NormalizeByPriority(w.hard, w.soft, w.slide, {1, 2, 0}, n));
    omp_set_num_threads(previous);
    return w;
  };
  const Weights one = run(1), two = run(2);
  EXPECT_EQ(0, std::memcmp(one.hard.data(), two.hard.data(), n * sizeof(float)));
  EXPECT_EQ(0, std::memcmp(one.soft.data(), two.soft.data(), n * sizeof(float)));
  EXPECT_EQ(0, std::memcmp(one.slide.data(), two.slide.data(), n * sizeof(float)));
}

}  // namespace
