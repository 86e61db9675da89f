#pragma once
// The base of the deformers whose maps are painted with the plug-in's own
// paint commands (muscle, ribbon muscle, skin). It gives those commands one
// surface: which map is on display, where its numbers live, which plugs store
// them, how they are kept normalised and how they go back into the solver.
// The logic is core's PaintableDeformer; this class answers it with the
// node's plugs, and a derived node hands in its family's live arrays.

#include <maya/MIntArray.h>
#include <maya/MMessage.h>
#include <maya/MPlugArray.h>
#include <maya/MPxDeformerNode.h>
#include <maya/MStringArray.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "core/paint/paintable_deformer.h"
#include "maya/plugin/node_attributes.h"

class MyoPaintableDeformer : public MPxDeformerNode {
 public:
  MyoPaintableDeformer();
  ~MyoPaintableDeformer() override;

  // Points the display at the live array of `type`.
  virtual void SetCurrentDisplayWeights(int32_t type);
  // Projects the fiber of a vertex onto the mesh; `direction` passes in and out.
  virtual void ProjectVertexFiber(uint32_t vertex, float direction[3]);
  // Redraws the debug fiber line of a vertex.
  virtual void UpdateVertexFiber(uint32_t vertex);
  // Normalises the maps on display that must stay normalised.
  virtual void ConsolidateWeights();
  // Whether fibers are derived from the tendons.
  virtual void ConsolidateFibers(bool flag);
  // One plug per vertex of the map `type`: a single-influence map gives
  // max(influences, 1) plugs, a multi-influence map one per connected influence.
  virtual void GetDisplayPlugs(int32_t type, uint32_t influences, MPlugArray& out);
  // The live array of `type`, or null.
  virtual void GetWeightArray(int32_t type, std::vector<float>*& out);
  // Re-reads the map on display from its plugs into its live array.
  virtual void UpdateSolverWeights();
  virtual MStringArray GetInfluencesNames();
  virtual MIntArray GetInfluencesIndices();
  virtual uint32_t GetNumPoints();
  virtual void SetCurrentInfluence(int32_t influence);
  virtual int32_t GetCurrentInfluence();
  virtual bool IsSolverEmpty();

  // The paint surface the paint commands drive.
  myo_core::PaintableDeformer& Paint() { return *paint_; }

 protected:
  // Called by the derived constructor: its family's live arrays, and the map
  // shown first.
  void AttachPaintSolver(std::unique_ptr<myo_core::PaintableSolver> solver, int32_t display_weight);
  // Registers the deletion clean-up of the helper nodes on this node; the
  // destructor removes it.
  void RegisterHelperCleanup();

  virtual const myo_maya::NodeAttributes& Attributes() const = 0;

 private:
  class PlugMapRecord;

  std::unique_ptr<PlugMapRecord> store_;  // the maps' record in this node's plugs
  std::unique_ptr<myo_core::PaintableSolver> paint_solver_;
  std::unique_ptr<myo_core::PaintableDeformer> paint_;
  MCallbackId about_to_delete_callback_ = 0;
};
