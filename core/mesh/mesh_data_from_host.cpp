#include "core/mesh/mesh_data_from_host.h"

#include <algorithm>
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

std::string PointText(std::size_t v) { return "Point " + std::to_string(v); }

// The host's connected edges and points of every point: N counts, every
// edge of the point listed once, nothing else, and one connected point per
// edge, which is its other end.
std::string ValidateVertexEdges(const HostMeshArrays& arrays) {
  const std::size_t n = arrays.points.size() / 3;
  const std::size_t edge_count = arrays.edge_vertices.size() / 2;
  if (arrays.vertex_edge_counts.size() != n)
    return "The connected edges are given for " + std::to_string(arrays.vertex_edge_counts.size()) +
           " points, but the mesh has " + std::to_string(n) + ".";
  if (arrays.vertex_edges.size() != 2 * edge_count)
    return "The connected edge lists hold " + std::to_string(arrays.vertex_edges.size()) +
           " entries; the mesh's " + std::to_string(edge_count) + " edges need " + std::to_string(2 * edge_count) +
           ".";
  if (arrays.vertex_connected.size() != arrays.vertex_edges.size())
    return "The connected point lists hold " + std::to_string(arrays.vertex_connected.size()) +
           " entries, but the connected edge lists " + std::to_string(arrays.vertex_edges.size()) + ".";
  std::vector<int64_t> last_point(edge_count, -1);   // E, last point that listed the edge
  std::vector<int64_t> last_neighbor(n, -1);         // N, last point that listed it as connected
  std::size_t offset = 0;
  for (std::size_t v = 0; v < n; ++v) {
    const int32_t count = arrays.vertex_edge_counts[v];
    if (count < 0 || offset + static_cast<std::size_t>(count) > arrays.vertex_edges.size())
      return PointText(v) + " has a connected edge count that does not fit the lists.";
    for (int32_t k = 0; k < count; ++k, ++offset) {
      const int32_t e = arrays.vertex_edges[offset];
      if (e < 0 || static_cast<std::size_t>(e) >= edge_count ||
          (arrays.edge_vertices[2 * e] != static_cast<int32_t>(v) &&
           arrays.edge_vertices[2 * e + 1] != static_cast<int32_t>(v)))
        return PointText(v) + " lists edge " + std::to_string(e) + ", which does not end at it.";
      if (last_point[e] == static_cast<int64_t>(v))
        return PointText(v) + " lists edge " + std::to_string(e) + " twice.";
      last_point[e] = static_cast<int64_t>(v);
      const int32_t other = arrays.edge_vertices[2 * e] == static_cast<int32_t>(v) ? arrays.edge_vertices[2 * e + 1]
                                                                                     : arrays.edge_vertices[2 * e];
      last_neighbor[other] = static_cast<int64_t>(v);
    }
    for (std::size_t k = offset - static_cast<std::size_t>(count); k < offset; ++k) {
      const int32_t c = arrays.vertex_connected[k];
      if (c < 0 || static_cast<std::size_t>(c) >= n || last_neighbor[c] != static_cast<int64_t>(v))
        return PointText(v) + " lists point " + std::to_string(c) + " as connected, but no edge joins them.";
      last_neighbor[c] = -1;  // each connected point once
    }
  }
  if (offset != arrays.vertex_edges.size())
    return "The connected edge counts cover " + std::to_string(offset) + " entries, but the lists hold " +
           std::to_string(arrays.vertex_edges.size()) + ".";
  return std::string();
}

// The host's polygons around every point: each polygon that uses the point
// listed once, nothing else.
std::string ValidateVertexFaces(const HostMeshArrays& arrays, const std::vector<int32_t>& polygon_offsets) {
  const std::size_t n = arrays.points.size() / 3;
  const std::size_t polygon_count = arrays.polygon_vertex_counts.size();
  if (arrays.vertex_face_counts.size() != n)
    return "The connected polygons are given for " + std::to_string(arrays.vertex_face_counts.size()) +
           " points, but the mesh has " + std::to_string(n) + ".";
  if (arrays.vertex_faces.size() != arrays.polygon_vertices.size())
    return "The connected polygon lists hold " + std::to_string(arrays.vertex_faces.size()) +
           " entries; the polygons' corners need " + std::to_string(arrays.polygon_vertices.size()) + ".";
  std::vector<int64_t> last_point(polygon_count, -1);  // P, last point that listed the polygon
  std::size_t offset = 0;
  for (std::size_t v = 0; v < n; ++v) {
    const int32_t count = arrays.vertex_face_counts[v];
    if (count < 0 || offset + static_cast<std::size_t>(count) > arrays.vertex_faces.size())
      return PointText(v) + " has a connected polygon count that does not fit the lists.";
    for (int32_t k = 0; k < count; ++k, ++offset) {
      const int32_t f = arrays.vertex_faces[offset];
      bool uses = f >= 0 && static_cast<std::size_t>(f) < polygon_count;
      if (uses) {
        const int32_t* loop = arrays.polygon_vertices.data() + polygon_offsets[f];
        uses = std::find(loop, loop + arrays.polygon_vertex_counts[f], static_cast<int32_t>(v)) !=
               loop + arrays.polygon_vertex_counts[f];
      }
      if (!uses) return PointText(v) + " lists polygon " + std::to_string(f) + ", which does not use it.";
      if (last_point[f] == static_cast<int64_t>(v))
        return PointText(v) + " lists polygon " + std::to_string(f) + " twice.";
      last_point[f] = static_cast<int64_t>(v);
    }
  }
  return std::string();
}

