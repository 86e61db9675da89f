#pragma once
// What the muscle and the ribbon muscle nodes share: attributes from their
// core table, the deform that fills the frame values and hands them, with
// the node's connections behind the host port, to the core deformer, the paint surface over the muscle's maps and the callback on
// "maxSlidingDistance". The two differ only by their solver.

#include <maya/MDataBlock.h>
#include <maya/MItGeometry.h>
#include <maya/MMatrix.h>
#include <maya/MMessage.h>
#include <maya/MNodeMessage.h>

#include <vector>

#include "core/mesh/mesh_data.h"
#include "core/muscle/muscle_deformer.h"
#include "maya/nodes/myo_paintable_deformer.h"

template <class Solver>
class MyoMuscleFamilyNode : public MyoPaintableDeformer {
 public:
  MyoMuscleFamilyNode();
  ~MyoMuscleFamilyNode() override;

  void postConstructor() override;
  MStatus deform(MDataBlock& block, MItGeometry& iterator, const MMatrix& local_to_world,
                 unsigned int multi_index) override;

 protected:
  static constexpr bool kWithVolume = std::is_same_v<Solver, myo_core::MuscleSolver>;

  // Creates the node's attributes from its table; called by initialize.
  static MStatus InitializeAttributes(const myo_core::AttributeTable& table);

  const myo_maya::NodeAttributes& Attributes() const override { return attributes_; }

 private:
  static void OnAttributeChanged(MNodeMessage::AttributeMessage message, MPlug& plug, MPlug& other, void* client);

  static myo_maya::NodeAttributes attributes_;

  myo_core::MuscleFamilyDeformer<Solver> deformer_;
  bool warn_sliding_distance_ = true;
  MCallbackId attribute_changed_callback_ = 0;
};
