#pragma once
// "MyoDebugLocator": draws the debug lines and discs of every deformer
// registered in the "MyoDataNode" whose message feeds its "data". It reads
// the solvers' records in place, without a lock: the draw happens on the
// main thread while evaluation writes them.

#include <maya/M3dView.h>
#include <maya/MDagPath.h>
#include <maya/MObject.h>
#include <maya/MPxLocatorNode.h>
#include <maya/MTypeId.h>
#include <maya/MUserData.h>

#include <vector>

#include "maya/nodes/myo_data_node.h"
#include "maya/plugin/node_attributes.h"

// What the draw reads: the two maps of the data node, or null pointers when
// no data node is connected.
class MyoDebugLocatorData : public MUserData {
 public:
  // Points at the maps of the last "MyoDataNode" among the sources of the
  // locator's "data"; null pointers when there is none.
  void Read(const MObject& locator);

  const MyoDataNode::Registry::Records* records_ = nullptr;
  const MyoDataNode::Registry::Paths* paths_ = nullptr;
};

// The records to draw in `view`: from copies of both maps, those that are
// set and enabled and whose mesh path is known and visible in the view.
std::vector<const myo_core::DebugData*> VisibleDebugRecords(const MyoDebugLocatorData& data, M3dView& view);

class MyoDebugLocator : public MPxLocatorNode {
 public:
  static void* creator();
  static MStatus initialize();
  static const MTypeId id;
  static const myo_maya::NodeAttributes& attributes() { return attributes_; }

  // The legacy viewport: the same records through OpenGL calls.
  void draw(M3dView& view, const MDagPath& path, M3dView::DisplayStyle style, M3dView::DisplayStatus status) override;
  // The lines reach wherever the meshes are.
  bool isBounded() const override { return false; }

 private:
  static myo_maya::NodeAttributes attributes_;
};
