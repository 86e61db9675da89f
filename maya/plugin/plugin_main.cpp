// The plug-in's entry points. The order of registration, the messages and
// where a failure stops live in core (core/plugin/plugin_lifecycle.h); this
// file answers for Maya: the launch state, the menu scripts and the node
// classes, draw overrides and commands behind each row of the load order.

#include <maya/MDrawRegistry.h>
#include <maya/MFnPlugin.h>
#include <maya/MGlobal.h>
#include <maya/MObject.h>
#include <maya/MPxNode.h>
#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MTypeId.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "core/learning/learn_muscle_patches.h"
#include "core/log/logger.h"
#include "core/plugin/plugin_lifecycle.h"
#include "core/plugin/registration_table.h"
#include "maya/commands/myo_learn_muscle_patches_command.h"
#include "maya/commands/myo_paint_data_commands.h"
#include "maya/commands/myo_paint_stroke_commands.h"
#include "maya/nodes/myo_data_node.h"
#include "maya/nodes/myo_debug_locator.h"
#include "maya/nodes/myo_debug_locator_draw_override.h"
#include "maya/nodes/myo_edge_evaluator.h"
#include "maya/nodes/myo_locator_draw_overrides.h"
#include "maya/nodes/myo_locator_nodes.h"
#include "maya/nodes/myo_muscle_deformer.h"
#include "maya/nodes/myo_ribbon_muscle_deformer.h"
#include "maya/nodes/myo_sensor_nodes.h"
#include "maya/nodes/myo_simshape_deformer.h"
#include "maya/nodes/myo_skin_deformer.h"
#include "maya/nodes/myo_skin_merge_deformer.h"
#include "maya/nodes/myo_weights_display_node.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_logger_worker.h"

namespace {

struct NodeClass {
  const char* type_name;
  MCreatorFunction creator;
  MInitializeFunction initialize;
};

// The node classes of this build.
const NodeClass kNodeClasses[] = {
    {myo_core::kMyoLocatorTypeName, MyoLocator::creator, MyoLocator::initialize},
    {myo_core::kMyoLocatorPositionTypeName, MyoLocatorPosition::creator, MyoLocatorPosition::initialize},
    {myo_core::kMyoLocatorDistanceTypeName, MyoLocatorDistance::creator, MyoLocatorDistance::initialize},
    {myo_core::kMyoLocatorRotationTypeName, MyoLocatorRotation::creator, MyoLocatorRotation::initialize},
    {myo_core::kMyoSensorDistanceTypeName, MyoSensorDistance::creator, MyoSensorDistance::initialize},
    {myo_core::kMyoSensorPositionTypeName, MyoSensorPosition::creator, MyoSensorPosition::initialize},
    {myo_core::kMyoSensorRotationTypeName, MyoSensorRotation::creator, MyoSensorRotation::initialize},
    {myo_core::kMyoWeightsDisplayNodeTypeName, MyoWeightsDisplayNode::creator, MyoWeightsDisplayNode::initialize},
    {myo_core::kMyoDebugLocatorTypeName, MyoDebugLocator::creator, MyoDebugLocator::initialize},
    {myo_core::kMyoDataNodeTypeName, MyoDataNode::creator, MyoDataNode::initialize},
    {myo_core::kMyoRibbonMuscleTypeName, MyoRibbonMuscleDeformer::creator, MyoRibbonMuscleDeformer::initialize},
    {myo_core::kMyoMuscleTypeName, MyoMuscleDeformer::creator, MyoMuscleDeformer::initialize},
    {myo_core::kMyoSimshapeTypeName, MyoSimshapeDeformer::creator, MyoSimshapeDeformer::initialize},
    {myo_core::kMyoSkinTypeName, MyoSkinDeformer::creator, MyoSkinDeformer::initialize},
    {myo_core::kMyoEdgeEvaluatorTypeName, MyoEdgeEvaluator::creator, MyoEdgeEvaluator::initialize},
    {myo_core::kMyoSkinMergeTypeName, MyoSkinMergeDeformer::creator, MyoSkinMergeDeformer::initialize},
};

struct CommandClass {
  const char* name;
  MCreatorFunction creator;
  MCreateSyntaxFunction syntax;
};

// The command classes of this build.
const CommandClass kCommandClasses[] = {
    {myo_core::kLearnMusclePatchesCommandName, MyoLearnMusclePatchesCommand::creator,
     MyoLearnMusclePatchesCommand::newSyntax},
    {"MyoPaintInitializeCommand", myo_maya::MyoPaintInitializeCommand::creator,
     myo_maya::MyoPaintInitializeCommand::newSyntax},
    {"MyoPaintSetValueCommand", myo_maya::MyoPaintSetValueCommand::creator,
     myo_maya::MyoPaintSetValueCommand::newSyntax},
    {"MyoPaintGetValueCommand", myo_maya::MyoPaintGetValueCommand::creator,
     myo_maya::MyoPaintGetValueCommand::newSyntax},
    {"MyoPaintFinalizeCommand", myo_maya::MyoPaintFinalizeCommand::creator,
     myo_maya::MyoPaintFinalizeCommand::newSyntax},
    // Registered without a syntax: it reads no flags.
    {"MyoPaintFloodCommand", myo_maya::MyoPaintFloodCommand::creator, nullptr},
    {"MyoPaintDataCommand", myo_maya::MyoPaintDataCommand::creator, myo_maya::MyoPaintDataCommand::newSyntax},
    {"MyoPaintGetWeightCommand", myo_maya::MyoPaintGetWeightCommand::creator,
     myo_maya::MyoPaintGetWeightCommand::newSyntax},
};

const CommandClass* FindCommandClass(const std::string& name) {
  for (const CommandClass& command : kCommandClasses)
    if (name == command.name) return &command;
  return nullptr;
}

struct DrawOverrideClass {
  const char* node_type;  // the locator it draws
  MHWRender::MDrawRegistry::DrawOverrideCreator creator;
};

// The draw overrides of this build.
const DrawOverrideClass kDrawOverrideClasses[] = {
    {myo_core::kMyoLocatorTypeName, MyoLocatorDrawOverride::Creator},
    {myo_core::kMyoLocatorPositionTypeName, MyoLocatorPositionDrawOverride::Creator},
    {myo_core::kMyoLocatorDistanceTypeName, MyoLocatorDistanceDrawOverride::Creator},
    {myo_core::kMyoLocatorRotationTypeName, MyoLocatorRotationDrawOverride::Creator},
    {myo_core::kMyoDebugLocatorTypeName, MyoDebugLocatorDrawOverride::Creator},
};

const DrawOverrideClass* FindDrawOverrideClass(const std::string& node_type) {
  for (const DrawOverrideClass& draw : kDrawOverrideClasses)
    if (node_type == draw.node_type) return &draw;
  return nullptr;
}

const NodeClass* FindNodeClass(const std::string& type_name) {
  for (const NodeClass& node : kNodeClasses)
    if (type_name == node.type_name) return &node;
  return nullptr;
}

MPxNode::Type MayaKind(myo_core::NodeKind kind) {
  switch (kind) {
    case myo_core::NodeKind::kLocator: return MPxNode::kLocatorNode;
    case myo_core::NodeKind::kDeformer: return MPxNode::kDeformerNode;
    case myo_core::NodeKind::kDependency: break;
  }
  return MPxNode::kDependNode;
}

// Maya's side of the load and unload sequences. Keeps the status of the last
// call, which the entry points return.
class MayaPluginHost : public myo_core::PluginHost {
 public:
  explicit MayaPluginHost(MFnPlugin& plugin) : plugin_(plugin) {}

