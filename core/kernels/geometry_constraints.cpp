#include "core/kernels/geometry_constraints.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace myo_core {

namespace {

// Below this many rows or slots a parallel region costs more than it saves.
constexpr int64_t kParallelMinimum = 2048;

bool AttachmentRowsFit(const AttachmentToGeoConstraints& group, std::size_t rows) {
  return group.inverse_masses_.size() == rows && group.faces_.size() == rows &&
         group.triangle_vertices_.size() == 3 * rows && group.bary_u_.size() == rows &&
         group.bary_v_.size() == rows && group.local_offsets_.size() == 3 * rows;
}

bool SlideRowsFit(const SlideOnGeometryConstraints& group, std::size_t rows) {
  return group.inverse_masses_.size() == rows && group.distances_.size() == rows &&
         group.closest_points_.size() == 3 * rows && group.candidate_counts_.size() == rows &&
         group.candidate_offsets_.size() == rows;
}

// Starts a search with fresh visited lists: a new stamp, or cleared marks
// when the stamps wrap around or the mesh changed size.
uint32_t BeginSearch(CandidateSearchScratch& visited, uint32_t polygon_count, uint32_t triangle_count) {
  if (visited.polygon_marks_.size() != polygon_count || visited.triangle_marks_.size() != triangle_count ||
      visited.result_marks_.size() != triangle_count || visited.stamp_ == UINT32_MAX) {
    visited.polygon_marks_.assign(polygon_count, 0);
    visited.triangle_marks_.assign(triangle_count, 0);
    visited.result_marks_.assign(triangle_count, 0);
    visited.stamp_ = 0;
  }
  visited.stack_.clear();
  return ++visited.stamp_;
}

// Eight lanes as two interleaved fours, so that the long chains of divisions
// and roots of neighbouring rows overlap.
using Lanes8 = Twin<Float4>;
Lanes8 LoadLanes8(const float* v) {
  return Lanes8(Float4(v[0], v[1], v[2], v[3]), Float4(v[4], v[5], v[6], v[7]));
}
void StoreLanes8(const Lanes8& lanes, float out[8]) {
  lanes.lo.Store(out);
  lanes.hi.Store(out + 4);
}

// The balls of four prepared triangles, lane k into *out[k]. Only a
// triangle whose inside test is well conditioned (a Gram determinant of at
// least a hundredth of ab_ab ac_ac, an angle of at least about 6 degrees)
// may be passed over: the distance that ClosestPointOnTriangle returns for
// it then falls short of the true distance to the triangle by rounding
// alone, under a ten-thousandth of the lengths and coordinates involved.
void BallsOfFour(const TriangleLanes<Float4, Mask4>& t, Float4 det, TriangleBall* const out[4]) {
  const V3<Float4> centre = (t.a + t.b + t.c) * Float4(1.0f / 3.0f);
  const Float4 radius =
      Max(Max(Length(t.a - centre), Length(t.b - centre)), Length(t.c - centre)) * Float4(1.0001f);
  const Mask4 conditioned = And(t.has_area, det >= Float4(0.01f) * (t.ab_ab * t.ac_ac));
  const Float4 magnitude = Max(Max(Abs(centre.x), Abs(centre.y)), Abs(centre.z)) + radius;
  const Float4 largest(std::numeric_limits<float>::max());
  const Mask4 finite = And(magnitude <= largest, Dot(t.normal, t.normal) <= largest);
  const Float4 rows[2][4] = {
      {centre.x, centre.y, centre.z, radius},
      {t.normal.x, t.normal.y, t.normal.z,
       Select(And(conditioned, finite), magnitude, Float4(std::numeric_limits<float>::quiet_NaN()))}};
  for (int r = 0; r < 2; ++r) StoreTransposed(rows[r], out[0]->rows[r], out[1]->rows[r], out[2]->rows[r], out[3]->rows[r]);
}

// Set in the lanes whose triangle is surely farther from p than `best`,
// whatever rounding does to the distance the full query would return. The
// distance to a triangle is at least sqrt(h^2 + max(0, e - radius)^2), h
// being p's height over the triangle's plane and e the distance within the
// plane from p's foot to the ball's centre; h and e are lowered by a
// thousandth of |p - centre| for the normal's and the subtraction's
// rounding, and the test asks for a lead of a hundredth of `best`, a
// thousandth of the radius and a ten-thousandth of the coordinates: a hundred
// times what rounding can take off the full query's distance. A NaN
// magnitude never passes.
MYO_LANE_INLINE Mask4 FartherThan(V3<Float4> p, Float4 p_magnitude, const TriangleBall* const four[4],
                                  Float4 best) {
  Float4 rows[2][4];
  for (int r = 0; r < 2; ++r) Transpose4(four[0]->rows[r], four[1]->rows[r], four[2]->rows[r], four[3]->rows[r], rows[r]);
  const V3<Float4> centre = {rows[0][0], rows[0][1], rows[0][2]};
  const V3<Float4> normal = {rows[1][0], rows[1][1], rows[1][2]};
  const Float4 radius = rows[0][3], magnitude = rows[1][3];
  const V3<Float4> q = p - centre;
  const Float4 qq = Dot(q, q);
  const Float4 hq = Dot(q, normal);
  const Float4 slack = Sqrt(qq) * Float4(1e-3f);
  const Float4 height = Max(Abs(hq) - slack, Float4(0.0f));
  const Float4 in_plane = Max(Sqrt(Max(qq - hq * hq, Float4(0.0f))) - slack - radius, Float4(0.0f));
  const Float4 reach = best * Float4(1.01f) + radius * Float4(1e-3f) + (p_magnitude + magnitude) * Float4(1e-4f);
  return height * height + in_plane * in_plane > reach * reach;
}

// Prepares the slots of every usable target from its current vertices.
void PrepareSlotTriangles(const std::vector<TargetMesh>& targets, SlideOnGeometryConstraints& group) {
  const std::size_t slot_count = group.slot_triangles_.size();
  group.prepared_triangles_.resize(slot_count);
  group.slot_balls_.resize(slot_count);
  group.slot_ready_.resize(slot_count);
  for (std::size_t t = 0; t < targets.size(); ++t) {
    const TargetMesh& target = targets[t];
    const uint32_t vertex_count = static_cast<uint32_t>(target.vertices_.size() / 3);
    const int64_t first = group.slot_target_offsets_[t], last = group.slot_target_offsets_[t + 1];
    const bool usable = target.vertex_count_ > 0 && vertex_count >= target.vertex_count_;
    const float* vertices = target.vertices_.data();
    const int32_t* corners = target.triangle_vertices_.data();
#pragma omp parallel for schedule(static) if (last - first >= kParallelMinimum)
    for (int64_t s0 = first; s0 < last; s0 += 4) {
      // Four slots at a time; a slot past the end or with a corner out of
      // range is prepared from zeros and marked unusable.
      float corner_values[4][9] = {};
      const float* four[4];
      bool valid[4];
      for (int j = 0; j < 4; ++j) {
        four[j] = corner_values[j];
        valid[j] = false;
        if (!usable || s0 + j >= last) continue;
        const int32_t* abc = corners + 3 * static_cast<std::size_t>(group.slot_triangles_[s0 + j]);
        valid[j] = static_cast<uint32_t>(abc[0]) < vertex_count && static_cast<uint32_t>(abc[1]) < vertex_count &&
                   static_cast<uint32_t>(abc[2]) < vertex_count;
        if (!valid[j]) continue;
        for (int k = 0; k < 3; ++k)
          for (int axis = 0; axis < 3; ++axis) corner_values[j][3 * k + axis] = vertices[3 * abc[k] + axis];
      }
      TriangleLanes<Float4, Mask4> lanes;
      Float4 det;
      PrepareFourTriangles(four, lanes, det);
      PackedTriangle unused_packed[4];
      TriangleBall unused_balls[4];
      PackedTriangle* packed[4];
      TriangleBall* balls[4];
      for (int j = 0; j < 4; ++j) {
        const bool kept = valid[j] && s0 + j < last;
        packed[j] = kept ? &group.prepared_triangles_[s0 + j] : &unused_packed[j];
        balls[j] = kept ? &group.slot_balls_[s0 + j] : &unused_balls[j];
        if (s0 + j < last) group.slot_ready_[s0 + j] = valid[j];
      }
      PackFourTriangles(lanes, packed);
      BallsOfFour(lanes, det, balls);
    }
  }
}

// Index of the lowest set bit of a nonzero mask of four bits.
inline int LowestBit(int bits) {
  int j = 0;
  while (!(bits >> j & 1)) ++j;
  return j;
}

// The nearest of a row's candidates to p, the first in list order among
// equals; what a scan of the list in order gives. The seed (the last
// winner) is measured first; every other candidate whose ball shows it to be
// farther than the seed is passed over, since it cannot win, and the rest
// are measured four at a time, in list order. Returns the list position of
// the winner, -1 when no candidate is usable.
int64_t NearestCandidate(Vec3 p, const int32_t* row_slots, int64_t count, int64_t seed,
                         const PackedTriangle* prepared, const TriangleBall* balls, const uint8_t* ready,
                         Vec3& nearest) {
  static const TriangleBall kNoBall = {};  // stands in for lanes without a usable candidate
  auto usable = [&](int64_t k) { return row_slots[k] >= 0 && ready[row_slots[k]]; };
  const V3<Float4> p4 = {Float4(p.x), Float4(p.y), Float4(p.z)};
  const Float4 p_magnitude(std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)}));

  LaneBest first;
  const bool seeded = seed >= 0 && seed < count && usable(seed);
  if (seeded) {
    const int64_t one[4] = {seed, -1, -1, -1};
    MeasureFourCandidates(p4, one, row_slots, prepared, first);
  }
  float seed_lanes[4];
  first.distance.Store(seed_lanes);
  const Float4 seed_distance(seed_lanes[0]);

  LaneBest lanes;
  int64_t pending[4];
  int pending_count = 0;
  for (int64_t k0 = 0; k0 < count; k0 += 4) {
    // The candidates of this group of four still to be measured, as bits.
    const TriangleBall* four[4];
    int keep = 0;
    for (int j = 0; j < 4; ++j) {
      const int64_t k = k0 + j;
      const bool measure = k < count && k != seed && usable(k);
      keep |= static_cast<int>(measure) << j;
      four[j] = measure ? &balls[row_slots[k]] : &kNoBall;
    }
    if (seeded) keep &= ~MaskLanes(FartherThan(p4, p_magnitude, four, seed_distance));
    for (; keep != 0; keep &= keep - 1) {
      pending[pending_count++] = k0 + LowestBit(keep);
      if (pending_count < 4) continue;
      MeasureFourCandidates(p4, pending, row_slots, prepared, lanes);
      pending_count = 0;
    }
  }
  if (pending_count > 0) {
    for (int j = pending_count; j < 4; ++j) pending[j] = -1;
    MeasureFourCandidates(p4, pending, row_slots, prepared, lanes);
  }

  // The seed and the four lanes, merged by distance and list position.
  float distances[4], positions[4], xs[4], ys[4], zs[4];
  lanes.distance.Store(distances);
  lanes.position.Store(positions);
  lanes.point.x.Store(xs);
  lanes.point.y.Store(ys);
  lanes.point.z.Store(zs);
  int64_t winner = -1;
  float winner_distance = 0.0f;
  if (seeded) {
    float seed_x[4], seed_y[4], seed_z[4];
    first.point.x.Store(seed_x);
    first.point.y.Store(seed_y);
    first.point.z.Store(seed_z);
    winner = seed;
    winner_distance = seed_lanes[0];
    nearest = {seed_x[0], seed_y[0], seed_z[0]};
  }
  for (int j = 0; j < 4; ++j) {
    if (positions[j] < 0.0f) continue;
    const int64_t position = static_cast<int64_t>(positions[j]);
    if (winner < 0 || distances[j] < winner_distance || (distances[j] == winner_distance && position < winner)) {
      winner = position;
      winner_distance = distances[j];
      nearest = {xs[j], ys[j], zs[j]};
    }
  }
  return winner;
}

}  // namespace