std::string ValidateWorldSpace(const HostMeshArrays& arrays) {
  if (!arrays.world_points.empty() && arrays.world_points.size() != arrays.points.size())
    return "The world-space points hold " + std::to_string(arrays.world_points.size()) + " floats, but the " +
           "object-space points " + std::to_string(arrays.points.size()) + ".";
  const std::size_t normals = 3 * arrays.polygon_vertex_counts.size();
  if (!arrays.world_polygon_normals.empty() && arrays.world_polygon_normals.size() != normals)
    return "The world-space polygon normals hold " + std::to_string(arrays.world_polygon_normals.size()) +
           " floats; the mesh's polygons need " + std::to_string(normals) + ".";
  return std::string();
}

// Concatenated lists with N counts into N+1 offsets.
std::vector<int32_t> OffsetsOf(const std::vector<int32_t>& counts) {
  std::vector<int32_t> offsets;
  FillOffsets(counts, offsets);
  return offsets;
}

}  // namespace

bool BuildMeshDataFromHost(HostMeshArrays arrays, MeshData& mesh, std::string& error) {
  std::string problem = ValidatePolygons(arrays.points, arrays.polygon_vertex_counts, arrays.polygon_vertices);
  if (problem.empty()) problem = ValidateHostTopology(arrays);
  MeshData built;
  built.polygon_vertex_counts = arrays.polygon_vertex_counts;
  FillPolygonOffsets(built);
  const bool host_edges = !arrays.vertex_edge_counts.empty();
  const bool host_faces = !arrays.vertex_face_counts.empty();
  if (problem.empty() && host_edges) problem = ValidateVertexEdges(arrays);
  if (problem.empty() && host_faces) problem = ValidateVertexFaces(arrays, built.polygon_vertex_offsets);
  if (problem.empty()) problem = ValidateWorldSpace(arrays);
  if (!problem.empty()) {
    error = std::move(problem);
    return false;
  }

  built.points = std::move(arrays.points);
  built.polygon_vertices = std::move(arrays.polygon_vertices);
  built.polygon_triangle_counts = std::move(arrays.polygon_triangle_counts);
  built.triangle_vertices = std::move(arrays.triangle_vertices);
  built.edge_vertices = std::move(arrays.edge_vertices);
  if (host_edges) {
    built.vertex_edge_offsets = OffsetsOf(arrays.vertex_edge_counts);
    built.vertex_edges = std::move(arrays.vertex_edges);
    built.vertex_neighbors.resize(built.vertex_edges.size());
    for (std::size_t v = 0; v + 1 < built.vertex_edge_offsets.size(); ++v)
      for (int32_t k = built.vertex_edge_offsets[v]; k < built.vertex_edge_offsets[v + 1]; ++k) {
        const int32_t e = built.vertex_edges[k];
        const int32_t a = built.edge_vertices[2 * e];
        built.vertex_neighbors[k] = a == static_cast<int32_t>(v) ? built.edge_vertices[2 * e + 1] : a;
      }
    built.vertex_connected = std::move(arrays.vertex_connected);
  } else {
    BuildVertexEdges(built);
  }
  if (host_faces) {
    built.vertex_face_offsets = OffsetsOf(arrays.vertex_face_counts);
    built.vertex_faces = std::move(arrays.vertex_faces);
  } else {
    BuildVertexFaces(built);
  }
  built.world_points = std::move(arrays.world_points);
  built.world_polygon_normals = std::move(arrays.world_polygon_normals);

  mesh = std::move(built);
  return true;
}

}  // namespace myo_core
