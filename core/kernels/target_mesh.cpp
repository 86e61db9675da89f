#include "core/kernels/target_mesh.h"

#include "core/log/logger.h"
#include "core/log/stream_text.h"

namespace myo_core {

namespace {

// Every table that the topology is taken from has one entry per polygon, and
// every loop, triangle and index stays within its arrays.
bool TopologyFits(const MeshData& mesh) {
  const uint32_t vertex_count = mesh.PointCount();
  const std::size_t polygon_count = mesh.polygon_vertex_counts.size();
  if (mesh.polygon_triangle_counts.size() != polygon_count || mesh.polygon_vertex_offsets.size() != polygon_count)
    return false;
  auto in_range = [vertex_count](int32_t v) { return v >= 0 && static_cast<uint32_t>(v) < vertex_count; };
  std::size_t triangle_count = 0;
  for (std::size_t f = 0; f < polygon_count; ++f) {
    const int32_t count = mesh.polygon_vertex_counts[f];
    const int32_t offset = mesh.polygon_vertex_offsets[f];
    if (count < 0 || offset < 0 || mesh.polygon_triangle_counts[f] < 0 ||
        static_cast<std::size_t>(offset) + static_cast<std::size_t>(count) > mesh.polygon_vertices.size())
      return false;
    for (int32_t k = 0; k < count; ++k)
      if (!in_range(mesh.polygon_vertices[offset + k])) return false;
    triangle_count += static_cast<std::size_t>(mesh.polygon_triangle_counts[f]);
  }
  if (3 * triangle_count != mesh.triangle_vertices.size()) return false;
  for (int32_t v : mesh.triangle_vertices)
    if (!in_range(v)) return false;
  if (mesh.vertex_face_offsets.size() != static_cast<std::size_t>(vertex_count) + 1 ||
      static_cast<std::size_t>(mesh.vertex_face_offsets.back()) != mesh.vertex_faces.size())
    return false;
  for (int32_t f : mesh.vertex_faces)
    if (f < 0 || static_cast<std::size_t>(f) >= polygon_count) return false;
  return true;
}

// The host's world-space points and polygon normals; false when it handed
// none, or not as many as the frozen topology has.
bool TakeWorldSpace(const MeshData& mesh, TargetMesh& target) {
  if (mesh.world_points.size() != 3 * static_cast<std::size_t>(target.TopologyVertexCount()) ||
      mesh.world_polygon_normals.size() != 3 * static_cast<std::size_t>(target.polygon_count_))
    return false;
  target.vertices_.assign(mesh.world_points.begin(), mesh.world_points.end());
  target.polygon_normals_.assign(mesh.world_polygon_normals.begin(), mesh.world_polygon_normals.end());
  return true;
}

void SetTargetMatrix(const Matrix& matrix, TargetMesh& target) {
  target.world_matrix_ = matrix;
  target.world_matrix_inverse_ = InvertMatrix(matrix);
  target.has_transform_ = !IsIdentity(matrix);
}

// The polygons around each vertex, in the host's order.
void TakeVertexPolygons(const MeshData& mesh, TargetMesh& target) {
  const uint32_t vertex_count = mesh.PointCount();
  target.vertex_polygon_counts_.resize(vertex_count);
  target.vertex_polygon_offsets_.resize(vertex_count);
  for (uint32_t v = 0; v < vertex_count; ++v) {
    target.vertex_polygon_offsets_[v] = mesh.vertex_face_offsets[v];
    target.vertex_polygon_counts_[v] = mesh.vertex_face_offsets[v + 1] - mesh.vertex_face_offsets[v];
  }
  target.vertex_polygons_ = mesh.vertex_faces;
}

void ComputeVertexNormals(TargetMesh& target) {
  target.vertex_normals_.resize(3 * static_cast<std::size_t>(target.vertex_count_));
  for (uint32_t v = 0; v < target.vertex_count_; ++v) {
    Vec3 sum = {0.0f, 0.0f, 0.0f};
    const int32_t* polygons = target.vertex_polygons_.data() + target.vertex_polygon_offsets_[v];
    for (int32_t k = 0; k < target.vertex_polygon_counts_[v]; ++k)
      sum += Load3(target.polygon_normals_.data(), polygons[k]);
    Store3(target.vertex_normals_.data(), v, NormalizeSafe(sum));
  }
  target.normal_count_ = target.vertex_count_;
}

// The frame data of one frame are dropped; the topology stays for a later refresh.
void DropFrameData(TargetMesh& target) {
  target.vertices_.clear();
  target.polygon_normals_.clear();
  target.vertex_count_ = 0;
}

}  // namespace

void ClearTargetMesh(TargetMesh& target) { target = TargetMesh(); }

bool BuildTargetMesh(const MeshData& mesh, const Matrix& matrix, TargetMesh& target) {
  ClearTargetMesh(target);
  const uint32_t vertex_count = mesh.PointCount();
  if (vertex_count == 0) return false;
  if (!TopologyFits(mesh)) {
    LogWarning("Unexpected number of polygons during target mesh processing");
    return false;
  }
  target.vertex_count_ = vertex_count;
  target.polygon_count_ = mesh.PolygonCount();
  target.polygon_vertices_ = mesh.polygon_vertices;
  target.polygon_vertex_counts_ = mesh.polygon_vertex_counts;
  target.polygon_vertex_offsets_ = mesh.polygon_vertex_offsets;
  target.triangle_vertices_ = mesh.triangle_vertices;
  TakeVertexPolygons(mesh, target);
  if (!TakeWorldSpace(mesh, target)) {
    ClearTargetMesh(target);
    return false;
  }
  ComputeVertexNormals(target);

  // Triangles are numbered in polygon order, so a polygon's offset is its first triangle.
  target.polygon_triangle_counts_ = mesh.polygon_triangle_counts;
  target.polygon_triangle_offsets_.resize(target.polygon_count_);
  int32_t first = 0;
  for (uint32_t f = 0; f < target.polygon_count_; ++f) {
    target.polygon_triangle_offsets_[f] = first;
    first += target.polygon_triangle_counts_[f];
  }
  target.polygon_triangles_.resize(static_cast<std::size_t>(first));
  for (int32_t g = 0; g < first; ++g) target.polygon_triangles_[g] = g;

  SetTargetMatrix(matrix, target);
  return true;
}

Matrix TriangleFrame(Vec3 point, const float* vertices, const float* normals, uint32_t face, uint32_t first,
                     uint32_t second) {
  Vec3 e = Load3(vertices, first) - point;
  if (static_cast<double>(Length(e)) < 0.001) e = Load3(vertices, second) - point;
  e = NormalizeSafe(e);
  const Vec3 n = Load3(normals, face);
  const Vec3 t = NormalizeSafe(Cross(e, n));
  return {t.x, n.x, e.x, 0.0f, t.y, n.y, e.y, 0.0f, t.z, n.z, e.z, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f};
}

bool RefreshTargetMesh(const MeshData* mesh, const Matrix& matrix, TargetMesh& target) {
  const uint32_t vertex_count = mesh ? mesh->PointCount() : 0;
  if (vertex_count == 0 || vertex_count != target.TopologyVertexCount() || !TakeWorldSpace(*mesh, target)) {
    DropFrameData(target);
    return false;
  }
  target.vertex_count_ = vertex_count;
  SetTargetMatrix(matrix, target);
  return true;
}

void UpdateTargets(std::vector<TargetMesh>& targets, const std::vector<TargetInput>& inputs, bool warn) {
  if (inputs.size() != targets.size()) {
    if (warn)
      LogWarning(
          "Inconsistency between the solver data and the number of the targets connected. Please, stop the "
          "simulation and go to the start frame to reinitialize the system.");
    return;
  }
  for (std::size_t a = 0; a < targets.size(); ++a) {
    const TargetInput& input = inputs[a];
    TargetMesh& target = targets[a];
    // A null mesh, or one without vertices, clears the record for good: its
    // rows stay inert until the next build.
    const uint32_t vertex_count = input.mesh ? input.mesh->PointCount() : 0;
    if (vertex_count == 0) {
      ClearTargetMesh(target);
      continue;
    }
    if (RefreshTargetMesh(input.mesh, input.world_matrix, target)) continue;
    // Read as it comes, a mesh of another vertex count would have the frozen
    // triangles index past its points. It is ignored instead, for as long as
    // its count differs, and said so.
    if (warn && target.TopologyVertexCount() > 0 && vertex_count != target.TopologyVertexCount())
      LogWarning("Target " + input.name + " has " + StreamText(vertex_count) + " vertices instead of the " +
                 StreamText(target.TopologyVertexCount()) +
                 " it was initialized with. This target is ignored while its vertex count differs.");
  }
}

}  // namespace myo_core
