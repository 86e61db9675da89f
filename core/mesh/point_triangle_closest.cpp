#include "core/mesh/point_triangle_closest.h"

namespace myo_core {
namespace {

// A triangle whose height is below this fraction of its longest edge (squared
// twice: (2 area)^2 <= ratio * longest^4) is treated as its edges. That is far
// below what float corners can resolve, and keeps the face formulas away from
// cancellation.
constexpr double kSliverRatio = 1e-14;

double Dot(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

void Difference(const double* a, const double* b, double* out) {
  out[0] = a[0] - b[0];
  out[1] = a[1] - b[1];
  out[2] = a[2] - b[2];
}

// num / den clamped to [0, 1]; 0 when den is not positive.
double ClampedRatio(double num, double den) {
  if (!(den > 0.0)) return 0.0;
  const double t = num / den;
  return t < 0.0 ? 0.0 : (t > 1.0 ? 1.0 : t);
}

TriangleClosestPoint Finish(const double* p, const double* point, double u, double v) {
  TriangleClosestPoint result;
  for (int k = 0; k < 3; ++k) result.point[k] = point[k];
  result.u = u;
  result.v = v;
  double d[3];
  Difference(p, point, d);
  result.distance2 = Dot(d, d);
  return result;
}

// Closest point to p on the segment s0 + t (s1 - s0), t in [0, 1].
void ClosestOnSegment(const double* p, const double* s0, const double* s1, double* point,
                      double& t) {
  double direction[3];
  double offset[3];
  Difference(s1, s0, direction);
  Difference(p, s0, offset);
  t = ClampedRatio(Dot(offset, direction), Dot(direction, direction));
  for (int k = 0; k < 3; ++k) point[k] = t == 1.0 ? s1[k] : s0[k] + t * direction[k];
}

// The closest of the three edges; on equal distances AB, then BC, then CA.
TriangleClosestPoint ClosestOnEdges(const double* p, const double* a, const double* b,
                                    const double* c) {
  double point[3];
  double t = 0.0;
  ClosestOnSegment(p, a, b, point, t);
  TriangleClosestPoint best = Finish(p, point, 1.0 - t, t);
  ClosestOnSegment(p, b, c, point, t);
  const TriangleClosestPoint on_bc = Finish(p, point, 0.0, 1.0 - t);
  if (on_bc.distance2 < best.distance2) best = on_bc;
  ClosestOnSegment(p, c, a, point, t);
  const TriangleClosestPoint on_ca = Finish(p, point, t, 0.0);
  if (on_ca.distance2 < best.distance2) best = on_ca;
  return best;
}

}  // namespace

TriangleClosestPoint ExactClosestPointOnTriangle(const double p[3], const float a_in[3],
                                            const float b_in[3], const float c_in[3]) {
  const double a[3] = {a_in[0], a_in[1], a_in[2]};
  const double b[3] = {b_in[0], b_in[1], b_in[2]};
  const double c[3] = {c_in[0], c_in[1], c_in[2]};
  double ab[3];
  double ac[3];
  double bc[3];
  Difference(b, a, ab);
  Difference(c, a, ac);
  Difference(c, b, bc);

  // Degenerate and sliver triangles: the closest point lies on an edge.
  const double normal[3] = {ab[1] * ac[2] - ab[2] * ac[1], ab[2] * ac[0] - ab[0] * ac[2],
                            ab[0] * ac[1] - ab[1] * ac[0]};
  double longest2 = Dot(ab, ab);
  if (Dot(ac, ac) > longest2) longest2 = Dot(ac, ac);
  if (Dot(bc, bc) > longest2) longest2 = Dot(bc, bc);
  if (!(Dot(normal, normal) > kSliverRatio * longest2 * longest2))
    return ClosestOnEdges(p, a, b, c);

  double point[3];
  // Corner A.
  double ap[3];
  Difference(p, a, ap);
  const double d1 = Dot(ab, ap);
  const double d2 = Dot(ac, ap);
  if (d1 <= 0.0 && d2 <= 0.0) return Finish(p, a, 1.0, 0.0);

  // Corner B.
  double bp[3];
  Difference(p, b, bp);
  const double d3 = Dot(ab, bp);
  const double d4 = Dot(ac, bp);
  if (d3 >= 0.0 && d4 <= d3) return Finish(p, b, 0.0, 1.0);

  // Edge AB.
  const double vc = d1 * d4 - d3 * d2;
  if (vc <= 0.0 && d1 >= 0.0 && d3 <= 0.0) {
    const double t = ClampedRatio(d1, d1 - d3);
    for (int k = 0; k < 3; ++k) point[k] = a[k] + t * ab[k];
    return Finish(p, point, 1.0 - t, t);
  }

  // Corner C.
  double cp[3];
  Difference(p, c, cp);
  const double d5 = Dot(ab, cp);
  const double d6 = Dot(ac, cp);
  if (d6 >= 0.0 && d5 <= d6) return Finish(p, c, 0.0, 0.0);

  // Edge AC.
  const double vb = d5 * d2 - d1 * d6;
  if (vb <= 0.0 && d2 >= 0.0 && d6 <= 0.0) {
    const double t = ClampedRatio(d2, d2 - d6);
    for (int k = 0; k < 3; ++k) point[k] = a[k] + t * ac[k];
    return Finish(p, point, 1.0 - t, 0.0);
  }

  // Edge BC.
  const double va = d3 * d6 - d5 * d4;
  if (va <= 0.0 && d4 - d3 >= 0.0 && d5 - d6 >= 0.0) {
    const double t = ClampedRatio(d4 - d3, (d4 - d3) + (d5 - d6));
    for (int k = 0; k < 3; ++k) point[k] = b[k] + t * bc[k];
    return Finish(p, point, 0.0, 1.0 - t);
  }

  // Face: the projection of p. Rounding that pushes the weights outside the
  // triangle falls back to the edges.
  const double denominator = va + vb + vc;
  const double v = denominator > 0.0 ? vb / denominator : -1.0;
  const double w = denominator > 0.0 ? vc / denominator : -1.0;
  if (!(v >= 0.0 && w >= 0.0 && v + w <= 1.0)) return ClosestOnEdges(p, a, b, c);
  for (int k = 0; k < 3; ++k) point[k] = a[k] + ab[k] * v + ac[k] * w;
  const double u = 1.0 - v - w;
  return Finish(p, point, u > 0.0 ? u : 0.0, v);
}

}  // namespace myo_core
