#pragma once
// Slide collisions of the shape solver: each point is bound once to a
// neighbourhood of triangles of a collider mesh around its closest point,
// remembering its distance to the collider and on which side of the surface
// it started. Once per step each point finds its nearest point among those
// triangles; in every iteration one row per point pushes it out to a
// threshold distance along the normal of that triangle, or mirrors it back
// when it has crossed the surface. Row of point i is lambda_base_ + i.
//
// Everything here is in world space: the solver's positions enter and leave
// through its world matrix and that matrix's inverse inside the kernels.

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/kernels/sliding_search.h"
#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

// N points, V collider vertices, T collider triangles.
struct SlideCollisionConstraints : ConstraintGroup {
  // inverse_masses_: N, map "slideCollisionConstraints" over the mass.
  std::vector<uint32_t> collider_triangles_;     // 3T, the collider's triangulation in polygon order
  std::vector<float> collider_positions_;        // 3V, collider points, world space, refreshed each step
  std::vector<float> collision_distances_;       // N, distance to the closest collider point at binding
  std::vector<float> closest_points_;            // 3N, current closest point on the collider
  std::vector<uint32_t> sliding_triangles_;      // candidate triangles of all points, list after list
  std::vector<uint32_t> sliding_counts_;         // N, length of each point's list
  std::vector<uint32_t> sliding_offsets_;        // N, start of each point's list
  std::vector<uint16_t> sliding_inactive_;       // N, 1 = no collision row for the point in this step
  std::vector<uint32_t> sliding_edges_;          // 2 per edge, sorted vertex pairs of all candidates (drawing)
  bool keep_orientation_ = true;                 // "keepCollisionOrientation"
  std::vector<float> threshold_multipliers_;     // N, map "collisionThresholdMultiplier", default 1
  std::vector<uint32_t> closest_triangles_;      // N, triangle of the current closest point
  std::vector<float> collider_normals_;          // 3T, triangle normals, world space, refreshed each step
  std::vector<bool> inside_flags_;               // N, the point started behind its closest triangle

  // Scratch of the search (prepared candidate triangles and their bounds),
  // kept from one search to the next.
  SlidingSearchScratch sliding_search_;
};

// One point, one row. With p the point in world space, q its closest point,
// d = p - q, n the unit normal of its triangle and T = distance multiplier:
// - same side as at binding (inside equals d.n < 0): nothing when |d| > T;
// - crossed: the normal part of d is mirrored back when keep_orientation,
//   else kept;
// - then d' = d (mirrored or not) is pushed out to length T when shorter,
//   and the XPBD row C = |p - (q + d')| moves p towards q + d'.
// Returns at once when w is below 1e-6 or the point is inactive. Touches
// position i and lambdas[row] only. triangle: the row of collider_normals.
inline void SolveSlideCollisionConstraint(uint32_t row, uint32_t i, uint32_t triangle, uint16_t inactive, float w,
                                          float compliance, float distance, float multiplier, bool has_transform,
                                          bool keep_orientation, bool inside, const Matrix& world_matrix,
                                          const Matrix& world_matrix_inverse, const float* closest_points,
                                          const float* collider_normals, float* positions, float* lambdas) {
  if (w < kEpsilon || inactive == 1) return;
  Vec3 p = Load3(positions, i);
  if (has_transform) p = TransformPoint(p, world_matrix);

  const Vec3 q = Load3(closest_points, i);
  const Vec3 d = p - q;
  const Vec3 n = NormalizeSafe(Load3(collider_normals, triangle));
  const float threshold = distance * multiplier;
  const bool back = Dot(NormalizeSafe(d), n) < 0.0f;
  const bool same_side = inside == back;
  // Where it started and beyond the threshold: no collision.
  if (same_side && Length(d) > threshold) return;

  // The height over the tangent plane keeps its sign, or is mirrored back
  // when the point crossed and its orientation is to be kept.
  const float height = Dot(d, n);
  const Vec3 tangential = d - n * height;
  const float sign = !keep_orientation || same_side ? 1.0f : -1.0f;
  Vec3 wanted = tangential + n * height * sign;
  if (Length(wanted) < threshold) wanted = NormalizeSafe(wanted) * threshold;

  const Vec3 target = q + wanted;
  const Vec3 to_target = target - p;
  const Vec3 g = {-to_target.x, -to_target.y, -to_target.z};
  const float length = Length(g);
  const Vec3 gradient = NormalizeSafe(g, length);
  float& lambda = lambdas[row];
  const float delta = (-length - lambda * compliance) /
                      (gradient.y * (gradient.y * w) + gradient.x * w * gradient.x +
                       gradient.z * (gradient.z * w) + compliance);
  lambda = lambda + delta;
  p += gradient * (delta * w);

  if (has_transform) p = TransformPoint(p, world_matrix_inverse);
  Store3(positions, i, p);
}

