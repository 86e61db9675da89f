#pragma once
// Binding of points to a surface: the closest point of a mesh to a point,
// with its triangle and barycentric coordinates, and the candidate triangles
// around it among which the point may later look for its nearest surface
// point. The skin binds to its reference mesh and the shape solver to its
// collider this way.
//
// The closest point is asked in the mesh's own object space, which the mesh
// matrix places in the world; the points come in the deformer's object
// space, which the world matrix places there. Everything a binding hands back
// is in world space.

#include <cstdint>
#include <vector>

#include "core/kernels/geometry_constraints.h"
#include "core/kernels/target_mesh.h"
#include "core/math/matrix.h"
#include "core/mesh/closest_point_query.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

struct SurfacePoint {
  Vec3 point = {0.0f, 0.0f, 0.0f};    // the bound point, world space
  Vec3 surface = {0.0f, 0.0f, 0.0f};  // its closest point on the mesh, world space
  float distance = 0.0f;              // |point - surface|
  float u = 0.0f;                     // weight of the triangle's first corner
  float v = 0.0f;                     // of the second; the third has 1 - u - v
  int32_t polygon = -1;               // polygon of the triangle
  int32_t triangle = -1;              // global triangle, numbered polygon by polygon
  uint32_t corners[3] = {0, 0, 0};    // the triangle's vertices
};

class SurfaceBinder {
 public:
  // Prepares the closest-point query on `mesh` in its object space (built
  // with the identity) and keeps `topology` (BuildTargetMesh of the same mesh,
  // which must outlive the binder) for triangle numbers and the candidate
  // walk over its world-space vertices. False when the mesh has no triangle
  // that can be hit.
  bool Build(const MeshData& mesh, const TargetMesh& topology, const Matrix& mesh_matrix,
             const Matrix& world_matrix);

  // The closest point of the mesh to `object_point` (deformer object space):
  // p goes through the world matrix, then through the inverse of the mesh
  // matrix, each unless it is the identity; the query has no distance limit;
  // p and its closest point q then go through the mesh matrix (unless the
  // identity), and distance = |p - q|. False, with `bound` untouched, for a
  // point that has no closest point (not finite).
  bool Bind(Vec3 object_point, SurfacePoint& bound) const;

  // The candidate triangles of a bound point: SearchCandidateTriangles from
  // its triangle with radius `reach` and centre `surface`, the start triangle
  // always included, over the world-space vertices of the topology. found:
  // cleared, then the list.
  void FindCandidates(const SurfacePoint& bound, float reach, std::vector<int32_t>& found);

 private:
  ClosestPointQuery query_;
  const TargetMesh* topology_ = nullptr;
  Matrix mesh_matrix_ = IdentityMatrix();
  Matrix mesh_inverse_ = IdentityMatrix();
  Matrix world_matrix_ = IdentityMatrix();
  bool mesh_transform_ = false;
  bool world_transform_ = false;
  CandidateSearchScratch visited_;
};

}  // namespace myo_core
