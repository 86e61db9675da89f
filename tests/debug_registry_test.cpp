// The debug view's registry of records and paths, its hash and prune, and
// which discs are drawn and how.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "core/debug/debug_discs.h"
#include "core/debug/debug_registry.h"

using namespace myo_core;

namespace {

using Registry = DebugRegistry<std::string>;

TEST(DebugRegistry, HashIsFnv1a64WithBytesTakenUnsigned) {
  EXPECT_EQ(UuidHash()("foobar"), static_cast<std::size_t>(0x85944171F73967E8ull));
  EXPECT_NE(Fnv1a64("\xff"), Fnv1a64("\x7f"));
}

TEST(DebugRegistry, RegisterReplacesAndUnregisterForgetsBothMaps) {
  DebugData first, rebuilt, other;
  Registry registry;
  registry.Register("uuid-a", &first, "|muscle|muscleShape");
  registry.Register("uuid-b", &other, "|skin|skinShape");
  registry.Register("uuid-a", &rebuilt, "|muscle|muscleShape2");
  EXPECT_EQ(registry.records().at("uuid-a"), &rebuilt);
  EXPECT_EQ(registry.paths().at("uuid-a"), "|muscle|muscleShape2");

  // One of two deformers removed keeps the other.
  registry.Unregister("uuid-a");
  EXPECT_EQ(registry.records().count("uuid-a"), 0u);
  EXPECT_EQ(registry.paths().count("uuid-a"), 0u);
  EXPECT_EQ(registry.records().at("uuid-b"), &other);
  registry.Unregister("unknown");
  EXPECT_EQ(registry.records().size(), 1u);
}

TEST(DebugRegistry, PruneKeepsOnlyConnectedSources) {
  DebugData a, b, c;
  Registry registry;
  registry.Register("a", &a, "A");
  registry.Register("b", &b, "B");
  registry.Register("c", &c, "C");

  // As many inputs as records: nothing can be stale, the sources are not
  // even asked for.
  int asked = 0;
  registry.Prune(3, [&] {
    ++asked;
    return std::vector<std::string>{};
  });
  EXPECT_EQ(asked, 0);
  EXPECT_EQ(registry.records().size(), 3u);

  // "b" was disconnected: it goes from both maps at the next prune.
  registry.Prune(2, [&] {
    ++asked;
    return std::vector<std::string>{"a", "c"};
  });
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(registry.records().count("b"), 0u);
  EXPECT_EQ(registry.paths().count("b"), 0u);
  EXPECT_EQ(registry.paths().at("c"), "C");

  // Nothing connected any more.
  registry.Prune(0, [] { return std::vector<std::string>{}; });
  EXPECT_TRUE(registry.records().empty());
  EXPECT_TRUE(registry.paths().empty());
}

TEST(DebugDiscs, ValueBelowOneHundredthIsNotDrawn) {
  EXPECT_FALSE(IsDiscDrawn(0.009f));
  EXPECT_TRUE(IsDiscDrawn(0.01f));
  EXPECT_FALSE(IsDiscDrawn(std::nanf("")));
  // Two discs and a partial third; the first is too faint.
  const std::vector<float> discs = {0, 0, 0, 0, 0, 1, 0.009f, 1, 2, 3, 0, 1, 0, 0.01f, 5, 5, 5};
  const std::vector<DebugDisc> drawn = DrawnDiscs(discs);
  ASSERT_EQ(drawn.size(), 1u);
  EXPECT_FLOAT_EQ(drawn[0].centre.x, 1.0f);
  EXPECT_FLOAT_EQ(drawn[0].centre.y, 2.01f);  // lifted along the normal
  EXPECT_FLOAT_EQ(drawn[0].centre.z, 3.0f);
  EXPECT_FLOAT_EQ(drawn[0].value, 0.01f);
}

TEST(DebugDiscs, FanClosesItsCircleAndRotationTurnsZOntoTheNormal) {
  const auto fan = DiscFan();
  ASSERT_EQ(fan.size(), 18u);
  EXPECT_NEAR(fan[17].x, fan[1].x, 1e-6f);  // 16 steps of 22.5 degrees
  EXPECT_NEAR(fan[17].y, 0.0f, 1e-6f);

  const DiscRotation onto_x = RotationOntoNormal({2.0f, 0.0f, 0.0f});
  EXPECT_NEAR(onto_x.degrees, 90.0f, 1e-4f);
  EXPECT_NEAR(onto_x.axis.y, 1.0f, 1e-6f);  // z turns onto x about y
  // Against z there is no axis from the cross product: x is used.
  const DiscRotation flip = RotationOntoNormal({0, 0, -1});
  EXPECT_NEAR(flip.degrees, 180.0f, 1e-3f);
  EXPECT_EQ(flip.axis.x, 1.0f);
}

}  // namespace