// Runs the rows of points [first, first + count) once: one block of the
// solver's point blocks, so that blocks may run on different threads. A point
// whose attraction (N) is not below 1 is pinned to its target and skipped.
// Each row reads its triangle from closest_triangles_, its flag, weight,
// distance, multiplier and side from the table, and the table's
// keep_orientation_. Rows of different points share nothing. A table whose
// per-point arrays or `attraction` do not hold first + count points runs
// nothing; a row whose triangle has no normal is skipped.
void SolveSlideCollisionRows(const SlideCollisionConstraints& group, uint32_t first, uint32_t count,
                             const std::vector<float>& attraction, float compliance, bool has_transform,
                             const Matrix& world_matrix, const Matrix& world_matrix_inverse, float* positions,
                             float* lambdas);

// Once per step. sliding_inactive_ becomes N ones and closest_triangles_ N
// zeros; then, in parallel over the points, each point with a weight
// (inverse_masses_) of at least 1e-6 and a candidate list takes the closest
// point of its candidates over collider_positions_ to its position (through
// world_matrix when has_transform), the first in list order among equals,
// records it and its triangle, and is marked active. The search is that of
// core/kernels/sliding_search.h. positions: 3N.
void UpdateCollisionSlidingPoints(bool has_transform, const std::vector<float>& positions,
                                  const Matrix& world_matrix, SlideCollisionConstraints& group);

// One normal per triangle of `mesh`, in polygon order: each polygon's
// world-space normal (world_polygon_normals) for each of its triangles. A
// polygon without a valid triangulation (a triangle count other than its
// corner count minus 2) gives its triangles, if any, the normal (0, 1, 0) and
// is counted; when warn and the count is positive, the warning "Some triangle
// normals have been defaulted to (0.0, 1.0, 0.0) due to an invalid face
// triangulation. Number of defaulted triangle normals: " and the count.
// normals: 3T. False, with normals untouched and nothing said, when the mesh
// has no world-space normals of its polygon count or its triangle counts are
// not one per polygon summing to T.
bool ReadTriangleNormals(const MeshData& mesh, bool warn, std::vector<float>& normals);

// The refresh before every step from the collider as it is now ("collisionMesh",
// with its world space): collider_positions_ become its world-space points and
// collider_normals_ ReadTriangleNormals (warning when warn). Nothing happens,
// and the result is false, when the mesh has no vertices or not the vertex
// and triangle counts of the binding, or no world space of its size: the
// group keeps its last collider.
bool ReadColliderMesh(const MeshData& mesh, bool warn, SlideCollisionConstraints& group);

// What the binding reads besides the solver's arrays.
struct SlideCollisionBindingInput {
  // The mesh the points are bound on (the collision rest mesh, or else the
  // collision mesh): object space, with the host's world space.
  const MeshData* binding_mesh = nullptr;
  Matrix binding_matrix = IdentityMatrix();  // its world matrix
  // The collision mesh as it is now, whose world-space points give the
  // closest points the binding starts from.
  const MeshData* current_mesh = nullptr;
  uint32_t map_index = 0;                    // geometry index: element of the map lists
  float max_distance = 0.0f;                 // "maxCollisionSlidingDistance"
  Matrix world_matrix = IdentityMatrix();    // the solver's world matrix
};

// Builds the group for the points `positions` (3N, the solver's object
// space), in this order:
// 1. Every per-point array sized for N (inside flags clear, counts, offsets
//    and flags 0, inverse_masses_ 0), collider_positions_ 3V zeros, the
//    collider tables and lists emptied; N zeroed rows appended to lambdas at
//    lambda_base_.
// 2. The map "slideCollisionConstraints" (default 0) into collision_map and
//    "collisionThresholdMultiplier" (default 1) into threshold_multipliers_,
//    each followed by a debug line with its size.
// 3. mesh_diagonal: MeshDiagonal of the binding mesh with its matrix.
// 4. The binding mesh's connectivity; a vertex without faces is named at
//    debug level ("No connected faces found for vertex: "). Triangle counts
//    that are not one per polygon give the error "Unexpected number of
//    polygons during reference mesh processing" and the binding stops.
// 5. collider_positions_ and collider_normals_ from the binding mesh's world
//    space, the current collider's world-space points, with debug lines of
//    the polygon, triangle and point counts.
// 6. Per point with a map value and a max_distance of at least 1e-6: the
//    closest point q of the binding mesh, the distance, the candidate list
//    (radius max_distance, centre q; a point without candidates is
//    inactive), the closest point on the current collider at the same
//    barycentric coordinates, its triangle, and the side: inside when
//    (p - q) points against the triangle's normal. Other points are
//    inactive with empty lists. At logger level 0 a trace of every bound
//    point and the times of the binding's blocks are logged at the end.
// 7. sliding_edges_ and the search's scratch.
// Returns true when the points are bound. A binding that stops has said why
// once and leaves every point inactive with an empty list, the arrays of
// step 1 sized: a missing collider ("Could not retrieve collider mesh
// data."), a current collider with another vertex count than the binding
// mesh, a mesh without world space of its size, the polygon table above.
bool InitSlideCollisionConstraints(const SlideCollisionBindingInput& input, const MapPort& maps,
                                   const std::vector<float>& positions, std::vector<float>& lambdas,
                                   std::vector<float>& collision_map, float& mesh_diagonal,
                                   SlideCollisionConstraints& group);

}  // namespace myo_core
