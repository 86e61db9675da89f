#include "core/mesh/mesh_adjacency.h"

#include <limits>

namespace myo_core {

std::string ValidatePolygons(const std::vector<float>& points,
                             const std::vector<int32_t>& counts,
                             const std::vector<int32_t>& vertices) {
  if (points.size() % 3 != 0)
    return "The point array holds " + std::to_string(points.size()) +
           " floats, which is not a multiple of 3.";
  const size_t max_index = static_cast<size_t>(std::numeric_limits<int32_t>::max());
  if (points.size() / 3 > max_index || vertices.size() > max_index || counts.size() > max_index)
    return "The mesh is too large: point, polygon and vertex counts must fit 32-bit indices.";

  int64_t total = 0;
  for (size_t p = 0; p < counts.size(); ++p) {
    if (counts[p] < 3)
      return "Polygon " + std::to_string(p) + " has " + std::to_string(counts[p]) +
             " vertices; a polygon needs at least 3.";
    if (total + counts[p] > static_cast<int64_t>(vertices.size()))
      return "Polygon " + std::to_string(p) + " needs vertex list entries " +
             std::to_string(total) + " to " + std::to_string(total + counts[p] - 1) +
             ", but the vertex list holds only " + std::to_string(vertices.size()) + " indices.";
    total += counts[p];
  }
  if (total != static_cast<int64_t>(vertices.size()))
    return "The vertex list holds " + std::to_string(vertices.size()) +
           " indices, but the polygon vertex counts cover only " + std::to_string(total) + ".";

  const int32_t point_count = static_cast<int32_t>(points.size() / 3);
  std::vector<int32_t> last_polygon(point_count, -1);  // N, last polygon that used the point
  size_t offset = 0;
  for (size_t p = 0; p < counts.size(); ++p) {
    const int32_t polygon = static_cast<int32_t>(p);
    for (int32_t k = 0; k < counts[p]; ++k) {
      const int32_t v = vertices[offset + k];
      if (v < 0 || v >= point_count)
        return "Polygon " + std::to_string(p) + " refers to vertex " + std::to_string(v) +
               ", outside the " + std::to_string(point_count) + " points of the mesh.";
      if (last_polygon[v] == polygon)
        return "Polygon " + std::to_string(p) + " lists vertex " + std::to_string(v) + " twice.";
      last_polygon[v] = polygon;
    }
    offset += counts[p];
  }
  return std::string();
}

void FillOffsets(const std::vector<int32_t>& degree, std::vector<int32_t>& offsets) {
  offsets.resize(degree.size() + 1);
  offsets[0] = 0;
  for (size_t i = 0; i < degree.size(); ++i) offsets[i + 1] = offsets[i] + degree[i];
}

void BuildVertexEdges(MeshData& mesh) {
  const uint32_t point_count = mesh.PointCount();
  std::vector<int32_t> degree(point_count, 0);  // N
  for (int32_t v : mesh.edge_vertices) ++degree[v];
  FillOffsets(degree, mesh.vertex_edge_offsets);
  mesh.vertex_edges.resize(mesh.edge_vertices.size());
  mesh.vertex_neighbors.resize(mesh.edge_vertices.size());
  std::vector<int32_t> cursor(mesh.vertex_edge_offsets.begin(),
                              mesh.vertex_edge_offsets.end() - 1);  // N
  for (uint32_t e = 0; e < mesh.EdgeCount(); ++e) {
    const int32_t a = mesh.edge_vertices[2 * e];
    const int32_t b = mesh.edge_vertices[2 * e + 1];
    mesh.vertex_edges[cursor[a]] = static_cast<int32_t>(e);
    mesh.vertex_neighbors[cursor[a]++] = b;
    mesh.vertex_edges[cursor[b]] = static_cast<int32_t>(e);
    mesh.vertex_neighbors[cursor[b]++] = a;
  }
  mesh.vertex_connected = mesh.vertex_neighbors;
}

void BuildVertexFaces(MeshData& mesh) {
  std::vector<int32_t> degree(mesh.PointCount(), 0);  // N
  for (int32_t v : mesh.polygon_vertices) ++degree[v];
  FillOffsets(degree, mesh.vertex_face_offsets);
  mesh.vertex_faces.resize(mesh.polygon_vertices.size());
  std::vector<int32_t> cursor(mesh.vertex_face_offsets.begin(),
                              mesh.vertex_face_offsets.end() - 1);  // N
  for (uint32_t p = 0; p < mesh.PolygonCount(); ++p) {
    const int32_t* loop = mesh.polygon_vertices.data() + mesh.polygon_vertex_offsets[p];
    for (int32_t k = 0; k < mesh.polygon_vertex_counts[p]; ++k)
      mesh.vertex_faces[cursor[loop[k]]++] = static_cast<int32_t>(p);
  }
}

void FillPolygonOffsets(MeshData& mesh) {
  mesh.polygon_vertex_offsets.resize(mesh.polygon_vertex_counts.size());
  int32_t offset = 0;
  for (size_t p = 0; p < mesh.polygon_vertex_counts.size(); ++p) {
    mesh.polygon_vertex_offsets[p] = offset;
    offset += mesh.polygon_vertex_counts[p];
  }
}

}  // namespace myo_core