void SolveAttachmentToGeoRows(const AttachmentToGeoConstraints& group, const std::vector<TargetMesh>& targets,
                              uint32_t point_count, float compliance, bool has_transform,
                              const Matrix& world_matrix, const Matrix& world_matrix_inverse, float* positions,
                              float* lambdas) {
  const std::size_t rows = targets.size() * static_cast<std::size_t>(point_count);
  if (rows == 0 || !AttachmentRowsFit(group, rows)) return;
  const float* weights = group.inverse_masses_.data();
  const int32_t* corners = group.triangle_vertices_.data();
  for (uint32_t t = 0; t < targets.size(); ++t) {
    const TargetMesh& target = targets[t];
    if (target.vertex_count_ == 0) continue;
    for (uint32_t i = 0; i < point_count; ++i) {
      const uint32_t row = t * point_count + i;
      SolveAttachmentToGeo(group.lambda_base_ + row, i, row, corners[3 * row], corners[3 * row + 1],
                           corners[3 * row + 2], group.faces_[row], weights[row], compliance, group.bary_u_[row],
                           group.bary_v_[row], has_transform, group.hard_, world_matrix, world_matrix_inverse,
                           target, group.local_offsets_.data(), positions, lambdas);
    }
  }
}

void SolveSlideOnGeometryRows(const SlideOnGeometryConstraints& group, uint32_t target_count,
                              uint32_t point_count, float compliance, bool has_transform,
                              const Matrix& world_matrix, const Matrix& world_matrix_inverse, float* positions,
                              float* lambdas) {
  const std::size_t rows = static_cast<std::size_t>(target_count) * point_count;
  if (rows == 0 || !SlideRowsFit(group, rows) || group.row_flags_.size() != rows) return;
  const float* weights = group.inverse_masses_.data();
  const uint16_t* flags = group.row_flags_.data();
  const float* distances = group.distances_.data();
  const float* closest_points = group.closest_points_.data();
  for (uint32_t t = 0; t < target_count; ++t) {
    // Rows of one target move different points, so eight at a time give
    // what one at a time gives.
    const int64_t blocks = point_count / 8;
    for (int64_t block = 0; block < blocks; ++block) {
      const uint32_t i = static_cast<uint32_t>(8 * block);
      const uint32_t row = t * point_count + i;
      bool active[8];
      bool any = false;
      for (int j = 0; j < 8; ++j) {
        active[j] = !(weights[row + j] < kEpsilon || flags[row + j] == 1);
        any |= active[j];
      }
      if (!any) continue;
      float x[3][8], c[3][8];
      for (int j = 0; j < 8; ++j) {
        Vec3 p = Load3(positions, i + j);
        if (has_transform) p = TransformPoint(p, world_matrix);
        const Vec3 q = Load3(closest_points, row + j);
        x[0][j] = p.x, x[1][j] = p.y, x[2][j] = p.z;
        c[0][j] = q.x, c[1][j] = q.y, c[2][j] = q.z;
      }
      const uint32_t lambda_row = group.lambda_base_ + row;
      V3<Lanes8> moved = {LoadLanes8(x[0]), LoadLanes8(x[1]), LoadLanes8(x[2])};
      Lanes8 lambda = LoadLanes8(lambdas + lambda_row);
      SlideOnGeometryUpdate(moved, lambda, {LoadLanes8(c[0]), LoadLanes8(c[1]), LoadLanes8(c[2])},
                            LoadLanes8(weights + row), Lanes8(compliance), LoadLanes8(distances + row));
      float lambda_out[8];
      StoreLanes8(lambda, lambda_out);
      StoreLanes8(moved.x, x[0]);
      StoreLanes8(moved.y, x[1]);
      StoreLanes8(moved.z, x[2]);
      for (int j = 0; j < 8; ++j) {
        if (!active[j]) continue;
        Vec3 p = {x[0][j], x[1][j], x[2][j]};
        if (has_transform) p = TransformPoint(p, world_matrix_inverse);
        Store3(positions, i + j, p);
        lambdas[lambda_row + j] = lambda_out[j];
      }
    }
    for (uint32_t i = static_cast<uint32_t>(8 * blocks); i < point_count; ++i) {
      const uint32_t row = t * point_count + i;
      SolveSlideOnGeometry(group.lambda_base_ + row, i, row, flags[row], weights[row], compliance, distances[row],
                           has_transform, world_matrix, world_matrix_inverse, closest_points, positions, lambdas);
    }
  }
}