  bool LaunchState(int32_t& state) override {
    const MGlobal::MMayaState maya_state = MGlobal::mayaState(&status_);
    state = static_cast<int32_t>(maya_state);
    return static_cast<bool>(status_);
  }

  void RunPython(const std::string& script) override {
    MGlobal::executePythonCommand(myo_maya::ToMString(script), false, false);
  }

  bool Register(const myo_core::RegistrationStep& step) override {
    if (step.kind == myo_core::RegistrationKind::kCommand) {
      const CommandClass* command = FindCommandClass(step.name);
      if (command == nullptr) return Fail();
      status_ = plugin_.registerCommand(myo_maya::ToMString(step.name), command->creator, command->syntax);
      return static_cast<bool>(status_);
    }
    const myo_core::NodeTypeInfo* info = myo_core::FindNodeType(step.name);
    if (info == nullptr) return Fail();
    const MString classification = myo_maya::ToMString(info->classification);
    if (step.kind == myo_core::RegistrationKind::kDrawOverride) {
      const DrawOverrideClass* draw = FindDrawOverrideClass(step.name);
      if (draw == nullptr) return Fail();
      status_ = MHWRender::MDrawRegistry::registerDrawOverrideCreator(
          classification, myo_maya::ToMString(info->registrant_id), draw->creator);
      return static_cast<bool>(status_);
    }
    const NodeClass* node = FindNodeClass(step.name);
    if (node == nullptr) return Fail();
    status_ = plugin_.registerNode(myo_maya::ToMString(info->name), MTypeId(info->type_id), node->creator,
                                   node->initialize, MayaKind(info->kind),
                                   info->classification.empty() ? nullptr : &classification);
    return static_cast<bool>(status_);
  }

  bool Deregister(const myo_core::RegistrationStep& step) override {
    if (step.kind == myo_core::RegistrationKind::kCommand) {
      status_ = plugin_.deregisterCommand(myo_maya::ToMString(step.name));
      return static_cast<bool>(status_);
    }
    const myo_core::NodeTypeInfo* info = myo_core::FindNodeType(step.name);
    if (info == nullptr) return Fail();
    if (step.kind == myo_core::RegistrationKind::kDrawOverride) {
      // Deliberately the geometry override call: unload keeps this pairing
      // with the draw override registration of load.
      status_ = MHWRender::MDrawRegistry::deregisterGeometryOverrideCreator(
          myo_maya::ToMString(info->classification), myo_maya::ToMString(info->registrant_id));
      return static_cast<bool>(status_);
    }
    status_ = plugin_.deregisterNode(MTypeId(info->type_id));
    return static_cast<bool>(status_);
  }

  bool IsNodeRegistered(const std::string& type_name) const override {
    return MFnPlugin::isNodeRegistered(myo_maya::ToMString(type_name));
  }

  MStatus status() const { return status_; }

 private:
  bool Fail() {
    status_ = MS::kFailure;
    return false;
  }

  MFnPlugin& plugin_;
  MStatus status_ = MS::kSuccess;
};

}  // namespace

PLUGIN_EXPORT MStatus initializePlugin(MObject plugin_object) {
  const char* version = std::getenv("MYOFORGE_VERSION");
  MFnPlugin plugin(plugin_object, "Corvan LTD", version, "Any");
  myo_core::SetWorker(std::make_shared<myo_maya::MayaLoggerWorker>());
  MayaPluginHost host(plugin);
  myo_core::LoadPlugin(host, std::getenv("MYO_LOGGER_LEVEL"));
  return host.status();
}

PLUGIN_EXPORT MStatus uninitializePlugin(MObject plugin_object) {
  MFnPlugin plugin(plugin_object, "Unknown", "Unknown", "Any");
  MayaPluginHost host(plugin);
  myo_core::UnloadPlugin(host);
  return host.status();
}
