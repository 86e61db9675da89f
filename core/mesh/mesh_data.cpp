#include "core/mesh/mesh_data.h"

#include <cstddef>
#include <limits>
#include <utility>

#include "core/mesh/mesh_adjacency.h"
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
  FillPolygonOffsets(built);

  BuildTriangles(built);
  BuildEdges(built);
  BuildVertexEdges(built);
  BuildVertexFaces(built);

  mesh = std::move(built);
  return true;
}

}  // namespace myo_core
