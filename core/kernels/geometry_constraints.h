#pragma once
// Attachments to and slides on target meshes. Rows are targets times N,
// target-major: row = t N + i.
//
// An attachment to geometry glues a point to a place fixed in a triangle of
// the target: barycentric coordinates plus an offset in the triangle's frame.
// A slide on geometry keeps the point's distance from the target surface and
// lets it travel along the surface among candidate triangles gathered at
// build time within a radius; UpdateClosestPoints finds the closest point
// among them, once per step (Fast) or once per iteration (Quality).

#include <cstdint>
#include <string>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/kernels/target_mesh.h"
#include "core/kernels/triangle_queries.h"
#include "core/maps/map_port.h"
#include "core/math/lanes.h"
#include "core/math/matrix.h"

namespace myo_core {

struct MuscleNodeState;
struct MuscleFamilySolver;

struct AttachmentToGeoConstraints : ConstraintGroup {
  // inverse_masses_: T N.
  std::vector<int32_t> faces_;               // T N, polygon of the anchor
  std::vector<int32_t> triangle_vertices_;   // 3 T N
  std::vector<float> bary_u_;                // T N
  std::vector<float> bary_v_;                // T N
  std::vector<float> distances_;             // T N, from the surface at rest
  std::vector<float> local_offsets_;         // 3 T N, in the triangle frame at rest
  std::vector<float> anchors_;               // 3 T N, anchor at rest
  bool hard_ = false;                        // attribute "hardAttachments"
};

// A ball around a prepared candidate triangle, with its normal, for passing
// over candidates that cannot be nearer than one already found: rows
// (centre, radius) and (normal, magnitude), magnitude being the largest
// |coordinate| of the centre plus the radius, or NaN when the triangle is too
// thin for its normal to be trusted (then it is never passed over).
struct alignas(16) TriangleBall {
  float rows[2][4];
};

struct SlideOnGeometryConstraints : ConstraintGroup {
  // inverse_masses_: T N.
  std::vector<int32_t> triangle_vertices_;   // 3 T N, closest triangle at rest
  std::vector<int32_t> faces_;               // T N
  std::vector<float> distances_;             // T N, distance to keep
  std::vector<float> closest_points_;        // 3 T N, current closest point
  std::vector<int32_t> candidates_;          // candidate triangles of all rows
  std::vector<int32_t> candidate_counts_;    // T N
  std::vector<int32_t> candidate_offsets_;   // T N
  std::vector<uint16_t> row_flags_;          // T N, 1 = inert in this step

