// What the plug-in registers, in which order, and how load and unload react
// to the host's answers.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
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
  bool Register(const RegistrationStep& step) override { return Record(step, registered, true); }
  bool Deregister(const RegistrationStep& step) override { return Record(step, deregistered, false); }
  bool Record(const RegistrationStep& step, std::vector<std::string>& steps, bool add) {
    if (step.failure_name == fail_on) return false;
    steps.push_back(step.failure_name);
    if (step.kind == RegistrationKind::kNode) add ? (void)nodes.insert(step.name) : (void)nodes.erase(step.name);
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
    ASSERT_NE(FindDrawOverride(node.name), nullptr) << node.name;
    EXPECT_EQ(FindDrawOverride(node.name)->classification, node.classification);
  }
  // A step names what it registers: a draw override its locator.
  EXPECT_EQ(LoadOrder()[15].kind, RegistrationKind::kDrawOverride);
  EXPECT_EQ(LoadOrder()[15].name, "MyoDebugLocator");
}

// The level comes from the first character of the environment's value;
// anything that is no level 0 to 3 leaves the default, Info.
TEST(PluginLifecycleTest, LoadSetsTheLoggerLevelFromTheEnvironment) {
  myo_test::LogCapture log;
  FakePluginHost host;
  const std::pair<const char*, int32_t> cases[] = {{"3", 3}, {nullptr, 1}, {"0", 0}, {"12", 1}, {"7", 1}, {"-1", 1}};
  for (const auto& [value, level] : cases) {
    ASSERT_TRUE(LoadPlugin(host, value));
    EXPECT_EQ(GetLevel(), level) << (value ? value : "unset");
  }
}

// One row per answer of the host: a load, then an unload, against the same
// fake host that fails on the step named.
TEST(PluginLifecycleTest, LoadAndUnloadFollowTheHostsAnswers) {
  const std::string abort = "[MyoForge][Error] Could not retrieve a valid Maya launch state. Aborting MyoForge plugin ";
  struct Row {
    const char* what;
    int32_t state;
    bool state_known;
    std::string fail_on;
    bool loads;
    std::size_t registered;  // the first steps of the load order
    bool unloads;
    std::size_t deregistered;
    std::vector<std::string> scripts;
    std::vector<std::string> log;
  };
  const Row rows[] = {
      {"with a user interface", kLaunchBaseUi, true, "", true, 29, true, 29, {kLoadMenuScript, kUnloadMenuScript}, {}},
      // Unload walks the load order again, not in reverse.
      {"in batch", kLaunchBatch, true, "", true, 29, true, 29, {}, {}},
      {"without a launch state", kLaunchInteractive, false, "", false, 0, false, 0, {}, {abort + "loading.", abort + "unloading."}},
      // No node registered: the unload has nothing to do.
      {"failing on the first step", kLaunchInteractive, true, "MyoLocator", false, 0, true, 0,
       {kLoadMenuScript, kUnloadMenuScript}, {"[MyoForge][Error] Error occurred registering MyoLocator"}},
      {"failing on a later step", kLaunchBatch, true, "MyoSkin", false, 19, false, 19, {},
       {"[MyoForge][Error] Error occurred registering MyoSkin", "[MyoForge][Error] Error occurred deregistering MyoSkin"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    myo_test::LogCapture log;  // outlives the unload, which drops the logger when it succeeds
    FakePluginHost host;
    host.state = row.state;
    host.state_known = row.state_known;
    host.fail_on = row.fail_on;
    EXPECT_EQ(LoadPlugin(host, "0"), row.loads);
    EXPECT_EQ(host.registered, std::vector<std::string>(kDocumentedLoadOrder.begin(),
                                                        kDocumentedLoadOrder.begin() + row.registered));
    EXPECT_EQ(UnloadPlugin(host), row.unloads);
    EXPECT_EQ(host.deregistered, std::vector<std::string>(kDocumentedLoadOrder.begin(),
                                                          kDocumentedLoadOrder.begin() + row.deregistered));
    EXPECT_EQ(host.scripts, row.scripts);
    EXPECT_EQ(log.lines(), row.log);
    // The logger goes with a complete unload only.
    EXPECT_EQ(GetWorker() == nullptr, row.unloads && row.deregistered > 0);
  }
}
