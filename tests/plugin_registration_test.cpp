// What the plug-in registers, in which order, and how load and unload react
// to the host's answers.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "core/log/logger.h"
#include "core/plugin/plugin_lifecycle.h"
#include "core/plugin/registration_table.h"
#include "support/log_capture.h"

using namespace myo_core;

namespace {

// A host registry that records what it is asked and fails where told.
class FakePluginHost : public PluginHost {
 public:
  bool LaunchState(int32_t& value) override {
    value = state;
    return state_known;
  }
  void RunPython(const std::string& script) override { scripts.push_back(script); }
  bool Register(const RegistrationStep& step) override {
    if (step.failure_name == fail_on) return false;
    registered.push_back(step.failure_name);
    if (step.kind == RegistrationKind::kNode) nodes.insert(step.name);
    return true;
  }
  bool Deregister(const RegistrationStep& step) override {
    if (step.failure_name == fail_on) return false;
    deregistered.push_back(step.failure_name);
    if (step.kind == RegistrationKind::kNode) nodes.erase(step.name);
    return true;
  }
  bool IsNodeRegistered(const std::string& type_name) const override { return nodes.count(type_name) != 0; }

  int32_t state = kLaunchInteractive;
  bool state_known = true;
  std::string fail_on;
  std::vector<std::string> scripts;
  std::vector<std::string> registered;
  std::vector<std::string> deregistered;
  std::set<std::string> nodes;
};

const std::vector<std::string> kDocumentedLoadOrder = {
    "MyoLocator", "MyoLocatorDrawOverride", "MyoLocatorPosition", "MyoLocatorPositionDrawOverride",
    "MyoLocatorDistance", "MyoLocatorDistanceDrawOverride", "MyoLocatorRotation",
    "MyoLocatorRotationDrawOverride", "MyoSensorDistance", "MyoSensorPosition", "MyoSensorRotation",
    "MyoWeightsDisplayNode", "MyoDebugLocator", "MyoDataNode", "MyoEdgeEvaluator", "MyoDebugLocatorDrawOverride",
    "MyoRibbonMuscle", "MyoMuscle", "MyoSimshape", "MyoSkin", "MyoSkinMerge", "MyoLearnMusclePatches",
    "MyoPaintInitializeCommand", "MyoPaintSetValueCommand", "MyoPaintGetValueCommand", "MyoPaintFinalizeCommand",
    "MyoPaintFloodCommand", "MyoPaintDataCommand", "MyoPaintGetWeightCommand"};

// Keeps the logger installed by the test alive across UnloadPlugin, which
// drops the worker on success.
class PluginLifecycleTest : public ::testing::Test {
 protected:
  myo_test::LogCapture log_;
};

}  // namespace

// Saved scenes store the type ids: one block, in a fixed order.
TEST(RegistrationTableTest, NodeTypesAreOneBlockOfIdsAndLocatorsHaveTheirDrawOverrides) {
  const std::vector<NodeTypeInfo>& nodes = NodeTypes();
  ASSERT_EQ(nodes.size(), 16u);
  EXPECT_EQ(nodes[0].type_id, 1288128u);
  for (size_t i = 0; i < nodes.size(); ++i) {
    const NodeTypeInfo& node = nodes[i];
    EXPECT_EQ(node.type_id, nodes[0].type_id + i) << node.name;
    EXPECT_EQ(FindNodeType(node.name), &node);
    if (node.kind != NodeKind::kLocator) {
      EXPECT_TRUE(node.classification.empty()) << node.name;
      EXPECT_EQ(FindDrawOverride(node.name), nullptr) << node.name;
      continue;
    }
    EXPECT_EQ(node.classification, "drawdb/geometry/" + node.name);
    EXPECT_EQ(node.registrant_id, node.name + "Plug");
    ASSERT_NE(FindDrawOverride(node.name), nullptr) << node.name;
    EXPECT_EQ(FindDrawOverride(node.name)->classification, node.classification);
  }
  EXPECT_EQ(FindNodeType("MyoSkinMerge")->class_name, "MyoSkinMergeDeformer");
  EXPECT_EQ(FindNodeType("MyoNothing"), nullptr);
  // A step names what it registers: a draw override its locator.
  EXPECT_EQ(LoadOrder()[15].kind, RegistrationKind::kDrawOverride);
  EXPECT_EQ(LoadOrder()[15].name, "MyoDebugLocator");
}

