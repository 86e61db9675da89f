#include "core/activation/patch_activations.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>

#include "core/log/logger.h"
#include "core/math/vec3.h"

namespace myo_core {

namespace {

// The connected points of `point` as [begin, end) of mesh.vertex_connected,
// empty where the mesh's ranges do not describe them.
void ConnectedRange(const MeshData& mesh, uint32_t point, std::size_t& begin, std::size_t& end) {
  begin = end = 0;
  if (mesh.vertex_edge_offsets.size() != static_cast<std::size_t>(mesh.PointCount()) + 1) return;
  const int32_t first = mesh.vertex_edge_offsets[point];
  const int32_t last = mesh.vertex_edge_offsets[point + 1];
  if (first < 0 || last < first || static_cast<std::size_t>(last) > mesh.vertex_connected.size()) return;
  begin = static_cast<std::size_t>(first);
  end = static_cast<std::size_t>(last);
}

// The contribution of one patch's fiber to the activation of a point that
// moved by `displacement`.
float PatchContribution(Vec3 displacement, Vec3 fiber, bool bidirectional) {
  const float ld = Length(displacement);
  const float lf = Length(fiber);
  if (lf > 0.0f) fiber = {fiber.x / lf, fiber.y / lf, fiber.z / lf};
  if (ld > 0.0f) displacement = {displacement.x / ld, displacement.y / ld, displacement.z / ld};
  if (lf == 0.0f) return 0.0f;
  float s = Dot(fiber, displacement);
  s = bidirectional ? std::fabs(s) : std::max(s, 0.0f);
  return s * std::min(1.0f, ld / lf);
}

}  // namespace

bool BuildSmoothingArrays(const MeshData& mesh, int32_t rings, MusclePatchesData& data) {
  const bool timed = GetLevel() == 0;
  const auto start = std::chrono::steady_clock::now();
  data.smoothing_counts_.clear();
  data.smoothing_patch_ids_.clear();
  const uint32_t n = mesh.PointCount();
  if (data.patch_ids_.size() != n) return false;

  data.smoothing_counts_.assign(n, 0);
  // visited_by[w] == v marks w as reached from v: the same answer as a search
  // of v's visited list, without the search.
  std::vector<int64_t> visited_by(n, -1);
  std::vector<uint32_t> frontier;
  std::vector<uint32_t> next;
  for (uint32_t v = 0; v < n; ++v) {
    data.smoothing_patch_ids_.push_back(data.patch_ids_[v]);
    int32_t count = 1;
    visited_by[v] = v;
    frontier.assign(1, v);
    for (int32_t ring = 0; ring < rings && !frontier.empty(); ++ring) {
      next.clear();
      for (uint32_t u : frontier) {
        std::size_t begin = 0;
        std::size_t end = 0;
        ConnectedRange(mesh, u, begin, end);
        for (std::size_t k = begin; k < end; ++k) {
          const int32_t w = mesh.vertex_connected[k];
          if (w < 0 || static_cast<uint32_t>(w) >= n || visited_by[w] == v) continue;
          visited_by[w] = v;
          data.smoothing_patch_ids_.push_back(data.patch_ids_[w]);
          ++count;
          next.push_back(static_cast<uint32_t>(w));
        }
      }
      frontier.swap(next);
    }
    data.smoothing_counts_[v] = count;
  }

  if (timed) {
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start);
    LogDebug("Init Smoothing Array time (ns): " + std::to_string(ns.count()));
  }
  return true;
}

bool ComputePatchActivations(const std::vector<float>& rest_positions, const std::vector<float>& deform_positions,
                             const std::vector<float>& patch_fibers, const std::vector<int32_t>& smoothing_counts,
                             const std::vector<int32_t>& smoothing_patch_ids, bool bidirectional,
                             std::vector<float>& activations) {
  const std::size_t n = smoothing_counts.size();
  if (activations.size() != n || rest_positions.size() != 3 * n || deform_positions.size() != 3 * n) return false;
  std::size_t total = 0;
  for (int32_t count : smoothing_counts) {
    if (count < 0) return false;
    total += static_cast<std::size_t>(count);
  }
  if (total > smoothing_patch_ids.size()) return false;

  const std::size_t patch_count = patch_fibers.size() / 3;
  // The contribution of each patch to the current point; -1 not yet known.
  std::vector<float> cache(patch_count);
  std::size_t entry = 0;
  for (std::size_t i = 0; i < n; ++i) {
    std::fill(cache.begin(), cache.end(), -1.0f);
    const uint32_t point = static_cast<uint32_t>(i);
    const Vec3 displacement = Load3(deform_positions.data(), point) - Load3(rest_positions.data(), point);
    const std::size_t list_end = entry + static_cast<std::size_t>(smoothing_counts[i]);
    for (; entry < list_end; ++entry) {
      const int32_t p = smoothing_patch_ids[entry];
      if (p < 1) continue;
      if (static_cast<std::size_t>(p) > patch_count) continue;  // no fiber triple: adds 0
      float& cached = cache[static_cast<std::size_t>(p) - 1];
      if (cached != -1.0f) {
        activations[i] += cached;
        continue;
      }
      const float c =
          PatchContribution(displacement, Load3(patch_fibers.data(), static_cast<uint32_t>(p - 1)), bidirectional);
      activations[i] += c;
      cached = c;
    }
    if (smoothing_counts[i] > 0) activations[i] /= static_cast<float>(smoothing_counts[i]);
  }
  return true;
}

}  // namespace myo_core
