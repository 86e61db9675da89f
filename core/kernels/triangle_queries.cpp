#include "core/kernels/triangle_queries.h"

namespace myo_core {

namespace {

V3<float> ToV3(Vec3 v) { return {v.x, v.y, v.z}; }
Vec3 ToVec3(V3<float> v) { return {v.x, v.y, v.z}; }

}  // namespace

float GramInverse(float det, bool& has_area) {
  has_area = !(std::fabs(static_cast<double>(det)) < kEpsilonDouble);
  return has_area ? static_cast<float>(1.0 / static_cast<double>(det)) : 0.0f;
}

PreparedTriangle PrepareTriangle(Vec3 a, Vec3 b, Vec3 c) {
  PreparedTriangle t;
  t.a = ToV3(a);
  t.b = ToV3(b);
  t.c = ToV3(c);
  float det;
  PrepareTriangleLanes(t, det);
  t.inverse_det = GramInverse(det, t.has_area);
  return t;
}

void PrepareFourTriangles(const float* const corners[4], TriangleLanes<Float4, Mask4>& t, Float4& det) {
  auto lanes = [&](int k) { return Float4(corners[0][k], corners[1][k], corners[2][k], corners[3][k]); };
  t.a = {lanes(0), lanes(1), lanes(2)};
  t.b = {lanes(3), lanes(4), lanes(5)};
  t.c = {lanes(6), lanes(7), lanes(8)};
  PrepareTriangleLanes(t, det);
  // The reciprocal in double, lane by lane.
  float dets[4], inverses[4];
  bool has_area[4];
  det.Store(dets);
  for (int j = 0; j < 4; ++j) inverses[j] = GramInverse(dets[j], has_area[j]);
  t.inverse_det = Float4(inverses[0], inverses[1], inverses[2], inverses[3]);
  t.has_area = MakeMask4(has_area[0], has_area[1], has_area[2], has_area[3]);
}

TrianglePoint ClosestPointOnTriangle(Vec3 p, const PreparedTriangle& triangle) {
  V3<float> point;
  float distance;
  ClosestPointOnTriangle(ToV3(p), triangle, point, distance);
  return {ToVec3(point), distance};
}

Vec3 ClosestPointOnTriangle(Vec3 p, Vec3 a, Vec3 b, Vec3 c) {
  return ClosestPointOnTriangle(p, PrepareTriangle(a, b, c)).point;
}

bool PointInTriangle(Vec3 m, Vec3 a, Vec3 b, Vec3 c) {
  const V3<float> ab = ToV3(b - a), ac = ToV3(c - a);
  const float ab_ab = Dot(ab, ab), ac_ac = Dot(ac, ac), ab_ac = Dot(ab, ac);
  bool has_area;
  const float inverse_det = GramInverse(ac_ac * ab_ab - ab_ac * ab_ac, has_area);
  return InsideTriangle(ToV3(m), ToV3(a), ab, ac, ab_ab, ac_ac, ab_ac, inverse_det, has_area);
}

void PackFourTriangles(const TriangleLanes<Float4, Mask4>& t, PackedTriangle* const out[4]) {
  const Float4 rows[4][4] = {{t.a.x, t.a.y, t.a.z, t.inverse_det},
                             {t.b.x, t.b.y, t.b.z, t.plane},
                             {t.c.x, t.c.y, t.c.z, AsFloat(t.has_area)},
                             {t.normal.x, t.normal.y, t.normal.z, Float4(0.0f)}};
  for (int r = 0; r < 4; ++r) StoreTransposed(rows[r], out[0]->rows[r], out[1]->rows[r], out[2]->rows[r], out[3]->rows[r]);
}

}  // namespace myo_core
