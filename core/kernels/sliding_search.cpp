#include "core/kernels/sliding_search.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "core/math/lanes.h"

namespace myo_core {

namespace {

// Below this many triangles a parallel region costs more than it saves.
constexpr int64_t kParallelPreparationMinimum = 2048;
// Points per hand-out of the search.
constexpr int kSearchChunk = 16;

bool SearchTablesFit(std::size_t points, const SlidingSearchInput& input, const SlidingSearchOutput& output) {
  if (input.weights.size() != points || input.counts.size() != points || input.offsets.size() != points ||
      output.nearest_points.size() != 3 * points)
    return false;
  const std::size_t total = input.lists.size();
  for (std::size_t i = 0; i < points; ++i)
    if (static_cast<std::size_t>(input.offsets[i]) + input.counts[i] > total) return false;
  return true;
}

template <typename T>
bool SameBits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

// Coordinates beyond this make a triangle or a point take the full
// measurement: their squares stay far from overflow below it.
constexpr float kBoundedMagnitude = 1e9f;

// The bounds of four prepared triangles (SlidingTriangleBound), lane k into
// *out[k]. The reaches are measured from the stored centre along the stored
// normal, so they hold for those very values. They are widened for the
// rounding of their own arithmetic (a ten-thousandth of the triangle's size
// and a few millionths of its coordinates along the normal) and, across it,
// for how far outside the triangle the full measurement may still take its
// projection to lie: for a triangle whose inside test is well conditioned
// (a Gram determinant of at least a hundredth of ab_ab ac_ac) that is within
// a thousandth of its size and a ten-thousandth of its coordinates, far more
// than rounding reaches; a triangle with area but a poorly conditioned test
// gets no in-plane reach, and one without area is always answered on its
// edges. A normal that is not of unit length within 1e-5 is replaced by 0,
// which turns the reaches into a ball.
void BoundFourTriangles(const TriangleLanes<Float4, Mask4>& t, Float4 det, SlidingTriangleBound* const out[4]) {
  const V3<Float4> centre = (t.a + t.b + t.c) * Float4(1.0f / 3.0f);
  const V3<Float4> zero = {Float4(0.0f), Float4(0.0f), Float4(0.0f)};
  const V3<Float4> normal = Select(Abs(Dot(t.normal, t.normal) - Float4(1.0f)) <= Float4(1e-5f), t.normal, zero);
  const V3<Float4> corners[3] = {t.a, t.b, t.c};
  Float4 along(0.0f), across(0.0f), size(0.0f), magnitude(0.0f);
  for (const V3<Float4>& corner : corners) {
    const V3<Float4> offset = corner - centre;
    const Float4 height = Dot(offset, normal);
    const Float4 squared = Dot(offset, offset);
    along = Max(along, Abs(height));
    across = Max(across, squared - height * height);
    size = Max(size, squared);
    magnitude = Max(magnitude, Max(Max(Abs(corner.x), Abs(corner.y)), Abs(corner.z)));
  }
  size = Sqrt(size);
  const Float4 along_reach = along + size * Float4(1e-4f) + magnitude * Float4(4e-6f);
  const Float4 across_reach = Sqrt(across) + size * Float4(2e-3f) + magnitude * Float4(4e-4f);
  const Mask4 conditioned = det >= Float4(0.01f) * (t.ab_ab * t.ac_ac);
  const Float4 infinity(std::numeric_limits<float>::infinity());
  const Mask4 bounded = magnitude <= Float4(kBoundedMagnitude);
  const Float4 rows[2][4] = {
      {centre.x, centre.y, centre.z, Select(t.has_area, Select(conditioned, across_reach, infinity), across_reach)},
      {normal.x, normal.y, normal.z, Select(bounded, along_reach, Float4(std::numeric_limits<float>::quiet_NaN()))}};
  for (int r = 0; r < 2; ++r)
    StoreTransposed(rows[r], out[0]->rows[r], out[1]->rows[r], out[2]->rows[r], out[3]->rows[r]);
}

// Squared lower bounds of the distance from p to four bounded triangles:
// with q = p - centre, the height h = q . normal and the in-plane distance
// s = sqrt(q . q - h^2) of the centre, every point of the triangle is at
// least sqrt(max(0, |h| - along)^2 + max(0, s - across)^2) away. |h| is
// lowered by 2e-5 |q| and s^2 by 1e-4 q . q for their rounding. NaN where
// the triangle may not be passed over. centre_squared: q . q.
MYO_LANE_INLINE Float4 SquaredBounds(V3<Float4> p, const SlidingTriangleBound* const four[4],
                                     Float4& centre_squared) {
  Float4 rows[2][4];
  for (int r = 0; r < 2; ++r)
    Transpose4(four[0]->rows[r], four[1]->rows[r], four[2]->rows[r], four[3]->rows[r], rows[r]);
  const V3<Float4> q = p - V3<Float4>{rows[0][0], rows[0][1], rows[0][2]};
  const Float4 across = rows[0][3], along = rows[1][3];
  const Float4 qq = Dot(q, q);
  const Float4 h = Dot(q, V3<Float4>{rows[1][0], rows[1][1], rows[1][2]});
  const Float4 height = Max(Abs(h) - along - Sqrt(qq) * Float4(2e-5f), Float4(0.0f));
  const Float4 in_plane = Max(Sqrt(Max(qq - h * h - qq * Float4(1e-4f), Float4(0.0f))) - across, Float4(0.0f));
  const Float4 bound = height * height + in_plane * in_plane;
  centre_squared = qq;
  return Select(along >= Float4(0.0f), bound, Float4(std::numeric_limits<float>::quiet_NaN()));
}

// Prepares every used triangle from the current mesh positions. False when a
// used triangle names a vertex that has no position.
bool PrepareUsedTriangles(const SlidingSearchInput& input, SlidingSearchScratch& scratch) {
  const std::size_t vertex_count = input.mesh_positions.size() / 3;
  const uint32_t* corners = input.mesh_triangles.data();
  for (uint32_t t : scratch.used_triangles_)
    for (int k = 0; k < 3; ++k)
      if (corners[3 * static_cast<std::size_t>(t) + k] >= vertex_count) return false;
  const float* positions = input.mesh_positions.data();
  const uint32_t* used = scratch.used_triangles_.data();
  PackedTriangle* prepared = scratch.prepared_triangles_.data();
  SlidingTriangleBound* bounds = scratch.triangle_bounds_.data();
  const int64_t used_count = static_cast<int64_t>(scratch.used_triangles_.size());
#pragma omp parallel for schedule(static) if (used_count >= kParallelPreparationMinimum)
  for (int64_t s0 = 0; s0 < used_count; s0 += 4) {
    // Four triangles at a time; lanes past the end are prepared from zeros
    // into a place that is thrown away.
    float corner_values[4][9] = {};
    const float* four[4];
    PackedTriangle unused[4];
    PackedTriangle* out[4];
    for (int j = 0; j < 4; ++j) {
      four[j] = corner_values[j];
      out[j] = &unused[j];
      if (s0 + j >= used_count) continue;
      const uint32_t* abc = corners + 3 * static_cast<std::size_t>(used[s0 + j]);
      for (int k = 0; k < 3; ++k)
        for (int axis = 0; axis < 3; ++axis) corner_values[j][3 * k + axis] = positions[3 * abc[k] + axis];
      out[j] = &prepared[used[s0 + j]];
    }
    TriangleLanes<Float4, Mask4> lanes;
    Float4 det;
    PrepareFourTriangles(four, lanes, det);
    PackFourTriangles(lanes, out);
    SlidingTriangleBound unused_bounds[4];
    SlidingTriangleBound* bounds_out[4];
    for (int j = 0; j < 4; ++j) bounds_out[j] = s0 + j < used_count ? &bounds[used[s0 + j]] : &unused_bounds[j];
    BoundFourTriangles(lanes, det, bounds_out);
  }
  return true;
}

// The winner of a point's list: its point and its position in the list.
struct Winner {
  Vec3 point;
  float position;
};

// The winner of the lanes of `lanes`: least distance, then least list
// position. False when no lane holds a candidate.
bool LaneWinner(const LaneBest& lanes, float& distance, float& position, Vec3& point) {
  float distances[4], positions[4], xs[4], ys[4], zs[4];
  lanes.distance.Store(distances);
  lanes.position.Store(positions);
  lanes.point.x.Store(xs);
  lanes.point.y.Store(ys);
  lanes.point.z.Store(zs);
  int winner = -1;
  for (int j = 0; j < 4; ++j) {
    if (positions[j] < 0.0f) continue;
    if (winner < 0 || distances[j] < distances[winner] ||
        (distances[j] == distances[winner] && positions[j] < positions[winner]))
      winner = j;
  }
  if (winner < 0) return false;
  distance = distances[winner];
  position = positions[winner];
  point = {xs[winner], ys[winner], zs[winner]};
  return true;
}

// The closest point of the list's triangles to p: the least distance, and
// among equals the candidate that stands first in the list, which is what a
// stable sort by distance puts first. Candidates run four at a time; each
// lane sees its candidates in list order, and the lanes are merged by
// distance, then by list position. False when the list names no triangle.
bool NearestOfList(Vec3 p, const uint32_t* list, int64_t count, uint32_t triangle_count,
                   const PackedTriangle* prepared, Winner& nearest) {
  const V3<Float4> p4 = {Float4(p.x), Float4(p.y), Float4(p.z)};
  LaneBest lanes;
  int64_t pending[4];
  int pending_count = 0;
  for (int64_t k = 0; k < count; ++k) {
    if (list[k] >= triangle_count) continue;
    pending[pending_count++] = k;
    if (pending_count < 4) continue;
    MeasureFourCandidates(p4, pending, list, prepared, lanes);
    pending_count = 0;
  }
  if (pending_count > 0) {
    for (int j = pending_count; j < 4; ++j) pending[j] = -1;
    MeasureFourCandidates(p4, pending, list, prepared, lanes);
  }
  float distance;
  return LaneWinner(lanes, distance, nearest.position, nearest.point);
}

// Scratch of one thread's search, one entry per list entry of its point.
struct ThreadScratch {
  std::vector<float> bounds;      // squared bound of each candidate, infinity for entries that name nothing
  std::vector<float> centres;     // squared distance from p to each candidate's centre
  std::vector<int64_t> measured;  // list positions of the candidates left to measure
};

// NearestOfList with the same winner, measuring fewer candidates: first the
// bounds of all candidates, then the candidate of the nearest centre, then, in
// list order, every other candidate whose bound does not exceed that
// candidate's distance by more than the measurement's own rounding (a
// hundred-thousandth of the distance and a few millionths of p's
// coordinates; the triangle's part is in its bound). The winner among the
// measured ones is the winner of the list. Points or triangles of unusual
// values, and distances that are not finite, take the full measurement.
bool NearestOfListBounded(Vec3 p, const uint32_t* list, int64_t count, uint32_t triangle_count,
                          const PackedTriangle* prepared, const SlidingTriangleBound* triangle_bounds,
                          ThreadScratch& scratch, Winner& nearest) {
  const float magnitude = std::max(std::max(std::fabs(p.x), std::fabs(p.y)), std::fabs(p.z));
  if (!(magnitude <= kBoundedMagnitude)) return NearestOfList(p, list, count, triangle_count, prepared, nearest);
  const V3<Float4> p4 = {Float4(p.x), Float4(p.y), Float4(p.z)};
  // An entry that names no triangle gets an infinite bound: an in-plane
  // reach of minus infinity.
  static const SlidingTriangleBound kNothing = {
      {{0.0f, 0.0f, 0.0f, -std::numeric_limits<float>::infinity()}, {0.0f, 0.0f, 0.0f, 0.0f}}};
  float* bounds = scratch.bounds.data();
  float* centres = scratch.centres.data();
  Mask4 bounded = MakeMask4(true, true, true, true);
  for (int64_t k0 = 0; k0 < count; k0 += 4) {
    const SlidingTriangleBound* four[4];
    for (int j = 0; j < 4; ++j) {
      const int64_t k = k0 + j;
      four[j] = k < count && list[k] < triangle_count ? &triangle_bounds[list[k]] : &kNothing;
    }
    Float4 centre_squared;
    const Float4 values = SquaredBounds(p4, four, centre_squared);
    values.Store(bounds + k0);
    centre_squared.Store(centres + k0);
    bounded = And(bounded, values >= Float4(0.0f));
  }
  if (MaskLanes(bounded) != 0xF) return NearestOfList(p, list, count, triangle_count, prepared, nearest);

  // The candidate of the nearest centre is measured first, likely the winner
  // or close to it: its distance decides which others need measuring at all.
  int64_t least = -1;
  float least_centre = 0.0f;
  for (int64_t k = 0; k < count; ++k) {
    if (!(bounds[k] < std::numeric_limits<float>::infinity())) continue;  // names no triangle
    if (least < 0 || centres[k] < least_centre) least = k, least_centre = centres[k];
  }
  if (least < 0) return false;

  LaneBest first;
  const int64_t only[4] = {least, -1, -1, -1};
  MeasureFourCandidates(p4, only, list, prepared, first);
  float first_distance = 0.0f, first_position = 0.0f;
  Vec3 first_point{};
  LaneWinner(first, first_distance, first_position, first_point);
  if (!(std::fabs(first_distance) <= std::numeric_limits<float>::max()))
    return NearestOfList(p, list, count, triangle_count, prepared, nearest);
  const float reach = first_distance + first_distance * 1e-5f + magnitude * 4e-6f;
  const float reach_squared = reach * reach;

  // The candidates left to measure, in list order, gathered without branches.
  bounds[least] = std::numeric_limits<float>::infinity();
  int64_t* measured = scratch.measured.data();
  int64_t measured_count = 0;
  for (int64_t k = 0; k < count; ++k) {
    measured[measured_count] = k;
    measured_count += bounds[k] <= reach_squared ? 1 : 0;
  }
  LaneBest lanes;
  for (int64_t m0 = 0; m0 < measured_count; m0 += 4) {
    int64_t pending[4];
    for (int j = 0; j < 4; ++j) pending[j] = m0 + j < measured_count ? measured[m0 + j] : -1;
    MeasureFourCandidates(p4, pending, list, prepared, lanes);
  }
  float distance, position;
  Vec3 point;
  if (!LaneWinner(lanes, distance, position, point)) {
    nearest = {first_point, first_position};
    return true;
  }
  if (!(std::fabs(distance) <= std::numeric_limits<float>::max()))
    return NearestOfList(p, list, count, triangle_count, prepared, nearest);
  const bool first_wins = first_distance < distance || (first_distance == distance && first_position < position);
  nearest = first_wins ? Winner{first_point, first_position} : Winner{point, position};
  return true;
}

}  // namespace

void PrepareSearchTriangles(const std::vector<uint32_t>& lists, std::size_t triangle_count,
                            SlidingSearchScratch& scratch) {
  std::vector<uint8_t> named(triangle_count, 0);
  for (uint32_t t : lists)
    if (t < triangle_count) named[t] = 1;
  scratch.used_triangles_.clear();
  for (std::size_t t = 0; t < triangle_count; ++t)
    if (named[t]) scratch.used_triangles_.push_back(static_cast<uint32_t>(t));
  scratch.prepared_triangles_.assign(triangle_count, PackedTriangle{});
  scratch.triangle_bounds_.assign(triangle_count, SlidingTriangleBound{});
  scratch.prepared_from_positions_.clear();
  scratch.prepared_from_triangles_.clear();
}

uint32_t PrepareSlidingSearch(std::size_t point_count, const SlidingSearchInput& input,
                              const SlidingSearchOutput& output, SlidingSearchScratch& scratch) {
  output.inactive.assign(point_count, 1);
  if (output.nearest_triangles) output.nearest_triangles->assign(point_count, 0);
  if (point_count == 0 || !SearchTablesFit(point_count, input, output)) return 0;
  const std::size_t triangle_count = input.mesh_triangles.size() / 3;
  if (scratch.prepared_triangles_.size() != triangle_count || scratch.triangle_bounds_.size() != triangle_count)
    PrepareSearchTriangles(input.lists, triangle_count, scratch);
  const float* weights = input.weights.data();
  const uint32_t* counts = input.counts.data();
  uint32_t longest = 0;
  for (std::size_t i = 0; i < point_count; ++i)
    if (!(weights[i] < kEpsilon)) longest = std::max(longest, counts[i]);
  if (longest == 0) return 0;
  const bool same_triangles = SameBits(scratch.prepared_from_triangles_, input.mesh_triangles);
  if (same_triangles && !scratch.prepared_from_positions_.empty() &&
      SameBits(scratch.prepared_from_positions_, input.mesh_positions))
    return longest;
  scratch.prepared_from_positions_.clear();
  if (!PrepareUsedTriangles(input, scratch)) return 0;
  scratch.prepared_from_positions_ = input.mesh_positions;
  if (!same_triangles) scratch.prepared_from_triangles_ = input.mesh_triangles;
  return longest;
}

void SearchSlidingPoints(const SlidingSearchInput& input, const SlidingSearchOutput& output, bool has_transform,
                         const float* positions, const Matrix& world_matrix, uint32_t longest,
                         const SlidingSearchScratch& scratch) {
  const int64_t point_count = static_cast<int64_t>(output.inactive.size());
  const uint32_t triangle_count = static_cast<uint32_t>(input.mesh_triangles.size() / 3);
  const float* weights = input.weights.data();
  const uint32_t* counts = input.counts.data();
  const uint32_t* offsets = input.offsets.data();
  const uint32_t* lists = input.lists.data();
  const PackedTriangle* prepared = scratch.prepared_triangles_.data();
  const SlidingTriangleBound* triangle_bounds = scratch.triangle_bounds_.data();
  float* nearest_points = output.nearest_points.data();
  uint16_t* inactive = output.inactive.data();
  uint32_t* nearest_triangles = output.nearest_triangles ? output.nearest_triangles->data() : nullptr;
  ThreadScratch thread_scratch;
  thread_scratch.bounds.resize(longest + 3);  // whole fours
  thread_scratch.centres.resize(longest + 3);
  thread_scratch.measured.resize(longest);
  // Points run in small chunks handed out as threads come free: lists differ
  // in length, and chunks of one point would make the hand-out the cost.
#pragma omp for schedule(dynamic, kSearchChunk)
  for (int64_t i = 0; i < point_count; ++i) {
    if (weights[i] < kEpsilon || counts[i] == 0 || counts[i] > longest) continue;
    Vec3 p = Load3(positions, static_cast<uint32_t>(i));
    if (has_transform) p = TransformPoint(p, world_matrix);
    const uint32_t* list = lists + offsets[i];
    Winner nearest;
    if (!NearestOfListBounded(p, list, counts[i], triangle_count, prepared, triangle_bounds, thread_scratch,
                              nearest))
      continue;
    inactive[i] = 0;
    Store3(nearest_points, static_cast<uint32_t>(i), nearest.point);
    if (nearest_triangles) {
      // A list position is exact in a float up to 2^24 entries; beyond, it
      // stays within the list.
      const uint32_t position = std::min(static_cast<uint32_t>(nearest.position), counts[i] - 1);
      nearest_triangles[i] = list[position];
    }
  }
}

void RunSlidingSearch(const SlidingSearchInput& input, const SlidingSearchOutput& output, bool has_transform,
                      const std::vector<float>& positions, const Matrix& world_matrix,
                      SlidingSearchScratch& scratch) {
  const uint32_t longest = PrepareSlidingSearch(positions.size() / 3, input, output, scratch);
  if (longest == 0) return;
#pragma omp parallel
  SearchSlidingPoints(input, output, has_transform, positions.data(), world_matrix, longest, scratch);
}

}  // namespace myo_core