TEST(PluginLoggerLevelTest, ParsesTheLoggerLevelByItsFirstCharacter) {
  EXPECT_EQ(LoggerLevelFromEnvironment("0"), 0);
  EXPECT_EQ(LoggerLevelFromEnvironment("12"), 1);
  EXPECT_LT(LoggerLevelFromEnvironment("-1"), 0);
  EXPECT_LT(LoggerLevelFromEnvironment(""), 0);
  EXPECT_LT(LoggerLevelFromEnvironment(nullptr), 0);
  EXPECT_TRUE(HasUserInterface(kLaunchBaseUi));
  EXPECT_FALSE(HasUserInterface(kLaunchBatch));
}

TEST_F(PluginLifecycleTest, LoadSetsTheLevelFromTheEnvironment) {
  FakePluginHost host;
  ASSERT_TRUE(LoadPlugin(host, nullptr));
  EXPECT_EQ(GetLevel(), 1);
  ASSERT_TRUE(LoadPlugin(host, "7"));
  EXPECT_EQ(GetLevel(), 1);
  ASSERT_TRUE(LoadPlugin(host, "3"));
  EXPECT_EQ(GetLevel(), 3);
  LogWarning("silenced");
  EXPECT_EQ(log_.Count("[MyoForge][Warning] silenced"), 0u);
  ASSERT_TRUE(LoadPlugin(host, "-1"));
  EXPECT_EQ(GetLevel(), 1);
}

TEST_F(PluginLifecycleTest, InteractiveLoadRunsTheMenuAndRegistersEverythingInOrder) {
  FakePluginHost host;
  ASSERT_TRUE(LoadPlugin(host, "0"));
  EXPECT_EQ(host.scripts, (std::vector<std::string>{kLoadMenuScript}));
  EXPECT_EQ(host.registered, kDocumentedLoadOrder);
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(PluginLifecycleTest, BatchLoadAndUnloadRunNoMenu) {
  FakePluginHost host;
  host.state = kLaunchBatch;
  ASSERT_TRUE(LoadPlugin(host, nullptr));
  ASSERT_TRUE(UnloadPlugin(host));
  EXPECT_TRUE(host.scripts.empty());
  // Unload walks the load order again, not in reverse, and drops the logger.
  EXPECT_EQ(host.deregistered, kDocumentedLoadOrder);
  EXPECT_EQ(GetWorker(), nullptr);
}

TEST_F(PluginLifecycleTest, AFailedStepStopsTheLoadAndKeepsWhatWasRegistered) {
  FakePluginHost host;
  host.fail_on = "MyoDebugLocatorDrawOverride";
  EXPECT_FALSE(LoadPlugin(host, "0"));
  EXPECT_EQ(host.registered.size(), 15u);
  EXPECT_EQ(host.registered.back(), "MyoEdgeEvaluator");
  EXPECT_EQ(log_.lines(), (std::vector<std::string>{"[MyoForge][Error] Error occurred registering "
                                                    "MyoDebugLocatorDrawOverride"}));
}

TEST_F(PluginLifecycleTest, UnknownLaunchStateRegistersNothing) {
  FakePluginHost host;
  host.state_known = false;
  EXPECT_FALSE(LoadPlugin(host, "0"));
  EXPECT_TRUE(host.registered.empty());
  EXPECT_TRUE(host.scripts.empty());
  EXPECT_EQ(log_.Count("[MyoForge][Error] Could not retrieve a valid Maya launch state. Aborting MyoForge plugin "
                       "loading."),
            1u);
  EXPECT_FALSE(UnloadPlugin(host));
  EXPECT_EQ(log_.Count("[MyoForge][Error] Could not retrieve a valid Maya launch state. Aborting MyoForge plugin "
                       "unloading."),
            1u);
  EXPECT_NE(GetWorker(), nullptr);
}

TEST_F(PluginLifecycleTest, UnloadAfterALoadThatRegisteredNoNodeDoesNothing) {
  FakePluginHost host;
  host.fail_on = "MyoLocator";
  EXPECT_FALSE(LoadPlugin(host, "0"));
  log_.Clear();
  EXPECT_TRUE(UnloadPlugin(host));
  EXPECT_EQ(host.scripts.back(), kUnloadMenuScript);
  EXPECT_TRUE(host.deregistered.empty());
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_NE(GetWorker(), nullptr);
}

TEST_F(PluginLifecycleTest, AFailedDeregistrationStopsTheUnloadAndKeepsTheLogger) {
  FakePluginHost host;
  ASSERT_TRUE(LoadPlugin(host, "0"));
  host.fail_on = "MyoSkin";
  EXPECT_FALSE(UnloadPlugin(host));
  EXPECT_EQ(host.deregistered.back(), "MyoSimshape");
  EXPECT_EQ(log_.Count("[MyoForge][Error] Error occurred deregistering MyoSkin"), 1u);
  EXPECT_NE(GetWorker(), nullptr);
}
