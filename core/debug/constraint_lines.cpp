#include "core/debug/constraint_lines.h"

#include <algorithm>

#include "core/debug/debug_features.h"
#include "core/log/logger.h"

namespace myo_core {

namespace {

constexpr float kSmallestWeight = 1e-6f;

const char* const kWeightsTooSmall = "Debugger is skipping connections because the weights are too small.";
const char* const kNothingToSlideOn =
    "Debugger is skipping connections because the weights are too small or the max sliding distance has not "
    "found any triangles to slide on.";
const char* const kLinesTooShort = "Debugger is skipping connections because the line length is too small.";

// The rule every builder shares: room for the most lines at once, pairs
// counted and skipped, short lines left out, the array cut to what was
// written and one log line about what was left out.
class LineWriter {
 public:
  LineWriter(DebugData& data, std::size_t most_lines, bool with_values)
      : data_(data), first_(data.lines_.size()), written_(first_), with_values_(with_values) {
    data_.lines_.resize(first_ + 6 * most_lines);
  }

  // Counts a pair; false (and the skip counted) when it is not to be drawn.
  bool Take(bool drawn) {
    ++pairs_;
    if (!drawn) ++skipped_;
    return drawn;
  }

  // Appends a line from `start` to `end`, both in world space, unless it is
  // too short.
  void Add(Vec3 start, Vec3 end, float value = 0.0f) {
    if (Length(end - start) <= kShortestDebugLine) {
      too_short_ = true;
      return;
    }
    if (written_ + 6 > data_.lines_.size()) return;
    float* out = data_.lines_.data() + written_;
    Store3(out, 0, start);
    Store3(out, 1, end);
    written_ += 6;
    if (with_values_) data_.line_values_.push_back(value);
  }

  void Finish(const char* skipped_message) {
    data_.lines_.resize(written_);
    if (pairs_ > 0 && skipped_ == pairs_)
      ReportDebug(skipped_message, "");
    else if (too_short_)
      ReportDebug(kLinesTooShort, "");
  }

