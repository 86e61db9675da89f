#pragma once
// The base of the deformers whose maps are painted with the plug-in's own
// paint commands (muscle, ribbon muscle, skin). It gives those commands one
// surface: which map is on display, where its numbers live, which plugs store
// them, how they are kept normalised and how they go back into the solver.
// The map tables of core/paint/weight_maps.h say where each map lives; a
// derived node tells which table is its own and hands out its live arrays.

#include <maya/MIntArray.h>
#include <maya/MMessage.h>
#include <maya/MPlugArray.h>
#include <maya/MPxDeformerNode.h>
#include <maya/MStringArray.h>

#include <cstdint>
#include <string>
#include <vector>

#include "core/paint/weight_maps.h"
#include "maya/plugin/node_attributes.h"

class MyoPaintableDeformer : public MPxDeformerNode {
 public:
  MyoPaintableDeformer();
  ~MyoPaintableDeformer() override;

  // Points display_weights_ at the live array of `type`.
  virtual void SetCurrentDisplayWeights(int32_t type);
  // Projects the fiber of a vertex onto the mesh; `direction` passes in and out.
  virtual void ProjectVertexFiber(uint32_t vertex, float direction[3]);
  // Redraws the debug fiber line of a vertex.
  virtual void UpdateVertexFiber(uint32_t vertex);
  // Normalises the maps on display that must stay normalised.
  virtual void ConsolidateWeights() = 0;
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
  virtual uint32_t GetNumPoints() = 0;
  virtual void SetCurrentInfluence(int32_t influence);
  virtual int32_t GetCurrentInfluence();
  virtual bool IsSolverEmpty() = 0;

 protected:
  // Registers the deletion clean-up of the helper nodes on this node; the
  // destructor removes it.
  void RegisterHelperCleanup();

  // The node's map table, attributes and type name.
  virtual const std::vector<myo_core::WeightMapInfo>& WeightMaps() const = 0;
  virtual const myo_maya::NodeAttributes& Attributes() const = 0;
  virtual const char* TypeName() const = 0;
  // The live array of a map of the table, or null.
  virtual std::vector<float>* LiveArray(int32_t type) = 0;
  // How many influences of `kind` the solver holds.
  virtual uint32_t SolverInfluences(myo_core::InfluenceKind kind) = 0;

  // Logical indices of the influences of `kind` with all their inputs connected.
  MIntArray ConnectedInfluences(myo_core::InfluenceKind kind);

  std::vector<float>* display_weights_ = nullptr;  // the live array of the map on display
  int32_t display_weight_ = -1;                    // WeightsType on display
  std::vector<std::vector<int32_t>> vertex_neighbors_;  // N lists: neighbours of each vertex

 private:
  MCallbackId about_to_delete_callback_ = 0;
};
