#pragma once
// Deterministic triangulation of one polygon loop, used by BuildMeshData.
//
// The rule, exactly:
// - A triangle is emitted as it stands: (l0, l1, l2).
// - A loop of n >= 4 vertices is ear-clipped in the plane of its Newell
//   normal (computed in double relative to l0; points are projected on two
//   orthonormal axes e1, e2 with e1 x e2 along the normal, so the loop runs
//   counter-clockwise in that plane). The candidate corner starts at loop
//   position 1 and walks forward over the remaining corners. A corner c with
//   remaining neighbours p (before) and q (after) is an ear when it turns
//   strictly left and no other remaining corner that does not turn strictly
//   left lies inside or on the triangle (p, c, q). An ear emits (p, c, q),
//   drops c, and the walk continues at q. When three corners remain, the
//   current candidate c emits (p, c, q) and the polygon is done.
// - If the normal is zero or not finite, a projected coordinate is not
//   finite, or a full walk over the remaining corners finds no ear (a
//   degenerate or self-intersecting loop), the whole polygon is instead
//   triangulated as a fan from its first vertex: (l0, lk, lk+1), k = 1..n-2.
// Every triangle keeps the loop's winding, and there are always n - 2. A
// convex polygon gives exactly the fan from its first vertex.

#include <cstdint>
#include <vector>

namespace myo_core {

// Reusable buffers, so that triangulating many polygons does not allocate per
// polygon.
struct PolygonTriangulationScratch {
  std::vector<double> projected;         // 2n, loop points in the polygon plane
  std::vector<int32_t> next;             // n, remaining corners as a cycle
  std::vector<int32_t> previous;         // n
  std::vector<uint8_t> strictly_convex;  // n, corner turns strictly left
  std::vector<int32_t> not_convex;       // remaining corners that do not turn strictly left
};

// Appends the n - 2 triangles of `loop` (n point indices into `points`, 3 floats
// each, indices already validated) to `triangle_vertices` as point indices.
void TriangulatePolygon(const float* points, const int32_t* loop, int32_t n,
                        PolygonTriangulationScratch& scratch,
                        std::vector<int32_t>& triangle_vertices);

}  // namespace myo_core
