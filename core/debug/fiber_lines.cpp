#include "core/debug/fiber_lines.h"

#include "core/log/logger.h"

namespace myo_core {

namespace {

template <typename Table>
bool HasFiberTriangle(const Table& edges, uint32_t i) {
  const int32_t* corners = edges.fiber_triangles_.data() + 3 * static_cast<std::size_t>(i);
  return corners[0] != 0 || corners[1] != 0 || corners[2] != 0;
}

// The line of vertex i, world space; false when it is at most the shortest
// line drawn.
template <typename Table>
bool FiberLine(const Table& edges, const FiberLineFrame& frame, uint32_t i, Vec3& start, Vec3& end) {
  const int32_t* corners = edges.fiber_triangles_.data() + 3 * static_cast<std::size_t>(i);
  const float u = edges.fiber_bary_u_[i], v = edges.fiber_bary_v_[i];
  const float w = static_cast<float>(1.0 - static_cast<double>(u) - static_cast<double>(v));
  const Vec3 on_triangle = Load3(frame.positions, corners[0]) * u + Load3(frame.positions, corners[1]) * v +
                           Load3(frame.positions, corners[2]) * w;
  const Vec3 vertex = Load3(frame.positions, i);
  const Vec3 tip = vertex + NormalizeSafe(on_triangle - vertex) * frame.scale;
  start = DebugPoint(vertex, frame.has_transform, frame.world);
  end = DebugPoint(tip, frame.has_transform, frame.world);
  return Length(end - start) > kShortestDebugLine;
}

// Every array the lines read fits the point count.
template <typename Table>
bool FitsPoints(const Table& edges, const FiberLineFrame& frame) {
  const std::size_t n = frame.point_count;
  return frame.positions != nullptr && edges.fiber_triangles_.size() == 3 * n && edges.fiber_bary_u_.size() == n &&
         edges.fiber_bary_v_.size() == n;
}

void Store6(float* out, Vec3 start, Vec3 end) {
  Store3(out, 0, start);
  Store3(out, 1, end);
}

template <typename Table>
void BuildFiberLines(const Table& edges, const FiberLineFrame& frame, DebugData& data,
                     std::vector<int32_t>& line_offsets) {
  line_offsets.assign(frame.point_count, -1);
  if (!FitsPoints(edges, frame)) return;
  const std::size_t first = data.lines_.size();
  data.lines_.resize(first + 6 * static_cast<std::size_t>(frame.point_count));
  std::size_t written = first;
  bool too_short = false;
  for (uint32_t i = 0; i < frame.point_count; ++i) {
    if (!HasFiberTriangle(edges, i)) continue;
    Vec3 start, end;
    if (!FiberLine(edges, frame, i, start, end)) {
      too_short = true;
      continue;
    }
    Store6(data.lines_.data() + written, start, end);
    line_offsets[i] = static_cast<int32_t>(written);
    written += 6;
  }
  data.lines_.resize(written);
  if (too_short) ReportDebug("Debugger is skipping connections because the line length is too small.", "");
}

}  // namespace

void DebugFiberLines(const EdgeConstraints& edges, const FiberLineFrame& frame, DebugData& data,
                     std::vector<int32_t>& line_offsets) {
  BuildFiberLines(edges, frame, data, line_offsets);
}

void DebugFiberLines(const MusclePatchesData& patches, const FiberLineFrame& frame, DebugData& data,
                     std::vector<int32_t>& line_offsets) {
  BuildFiberLines(patches, frame, data, line_offsets);
}

void UpdateVertexFiber(uint32_t vertex, const EdgeConstraints& edges, const FiberLineFrame& frame,
                       const std::vector<int32_t>& line_offsets, DebugData& data) {
  if (line_offsets.size() != frame.point_count || vertex >= frame.point_count || line_offsets[vertex] < 0 ||
      !FitsPoints(edges, frame))
    return;
  const std::size_t offset = static_cast<std::size_t>(line_offsets[vertex]);
  if (offset + 6 > data.lines_.size()) return;
  Vec3 start, end;
  if (!HasFiberTriangle(edges, vertex) || !FiberLine(edges, frame, vertex, start, end))
    end = start = DebugPoint(Load3(frame.positions, vertex), frame.has_transform, frame.world);
  Store6(data.lines_.data() + offset, start, end);
}

}  // namespace myo_core
