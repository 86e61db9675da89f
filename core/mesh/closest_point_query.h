#pragma once
// Closest point on a triangulated mesh: a bounding volume hierarchy over the
// triangles. Both hosts use it wherever a point is bound to a surface.

#include <cstdint>
#include <vector>

namespace myo_core {

struct ClosestPointHit {
  float point[3] = {0.0f, 0.0f, 0.0f};  // the closest point on the surface
  float distance = 0.0f;                // from the query point to `point`
  int32_t polygon = -1;                 // polygon that holds the triangle
  int32_t triangle_in_polygon = -1;     // triangle index within that polygon
  int32_t triangle = -1;                // global triangle index
  float bary_u = 0.0f;                  // weight of the triangle's first vertex
  float bary_v = 0.0f;                  // weight of the second; the third has 1 - u - v
};

class ClosestPointQuery {
 public:
  // points: 3V floats; triangle_vertices: 3T indices in polygon order;
  // polygon_triangle_counts: triangles per polygon (their sum must be T).
  // Rebuilding replaces the former hierarchy. An inconsistent triangulation
  // (an index count not a multiple of 3, an index outside the points, a
  // negative count, counts not summing to T) leaves the query empty. Triangles
  // with a non-finite corner coordinate are left out of the hierarchy: they
  // are never hit. The hierarchy splits by binned surface area heuristic down
  // to leaves of at most four triangles.
  void Build(const std::vector<float>& points,
             const std::vector<int32_t>& triangle_vertices,
             const std::vector<int32_t>& polygon_triangle_counts);

  bool Empty() const;

  // Closest point within max_distance (a negative value means unlimited).
  // Among triangles at the same distance the lowest global index wins.
  // Distances are compared squared in double, as ExactClosestPointOnTriangle gives
  // them, so the answer equals a loop over all triangles. A hit has
  // distance <= max_distance. Returns false (hit untouched) when the mesh is
  // empty, p is not finite, or nothing lies within reach. Safe to call from
  // several threads at once.
  bool Closest(const float p[3], float max_distance, ClosestPointHit& hit) const;

 private:
  // A subtree: an internal node, or a leaf as a range of slots.
  struct Child {
    int32_t first = 0;  // internal: node index; leaf: first slot
    int32_t count = 0;  // triangles of a leaf; 0 for an internal node
  };
  // An internal node carries the boxes of both children, so one visit reads
  // one cache line. Boxes hold their triangles' corners, widened by a hair so
  // that rounding in the closest-point arithmetic never lands outside them.
  struct alignas(64) Node {
    float child_min[2][3];
    float child_max[2][3];
    Child child[2];
  };
  struct BuildInput;

  void Clear();
  // Builds the subtree over input items [begin, end) and returns it with its box.
  Child BuildSubtree(BuildInput& input, int32_t begin, int32_t end, int32_t depth,
                     float box_min[3], float box_max[3]);

  Child root_;                                     // the whole hierarchy
  std::vector<Node> nodes_;                        // internal nodes, parents before children
  std::vector<float> slot_corners_;                // 9S, corners of the triangles in leaf order
  std::vector<int32_t> slot_triangles_;            // S, global triangle of each slot
  std::vector<int32_t> triangle_polygons_;         // T, polygon of each triangle
  std::vector<int32_t> polygon_first_triangles_;   // P, first global triangle of each polygon
};

}  // namespace myo_core
