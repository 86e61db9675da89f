#pragma once
// The paint surface of a deformer whose maps an external brush paints: which
// map is on display, where its live numbers are, how they are kept
// normalised, how they go back and forth between the live arrays and the
// host's record of them (the plugs), and which of them a stroke writes.
//
// The live arrays are the ones the solver and the deformer work from; the
// record is what the scene keeps and what undo restores. They meet when the
// deformer initialises, at the end of a stroke, and at undo or redo.

#include <cstdint>
#include <vector>

#include "core/paint/weight_maps.h"

namespace myo_core {

// The neighbours of each vertex as flat lists: vertex v's are
// `vertices[offsets[v] .. offsets[v] + counts[v])`.
struct VertexNeighborsView {
  const std::vector<int32_t>* offsets = nullptr;
  const std::vector<int32_t>* counts = nullptr;
  const std::vector<int32_t>* vertices = nullptr;

  uint32_t Count(uint32_t vertex) const;
  int32_t Neighbor(uint32_t vertex, uint32_t k) const { return (*vertices)[(*offsets)[vertex] + k]; }
};

// What a deformer family answers about its live arrays.
class PaintableSolver {
 public:
  virtual ~PaintableSolver() = default;
  virtual const std::vector<WeightMapInfo>& WeightMaps() const = 0;
  virtual const char* TypeName() const = 0;
  // The live array of a map of the table, or null.
  virtual std::vector<float>* LiveArray(int32_t weights_type) = 0;
  // How many influences of `kind` the solver holds.
  virtual uint32_t SolverInfluences(InfluenceKind kind) = 0;
  virtual uint32_t PointCount() = 0;
  virtual bool IsEmpty() = 0;
  virtual VertexNeighborsView Neighbors() = 0;
  // Fibers: the painted direction of a vertex projected onto the mesh (in
  // and out), and its debug line redrawn. Only the vertex's entries change.
  virtual void ProjectVertexFiber(uint32_t, float[3]) {}
  virtual void UpdateVertexFiber(uint32_t) {}
  // Whether the fibers are derived from the tendons.
  virtual void SetConsolidateFibers(bool) {}
};

// Where the host records the maps (the deformer's plugs in Maya).
class MapRecord {
 public:
  virtual ~MapRecord() = default;
  // Logical indices of the influences of `kind` whose inputs are all there.
  virtual std::vector<int32_t> ConnectedInfluences(InfluenceKind kind) = 0;
  // `out` is made `total` long; [offset, offset + count) takes element
  // `list_index` of the map, the default where nothing is recorded. Nothing
  // happens when total is below offset + count.
  virtual void ReadFloats(const WeightMapInfo& map, uint32_t list_index, uint32_t offset, uint32_t count,
                          uint32_t total, float default_value, std::vector<float>& out) = 0;
  // A vector map: `out` is made count * map.Width() long.
  virtual void ReadVectors(const WeightMapInfo& map, uint32_t list_index, uint32_t count, float default_value,
                           std::vector<float>& out) = 0;
  virtual int32_t CurrentInfluence() = 0;
  virtual void SetCurrentInfluence(int32_t influence) = 0;
};

// Receives the maps a finished stroke records; the host batches them into
// one undoable change.
class MapWriter {
 public:
  virtual ~MapWriter() = default;
  // `values` holds `blocks` blocks of `points` values (one per influence, or
  // one for a single-influence map), or 3 per point for a vector map.
  virtual void Write(const WeightMapInfo& map, uint32_t blocks, const std::vector<float>& values,
                     uint32_t points) = 0;
};

class PaintableDeformer {
 public:
  PaintableDeformer(PaintableSolver& solver, MapRecord& store, int32_t display_weight);

  // Points the display at the live array of `weights_type`.
  void SetCurrentDisplayWeights(int32_t weights_type);
  // Points the display again at its map's live array, after a rebuild.
  void RefreshDisplayWeights();
  int32_t DisplayWeight() const { return display_weight_; }
  std::vector<float>* DisplayWeights() const { return display_weights_; }

  // The live array of `weights_type`, or null with a debug line.
  std::vector<float>* GetWeightArray(int32_t weights_type);
  // Normalises the map on display where it must stay normalised: the
  // influence on display wins in a multi-influence map, the map on display
  // wins among hard, soft and slide.
  void ConsolidateWeights();
  void ConsolidateFibers(bool flag);
  // Re-reads the map on display from the record into its live array; for
  // hard, soft and slide all three, since consolidating changes all three. A
  // multi-influence map is re-read only while its recorded influences are
  // those the solver holds.
  void UpdateSolverWeights();
  // Logical indices of the influences of the map on display.
  std::vector<int32_t> GetInfluencesIndices();
  // Records the maps a stroke on the map on display changed: consolidated
  // first where that applies; `influences` is the count of the influences on
  // display (0 for a single-influence map).
  void WriteStrokeMaps(uint32_t influences, MapWriter& writer);

  void ProjectVertexFiber(uint32_t vertex, float direction[3]) { solver_.ProjectVertexFiber(vertex, direction); }
  void UpdateVertexFiber(uint32_t vertex) { solver_.UpdateVertexFiber(vertex); }
  uint32_t GetNumPoints() { return solver_.PointCount(); }
  bool IsSolverEmpty() { return solver_.IsEmpty(); }
  int32_t GetCurrentInfluence() { return store_.CurrentInfluence(); }
  void SetCurrentInfluence(int32_t influence) { store_.SetCurrentInfluence(influence); }
  VertexNeighborsView Neighbors() { return solver_.Neighbors(); }
  const char* TypeName() const { return solver_.TypeName(); }
  const std::vector<WeightMapInfo>& WeightMaps() const { return solver_.WeightMaps(); }

 private:
  bool HasMap(int32_t weights_type) const;
  void ReadMap(const WeightMapInfo& map);
  void WriteMap(const WeightMapInfo& map, uint32_t influences, MapWriter& writer);

  PaintableSolver& solver_;
  MapRecord& store_;
  int32_t display_weight_;
  std::vector<float>* display_weights_ = nullptr;
};

}  // namespace myo_core
