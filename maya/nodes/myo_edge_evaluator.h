#pragma once
// "MyoEdgeEvaluator": compression per vertex of a deform mesh against a rest
// mesh, remapped by a curve, as a float array. The logic is
// myo_core::EdgeEvaluator; this node reads its plugs and writes the array.

#include <maya/MDataBlock.h>
#include <maya/MPlug.h>
#include <maya/MPxNode.h>
#include <maya/MTypeId.h>

#include "core/evaluator/edge_evaluator.h"
#include "maya/plugin/node_attributes.h"

class MyoEdgeEvaluator : public MPxNode {
 public:
  MyoEdgeEvaluator() = default;
  ~MyoEdgeEvaluator() override = default;

  static void* creator();
  static MStatus initialize();
  static const MTypeId id;

  // The default entries of "compressionRemap": (0, 0) and (1, 1), linear.
  void postConstructor() override;
  // Answers "compression" only; a failed check of the meshes fails with one
  // error line.
  MStatus compute(const MPlug& plug, MDataBlock& block) override;

 private:
  static myo_maya::NodeAttributes attributes_;

  myo_core::EdgeEvaluator evaluator_;
};
