#pragma once
// Compression of a surface per vertex: the summed lengths of the edges around
// a vertex on a deform mesh against the same sum on a rest mesh, turned into
// a value from 0 (as long or longer) to 1 (collapsed) and passed through the
// "compressionRemap" curve, unclamped.
//
// The topology (each vertex's connected vertices, in the host's order) and
// the rest points are cached at initialization, which happens when the
// current time equals "initializationTime" or while nothing is cached yet.
// Both meshes must agree vertex by vertex: the same count of connected edges
// and the same connected vertices in the same order.

#include <cstdint>
#include <string>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/mesh/mesh_data.h"
#include "core/ramp/ramp_curve.h"
#include "core/ramp/ramp_entries.h"

namespace myo_core {

class StateReader;
class StateWriter;

// What one evaluation reads besides the meshes.
struct EdgeEvaluatorFrame {
  float initialization_time = 0.0f;  // "initializationTime", seconds
  float current_time = 0.0f;         // the host's current time, seconds
  RampEntries compression_remap;     // "compressionRemap"
};

// The two mesh inputs, read only when the evaluation comes to them.
// kWhole: object-space points and per-vertex connectivity
// (vertex_edge_offsets, vertex_connected); kPoints: the points alone.
class EdgeEvaluatorInputs {
 public:
  virtual ~EdgeEvaluatorInputs() = default;
  virtual MeshInput ReadDeformMesh(MeshRead read, MeshData& mesh) = 0;
  virtual MeshInput ReadRestMesh(MeshRead read, MeshData& mesh) = 0;
};

enum class EdgeEvaluation {
  kNoDeformMesh,  // "deformMesh" holds no mesh: nothing read, output as it was
  kNoRestMesh,    // initialization found no rest mesh: now invalid
  kInvalid,       // a failed initialization stands: nothing evaluated
  kEvaluated,     // compression() holds this evaluation's values
  kFailed,        // error() says why; the output stays as it was
};

// The entries a new node's "compressionRemap" gets: (0, 0) and (1, 1),
// linear.
RampEntries DefaultCompressionRemap();

class EdgeEvaluator {
 public:
  // `max_threads` 0: the OpenMP maximum at each initialization.
  explicit EdgeEvaluator(int32_t max_threads = 0) : max_threads_(max_threads) {}

  // One evaluation. A failure is also logged at error level.
  EdgeEvaluation Evaluate(const EdgeEvaluatorFrame& frame, EdgeEvaluatorInputs& inputs);

  // Builds the cache from both meshes. False with error() set when they do
  // not match; a mismatch of the vertex counts keeps the former cache, any
  // later mismatch leaves the evaluator invalid.
  bool Initialize(const MeshData& rest, const MeshData& deform);

  // The kernel over the cached topology: deform_points holds 3 vertex_count()
  // floats. Writes compression().
  void ComputeCompression(const float* deform_points, const RampCurve& remap);

  const std::vector<float>& compression() const { return compression_; }
  const std::string& error() const { return error_; }
  bool valid() const { return valid_; }
  int32_t vertex_count() const { return vertex_count_; }
  int32_t thread_count() const { return thread_count_; }
  const std::vector<int32_t>& chunk_sizes() const { return chunk_sizes_; }
  const std::vector<int32_t>& chunk_starts() const { return chunk_starts_; }
  // The state carried from one evaluation to the next, saved to and
  // restored from a checkpoint (core/state); a failed load names its fault
  // in the reader.
  void SaveState(StateWriter& writer) const;
  void LoadState(StateReader& reader);

 private:
  // One field list for SaveState and LoadState; Self is const to save.
  template <class Archive, class Self>
  static void StateFields(Archive& archive, Self& self);
  bool Fail(std::string message);
  void PartitionVertices();

  int32_t max_threads_ = 0;
  int32_t vertex_count_ = 0;
  std::vector<int32_t> neighbours_;         // connected vertices of all vertices, one list after the other
  std::vector<int32_t> neighbour_offsets_;  // per vertex: start of its list
  std::vector<int32_t> neighbour_counts_;   // per vertex: length of its list
  std::vector<double> rest_points_;         // 3N, object space
  int32_t thread_count_ = 0;
  int32_t chunk_size_max_ = 0;
  std::vector<int32_t> chunk_sizes_;   // per thread
  std::vector<int32_t> chunk_starts_;  // per thread
  bool valid_ = false;
  std::vector<float> compression_;     // N: the output
  std::string error_;
};

}  // namespace myo_core
