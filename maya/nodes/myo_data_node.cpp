#include "maya/nodes/myo_data_node.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MIntArray.h>
#include <maya/MPlugArray.h>
#include <maya/MUuid.h>

#include <vector>

#include "core/debug/helper_node_attributes.h"
#include "core/plugin/registration_table.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/node_helpers.h"

const MTypeId MyoDataNode::id(myo_core::kMyoDataNodeId);
myo_maya::NodeAttributes MyoDataNode::attributes_;

void* MyoDataNode::creator() { return new MyoDataNode(); }

MStatus MyoDataNode::initialize() {
  return attributes_.Create(
      myo_core::DataNodeAttributes(), [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject&, const MObject&) { return MStatus(MS::kSuccess); }, MObject::kNullObj);
}

MStatus MyoDataNode::compute(const MPlug& plug, MDataBlock& block) {
  block.setClean(plug);
  return MS::kSuccess;
}

void MyoDataNode::Prune() {
  const MObject node = thisMObject();
  const MObject& inputs = attributes_["inputs"];
  MIntArray connected;
  myo_maya::ConnectedIndices(node, inputs, connected);
  registry_.Prune(connected.length(), [&]() {
    // The uuid of the first source of each connected element.
    std::vector<std::string> keys;
    MPlug list(node, inputs);
    for (unsigned k = 0; k < connected.length(); ++k) {
      MPlugArray sources;
      list.elementByLogicalIndex(static_cast<unsigned>(connected[k])).connectedTo(sources, true, false);
      if (sources.length() == 0) continue;
      keys.push_back(myo_maya::ToStdString(MFnDependencyNode(sources[0].node()).uuid().asString()));
    }
    return keys;
  });
}
