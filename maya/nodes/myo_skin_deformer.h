#pragma once
// "MyoSkin": a skin held on a reference mesh, simulated on the deformed mesh.

#include <maya/MDataBlock.h>
#include <maya/MItGeometry.h>
#include <maya/MMatrix.h>
#include <maya/MMessage.h>
#include <maya/MNodeMessage.h>
#include <maya/MTypeId.h>

#include "core/skin/skin_deformer.h"
#include "maya/nodes/myo_paintable_deformer.h"

class MyoSkinDeformer : public MyoPaintableDeformer {
 public:
  MyoSkinDeformer();
  ~MyoSkinDeformer() override;

  static void* creator();
  static MStatus initialize();
  static const MTypeId id;

  void postConstructor() override;
  // Fails with an invalid parameter when the reference mesh is missing or
  // empty; succeeds otherwise.
  MStatus deform(MDataBlock& block, MItGeometry& iterator, const MMatrix& local_to_world,
                 unsigned int multi_index) override;

 protected:
  const myo_maya::NodeAttributes& Attributes() const override { return attributes_; }

 private:
  static void OnSlidingDistanceChanged(MNodeMessage::AttributeMessage message, MPlug& plug, MPlug& other,
                                       void* client);

  static myo_maya::NodeAttributes attributes_;

  myo_core::SkinDeformer deformer_;
  bool warn_sliding_distance_ = true;
  MCallbackId attribute_changed_callback_ = 0;
};