 private:
  DebugData& data_;
  std::size_t first_;
  std::size_t written_;
  bool with_values_;
  std::size_t pairs_ = 0;
  std::size_t skipped_ = 0;
  bool too_short_ = false;
};

Vec3 WorldVertex(const DebugLineFrame& frame, uint32_t i) {
  return DebugPoint(Load3(frame.positions, i), frame.has_transform, frame.world);
}

bool HasPoints(const DebugLineFrame& frame) { return frame.positions != nullptr && frame.point_count > 0; }

// Sets times points rows with their weights and flags, when present.
bool FitsRows(std::size_t rows, const std::vector<float>& weights, std::size_t per_row_floats,
              std::size_t per_row_size) {
  return weights.size() == rows && per_row_size == rows * per_row_floats;
}

Vec3 Barycentric(const float* points, uint32_t a, uint32_t b, uint32_t c, float u, float v) {
  const float w = static_cast<float>(1.0 - static_cast<double>(u) - static_cast<double>(v));
  return Load3(points, a) * u + Load3(points, b) * v + Load3(points, c) * w;
}

}  // namespace

void DebugAttachmentLines(const AttachmentConstraints& group, const DebugLineFrame& frame, DebugData& data) {
  const std::size_t n = frame.point_count, sets = group.SetCount();
  const std::size_t rows = sets * n;
  if (!HasPoints(frame) || !FitsRows(rows, group.inverse_masses_, 1, group.row_flags_.size())) return;
  LineWriter writer(data, rows, false);
  for (std::size_t a = 0; a < sets; ++a) {
    const Vec3 anchor = MatrixTranslation(group.matrices_[a]);
    for (uint32_t i = 0; i < n; ++i) {
      const std::size_t row = a * n + i;
      if (!writer.Take(group.inverse_masses_[row] >= kSmallestWeight && group.row_flags_[row] == 0)) continue;
      writer.Add(WorldVertex(frame, i), anchor);
    }
  }
  writer.Finish(kWeightsTooSmall);
}

void DebugAttachmentToGeoLines(const AttachmentToGeoConstraints& group, const std::vector<TargetMesh>& targets,
                               const DebugLineFrame& frame, DebugData& data) {
  const std::size_t n = frame.point_count, rows = targets.size() * n;
  if (!HasPoints(frame) || !FitsRows(rows, group.inverse_masses_, 3, group.triangle_vertices_.size()) ||
      group.bary_u_.size() != rows || group.bary_v_.size() != rows)
    return;
  LineWriter writer(data, rows, false);
  for (std::size_t t = 0; t < targets.size(); ++t) {
    const TargetMesh& target = targets[t];
    for (uint32_t i = 0; i < n; ++i) {
      const std::size_t row = t * n + i;
      const int32_t* corners = group.triangle_vertices_.data() + 3 * row;
      const bool inside = corners[0] >= 0 && corners[1] >= 0 && corners[2] >= 0 &&
                          static_cast<std::size_t>(std::max({corners[0], corners[1], corners[2]})) * 3 + 3 <=
                              target.vertices_.size();
      if (!writer.Take(inside && group.inverse_masses_[row] >= kSmallestWeight)) continue;
      const Vec3 anchor = Barycentric(target.vertices_.data(), static_cast<uint32_t>(corners[0]),
                                      static_cast<uint32_t>(corners[1]), static_cast<uint32_t>(corners[2]),
                                      group.bary_u_[row], group.bary_v_[row]);
      writer.Add(WorldVertex(frame, i), anchor);
    }
  }
  writer.Finish(kWeightsTooSmall);
}

void DebugShapeLines(const ShapeConstraints& group, const DebugLineFrame& frame, DebugData& data) {
  const uint32_t rows = group.RowCount(), n = frame.point_count;
  if (!HasPoints(frame) || group.inverse_masses_.size() != n || group.first_points_.size() != rows ||
      group.third_points_.size() != rows)
    return;
  LineWriter writer(data, 2 * static_cast<std::size_t>(rows), false);
  const float* w = group.inverse_masses_.data();
  for (uint32_t r = 0; r < rows; ++r) {
    const int32_t a = group.first_points_[r], b = group.centre_points_[r], c = group.third_points_[r];
    const bool inside = a >= 0 && b >= 0 && c >= 0 && static_cast<uint32_t>(std::max({a, b, c})) < n;
    if (!writer.Take(inside && (w[a] >= kSmallestWeight || w[b] >= kSmallestWeight || w[c] >= kSmallestWeight)))
      continue;
    const Vec3 centre = WorldVertex(frame, static_cast<uint32_t>(b));
    writer.Add(centre, WorldVertex(frame, static_cast<uint32_t>(a)));
    writer.Add(centre, WorldVertex(frame, static_cast<uint32_t>(c)));
  }
  writer.Finish(kWeightsTooSmall);
}

void DebugSlideGeoLines(const SlideOnGeometryConstraints& group, uint32_t target_count, const DebugLineFrame& frame,
                        DebugData& data) {
  const std::size_t n = frame.point_count, rows = static_cast<std::size_t>(target_count) * n;
  if (!HasPoints(frame) || !FitsRows(rows, group.inverse_masses_, 3, group.closest_points_.size()) ||
      group.row_flags_.size() != rows)
    return;
  LineWriter writer(data, rows, false);
  for (std::size_t row = 0; row < rows; ++row) {
    if (!writer.Take(group.inverse_masses_[row] >= kSmallestWeight && group.row_flags_[row] == 0)) continue;
    writer.Add(WorldVertex(frame, static_cast<uint32_t>(row % n)),
               Load3(group.closest_points_.data(), static_cast<uint32_t>(row)));
  }
  writer.Finish(kNothingToSlideOn);
}

void DebugSlideSegmentLines(const SlideOnSegmentConstraints& group, const DebugLineFrame& frame, DebugData& data) {
  const std::size_t n = frame.point_count, segments = group.SetCount();
  const std::size_t rows = segments * n;
  if (segments == 0 || !HasPoints(frame) || group.inverse_masses_.size() != rows) return;
  LineWriter writer(data, rows, false);
  for (std::size_t s = 0; s < segments; ++s) {
    const Vec3 root = MatrixTranslation(group.matrices_[2 * s]);
    const Vec3 tip = MatrixTranslation(group.matrices_[2 * s + 1]);
    for (uint32_t i = 0; i < n; ++i) {
      if (!writer.Take(group.inverse_masses_[s * n + i] >= kSmallestWeight)) continue;
      const Vec3 vertex = WorldVertex(frame, i);
      writer.Add(vertex, ClosestPointOnSegment(vertex, root, tip));
    }
  }
  writer.Finish(kWeightsTooSmall);
}

void DebugSlideCollisionLines(const SlideCollisionConstraints& group, const DebugLineFrame& frame,
                              DebugData& data) {
  const std::size_t n = frame.point_count;
  if (!HasPoints(frame) || !FitsRows(n, group.inverse_masses_, 3, group.closest_points_.size()) ||
      group.sliding_inactive_.size() != n || group.collision_distances_.size() != n ||
      group.threshold_multipliers_.size() != n)
    return;
  LineWriter writer(data, n, true);
  for (uint32_t i = 0; i < n; ++i) {
    if (!writer.Take(group.inverse_masses_[i] >= kSmallestWeight && group.sliding_inactive_[i] == 0)) continue;
    const Vec3 vertex = WorldVertex(frame, i);
    const Vec3 anchor = Load3(group.closest_points_.data(), i);
    const float kept = group.collision_distances_[i] * group.threshold_multipliers_[i];
    const float value = kept > 0.0f ? std::min(1.0f, Length(vertex - anchor) / kept) : 1.0f;
    writer.Add(vertex, anchor, value);
  }
  writer.Finish(kNothingToSlideOn);
}

void DebugUberLines(const UberConstraints& group, int32_t feature, const DebugLineFrame& frame, DebugData& data) {
  if (feature != kDebugHardConstraints && feature != kDebugSlideConstraints && feature != kDebugSoftConstraints)
    return;
  const uint32_t n = frame.point_count;
  if (!HasPoints(frame) || group.inverse_masses_.size() != n || group.hard_weights_.size() != n ||
      group.soft_weights_.size() != n || group.slide_weights_.size() != n || group.triangle_vertices_.size() != 3 * n ||
      group.barycentric_u_.size() != n || group.barycentric_v_.size() != n)
    return;
  const bool slide = feature == kDebugSlideConstraints;
  if (slide && (group.sliding_points_.size() != 3 * static_cast<std::size_t>(n) || group.sliding_inactive_.size() != n))
    return;
  const std::size_t reference_points = group.reference_positions_.size() / 3;
  LineWriter writer(data, n, false);
  for (uint32_t i = 0; i < n; ++i) {
    float hard = group.hard_weights_[i], soft = group.soft_weights_[i], slid = group.slide_weights_[i];
    const float sum = hard + soft + slid;
    if (sum > 1.0f) {
      hard = std::min(hard, 1.0f);
      slid = std::min(slid, 1.0f - hard);
      soft = std::min(soft, 1.0f - (slid + hard));
    }
    bool drawn = sum >= kSmallestWeight && group.inverse_masses_[i] >= kSmallestWeight;
    if (slide)
      drawn = drawn && slid >= kSmallestWeight && group.sliding_inactive_[i] == 0;
    else
      drawn = drawn && (feature == kDebugHardConstraints ? hard : soft) >= kSmallestWeight;
    const uint32_t* corners = group.triangle_vertices_.data() + 3 * static_cast<std::size_t>(i);
    if (!slide) drawn = drawn && std::max({corners[0], corners[1], corners[2]}) < reference_points;
    if (!writer.Take(drawn)) continue;
    const Vec3 anchor = slide ? Load3(group.sliding_points_.data(), i)
                              : Barycentric(group.reference_positions_.data(), corners[0], corners[1], corners[2],
                                            group.barycentric_u_[i], group.barycentric_v_[i]);
    writer.Add(WorldVertex(frame, i), anchor);
  }
  writer.Finish(kNothingToSlideOn);
}

void DebugSurfaceLines(const std::vector<uint32_t>& edge_vertices, const std::vector<float>& points,
                       DebugData& data) {
  const std::size_t count = points.size() / 3;
  for (uint32_t index : edge_vertices)
    if (index >= count) return;
  const std::size_t first = data.lines_.size();
  data.lines_.resize(first + 3 * (edge_vertices.size() & ~static_cast<std::size_t>(1)));
  float* out = data.lines_.data() + first;
  for (std::size_t k = 0; k + 1 < edge_vertices.size(); k += 2) {
    Store3(out, static_cast<uint32_t>(k), Load3(points.data(), edge_vertices[k]));
    Store3(out, static_cast<uint32_t>(k + 1), Load3(points.data(), edge_vertices[k + 1]));
  }
}

}  // namespace myo_core
