#include "core/mesh/mesh_data.h"

#include <cstddef>
#include <limits>
#include <utility>

#include "core/mesh/polygon_triangulation.h"

namespace myo_core {
namespace {

// Open-addressing map from an undirected vertex pair to its edge id. Sized
// once for the largest possible edge count, so it never grows.
class EdgeIdMap {
 public:
  explicit EdgeIdMap(size_t max_edges) {
    size_t capacity = 16;
    while (capacity < 2 * max_edges) capacity *= 2;
    keys_.assign(capacity, kEmpty);
    ids_.resize(capacity);
    mask_ = capacity - 1;
  }

  // Returns the id stored for {a, b}, or stores `new_id` and returns it.
  int32_t FindOrInsert(int32_t a, int32_t b, int32_t new_id) {
    const uint32_t low = static_cast<uint32_t>(a < b ? a : b);
    const uint32_t high = static_cast<uint32_t>(a < b ? b : a);
    const uint64_t key = (static_cast<uint64_t>(low) << 32) | high;
    for (size_t slot = Mix(key) & mask_;; slot = (slot + 1) & mask_) {
      if (keys_[slot] == key) return ids_[slot];
      if (keys_[slot] == kEmpty) {
        keys_[slot] = key;
        ids_[slot] = new_id;
        return new_id;
      }
    }
  }

 private:
  static constexpr uint64_t kEmpty = std::numeric_limits<uint64_t>::max();

  static size_t Mix(uint64_t key) {
    key ^= key >> 33;
    key *= 0xff51afd7ed558ccdULL;
    key ^= key >> 33;
    key *= 0xc4ceb9fe1a85ec53ULL;
    key ^= key >> 33;
    return static_cast<size_t>(key);
  }

  std::vector<uint64_t> keys_;  // capacity, packed (low, high) vertex pair
  std::vector<int32_t> ids_;    // capacity, edge id of each occupied slot
  size_t mask_ = 0;
};

// Checks sizes, counts and indices in the order the messages are listed in
// the header. Returns an empty string when the input is a valid mesh.
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

// Fills `offsets` (N+1) as the running sum of `degree` (N).
void FillOffsets(const std::vector<int32_t>& degree, std::vector<int32_t>& offsets) {
  offsets.resize(degree.size() + 1);
  offsets[0] = 0;
  for (size_t i = 0; i < degree.size(); ++i) offsets[i + 1] = offsets[i] + degree[i];
}

void BuildEdges(MeshData& mesh) {
  EdgeIdMap edge_ids(mesh.polygon_vertices.size());
  mesh.edge_vertices.reserve(2 * mesh.polygon_vertices.size());
  for (uint32_t p = 0; p < mesh.PolygonCount(); ++p) {
    const int32_t* loop = mesh.polygon_vertices.data() + mesh.polygon_vertex_offsets[p];
    const int32_t n = mesh.polygon_vertex_counts[p];
    for (int32_t k = 0; k < n; ++k) {
      const int32_t a = loop[k];
      const int32_t b = loop[(k + 1) % n];
      const int32_t next_id = static_cast<int32_t>(mesh.EdgeCount());
      if (edge_ids.FindOrInsert(a, b, next_id) == next_id) {
        mesh.edge_vertices.push_back(a);
        mesh.edge_vertices.push_back(b);
      }
    }
  }
  mesh.edge_vertices.shrink_to_fit();
}

// Walking edges in id order gives every point its edges in ascending id.
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
}

// Walking polygons in order gives every point its faces in ascending id; a
// loop never repeats a point, so each face appears once per point.
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

void BuildTriangles(MeshData& mesh) {
  const uint32_t polygon_count = mesh.PolygonCount();
  mesh.polygon_triangle_counts.resize(polygon_count);
  mesh.triangle_vertices.reserve(3 * (mesh.polygon_vertices.size() - 2 * size_t{polygon_count}));
  PolygonTriangulationScratch scratch;
  for (uint32_t p = 0; p < polygon_count; ++p) {
    const int32_t n = mesh.polygon_vertex_counts[p];
    TriangulatePolygon(mesh.points.data(),
                       mesh.polygon_vertices.data() + mesh.polygon_vertex_offsets[p], n, scratch,
                       mesh.triangle_vertices);
    mesh.polygon_triangle_counts[p] = n - 2;
  }
}

}  // namespace

bool BuildMeshData(const std::vector<float>& points,
                   const std::vector<int32_t>& polygon_vertex_counts,
                   const std::vector<int32_t>& polygon_vertices,
                   MeshData& mesh, std::string& error) {
  std::string problem = ValidatePolygons(points, polygon_vertex_counts, polygon_vertices);
  if (!problem.empty()) {
    error = std::move(problem);
    return false;
  }

  MeshData built;
  built.points = points;
  built.polygon_vertex_counts = polygon_vertex_counts;
  built.polygon_vertices = polygon_vertices;
  built.polygon_vertex_offsets.resize(polygon_vertex_counts.size());
  int32_t offset = 0;
  for (size_t p = 0; p < polygon_vertex_counts.size(); ++p) {
    built.polygon_vertex_offsets[p] = offset;
    offset += polygon_vertex_counts[p];
  }

  BuildTriangles(built);
  BuildEdges(built);
  BuildVertexEdges(built);
  BuildVertexFaces(built);

  mesh = std::move(built);
  return true;
}

}  // namespace myo_core
