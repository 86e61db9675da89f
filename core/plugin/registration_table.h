#pragma once
// What the plug-in registers with its host, as plain data: the sixteen node
// types with their ids and draw strings, the five draw overrides, the eight
// commands, and the one order in which load walks them (unload walks the
// same order again, not in reverse).

#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

// Node type names, shared by nodes, commands and messages.
inline constexpr char kMyoLocatorTypeName[] = "MyoLocator";
inline constexpr char kMyoLocatorPositionTypeName[] = "MyoLocatorPosition";
inline constexpr char kMyoLocatorDistanceTypeName[] = "MyoLocatorDistance";
inline constexpr char kMyoLocatorRotationTypeName[] = "MyoLocatorRotation";
inline constexpr char kMyoRibbonMuscleTypeName[] = "MyoRibbonMuscle";
inline constexpr char kMyoSimshapeTypeName[] = "MyoSimshape";
inline constexpr char kMyoSkinTypeName[] = "MyoSkin";
inline constexpr char kMyoMuscleTypeName[] = "MyoMuscle";
inline constexpr char kMyoSensorDistanceTypeName[] = "MyoSensorDistance";
inline constexpr char kMyoSensorPositionTypeName[] = "MyoSensorPosition";
inline constexpr char kMyoSensorRotationTypeName[] = "MyoSensorRotation";
inline constexpr char kMyoWeightsDisplayNodeTypeName[] = "MyoWeightsDisplayNode";
inline constexpr char kMyoSkinMergeTypeName[] = "MyoSkinMerge";
inline constexpr char kMyoEdgeEvaluatorTypeName[] = "MyoEdgeEvaluator";
inline constexpr char kMyoDebugLocatorTypeName[] = "MyoDebugLocator";
inline constexpr char kMyoDataNodeTypeName[] = "MyoDataNode";

// Type ids: one block of sixteen consecutive numbers.
constexpr uint32_t kMyoLocatorId = 0x13A7C0;
constexpr uint32_t kMyoLocatorPositionId = 0x13A7C1;
constexpr uint32_t kMyoLocatorDistanceId = 0x13A7C2;
constexpr uint32_t kMyoLocatorRotationId = 0x13A7C3;
constexpr uint32_t kMyoRibbonMuscleId = 0x13A7C4;
constexpr uint32_t kMyoSimshapeId = 0x13A7C5;
constexpr uint32_t kMyoSkinId = 0x13A7C6;
constexpr uint32_t kMyoMuscleId = 0x13A7C7;
constexpr uint32_t kMyoSensorDistanceId = 0x13A7C8;
constexpr uint32_t kMyoSensorPositionId = 0x13A7C9;
constexpr uint32_t kMyoSensorRotationId = 0x13A7CA;
constexpr uint32_t kMyoWeightsDisplayNodeId = 0x13A7CB;
constexpr uint32_t kMyoSkinMergeId = 0x13A7CC;
constexpr uint32_t kMyoEdgeEvaluatorId = 0x13A7CD;
constexpr uint32_t kMyoDebugLocatorId = 0x13A7CE;
constexpr uint32_t kMyoDataNodeId = 0x13A7CF;

// The host's kinds of node: a locator, a deformer, a plain dependency node.
enum class NodeKind { kLocator, kDeformer, kDependency };

struct NodeTypeInfo {
  std::string name;                // node type name
  uint32_t type_id = 0;
  std::string class_name;          // the class that implements it
  NodeKind kind = NodeKind::kDependency;
  std::string classification;      // draw classification; empty but for locators
  std::string registrant_id;       // of the draw override; empty but for locators
  std::string draw_override_name;  // used in messages; empty but for locators
};

struct DrawOverrideInfo {
  std::string node_type;       // the locator it draws
  std::string classification;  // as given to registerDrawOverrideCreator
  std::string registrant_id;
  std::string name;            // in messages
  std::string class_name;
};

struct CommandInfo {
  std::string name;
  bool has_syntax = true;  // registered with a syntax function
};

enum class RegistrationKind { kNode, kDrawOverride, kCommand };

// One row of the load order. `name` is the node type name (for a draw
// override, that of the locator it draws) or the command name;
// `failure_name` is what the failure message names.
struct RegistrationStep {
  RegistrationKind kind = RegistrationKind::kNode;
  std::string name;
  std::string failure_name;
};

// The sixteen node types in id order.
const std::vector<NodeTypeInfo>& NodeTypes();
// The five draw overrides in load order.
const std::vector<DrawOverrideInfo>& DrawOverrides();
// The eight commands in load order.
const std::vector<CommandInfo>& Commands();
// The twenty-nine steps of a load.
const std::vector<RegistrationStep>& LoadOrder();

// Lookups by name; null when there is none.
const NodeTypeInfo* FindNodeType(const std::string& name);
const DrawOverrideInfo* FindDrawOverride(const std::string& node_type);
const CommandInfo* FindCommand(const std::string& name);

}  // namespace myo_core