void SearchCandidateTriangles(int32_t triangle, float radius, Vec3 centre, const TargetMesh& target,
                              const std::vector<int32_t>& triangle_vertices, bool add,
                              CandidateSearchScratch& visited, std::vector<int32_t>& result) {
  result.clear();
  const uint32_t triangle_count = static_cast<uint32_t>(triangle_vertices.size() / 3);
  if (triangle < 0 || static_cast<uint32_t>(triangle) >= triangle_count) return;
  const uint32_t stamp = BeginSearch(visited, target.polygon_count_, triangle_count);
  const float* vertices = target.vertices_.data();
  std::vector<CandidateSearchScratch::Frame>& stack = visited.stack_;
  stack.push_back({triangle, 0, -1, -1, add});
  while (!stack.empty()) {
    CandidateSearchScratch::Frame& frame = stack.back();
    if (frame.corner == 3) {
      // All corners flooded: the triangle is done.
      if (frame.add && visited.result_marks_[frame.triangle] != stamp) {
        visited.result_marks_[frame.triangle] = stamp;
        result.push_back(frame.triangle);
      }
      stack.pop_back();
      continue;
    }
    const int32_t vertex = triangle_vertices[3 * static_cast<std::size_t>(frame.triangle) + frame.corner];
    if (frame.polygon_cursor < 0) {
      // A corner within reach floods its polygons; one out of reach is passed.
      if (Length(Load3(vertices, vertex) - centre) <= radius) {
        frame.add = true;
        frame.polygon_cursor = 0;
        frame.triangle_cursor = -1;
      } else {
        ++frame.corner;
      }
      continue;
    }
    const int32_t* polygons = target.vertex_polygons_.data() + target.vertex_polygon_offsets_[vertex];
    if (frame.triangle_cursor < 0) {
      // The next polygon around the corner that no one has visited.
      if (frame.polygon_cursor == target.vertex_polygon_counts_[vertex]) {
        ++frame.corner;
        frame.polygon_cursor = -1;
        continue;
      }
      const int32_t polygon = polygons[frame.polygon_cursor];
      if (visited.polygon_marks_[polygon] == stamp) {
        ++frame.polygon_cursor;
        continue;
      }
      visited.polygon_marks_[polygon] = stamp;
      frame.triangle_cursor = 0;
      continue;
    }
    // The next triangle of that polygon that no one has visited is walked.
    const int32_t polygon = polygons[frame.polygon_cursor];
    if (frame.triangle_cursor == target.polygon_triangle_counts_[polygon]) {
      frame.triangle_cursor = -1;
      ++frame.polygon_cursor;
      continue;
    }
    const int32_t next = target.polygon_triangles_[target.polygon_triangle_offsets_[polygon] + frame.triangle_cursor];
    ++frame.triangle_cursor;
    if (visited.triangle_marks_[next] == stamp) continue;
    visited.triangle_marks_[next] = stamp;
    stack.push_back({next, 0, -1, -1, false});
  }
}

