#include "core/evaluator/edge_evaluator.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "core/log/logger.h"

namespace myo_core {

namespace {

double Distance(const double* a, const double* b) {
  const double dx = a[0] - b[0];
  const double dy = a[1] - b[1];
  const double dz = a[2] - b[2];
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

double Distance(const float* a, const float* b) {
  const double dx = static_cast<double>(a[0]) - static_cast<double>(b[0]);
  const double dy = static_cast<double>(a[1]) - static_cast<double>(b[1]);
  const double dz = static_cast<double>(a[2]) - static_cast<double>(b[2]);
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

// The per-vertex ranges of a mesh must cover its connected vertices, and
// those must be vertices of the mesh: a host that hands less is refused
// rather than read out of bounds.
bool HasConsistentConnectivity(const MeshData& mesh) {
  const size_t n = mesh.PointCount();
  if (mesh.vertex_edge_offsets.size() != n + 1) return false;
  if (mesh.vertex_edge_offsets.front() != 0) return false;
  for (size_t i = 0; i < n; ++i)
    if (mesh.vertex_edge_offsets[i + 1] < mesh.vertex_edge_offsets[i]) return false;
  if (static_cast<size_t>(mesh.vertex_edge_offsets.back()) > mesh.vertex_connected.size()) return false;
  for (int32_t v : mesh.vertex_connected)
    if (v < 0 || static_cast<size_t>(v) >= n) return false;
  return true;
}

}  // namespace

RampEntries DefaultCompressionRemap() {
  RampEntries ramp;
  ramp.positions = {0.0f, 1.0f};
  ramp.values = {0.0f, 1.0f};
  ramp.interpolations = {kRampLinear, kRampLinear};
  return ramp;
}

bool EdgeEvaluator::Fail(std::string message) {
  error_ = std::move(message);
  LogError(error_);
  return false;
}

EdgeEvaluation EdgeEvaluator::Evaluate(const EdgeEvaluatorFrame& frame, EdgeEvaluatorInputs& inputs) {
  error_.clear();
  const bool initialize = frame.current_time == frame.initialization_time || neighbours_.empty();
  MeshData deform;
  if (inputs.ReadDeformMesh(initialize ? MeshRead::kWhole : MeshRead::kPoints, deform) != MeshInput::kRead)
    return EdgeEvaluation::kNoDeformMesh;

  if (initialize) {
    MeshData rest;
    if (inputs.ReadRestMesh(MeshRead::kWhole, rest) != MeshInput::kRead) {
      valid_ = false;
      return EdgeEvaluation::kNoRestMesh;
    }
    if (!Initialize(rest, deform)) return EdgeEvaluation::kFailed;
  }
  if (!valid_) return EdgeEvaluation::kInvalid;

  const int64_t count = deform.PointCount();
  if (count != vertex_count_) {
    Fail("Number of vertices at deform mesh (" + std::to_string(count) + ") has changed since initialization (" +
         std::to_string(vertex_count_) + ").");
    return EdgeEvaluation::kFailed;
  }
  ComputeCompression(deform.points.data(), RampCurve(frame.compression_remap));
  return EdgeEvaluation::kEvaluated;
}

bool EdgeEvaluator::Initialize(const MeshData& rest, const MeshData& deform) {
  error_.clear();
  const int64_t rest_count = rest.PointCount();
  const int64_t deform_count = deform.PointCount();
  if (rest_count != deform_count)
    return Fail("Number of vertices between deform mesh (" + std::to_string(deform_count) + ") and rest mesh (" +
                std::to_string(rest_count) + ") do not match.");
  if (!HasConsistentConnectivity(rest) || !HasConsistentConnectivity(deform)) {
    valid_ = false;
    return Fail(std::string("The ") + (HasConsistentConnectivity(rest) ? "deform" : "rest") +
                " mesh's connected vertices do not fit its " + std::to_string(rest_count) + " vertices.");
  }

  const int32_t n = static_cast<int32_t>(rest_count);
  rest_points_.assign(rest.points.begin(), rest.points.end());
  vertex_count_ = n;
  neighbours_.clear();
  neighbour_offsets_.assign(n, 0);
  neighbour_counts_.assign(n, 0);
  for (int32_t i = 0; i < n; ++i) {
    const int32_t rest_begin = rest.vertex_edge_offsets[i];
    const int32_t rest_edges = rest.vertex_edge_offsets[i + 1] - rest_begin;
    const int32_t deform_begin = deform.vertex_edge_offsets[i];
    const int32_t deform_edges = deform.vertex_edge_offsets[i + 1] - deform_begin;
    if (rest_edges != deform_edges) {
      // The cache is half rebuilt: nothing may be evaluated from it.
      valid_ = false;
      return Fail("Number of connected edges do not match between the deformed mesh (" + std::to_string(deform_edges) +
                  ") and the rest mesh (" + std::to_string(rest_edges) + ") for the vertex (" + std::to_string(i) + ")");
    }
    neighbour_offsets_[i] = static_cast<int32_t>(neighbours_.size());
    neighbour_counts_[i] = rest_edges;
    for (int32_t k = 0; k < rest_edges; ++k) {
      const int32_t neighbour = rest.vertex_connected[rest_begin + k];
      if (neighbour != deform.vertex_connected[deform_begin + k]) {
        valid_ = false;
        return Fail("Connected vertices indices do not match between meshes at vertex (" + std::to_string(i) + ")");
      }
      neighbours_.push_back(neighbour);
    }
  }
  // The output keeps its former values until the whole walk has succeeded.
  compression_.assign(n, 0.0f);
  PartitionVertices();
  valid_ = true;
  return true;
}

void EdgeEvaluator::PartitionVertices() {
  thread_count_ = std::max(1, max_threads_ > 0 ? max_threads_ : omp_get_max_threads());
  const int32_t base = vertex_count_ / thread_count_;
  const int32_t remainder = vertex_count_ % thread_count_;
  chunk_size_max_ = base + (remainder != 0 ? 1 : 0);
  chunk_sizes_.assign(thread_count_, 0);
  chunk_starts_.assign(thread_count_, 0);
  int32_t start = 0;
  for (int32_t t = 0; t < thread_count_; ++t) {
    chunk_starts_[t] = start;
    chunk_sizes_[t] = base + (t < remainder ? 1 : 0);
    start += chunk_sizes_[t];
  }
}

void EdgeEvaluator::ComputeCompression(const float* deform_points, const RampCurve& remap) {
  const int32_t chunks = thread_count_;
  // Chunk t is worked by iteration t, whichever thread runs it: the values
  // do not depend on the size of the team.
#pragma omp parallel for schedule(static) num_threads(chunks)
  for (int32_t t = 0; t < chunks; ++t) {
    const int32_t end = chunk_starts_[t] + chunk_sizes_[t];
    for (int32_t i = chunk_starts_[t]; i < end; ++i) {
      float rest_sum = 0.0f;
      float deform_sum = 0.0f;
      const int32_t* neighbour = neighbours_.data() + neighbour_offsets_[i];
      for (int32_t k = 0; k < neighbour_counts_[i]; ++k) {
        const int32_t j = neighbour[k];
        rest_sum += static_cast<float>(Distance(&rest_points_[3 * size_t(i)], &rest_points_[3 * size_t(j)]));
        deform_sum += static_cast<float>(Distance(deform_points + 3 * size_t(i), deform_points + 3 * size_t(j)));
      }
      const float ratio = rest_sum > 0.0f ? deform_sum / rest_sum : 0.0f;
      float compression = 1.0f - ratio;
      if (!(compression > 0.0f)) compression = 0.0f;
      compression_[i] = remap.ValueAt(compression);
    }
  }
}

}  // namespace myo_core
