#include "maya/plugin/helper_cleanup.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MNodeMessage.h>
#include <maya/MPlug.h>
#include <maya/MPlugArray.h>
#include <maya/MPxGeometryFilter.h>
#include <maya/MTypeId.h>

#include <algorithm>
#include <set>

#include "core/plugin/registration_table.h"
#include "maya/plugin/debug_link.h"
#include "maya/plugin/maya_conversions.h"

namespace myo_maya {

namespace {

// Whether any input of `helper` comes from a node other than `deleted_name`.
bool HasOtherSource(const MObject& helper, const MString& deleted_name) {
  MFnDependencyNode fn(helper);
  MPlugArray plugs;
  fn.getConnections(plugs);
  for (unsigned p = 0; p < plugs.length(); ++p) {
    MPlugArray sources;
    plugs[p].connectedTo(sources, true, false);
    for (unsigned s = 0; s < sources.length(); ++s)
      if (MFnDependencyNode(sources[s].node()).name() != deleted_name) return true;
  }
  return false;
}

// The first plug `plug` feeds, or a null plug.
MPlug FirstDestination(const MPlug& plug) {
  MPlugArray destinations;
  if (plug.isNull() || !plug.connectedTo(destinations, false, true) || destinations.length() == 0) return MPlug();
  return destinations[0];
}

// The plug that feeds `plug`, or a null plug.
MPlug Source(const MPlug& plug) {
  MPlugArray sources;
  if (plug.isNull() || !plug.connectedTo(sources, true, false) || sources.length() == 0) return MPlug();
  return sources[0];
}

}  // namespace

const std::vector<std::string>& DeformerHelperTypes() {
  static const std::vector<std::string> types = {myo_core::kMyoWeightsDisplayNodeTypeName,
                                                 myo_core::kMyoDataNodeTypeName, myo_core::kMyoDebugLocatorTypeName};
  return types;
}

void OnNodeAboutToDelete(MObject& node, MDGModifier& modifier, void* client_data) {
  // The data node must stop pointing at the solver before the solver goes.
  UnregisterDebugData(node);
  const auto* helper_types = static_cast<const std::vector<std::string>*>(client_data);
  if (helper_types == nullptr) return;
  MFnDependencyNode deleted(node);
  const MString deleted_name = deleted.name();

  MPlug geometry_source;     // what fed the deformer, to feed the display node's consumer
  MPlug display_consumer;    // what the display node's output fed
  std::vector<MObject> locators;
  std::set<std::string> handled;

  MPlugArray plugs;
  deleted.getConnections(plugs);
  for (unsigned p = 0; p < plugs.length(); ++p) {
    MPlugArray destinations;
    plugs[p].connectedTo(destinations, false, true);
    for (unsigned d = 0; d < destinations.length(); ++d) {
      MObject helper = destinations[d].node();
      MFnDependencyNode fn(helper);
      const std::string type_name = ToStdString(fn.typeName());
      const std::string helper_name = ToStdString(fn.name());
      if (std::find(helper_types->begin(), helper_types->end(), type_name) == helper_types->end()) continue;
      if (!handled.insert(helper_name).second) continue;
      if (HasOtherSource(helper, deleted_name)) continue;

      if (fn.typeId() == MTypeId(myo_core::kMyoWeightsDisplayNodeId)) {
        MPlug inputs(node, MPxGeometryFilter::input);
        geometry_source = Source(ChildPlug(inputs.elementByLogicalIndex(0), MPxGeometryFilter::inputGeom));
        display_consumer = FirstDestination(fn.findPlug("outMesh", true));
      }
      if (fn.typeId() == MTypeId(myo_core::kMyoDataNodeId)) {
        const MPlug viewer = FirstDestination(fn.findPlug("message", true));
        if (!viewer.isNull() &&
            ToStdString(MFnDependencyNode(viewer.node()).typeName()) == myo_core::kMyoDebugLocatorTypeName)
          locators.push_back(viewer.node());
      }
      modifier.deleteNode(helper);
    }
  }
  if (!geometry_source.isNull() && !display_consumer.isNull()) modifier.connect(geometry_source, display_consumer);
  for (const MObject& locator : locators) modifier.deleteNode(locator);
  modifier.doIt();
}

MCallbackId AddHelperCleanupCallback(MObject& node) {
  // The callback only reads the list; Maya's signature wants it mutable.
  auto* helper_types = const_cast<std::vector<std::string>*>(&DeformerHelperTypes());
  MStatus status;
  const MCallbackId id = MNodeMessage::addNodeAboutToDeleteCallback(node, OnNodeAboutToDelete, helper_types, &status);
  return status ? id : 0;
}

}  // namespace myo_maya
