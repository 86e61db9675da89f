#include "maya/plugin/debug_link.h"

#include <maya/MDagPath.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MPlug.h>
#include <maya/MPlugArray.h>
#include <maya/MPxGeometryFilter.h>
#include <maya/MPxNode.h>
#include <maya/MUuid.h>

#include <string>

#include "maya/nodes/myo_data_node.h"
#include "maya/plugin/maya_conversions.h"

namespace myo_maya {

namespace {

// The first "MyoDataNode" among the destinations of the node's message
// whose user node can be had; null when there is none.
MyoDataNode* FindDataNode(const MObject& deformer) {
  MPlug message(deformer, MPxNode::message);
  MPlugArray destinations;
  if (message.isNull() || !message.connectedTo(destinations, false, true)) return nullptr;
  for (unsigned d = 0; d < destinations.length(); ++d) {
    MFnDependencyNode fn(destinations[d].node());
    if (fn.typeId() != MyoDataNode::id) continue;
    if (auto* data_node = dynamic_cast<MyoDataNode*>(fn.userNode())) return data_node;
  }
  return nullptr;
}

std::string UuidKey(const MObject& node) { return ToStdString(MFnDependencyNode(node).uuid().asString()); }

}  // namespace

void RegisterDebugData(const MObject& deformer, myo_core::DebugData* record) {
  MPlug output(deformer, MPxGeometryFilter::outputGeom);
  if (!output.selectAncestorLogicalIndex(0)) return;
  MPlugArray meshes;
  if (!output.connectedTo(meshes, false, true) || meshes.length() == 0) return;
  MDagPath path;
  if (!MDagPath::getAPathTo(meshes[0].node(), path)) return;
  MyoDataNode* data_node = FindDataNode(deformer);
  if (data_node == nullptr) return;
  data_node->registry().Register(UuidKey(deformer), record, path);
  data_node->Prune();
}

void UnregisterDebugData(const MObject& deformer) {
  MyoDataNode* data_node = FindDataNode(deformer);
  if (data_node == nullptr) return;
  data_node->registry().Unregister(UuidKey(deformer));
  data_node->Prune();
}

}  // namespace myo_maya
