// The plug-in's entry points. The order of registration, the messages and
// where a failure stops live in core (core/plugin/plugin_lifecycle.h); this
// file answers for Maya: the launch state, the menu scripts and the node
// classes this build provides. Rows of the load order whose class does not
// exist here are skipped.

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

#include "core/log/logger.h"
#include "core/plugin/plugin_lifecycle.h"
#include "core/plugin/registration_table.h"
#include "maya/nodes/myo_edge_evaluator.h"
#include "maya/nodes/myo_muscle_deformer.h"
#include "maya/nodes/myo_ribbon_muscle_deformer.h"
#include "maya/nodes/myo_simshape_deformer.h"
#include "maya/nodes/myo_skin_deformer.h"
#include "maya/nodes/myo_skin_merge_deformer.h"
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
    {myo_core::kMyoRibbonMuscleTypeName, MyoRibbonMuscleDeformer::creator, MyoRibbonMuscleDeformer::initialize},
    {myo_core::kMyoMuscleTypeName, MyoMuscleDeformer::creator, MyoMuscleDeformer::initialize},
    {myo_core::kMyoSimshapeTypeName, MyoSimshapeDeformer::creator, MyoSimshapeDeformer::initialize},
    {myo_core::kMyoSkinTypeName, MyoSkinDeformer::creator, MyoSkinDeformer::initialize},
    {myo_core::kMyoEdgeEvaluatorTypeName, MyoEdgeEvaluator::creator, MyoEdgeEvaluator::initialize},
    {myo_core::kMyoSkinMergeTypeName, MyoSkinMergeDeformer::creator, MyoSkinMergeDeformer::initialize},
};

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

  // Only node steps have classes in this build: draw overrides and commands
  // are not provided yet.
  bool Provides(const myo_core::RegistrationStep& step) const override {
    return step.kind == myo_core::RegistrationKind::kNode && FindNodeClass(step.name) != nullptr;
  }

  bool Register(const myo_core::RegistrationStep& step) override {
    const NodeClass* node = FindNodeClass(step.name);
    const myo_core::NodeTypeInfo* info = myo_core::FindNodeType(step.name);
    if (node == nullptr || info == nullptr) return Fail();
    const MString classification = myo_maya::ToMString(info->classification);
    status_ = plugin_.registerNode(myo_maya::ToMString(info->name), MTypeId(info->type_id), node->creator,
                                   node->initialize, MayaKind(info->kind),
                                   info->classification.empty() ? nullptr : &classification);
    return static_cast<bool>(status_);
  }

  bool Deregister(const myo_core::RegistrationStep& step) override {
    const myo_core::NodeTypeInfo* info = myo_core::FindNodeType(step.name);
    if (info == nullptr) return Fail();
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