  // Scratch of UpdateClosestPoints, derived from the candidate lists by
  // PrepareCandidateSlots: each distinct candidate triangle of a target owns a
  // slot, prepared once per update however many rows list it. The last
  // winner of each row is measured first in the next update.
  std::vector<int32_t> candidate_slots_;              // like candidates_, slot of each; -1 unusable
  std::vector<int32_t> slot_triangles_;               // U, the target's triangle of each slot
  std::vector<int32_t> slot_target_offsets_;          // T + 1, slots of target t
  std::vector<PackedTriangle> prepared_triangles_;    // U, from the current target vertices
  std::vector<TriangleBall> slot_balls_;              // U, from the current target vertices
  std::vector<uint8_t> slot_ready_;                   // U, 1 when prepared in this update
  std::vector<int32_t> row_winners_;                  // T N, list position of the last winner; -1 none
};

// Attachment row. anchor = u T[a] + v T[b] + w T[c] over the current target
// vertices T (w = 1 - u - v formed in double); o = the rest offset through
// TriangleFrame at the anchor; x the point in world space.
// Hard: x += (anchor + o - x) weight, no multiplier.
// Soft: C = |x - (anchor + o)|, n = (x - (anchor + o)) / C (0 when on target);
// the common XPBD update with the solver's compliance.
// row: t N + point, the row of local_offsets (3 per row).
inline void SolveAttachmentToGeo(uint32_t lambda_row, uint32_t point, uint32_t row, uint32_t a, uint32_t b,
                                 uint32_t c, uint32_t face, float weight, float compliance, float bary_u,
                                 float bary_v, bool has_transform, bool hard, const Matrix& world_matrix,
                                 const Matrix& world_matrix_inverse, const TargetMesh& target,
                                 const float* local_offsets, float* positions, float* lambdas) {
  if (weight < kEpsilon) return;
  Vec3 x = Load3(positions, point);
  if (has_transform) x = TransformPoint(x, world_matrix);
  const float* vertices = target.vertices_.data();
  const float bary_w = static_cast<float>(1.0 - static_cast<double>(bary_u) - static_cast<double>(bary_v));
  const Vec3 anchor = Load3(vertices, a) * bary_u + Load3(vertices, b) * bary_v + Load3(vertices, c) * bary_w;
  const Matrix frame = TriangleFrame(anchor, vertices, target.polygon_normals_.data(), face, a, b);
  const Vec3 offset = TransformColumn(frame, Load3(local_offsets, row));
  const Vec3 d = anchor + offset - x;
  if (hard) {
    x += d * weight;
  } else {
    const Vec3 g = {-d.x, -d.y, -d.z};
    const float length = Length(g);
    const Vec3 n = NormalizeSafe(g, length);
    float& lambda = lambdas[lambda_row];
    const float delta = (-length - lambda * compliance) /
                        (n.y * (n.y * weight) + n.x * (n.x * weight) + n.z * (n.z * weight) + compliance);
    lambda += delta;
    x += n * (delta * weight);
  }
  if (has_transform) x = TransformPoint(x, world_matrix_inverse);
  Store3(positions, point, x);
}

// Slide row. With c the row's closest point on the target and x the point in
// world space: target = c + distance (x - c) / |x - c|, C = |x - target|,
// n = (x - target) / C (0 when on target); the common XPBD update with the
// solver's compliance. The side is the one the point is on now. Written over
// lanes: SolveSlideOnGeometryRows runs four rows at once.
template <typename F>
MYO_LANE_INLINE void SlideOnGeometryUpdate(V3<F>& x, F& lambda, V3<F> c, F weight, F compliance, F distance) {
  const V3<F> u = NormalizeSafe(x - c);
  const V3<F> target = c + u * distance;
  const V3<F> g = x - target;
  const F length = Length(g);
  const V3<F> n = NormalizeSafe(g, length);
  const F delta = (-length - lambda * compliance) /
                  (n.x * (n.x * weight) + n.y * (n.y * weight) + n.z * (n.z * weight) + compliance);
  lambda = lambda + delta;
  x = x + n * (delta * weight);
}

// One slide row; row: t N + point, the row of closest_points (3 per row).
inline void SolveSlideOnGeometry(uint32_t lambda_row, uint32_t point, uint32_t row, uint16_t row_flag,
                                 float weight, float compliance, float distance, bool has_transform,
                                 const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                                 const float* closest_points, float* positions, float* lambdas) {
  if (weight < kEpsilon || row_flag == 1) return;
  Vec3 x = Load3(positions, point);
  if (has_transform) x = TransformPoint(x, world_matrix);
  const Vec3 c = Load3(closest_points, row);
  V3<float> moved = {x.x, x.y, x.z};
  SlideOnGeometryUpdate(moved, lambdas[lambda_row], V3<float>{c.x, c.y, c.z}, weight, compliance, distance);
  x = {moved.x, moved.y, moved.z};
  if (has_transform) x = TransformPoint(x, world_matrix_inverse);
  Store3(positions, point, x);
}

// Runs every row once: for every target t, for every point i, row t N + i
// with multiplier lambda_base_ + row. Targets that are unusable this frame
// (vertex_count_ 0) are skipped; tables that do not hold T N rows run nothing.
void SolveAttachmentToGeoRows(const AttachmentToGeoConstraints& group, const std::vector<TargetMesh>& targets,
                              uint32_t point_count, float compliance, bool has_transform,
                              const Matrix& world_matrix, const Matrix& world_matrix_inverse, float* positions,
                              float* lambdas);

// Runs every row once, in the same order, skipping flagged rows. Rows of one
// target move different points, so they run eight at a time.
void SolveSlideOnGeometryRows(const SlideOnGeometryConstraints& group, uint32_t target_count,
                              uint32_t point_count, float compliance, bool has_transform,
                              const Matrix& world_matrix, const Matrix& world_matrix_inverse, float* positions,
                              float* lambdas);

// Visited marks of the candidate search, reused from row to row: the visited
// lists of one search are the entries that carry its stamp, so a search costs
// what it visits, not the size of the mesh.
struct CandidateSearchScratch {
  // A triangle of the walk whose corners are being flooded.
  struct Frame {
    int32_t triangle;
    int32_t corner;           // 0 to 2; 3 when all corners are done
    int32_t polygon_cursor;   // position in the corner's polygon list; -1 before the corner is tested
    int32_t triangle_cursor;  // position in the polygon's triangle list; -1 between polygons
    bool add;                 // a corner lies within the radius (or the caller asked for it)
  };
  std::vector<uint32_t> polygon_marks_;   // F, stamp of the last search that visited each polygon
  std::vector<uint32_t> triangle_marks_;  // G, likewise for triangles
  std::vector<uint32_t> result_marks_;    // G, stamp of the search whose result holds the triangle
  std::vector<Frame> stack_;              // open triangles of the walk, deepest last
  uint32_t stamp_ = 0;
};

// The candidate triangles of one row: a depth-first flood from `triangle`
// over the target. For each corner of a triangle, in order, that lies within
// radius of centre: every polygon around it not yet visited is visited, and
// every triangle of that polygon not yet visited is visited and walked in
// turn (with add false). A triangle enters the result when it is done, if a
// corner of it lay within reach or add was passed true, and only once. The
// start triangle is not marked visited beforehand. result: cleared, then the
// triangles in the order the walk finishes them. The walk keeps its own
// stack, so a radius that covers the whole mesh is safe.
// triangle_vertices: 3G, the target's triangulation; positions: target.vertices_.
void SearchCandidateTriangles(int32_t triangle, float radius, Vec3 centre, const TargetMesh& target,
                              const std::vector<int32_t>& triangle_vertices, bool add,
                              CandidateSearchScratch& visited, std::vector<int32_t>& result);

// Gives every distinct candidate triangle of each target a slot (ascending
// triangle id per target) and maps the candidate lists onto them. Run by the
// builder; UpdateClosestPoints runs it itself when the slots do not match the
// lists in size, so a caller that edits candidates_ in place must run it.
void PrepareCandidateSlots(const std::vector<TargetMesh>& targets, uint32_t point_count,
                           SlideOnGeometryConstraints& group);

// row_flags_ become T N ones. Then for every target t and point i with weight
// and candidates, the point (through world_matrix unless it is the identity)
// is compared with the closest point of each candidate triangle over the
// current target vertices; the nearest, the first in list order among
// equals, goes to closest_points_ and clears the row's flag. Rows of targets
// unusable this frame stay flagged. positions: 3N.
// For speed, and with the same result for finite input: the distinct
// candidate triangles are prepared once per call, the last winner of a row
// is measured first and candidates that surely lie farther are passed over,
// the others are measured four at a time, and rows run in parallel (the
// result does not depend on the thread count). Nothing is allocated once
// the scratch has its size.
void UpdateClosestPoints(const std::vector<float>& positions, const Matrix& world_matrix,
                         const std::vector<TargetMesh>& targets, SlideOnGeometryConstraints& group);

// Builds solver.targets_ and both tables from the connected elements of
// "targets", after the attachments and slides on segments, from the solver's
// rest positions (object space, world_matrix to world space):
// - T = targets.size(); both tables get T N zeroed rows and T N multipliers
//   each (attachments first), the node's two weight arrays T N zeros.
// - Each target is built (BuildTargetMesh); a null mesh warns "Target <name>
//   in <node> is null or not recognized. This target will be ignored.", a
//   failed build (or a mesh without usable triangles) "Target <name> mesh data
//   in <node> could not be retrieved. This target will be ignored."; their
//   rows stay 0 and inert. A good target reads its two maps from list
//   "targets" at its logical index and widens node.largest_target_size_ (0
//   at the start) with its world bounding-box diagonal.
// - Both weight arrays are consolidated (sums above 1 normalised and written back).
// - "maxSlidingDistanceMultiplier" (list "maxSlidingDistanceMultiplierList",
//   element map_index, default 1) is read into node.max_sliding_map_ clamped
//   to 0..1; the radius of point i is max_sliding_distance times its value.
// - Per target and point: the closest point q of the target to the rest
//   point gives the attachment row (barycentrics, polygon, triangle, distance,
//   offset in TriangleFrame, anchor) and the slide row (triangle, polygon,
//   distance, closest point, candidate list from SearchCandidateTriangles
//   unless the radius or the slide weight is below 1e-6; flagged when the list
//   is empty or the weight is below 1e-6).
// With no targets the tables are emptied and nothing else happens.
void BuildGeometryConstraints(const std::vector<TargetInput>& targets, const std::string& node_name,
                              MapPort& maps, uint32_t map_index, float max_sliding_distance,
                              uint32_t point_count, const Matrix& world_matrix, MuscleNodeState& node,
                              MuscleFamilySolver& solver);

}  // namespace myo_core
