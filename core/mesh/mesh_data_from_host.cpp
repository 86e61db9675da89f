#include "core/mesh/mesh_data_from_host.h"

#include <utility>

#include "core/mesh/mesh_adjacency.h"

namespace myo_core {

namespace {

std::string ValidateHostTopology(const HostMeshArrays& arrays) {
  const size_t polygons = arrays.polygon_vertex_counts.size();
  if (arrays.polygon_triangle_counts.size() != polygons)
    return "The triangulation has counts for " + std::to_string(arrays.polygon_triangle_counts.size()) +
           " polygons, but the mesh has " + std::to_string(polygons) + ".";
  int64_t triangles = 0;
  for (size_t p = 0; p < polygons; ++p) {
    if (arrays.polygon_triangle_counts[p] < 0)
      return "Polygon " + std::to_string(p) + " has a negative triangle count.";
    triangles += arrays.polygon_triangle_counts[p];
  }
  if (3 * triangles != static_cast<int64_t>(arrays.triangle_vertices.size()))
    return "The triangle counts cover " + std::to_string(triangles) + " triangles, but the triangle list holds " +
           std::to_string(arrays.triangle_vertices.size()) + " vertex indices.";

  const int64_t point_count = static_cast<int64_t>(arrays.points.size() / 3);
  for (size_t k = 0; k < arrays.triangle_vertices.size(); ++k) {
    const int32_t v = arrays.triangle_vertices[k];
    if (v < 0 || v >= point_count)
      return "Triangle " + std::to_string(k / 3) + " refers to vertex " + std::to_string(v) + ", outside the " +
             std::to_string(point_count) + " points of the mesh.";
  }
  if (arrays.edge_vertices.size() % 2 != 0)
    return "The edge list holds " + std::to_string(arrays.edge_vertices.size()) +
           " vertex indices, which is not a multiple of 2.";
  for (size_t k = 0; k < arrays.edge_vertices.size(); ++k) {
    const int32_t v = arrays.edge_vertices[k];
    if (v < 0 || v >= point_count)
      return "Edge " + std::to_string(k / 2) + " refers to vertex " + std::to_string(v) + ", outside the " +
             std::to_string(point_count) + " points of the mesh.";
  }
  return std::string();
}

}  // namespace

bool BuildMeshDataFromHost(HostMeshArrays arrays, MeshData& mesh, std::string& error) {
  std::string problem = ValidatePolygons(arrays.points, arrays.polygon_vertex_counts, arrays.polygon_vertices);
  if (problem.empty()) problem = ValidateHostTopology(arrays);
  if (!problem.empty()) {
    error = std::move(problem);
    return false;
  }

  MeshData built;
  built.points = std::move(arrays.points);
  built.polygon_vertex_counts = std::move(arrays.polygon_vertex_counts);
  built.polygon_vertices = std::move(arrays.polygon_vertices);
  built.polygon_triangle_counts = std::move(arrays.polygon_triangle_counts);
  built.triangle_vertices = std::move(arrays.triangle_vertices);
  built.edge_vertices = std::move(arrays.edge_vertices);
  FillPolygonOffsets(built);
  BuildVertexEdges(built);
  BuildVertexFaces(built);

  mesh = std::move(built);
  return true;
}

}  // namespace myo_core
