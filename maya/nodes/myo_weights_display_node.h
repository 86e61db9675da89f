#pragma once
// "MyoWeightsDisplayNode": sits between a deformer and its mesh and passes
// the mesh through, coloured by the map being painted. The paint commands
// copy the live map into weights(), set show_fibers() for "Fibers" and flip
// "trigger"; "currentInfluence" picks the block of a multi-influence map.

#include <maya/MColorArray.h>
#include <maya/MDataBlock.h>
#include <maya/MIntArray.h>
#include <maya/MPlug.h>
#include <maya/MPxNode.h>
#include <maya/MTypeId.h>

#include <cstdint>
#include <vector>

#include "maya/plugin/node_attributes.h"

class MyoWeightsDisplayNode : public MPxNode {
 public:
  static void* creator();
  static MStatus initialize();
  static const MTypeId id;
  static const myo_maya::NodeAttributes& attributes() { return attributes_; }

  // Answers "outMesh" only: the input mesh, with one colour per vertex when
  // the copy of the map fits it (myo_core::WeightsDisplayColors).
  MStatus compute(const MPlug& plug, MDataBlock& block) override;

  // The copy that paint strokes change, one block per influence.
  std::vector<float>& weights() { return weights_; }
  bool& show_fibers() { return show_fibers_; }

 private:
  static myo_maya::NodeAttributes attributes_;

  std::vector<float> weights_;
  bool show_fibers_ = false;
  uint32_t vertex_count_ = 0;  // the arrays below are sized for it
  MIntArray vertex_ids_;        // 0, 1, 2, ...
  MColorArray colors_;
  uint64_t weight_count_ = 0;   // size of weights_ at the last compute
  std::vector<float> rgba_;     // 4 per vertex, from the core
};