void PrepareCandidateSlots(const std::vector<TargetMesh>& targets, uint32_t point_count,
                           SlideOnGeometryConstraints& group) {
  const std::size_t target_count = targets.size();
  const std::size_t candidate_total = group.candidates_.size();
  group.candidate_slots_.assign(candidate_total, -1);
  group.slot_triangles_.clear();
  group.slot_target_offsets_.assign(target_count + 1, 0);
  const std::size_t rows = target_count * point_count;
  const bool rows_fit = group.candidate_counts_.size() == rows && group.candidate_offsets_.size() == rows;
  std::vector<int32_t> slot_of;  // G of the current target, slot of each triangle or -1
  for (std::size_t t = 0; t < target_count; ++t) {
    group.slot_target_offsets_[t] = static_cast<int32_t>(group.slot_triangles_.size());
    if (!rows_fit) continue;
    const int32_t triangle_count = static_cast<int32_t>(targets[t].TriangleCount());
    slot_of.assign(static_cast<std::size_t>(triangle_count), -1);
    auto for_each_candidate = [&](auto&& visit) {
      for (std::size_t row = t * point_count; row < (t + 1) * point_count; ++row) {
        const int64_t offset = group.candidate_offsets_[row], count = group.candidate_counts_[row];
        if (offset < 0 || count <= 0 || offset + count > static_cast<int64_t>(candidate_total)) continue;
        for (int64_t k = offset; k < offset + count; ++k) {
          const int32_t g = group.candidates_[k];
          if (g >= 0 && g < triangle_count) visit(k, g);
        }
      }
    };
    for_each_candidate([&](int64_t, int32_t g) { slot_of[g] = 0; });
    const int32_t first_slot = static_cast<int32_t>(group.slot_triangles_.size());
    for (int32_t g = 0; g < triangle_count; ++g)
      if (slot_of[g] == 0) group.slot_triangles_.push_back(g);
    for (std::size_t s = first_slot; s < group.slot_triangles_.size(); ++s)
      slot_of[group.slot_triangles_[s]] = static_cast<int32_t>(s);
    for_each_candidate([&](int64_t k, int32_t g) { group.candidate_slots_[k] = slot_of[g]; });
  }
  group.slot_target_offsets_[target_count] = static_cast<int32_t>(group.slot_triangles_.size());
}

