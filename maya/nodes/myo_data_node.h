#pragma once
// "MyoDataNode": the deformers a debug view draws. Each deformer's message
// goes to one element of "inputs"; the deformer registers its solver's debug
// record and the path of the mesh it writes to here when it builds
// (RegisterDebugData), and a "MyoDebugLocator" fed by this node's message
// draws them. The node computes nothing.

#include <maya/MDagPath.h>
#include <maya/MDataBlock.h>
#include <maya/MPlug.h>
#include <maya/MPxNode.h>
#include <maya/MTypeId.h>

#include <string>

#include "core/debug/debug_registry.h"
#include "maya/plugin/node_attributes.h"

class MyoDataNode : public MPxNode {
 public:
  using Registry = myo_core::DebugRegistry<MDagPath>;

  static void* creator();
  static MStatus initialize();
  static const MTypeId id;
  static const myo_maya::NodeAttributes& attributes() { return attributes_; }

  // Marks the plug clean and does nothing else.
  MStatus compute(const MPlug& plug, MDataBlock& block) override;

  Registry& registry() { return registry_; }
  const Registry& registry() const { return registry_; }

  // Drops the entries of deformers no longer connected to "inputs", when
  // fewer inputs are connected than entries are held.
  void Prune();

 private:
  static myo_maya::NodeAttributes attributes_;

  Registry registry_;
};
