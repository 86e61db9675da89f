#pragma once
// A target mesh in world space: what the attachments to geometry and the
// slides on geometry read of another mesh. The topology is frozen when the
// solver is built; the positions, polygon normals and matrix are refreshed
// every frame.

#include <cstdint>
#include <string>
#include <vector>

#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

// V vertices, F polygons, G triangles.
struct TargetMesh {
  std::vector<float> vertices_;                    // 3V, world space, refreshed every frame
  std::vector<float> polygon_normals_;             // 3F, world space as the host gives them, refreshed every frame
  std::vector<float> vertex_normals_;              // 3V, at build; the kernels do not read them
  std::vector<int32_t> vertex_polygons_;           // polygons around each vertex, in the host's order
  std::vector<int32_t> vertex_polygon_counts_;     // V
  std::vector<int32_t> vertex_polygon_offsets_;    // V
  std::vector<int32_t> polygon_triangles_;         // G, global triangle ids of each polygon
  std::vector<int32_t> polygon_triangle_counts_;   // F
  std::vector<int32_t> polygon_triangle_offsets_;  // F, also the polygon's first triangle
  std::vector<int32_t> polygon_vertices_;          // vertex loops of the polygons
  std::vector<int32_t> polygon_vertex_counts_;     // F
  std::vector<int32_t> polygon_vertex_offsets_;    // F
  std::vector<int32_t> triangle_vertices_;         // 3G
  Matrix world_matrix_ = IdentityMatrix();         // "targetWorldMatrix"
  Matrix world_matrix_inverse_ = IdentityMatrix();
  uint32_t vertex_count_ = 0;  // V; 0 while the target is unusable (failed build, missing this frame)
  uint32_t polygon_count_ = 0;
  uint32_t normal_count_ = 0;  // vertex normals
  bool has_transform_ = false;  // not IsIdentity(world_matrix_)

  // Vertices of the frozen topology; the refresh accepts only meshes of that size.
  uint32_t TopologyVertexCount() const { return static_cast<uint32_t>(vertex_polygon_counts_.size()); }
  uint32_t TriangleCount() const { return static_cast<uint32_t>(triangle_vertices_.size() / 3); }
};

// One element of the list "targets" as the host hands it over: the name for
// messages, the element's logical index, its "targetWorldMesh" (null: missing
// or not a mesh; object space, with the host's world-space points and polygon
// normals) and its "targetWorldMatrix".
struct TargetInput {
  std::string name;
  uint32_t logical_index = 0;
  const MeshData* mesh = nullptr;
  Matrix world_matrix = IdentityMatrix();
};

// Fills every field from the mesh and its world matrix: vertices and polygon
// normals from the host's world space, vertex normals as the normalised sum
// of the normals of the polygons around each vertex, the polygons around
// each vertex in the host's order, and the topology tables, triangles
// numbered in polygon order. Returns false with the record cleared when the
// mesh has no vertices or no world space of its size, or, with the warning
// "Unexpected number of polygons during target mesh processing", when its
// triangulation or polygon tables do not have one entry per polygon or do not
// fit together.
bool BuildTargetMesh(const MeshData& mesh, const Matrix& matrix, TargetMesh& target);

// Empties the record entirely, topology included.
void ClearTargetMesh(TargetMesh& target);

// The frame of the triangle (first, second, ...) at `point`: e towards the
// first corner (the second when the first lies within 0.001), n the polygon's
// normal, t = e x n normalised; columns t, n, e. Read with TransformColumn.
// vertices: 3V, normals: 3F.
Matrix TriangleFrame(Vec3 point, const float* vertices, const float* normals, uint32_t face, uint32_t first,
                     uint32_t second);

// One frame's refresh of one record. A null mesh, a mesh without vertices,
// a mesh whose vertex count is not that of the frozen topology, or one
// without world space leaves the record unusable for this frame
// (vertex_count_ 0, positions and normals dropped, topology kept) and
// returns false. Otherwise the world-space positions and polygon normals are
// taken again, the matrix, its inverse and has_transform_ are set, and the
// result is true.
bool RefreshTargetMesh(const MeshData* mesh, const Matrix& matrix, TargetMesh& target);

// Each frame, before the step: the connected targets must be as many as the
// records. If not, and warn (the animation is not playing), the warning
// "Inconsistency between the solver data and the number of the targets
// connected. Please, stop the simulation and go to the start frame to
// reinitialize the system." is logged, and nothing is refreshed. Otherwise
// every record is refreshed from its input, in order: a null mesh or one
// without vertices clears the record for good (until the next build); a mesh
// whose vertex count changed since the build is warned about (when warn) and
// ignored while the count differs.
void UpdateTargets(std::vector<TargetMesh>& targets, const std::vector<TargetInput>& inputs, bool warn);

}  // namespace myo_core
