#include "core/kernels/surface_binding.h"

namespace myo_core {

bool SurfaceBinder::Build(const MeshData& mesh, const TargetMesh& topology, const Matrix& mesh_matrix,
                          const Matrix& world_matrix) {
  topology_ = &topology;
  mesh_matrix_ = mesh_matrix;
  mesh_inverse_ = InvertMatrix(mesh_matrix);
  world_matrix_ = world_matrix;
  mesh_transform_ = !IsIdentity(mesh_matrix);
  world_transform_ = !IsIdentity(world_matrix);
  query_.Build(mesh.points, mesh.triangle_vertices, mesh.polygon_triangle_counts);
  return !query_.Empty();
}

bool SurfaceBinder::Bind(Vec3 object_point, SurfacePoint& bound) const {
  if (topology_ == nullptr) return false;
  Vec3 p = object_point;
  if (world_transform_) p = TransformPoint(p, world_matrix_);
  if (mesh_transform_) p = TransformPoint(p, mesh_inverse_);
  const float query_point[3] = {p.x, p.y, p.z};
  ClosestPointHit hit;
  if (!query_.Closest(query_point, -1.0f, hit)) return false;
  Vec3 q = {hit.point[0], hit.point[1], hit.point[2]};
  if (mesh_transform_) {
    q = TransformPoint(q, mesh_matrix_);
    p = TransformPoint(p, mesh_matrix_);
  }
  bound.point = p;
  bound.surface = q;
  bound.distance = Length(p - q);
  bound.u = hit.bary_u;
  bound.v = hit.bary_v;
  bound.polygon = hit.polygon;
  bound.triangle = topology_->polygon_triangle_offsets_[hit.polygon] + hit.triangle_in_polygon;
  const int32_t* corners = topology_->triangle_vertices_.data() + 3 * static_cast<std::size_t>(bound.triangle);
  for (int k = 0; k < 3; ++k) bound.corners[k] = static_cast<uint32_t>(corners[k]);
  return true;
}

void SurfaceBinder::FindCandidates(const SurfacePoint& bound, float reach, std::vector<int32_t>& found) {
  found.clear();
  if (topology_ == nullptr) return;
  SearchCandidateTriangles(bound.triangle, reach, bound.surface, *topology_, topology_->triangle_vertices_, true,
                           visited_, found);
}

}  // namespace myo_core
