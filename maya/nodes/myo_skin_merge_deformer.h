#pragma once
// "MyoSkinMerge": a mesh put together from simulated and animated pieces of
// skin, each point bound at "initializationTime" to its nearest source
// vertices and blended by the painted "blend" map. The logic is
// myo_core::SkinMerge; this deformer reads its plugs and meshes and writes
// the points. Its maps are painted with Maya's own tool.

#include <maya/MDataBlock.h>
#include <maya/MItGeometry.h>
#include <maya/MMatrix.h>
#include <maya/MPxDeformerNode.h>
#include <maya/MTypeId.h>

#include "core/merge/skin_merge.h"
#include "maya/plugin/node_attributes.h"

class MyoSkinMergeDeformer : public MPxDeformerNode {
 public:
  MyoSkinMergeDeformer() = default;
  ~MyoSkinMergeDeformer() override = default;

  static void* creator();
  // The attributes of the node's table, the makePaintable line for
  // "weights" and "blend" scheduled for when Maya is idle, and what affects
  // the output geometry.
  static MStatus initialize();
  static const MTypeId id;

  // Always succeeds: without sources or binding the input passes through.
  MStatus deform(MDataBlock& block, MItGeometry& iterator, const MMatrix& local_to_world,
                 unsigned int multi_index) override;

 private:
  static myo_maya::NodeAttributes attributes_;

  myo_core::SkinMerge merge_;
};