void UpdateClosestPoints(const std::vector<float>& positions, const Matrix& world_matrix,
                         const std::vector<TargetMesh>& targets, SlideOnGeometryConstraints& group) {
  const uint32_t point_count = static_cast<uint32_t>(positions.size() / 3);
  const std::size_t rows = targets.size() * static_cast<std::size_t>(point_count);
  group.row_flags_.assign(rows, 1);
  if (rows == 0 || !SlideRowsFit(group, rows)) return;
  if (group.candidate_slots_.size() != group.candidates_.size() ||
      group.slot_target_offsets_.size() != targets.size() + 1)
    PrepareCandidateSlots(targets, point_count, group);
  PrepareSlotTriangles(targets, group);

  const bool has_transform = !IsIdentity(world_matrix);
  const int64_t candidate_total = static_cast<int64_t>(group.candidates_.size());
  const float* weights = group.inverse_masses_.data();
  const int32_t* counts = group.candidate_counts_.data();
  const int32_t* offsets = group.candidate_offsets_.data();
  const int32_t* slots = group.candidate_slots_.data();
  if (group.row_winners_.size() != rows) group.row_winners_.assign(rows, -1);
  const PackedTriangle* prepared = group.prepared_triangles_.data();
  const TriangleBall* balls = group.slot_balls_.data();
  const uint8_t* ready = group.slot_ready_.data();
  int32_t* winners = group.row_winners_.data();
  float* closest_points = group.closest_points_.data();
  uint16_t* flags = group.row_flags_.data();
  for (std::size_t t = 0; t < targets.size(); ++t) {
    if (targets[t].vertex_count_ == 0) continue;
    const int64_t first_row = static_cast<int64_t>(t * point_count);
#pragma omp parallel for schedule(dynamic, 256) if (point_count >= kParallelMinimum)
    for (int64_t i = 0; i < static_cast<int64_t>(point_count); ++i) {
      const int64_t row = first_row + i;
      const int64_t offset = offsets[row], count = counts[row];
      if (weights[row] < kEpsilon || count <= 0 || offset < 0 || offset + count > candidate_total) continue;
      Vec3 p = Load3(positions.data(), static_cast<uint32_t>(i));
      if (has_transform) p = TransformPoint(p, world_matrix);
      Vec3 nearest;
      const int64_t seed = winners[row] >= 0 && winners[row] < count ? winners[row] : count - 1;
      const int64_t winner = NearestCandidate(p, slots + offset, count, seed, prepared, balls, ready, nearest);
      if (winner < 0) continue;
      winners[row] = static_cast<int32_t>(winner);
      Store3(closest_points, static_cast<uint32_t>(row), nearest);
      flags[row] = 0;
    }
  }
}

}  // namespace myo_core
