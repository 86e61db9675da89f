#pragma once
// Host-neutral polygon mesh: what assembly reads from a mesh, as flat arrays.
// Maya fills it from its mesh functions and iterators; the standalone host
// builds it from OBJ polygons with BuildMeshData.

#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

struct MeshData {
  // N points, P polygons, T triangles, E edges.
  std::vector<float> points;                    // 3N, object space
  std::vector<int32_t> polygon_vertex_counts;   // P
  std::vector<int32_t> polygon_vertex_offsets;  // P, start of each polygon in polygon_vertices
  std::vector<int32_t> polygon_vertices;        // sum of counts, each polygon's loop
  std::vector<int32_t> polygon_triangle_counts; // P when the triangulation is whole
  std::vector<int32_t> triangle_vertices;       // 3T, triangles in polygon order
  std::vector<int32_t> edge_vertices;           // 2E, edges in id order, ends in host order
  // Per point, in the orders the host's vertex iterator gives them; results
  // such as the order of shape rows and ties between equally near
  // neighbours depend on these orders.
  std::vector<int32_t> vertex_edge_offsets;     // N+1, ranges into the three arrays below
  std::vector<int32_t> vertex_edges;            // connected edges of each point
  std::vector<int32_t> vertex_neighbors;        // opposite point across each of those edges
  std::vector<int32_t> vertex_connected;        // connected points, in the host's own order for them
  std::vector<int32_t> vertex_face_offsets;     // N+1, ranges into vertex_faces
  std::vector<int32_t> vertex_faces;            // polygons around each point

  // World space as the host computes it, where a deformer reads the mesh
  // there (targets, a skin's reference). Empty when the host hands none.
  std::vector<float> world_points;              // 3N
  std::vector<float> world_polygon_normals;     // 3P, unit length

  uint32_t PointCount() const { return static_cast<uint32_t>(points.size() / 3); }
  uint32_t PolygonCount() const { return static_cast<uint32_t>(polygon_vertex_counts.size()); }
  uint32_t TriangleCount() const { return static_cast<uint32_t>(triangle_vertices.size() / 3); }
  uint32_t EdgeCount() const { return static_cast<uint32_t>(edge_vertices.size() / 2); }
};

// Builds the whole record from points (3N floats) and polygons given as vertex
// counts and concatenated vertex loops.
//
// Edges are numbered by first appearance while walking each polygon's loop:
// polygons in order, and for polygon vertex k the edge (loop[k], loop[k+1 mod n]);
// an edge keeps its two ends in the order of that first appearance.
// This host's own per-point orders: vertex_edges lists each point's edges in
// ascending id, vertex_neighbors the opposite end of each, vertex_connected
// the same points in the same order, and vertex_faces each point's polygons
// in ascending id. Points that no polygon uses get empty ranges. No world
// space is filled (see WorldSpaceMesh).
//
// Each polygon is triangulated on its own, deterministically, into n - 2
// triangles that keep its winding: a triangle stays as it is, larger polygons
// are ear-clipped in the plane of their Newell normal (a convex polygon gives
// the fan from its first vertex), and a loop that cannot be ear-clipped
// (degenerate, self-intersecting, non-finite points) becomes that fan. The
// exact rule is in core/mesh/polygon_triangulation.h. Non-finite coordinates
// are accepted.
//
// Returns false with one message in `error` (and `mesh` untouched) for a point
// array whose size is not a multiple of 3, a polygon of fewer than three
// vertices, counts that do not match the loops, an index out of range, or a
// repeated vertex within a polygon. Checks run in that order and the first
// fault found is reported, naming its polygon where there is one.
bool BuildMeshData(const std::vector<float>& points,
                   const std::vector<int32_t>& polygon_vertex_counts,
                   const std::vector<int32_t>& polygon_vertices,
                   MeshData& mesh, std::string& error);

}  // namespace myo_core
