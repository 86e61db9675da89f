#pragma once
// The skin merge deformer's logic: a mesh put together from pieces of
// simulated and animated skin. At "initializationTime" each point is bound to
// its nearest vertex among all simulated sources and among all animated
// sources; every evaluation after that reads those vertices and blends them
// by the "blend" map and the deformer's weights. No solver, no time
// integration.

#include <cstdint>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"
#include "core/merge/skin_merge_data.h"

namespace myo_core {

class StateReader;
class StateWriter;

enum class MergeSourceKind {
  kSimulated,  // "simList": "simWorldMesh", "simWorldMatrix"
  kAnimated,   // "animList": "animWorldMesh", "animWorldMatrix"
};

// Which elements of a source list are connected.
struct MergeConnections {
  std::vector<uint32_t> mesh_indices;    // logical indices with the mesh child connected, ascending
  std::vector<uint32_t> matrix_indices;  // logical indices with the matrix child connected, ascending
};

// What the merge asks of its host.
class SkinMergeHost {
 public:
  virtual ~SkinMergeHost() = default;
  // Repeated warnings are given only while the animation is not playing.
  virtual bool IsPlaying() const = 0;
  virtual void ReadConnections(MergeSourceKind kind, MergeConnections& out) = 0;
  // Element `logical_index` of the kind's list: its mesh, whose points are
  // taken as the host gives them for a mesh of its own (kWhole: with polygons
  // and triangulation, for binding; kPoints: the points alone), and its
  // matrix. False when the element or its mesh does not exist.
  virtual bool ReadSource(MergeSourceKind kind, uint32_t logical_index, MeshRead read, MeshData& mesh,
                          Matrix& matrix) = 0;
  // The deformer's own weight of each of `count` points of the geometry
  // being deformed.
  virtual void ReadMergeWeights(uint32_t count, std::vector<float>& out) = 0;
};

// What one evaluation reads besides the sources.
struct SkinMergeFrame {
  float initialization_time = 0.0f;  // "initializationTime", seconds
  float current_time = 0.0f;         // the host's current time, seconds
  float envelope = 1.0f;
  Matrix local_to_world = IdentityMatrix();
  uint32_t geometry_index = 0;
};

// Distance a point starts from before any source vertex is nearer.
constexpr float kMergeFarDistance = 1000000.0f;

class SkinMerge {
 public:
  // One evaluation: binds when the current time equals the initialization
  // time (as floats), then blends. `input` and `output` hold 3N doubles in
  // object space; output = (merge - input) envelope + input. Unbound, or
  // with a point count other than at binding, the input passes through.
  void Evaluate(const SkinMergeFrame& frame, const std::vector<double>& input, SkinMergeHost& host,
                const MapPort& maps, std::vector<double>& output);

  // Binding. Does nothing without a connected simulated and a connected
  // animated source. Warns of mesh and matrix counts that differ.
  void Bind(const SkinMergeFrame& frame, const std::vector<double>& input, SkinMergeHost& host,
            const MapPort& maps);
  // Reads this frame's sources and blends into merge_positions_. Does
  // nothing without a connected simulated and a connected animated source.
  void Update(const SkinMergeFrame& frame, SkinMergeHost& host);

  const SkinMergeData& data() const { return data_; }
  bool bound() const { return !data_.merge_positions_.empty(); }
  // The state carried from one evaluation to the next, saved to and
  // restored from a checkpoint (core/state); a failed load names its fault
  // in the reader.
  void SaveState(StateWriter& writer) const;
  void LoadState(StateReader& reader);

 private:
  // One field list for SaveState and LoadState; Self is const to save.
  template <class Archive, class Self>
  static void StateFields(Archive& archive, Self& self);
  SkinMergeData data_;
};

// Binds every point of `data` (merge_positions_, world_matrix_ set) to the
// nearest vertex of the closest face of each present source, in order; the
// kind's arrays are sized and filled here. `present[j]` tells whether source
// j could be read; absent sources keep offset 0 and the identity.
void BindMergeSources(SkinMergeData& data, const std::vector<MeshData>& meshes,
                      const std::vector<Matrix>& matrices, const std::vector<bool>& present,
                      MergeSourceArrays arrays);

}  // namespace myo_core
