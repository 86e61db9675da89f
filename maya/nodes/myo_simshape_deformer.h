#pragma once
// "MyoSimshape": a soft shape pulled towards an animated mesh with per-point
// activations, sliding on a collider. Its maps are painted with Maya's own
// tool, so it is a plain deformer node, not a paintable one.

#include <maya/MDataBlock.h>
#include <maya/MItGeometry.h>
#include <maya/MMatrix.h>
#include <maya/MMessage.h>
#include <maya/MNodeMessage.h>
#include <maya/MPxDeformerNode.h>
#include <maya/MTypeId.h>

#include "core/shape/shape_deformer.h"
#include "maya/plugin/maya_shape_host.h"
#include "maya/plugin/node_attributes.h"

class MyoSimshapeDeformer : public MPxDeformerNode {
 public:
  MyoSimshapeDeformer();
  ~MyoSimshapeDeformer() override;

  static void* creator();
  // The attributes of the node's table, the paintable maps scheduled for
  // Maya's paint tool, what affects the output, and last the passive wait
  // policy of OpenMP threads for the whole process.
  static MStatus initialize();
  static const MTypeId id;

  void postConstructor() override;
  // Succeeds whenever "enable" is on: every missing input falls back.
  MStatus deform(MDataBlock& block, MItGeometry& iterator, const MMatrix& local_to_world,
                 unsigned int multi_index) override;

 private:
  static void OnCollisionDistanceChanged(MNodeMessage::AttributeMessage message, MPlug& plug, MPlug& other,
                                         void* client);
  // The two entries of "activationRemap" and those addressed to "debugColor".
  void SetDefaultRampEntries();

  static myo_maya::NodeAttributes attributes_;

  myo_core::ShapeDeformer deformer_;
  myo_maya::VertexColorBuffers color_buffers_;
  bool warn_sliding_distance_ = true;
  MCallbackId about_to_delete_callback_ = 0;
  MCallbackId attribute_changed_callback_ = 0;
};
