#pragma once
// Closest point of a triangle and the point-in-triangle test, shared by every
// constraint that meets another mesh (slides on geometry, the skin's slide,
// collisions), so that all of them agree to the bit.
//
// The parts that depend on the triangle alone (edges, normal, Gram matrix and
// its reciprocal) are formed once in a PreparedTriangle; a search that meets
// the same triangle for many points prepares it once. The query itself is
// written once over lanes (core/math/lanes.h): on one triangle, or on four
// at a time for long candidate lists, with the same bits either way.

#include <cmath>

#include "core/math/lanes.h"
#include "core/math/vec3.h"

namespace myo_core {

// A triangle (a, b, c) as the query reads it, over a lane type F with masks M.
template <typename F, typename M>
struct TriangleLanes {
  V3<F> a, b, c;
  V3<F> ab, ac, bc;      // b - a, c - a, c - b
  V3<F> normal;          // NormalizeSafe(NormalizeSafe(ab) x NormalizeSafe(ac))
  F plane;               // a . normal
  F ab_ab, ac_ac, ab_ac, bc_bc;
  F inverse_det;         // float of 1.0 / det (double), det = ac_ac ab_ab - ab_ac ab_ac; 0 without area
  M has_area;            // |det| at least 1e-6 (tested in double)
  M ab_short, bc_short, ac_short;  // the edge's squared length below 1e-6 (tested in double)
};

using PreparedTriangle = TriangleLanes<float, bool>;

// With r = m - a: s = (r.ab ac_ac - r.ac ab_ac) / det and t = (r.ac ab_ab -
// r.ab ab_ac) / det through the one reciprocal; inside when s >= 0, t >= 0
// and s + t <= 1. A triangle without area (|det| below 1e-6, so small or
// degenerate ones) has no inside and is always answered by its edges.
template <typename F, typename M>
MYO_LANE_INLINE M InsideTriangle(V3<F> m, V3<F> a, V3<F> ab, V3<F> ac, F ab_ab, F ac_ac, F ab_ac, F inverse_det,
                        M has_area) {
  const V3<F> r = m - a;
  const F ru = Dot(r, ab);
  const F rv = Dot(r, ac);
  const F s = (ru * ac_ac - rv * ab_ac) * inverse_det;
  const F t = (rv * ab_ab - ru * ab_ac) * inverse_det;
  return And(has_area, And(And(s >= F(0.0f), t >= F(0.0f)), s + t <= F(1.0f)));
}

// Closest point of the segment from x to y (d = y - x, dd = d . d) to p:
// with t = (p - x) . d, x when t <= 0, y when t > dd or the segment is short,
// else x + d (t / dd).
template <typename F, typename M>
MYO_LANE_INLINE V3<F> ClosestPointOnEdge(V3<F> p, V3<F> x, V3<F> y, V3<F> d, F dd, M is_short) {
  const F t = Dot(p - x, d);
  const V3<F> along = x + d * (t / dd);
  return Select(t <= F(0.0f), x, Select(Or(t > dd, is_short), y, along));
}

// The projection m = p - n ((p . n) - (a . n)) when it lies in the triangle;
// otherwise the nearest of the closest points of p on AB, BC and AC, ties
// going to AB, then BC. distance is |point - p|.
template <typename F, typename M>
MYO_LANE_INLINE void ClosestPointOnTriangle(V3<F> p, const TriangleLanes<F, M>& t, V3<F>& point, F& distance) {
  const V3<F> m = p - t.normal * (Dot(p, t.normal) - t.plane);
  const M inside = InsideTriangle(m, t.a, t.ab, t.ac, t.ab_ab, t.ac_ac, t.ab_ac, t.inverse_det, t.has_area);
  const V3<F> on_ab = ClosestPointOnEdge(p, t.a, t.b, t.ab, t.ab_ab, t.ab_short);
  const V3<F> on_bc = ClosestPointOnEdge(p, t.b, t.c, t.bc, t.bc_bc, t.bc_short);
  const V3<F> on_ac = ClosestPointOnEdge(p, t.a, t.c, t.ac, t.ac_ac, t.ac_short);
  const F d_ab = Length(on_ab - p);
  const F d_bc = Length(on_bc - p);
  const F d_ac = Length(on_ac - p);
  const M take_ab = And(d_bc >= d_ab, d_ac >= d_ab);
  const M take_bc = d_ac >= d_bc;
  const V3<F> on_edge = Select(take_ab, on_ab, Select(take_bc, on_bc, on_ac));
  const F edge_distance = Select(take_ab, d_ab, Select(take_bc, d_bc, d_ac));
  point = Select(inside, m, on_edge);
  distance = Select(inside, Length(m - p), edge_distance);
}

// x < 1e-6 tested in double, for a float x: 0.000001f is the largest float
// below 1e-6, so the test is x <= 0.000001f in float.
template <typename F>
MYO_LANE_INLINE auto BelowEpsilonInDouble(F x) {
  return x <= F(kEpsilon);
}

// Fills the edges, their products and the short-edge masks from a, b and c.
template <typename F, typename M>
MYO_LANE_INLINE void DeriveEdges(TriangleLanes<F, M>& t) {
  t.ab = t.b - t.a;
  t.ac = t.c - t.a;
  t.bc = t.c - t.b;
  t.ab_ab = Dot(t.ab, t.ab);
  t.ac_ac = Dot(t.ac, t.ac);
  t.ab_ac = Dot(t.ab, t.ac);
  t.bc_bc = Dot(t.bc, t.bc);
  t.ab_short = BelowEpsilonInDouble(t.ab_ab);
  t.bc_short = BelowEpsilonInDouble(t.bc_bc);
  t.ac_short = BelowEpsilonInDouble(t.ac_ac);
}

// Everything of a triangle but has_area and inverse_det, from its corners
// a, b and c (set beforehand); det is the Gram determinant that those two
// come from.
template <typename F, typename M>
MYO_LANE_INLINE void PrepareTriangleLanes(TriangleLanes<F, M>& t, F& det) {
  DeriveEdges(t);
  t.normal = NormalizeSafe(Cross(NormalizeSafe(t.ab), NormalizeSafe(t.ac)));
  t.plane = Dot(t.a, t.normal);
  det = t.ac_ac * t.ab_ab - t.ab_ac * t.ab_ac;
}

// From the Gram determinant: has_area when |det| is at least 1e-6 (tested in
// double), and then the float of 1.0 / det formed in double, else 0.
float GramInverse(float det, bool& has_area);

PreparedTriangle PrepareTriangle(Vec3 a, Vec3 b, Vec3 c);

// Prepares four triangles at once, with the bits of PrepareTriangle.
// corners: the nine coordinates of a, b and c of each triangle. det: the
// Gram determinants.
void PrepareFourTriangles(const float* const corners[4], TriangleLanes<Float4, Mask4>& t, Float4& det);

struct TrianglePoint {
  Vec3 point;      // closest point found
  float distance;  // |point - p|
};

TrianglePoint ClosestPointOnTriangle(Vec3 p, const PreparedTriangle& triangle);
Vec3 ClosestPointOnTriangle(Vec3 p, Vec3 a, Vec3 b, Vec3 c);
bool PointInTriangle(Vec3 m, Vec3 a, Vec3 b, Vec3 c);

// A prepared triangle laid out for loading four at once: four rows of four
// floats, (a, inverse_det), (b, plane), (c, has_area), (normal, 0), masks as
// all-bits-set floats. The edges and their products are derived again from
// the corners when loaded, with the same arithmetic as PrepareTriangle.
struct alignas(16) PackedTriangle {
  float rows[4][4];
};

// Packs four prepared triangles, lane k into *out[k].
void PackFourTriangles(const TriangleLanes<Float4, Mask4>& t, PackedTriangle* const out[4]);

// The four packed triangles side by side, lane k from four[k].
MYO_LANE_INLINE TriangleLanes<Float4, Mask4> LoadTriangles(const PackedTriangle* const four[4]) {
  Float4 row[4][4];
  for (int r = 0; r < 4; ++r)
    Transpose4(four[0]->rows[r], four[1]->rows[r], four[2]->rows[r], four[3]->rows[r], row[r]);
  TriangleLanes<Float4, Mask4> t;
  t.a = {row[0][0], row[0][1], row[0][2]};
  t.inverse_det = row[0][3];
  t.b = {row[1][0], row[1][1], row[1][2]};
  t.plane = row[1][3];
  t.c = {row[2][0], row[2][1], row[2][2]};
  t.has_area = AsMask(row[2][3]);
  t.normal = {row[3][0], row[3][1], row[3][2]};
  DeriveEdges(t);
  return t;
}

// The nearest of a list of candidate triangles, per lane: lane j keeps the
// nearest of the candidates handed to it, a later one only when strictly
// nearer.
struct LaneBest {
  Float4 distance = Float4(0.0f);
  Float4 position = Float4(-1.0f);  // list position, -1 while the lane has none
  V3<Float4> point = {Float4(0.0f), Float4(0.0f), Float4(0.0f)};
};

// Measures up to four candidates at once: positions are places in `list`
// (-1 for none), and list entries index `prepared`.
template <typename Index>
MYO_LANE_INLINE void MeasureFourCandidates(V3<Float4> p, const int64_t positions[4], const Index* list,
                                           const PackedTriangle* prepared, LaneBest& best) {
  static const PackedTriangle kUnused = {};  // stands in for lanes without a candidate
  const PackedTriangle* four[4];
  for (int j = 0; j < 4; ++j) four[j] = positions[j] >= 0 ? &prepared[list[positions[j]]] : &kUnused;
  V3<Float4> point;
  Float4 distance;
  ClosestPointOnTriangle(p, LoadTriangles(four), point, distance);
  const Mask4 used = MakeMask4(positions[0] >= 0, positions[1] >= 0, positions[2] >= 0, positions[3] >= 0);
  const Mask4 take = And(used, Or(best.position < Float4(0.0f), distance < best.distance));
  best.distance = Select(take, distance, best.distance);
  best.position = Select(take, Float4(static_cast<float>(positions[0]), static_cast<float>(positions[1]),
                                      static_cast<float>(positions[2]), static_cast<float>(positions[3])),
                         best.position);
  best.point = Select(take, point, best.point);
}

}  // namespace myo_core
