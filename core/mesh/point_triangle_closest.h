#pragma once
// Exact closest point of a triangle to a point, computed in double. The
// closest-point query evaluates every candidate triangle with this routine,
// so a brute-force loop over it gives the same answers.

namespace myo_core {

struct TriangleClosestPoint {
  double point[3] = {0.0, 0.0, 0.0};  // closest point of the triangle
  double u = 0.0;                     // weight of the first corner
  double v = 0.0;                     // weight of the second; the third has 1 - u - v
  double distance2 = 0.0;             // squared distance from the query point to `point`
};

// Closest point of triangle (a, b, c) to p, by the Voronoi region of p:
// a corner, an edge or the face. A degenerate triangle (zero or vanishing
// area, including repeated corners) is treated as its three edges, so the
// result is the closest point on a segment or a corner. For finite input the
// result is finite, lies on the triangle, and satisfies
// point = u * a + v * b + (1 - u - v) * c up to rounding, with u, v, 1 - u - v
// all in [0, 1].
TriangleClosestPoint ExactClosestPointOnTriangle(const double p[3], const float a[3],
                                            const float b[3], const float c[3]);

}  // namespace myo_core
