#include "core/plugin/registration_table.h"

namespace myo_core {

namespace {

NodeTypeInfo Locator(const char* name, uint32_t id) {
  const std::string n = name;
  return {n, id, n, NodeKind::kLocator, "drawdb/geometry/" + n, n + "Plug", n + "DrawOverride"};
}

NodeTypeInfo Plain(const char* name, uint32_t id, const char* class_name, NodeKind kind) {
  return {name, id, class_name, kind, "", "", ""};
}

RegistrationStep NodeStep(const char* name) { return {RegistrationKind::kNode, name, name}; }

RegistrationStep OverrideStep(const char* node_type) {
  return {RegistrationKind::kDrawOverride, node_type, FindNodeType(node_type)->draw_override_name};
}

RegistrationStep CommandStep(const std::string& name) { return {RegistrationKind::kCommand, name, name}; }

}  // namespace

const std::vector<NodeTypeInfo>& NodeTypes() {
  static const std::vector<NodeTypeInfo> table = {
      Locator(kMyoLocatorTypeName, kMyoLocatorId),
      Locator(kMyoLocatorPositionTypeName, kMyoLocatorPositionId),
      Locator(kMyoLocatorDistanceTypeName, kMyoLocatorDistanceId),
      Locator(kMyoLocatorRotationTypeName, kMyoLocatorRotationId),
      Plain(kMyoRibbonMuscleTypeName, kMyoRibbonMuscleId, "MyoRibbonMuscleDeformer", NodeKind::kDeformer),
      Plain(kMyoSimshapeTypeName, kMyoSimshapeId, "MyoSimshapeDeformer", NodeKind::kDeformer),
      Plain(kMyoSkinTypeName, kMyoSkinId, "MyoSkinDeformer", NodeKind::kDeformer),
      Plain(kMyoMuscleTypeName, kMyoMuscleId, "MyoMuscleDeformer", NodeKind::kDeformer),
      Plain(kMyoSensorDistanceTypeName, kMyoSensorDistanceId, "MyoSensorDistance", NodeKind::kDependency),
      Plain(kMyoSensorPositionTypeName, kMyoSensorPositionId, "MyoSensorPosition", NodeKind::kDependency),
      Plain(kMyoSensorRotationTypeName, kMyoSensorRotationId, "MyoSensorRotation", NodeKind::kDependency),
      Plain(kMyoWeightsDisplayNodeTypeName, kMyoWeightsDisplayNodeId, "MyoWeightsDisplayNode",
            NodeKind::kDependency),
      Plain(kMyoSkinMergeTypeName, kMyoSkinMergeId, "MyoSkinMergeDeformer", NodeKind::kDeformer),
      Plain(kMyoEdgeEvaluatorTypeName, kMyoEdgeEvaluatorId, "MyoEdgeEvaluator", NodeKind::kDependency),
      Locator(kMyoDebugLocatorTypeName, kMyoDebugLocatorId),
      Plain(kMyoDataNodeTypeName, kMyoDataNodeId, "MyoDataNode", NodeKind::kDependency),
  };
  return table;
}

const std::vector<DrawOverrideInfo>& DrawOverrides() {
  static const std::vector<DrawOverrideInfo> table = [] {
    std::vector<DrawOverrideInfo> overrides;
    for (const char* locator : {kMyoLocatorTypeName, kMyoLocatorPositionTypeName, kMyoLocatorDistanceTypeName,
                                kMyoLocatorRotationTypeName, kMyoDebugLocatorTypeName}) {
      const NodeTypeInfo* node = FindNodeType(locator);
      overrides.push_back({node->name, node->classification, node->registrant_id, node->draw_override_name,
                           node->draw_override_name});
    }
    return overrides;
  }();
  return table;
}

const std::vector<CommandInfo>& Commands() {
  static const std::vector<CommandInfo> table = {
      {"MyoLearnMusclePatches", true},     {"MyoPaintInitializeCommand", true},
      {"MyoPaintSetValueCommand", true},   {"MyoPaintGetValueCommand", true},
      {"MyoPaintFinalizeCommand", true},   {"MyoPaintFloodCommand", false},
      {"MyoPaintDataCommand", true},       {"MyoPaintGetWeightCommand", true},
  };
  return table;
}

const std::vector<RegistrationStep>& LoadOrder() {
  static const std::vector<RegistrationStep> table = [] {
    std::vector<RegistrationStep> steps = {
        NodeStep(kMyoLocatorTypeName),
        OverrideStep(kMyoLocatorTypeName),
        NodeStep(kMyoLocatorPositionTypeName),
        OverrideStep(kMyoLocatorPositionTypeName),
        NodeStep(kMyoLocatorDistanceTypeName),
        OverrideStep(kMyoLocatorDistanceTypeName),
        NodeStep(kMyoLocatorRotationTypeName),
        OverrideStep(kMyoLocatorRotationTypeName),
        NodeStep(kMyoSensorDistanceTypeName),
        NodeStep(kMyoSensorPositionTypeName),
        NodeStep(kMyoSensorRotationTypeName),
        NodeStep(kMyoWeightsDisplayNodeTypeName),
        NodeStep(kMyoDebugLocatorTypeName),
        NodeStep(kMyoDataNodeTypeName),
        NodeStep(kMyoEdgeEvaluatorTypeName),
        // The debug locator's override follows the two nodes registered after it.
        OverrideStep(kMyoDebugLocatorTypeName),
        NodeStep(kMyoRibbonMuscleTypeName),
        NodeStep(kMyoMuscleTypeName),
        NodeStep(kMyoSimshapeTypeName),
        NodeStep(kMyoSkinTypeName),
        NodeStep(kMyoSkinMergeTypeName),
    };
    for (const CommandInfo& command : Commands()) steps.push_back(CommandStep(command.name));
    return steps;
  }();
  return table;
}

const NodeTypeInfo* FindNodeType(const std::string& name) {
  for (const NodeTypeInfo& node : NodeTypes())
    if (node.name == name) return &node;
  return nullptr;
}

const DrawOverrideInfo* FindDrawOverride(const std::string& node_type) {
  for (const DrawOverrideInfo& draw : DrawOverrides())
    if (draw.node_type == node_type) return &draw;
  return nullptr;
}

const CommandInfo* FindCommand(const std::string& name) {
  for (const CommandInfo& command : Commands())
    if (command.name == name) return &command;
  return nullptr;
}

}  // namespace myo_core
