// The Uber row pass: SolveUberConstraint over a block of points, eight
// points at a time in lanes. Every lane performs the scalar kernel's
// operations in the scalar kernel's order; its branches become selections
// between values that were all computed, and a lane whose point returns early
// in the scalar kernel writes nothing.

#include <cmath>

#include "core/kernels/uber_constraints.h"
#include "core/math/lanes.h"

namespace myo_core {

namespace {

// Eight lanes as two interleaved fours: the chain of roots and divisions of
// one point is long, and two fours keep the units busy while it runs.
using Lanes = Twin<Float4>;
using LaneMask = TwinMask<Mask4>;
constexpr uint32_t kLanes = 8;

Lanes LoadLanes(const float* v) {
  return Lanes(Float4(v[0], v[1], v[2], v[3]), Float4(v[4], v[5], v[6], v[7]));
}
void StoreLanes(const Lanes& lanes, float out[kLanes]) {
  lanes.lo.Store(out);
  lanes.hi.Store(out + 4);
}
LaneMask LoadMask(const bool* v) {
  return {MakeMask4(v[0], v[1], v[2], v[3]), MakeMask4(v[4], v[5], v[6], v[7])};
}

// Three coordinates per lane, gathered from a flat 3-float array at the
// given indices.
V3<Lanes> Gather3(const float* values, const uint32_t* indices) {
  float x[kLanes], y[kLanes], z[kLanes];
  for (uint32_t l = 0; l < kLanes; ++l) {
    const float* v = values + 3 * static_cast<std::size_t>(indices[l]);
    x[l] = v[0];
    y[l] = v[1];
    z[l] = v[2];
  }
  return {LoadLanes(x), LoadLanes(y), LoadLanes(z)};
}

// The divide of TransformPoint and TransformColumn: (x, y, z) times the float
// of 1 / w formed in double, or `fallback` where |w| is below 1e-6 (in
// double). A w of exactly 1 gives the factor 1 without a division.
V3<Lanes> HomogeneousDivideLanes(V3<Lanes> fallback, Lanes x, Lanes y, Lanes z, Lanes w) {
  float ws[kLanes], ks[kLanes];
  bool small[kLanes];
  StoreLanes(w, ws);
  for (uint32_t l = 0; l < kLanes; ++l) {
    small[l] = std::fabs(static_cast<double>(ws[l])) < kEpsilonDouble;
    ks[l] = ws[l] == 1.0f || small[l] ? 1.0f : static_cast<float>(1.0 / static_cast<double>(ws[l]));
  }
  const Lanes k = LoadLanes(ks);
  return Select(LoadMask(small), fallback, V3<Lanes>{x * k, y * k, z * k});
}

// TransformPoint over lanes, the matrix the same in every lane.
V3<Lanes> TransformPointLanes(V3<Lanes> p, const Matrix& m) {
  const Lanes x = p.x * Lanes(m[0]) + p.y * Lanes(m[4]) + p.z * Lanes(m[8]) + Lanes(m[12]);
  const Lanes y = p.x * Lanes(m[1]) + p.y * Lanes(m[5]) + p.z * Lanes(m[9]) + Lanes(m[13]);
  const Lanes z = p.x * Lanes(m[2]) + p.y * Lanes(m[6]) + p.z * Lanes(m[10]) + Lanes(m[14]);
  const Lanes w = p.x * Lanes(m[3]) + p.y * Lanes(m[7]) + p.z * Lanes(m[11]) + Lanes(m[15]);
  return HomogeneousDivideLanes(p, x, y, z, w);
}

// TransformColumn(TriangleFrame(q, ...), offset) with the frame's columns
// t, n, e: the frame's last row is (0, 0, 0, 1) and its last column 0.
V3<Lanes> FrameTimesOffset(V3<Lanes> t, V3<Lanes> n, V3<Lanes> e, V3<Lanes> offset) {
  const Lanes zero(0.0f), one(1.0f);
  const Lanes x = t.x * offset.x + n.x * offset.y + e.x * offset.z + zero;
  const Lanes y = t.y * offset.x + n.y * offset.y + e.y * offset.z + zero;
  const Lanes z = t.z * offset.x + n.z * offset.y + e.z * offset.z + zero;
  const Lanes w = zero * offset.x + zero * offset.y + zero * offset.z + one;
  return HomogeneousDivideLanes(offset, x, y, z, w);
}

// (r + distance (p - r)/|p - r|) - p: the correction that puts p at
// `distance` from r.
MYO_LANE_INLINE V3<Lanes> TowardsDistance(V3<Lanes> r, V3<Lanes> p, Lanes distance) {
  return (r + NormalizeSafe(p - r) * distance) - p;
}

// The rows of points first .. first + 7.
void SolveEightUberRows(const UberConstraints& uber, uint32_t first, float compliance, bool has_transform,
                        const Matrix& world_matrix, const Matrix& world_matrix_inverse, float* positions,
                        float* lambdas) {
  const float* hard_in = uber.hard_weights_.data() + first;
  const float* soft_in = uber.soft_weights_.data() + first;
  const float* slide_in = uber.slide_weights_.data() + first;
  const float* w_in = uber.inverse_masses_.data() + first;
  bool runs[kLanes], active[kLanes];
  float remainder[kLanes];
  uint32_t t0[kLanes], t1[kLanes], t2[kLanes], polygon[kLanes], point[kLanes];
  for (uint32_t l = 0; l < kLanes; ++l) {
    const uint32_t i = first + l;
    const float sum = hard_in[l] + soft_in[l] + slide_in[l];
    runs[l] = !(sum < kEpsilon || w_in[l] < kEpsilon);
    active[l] = uber.sliding_inactive_[i] == 0;
    const float u = uber.barycentric_u_[i], v = uber.barycentric_v_[i];
    remainder[l] = static_cast<float>(1.0 - static_cast<double>(u) - static_cast<double>(v));
    t0[l] = uber.triangle_vertices_[3 * i];
    t1[l] = uber.triangle_vertices_[3 * i + 1];
    t2[l] = uber.triangle_vertices_[3 * i + 2];
    polygon[l] = uber.polygon_indices_[i];
    point[l] = i;
  }
  bool any = false;
  for (uint32_t l = 0; l < kLanes; ++l) any = any || runs[l];
  if (!any) return;

  // Weights clamped, when they sum above 1, hard first, then slide, then soft.
  const Lanes hard = LoadLanes(hard_in), soft = LoadLanes(soft_in), slide = LoadLanes(slide_in);
  const Lanes one(1.0f), eps(kEpsilon);
  const LaneMask over = hard + soft + slide > one;
  const Lanes hard_capped = Select(hard < one, hard, one);
  const Lanes slide_capped = Select(slide < one - hard_capped, slide, one - hard_capped);
  const Lanes soft_room = one - (slide_capped + hard_capped);
  const Lanes soft_capped = Select(soft < soft_room, soft, soft_room);
  const Lanes hard_weight = Select(over, hard_capped, hard);
  const Lanes slide_weight = Select(over, slide_capped, slide);
  const Lanes soft_weight = Select(over, soft_capped, soft);
  const Lanes w = LoadLanes(w_in);

  V3<Lanes> p = Gather3(positions, point);
  if (has_transform) p = TransformPointLanes(p, world_matrix);

  const float* reference = uber.reference_positions_.data();
  const V3<Lanes> a = Gather3(reference, t0), b = Gather3(reference, t1), c = Gather3(reference, t2);
  const V3<Lanes> q = a * LoadLanes(uber.barycentric_u_.data() + first) +
                      b * LoadLanes(uber.barycentric_v_.data() + first) + c * LoadLanes(remainder);
  const V3<Lanes> zero = {Lanes(0.0f), Lanes(0.0f), Lanes(0.0f)};

  // The hard term through TriangleFrame(q, ..., polygon, t0, t1): e towards
  // the first corner, or the second when the first lies within 0.001; a
  // float length is below 0.001 in double exactly when it is below 0.001f.
  const V3<Lanes> to_first = a - q;
  V3<Lanes> e = Select(Length(to_first) < Lanes(0.001f), b - q, to_first);
  e = NormalizeSafe(e);
  const V3<Lanes> normal = Gather3(uber.polygon_normals_.data(), polygon);
  const V3<Lanes> tangent = NormalizeSafe(Cross(e, normal));
  const V3<Lanes> offset = Gather3(uber.local_offsets_.data(), point);
  const V3<Lanes> hard_term =
      Select(hard_weight >= eps, FrameTimesOffset(tangent, normal, e, offset) + q - p, zero);

  const Lanes distance = LoadLanes(uber.surface_distances_.data() + first);
  const V3<Lanes> soft_term = Select(soft_weight >= eps, TowardsDistance(q, p, distance), zero);
  const V3<Lanes> sliding = Gather3(uber.sliding_points_.data(), point);
  const V3<Lanes> slide_term =
      Select(And(slide_weight >= eps, LoadMask(active)), TowardsDistance(sliding, p, distance), zero);

  const V3<Lanes> blended = soft_term * soft_weight + slide_term * slide_weight + hard_term * hard_weight;
  const V3<Lanes> g = {-blended.x, -blended.y, -blended.z};
  const Lanes length = Length(g);
  const V3<Lanes> n = NormalizeSafe(g, length);
  float* lambda_out = lambdas + uber.lambda_base_ + first;
  const Lanes lambda = LoadLanes(lambda_out);
  const Lanes alpha(compliance);
  const Lanes delta = (-length - lambda * alpha) / (n.y * n.y * w + n.x * n.x * w + n.z * n.z * w + alpha);
  const Lanes new_lambda = lambda + delta;
  p = p + n * (delta * w);
  if (has_transform) p = TransformPointLanes(p, world_matrix_inverse);

  float x[kLanes], y[kLanes], z[kLanes], lambda_values[kLanes];
  StoreLanes(p.x, x);
  StoreLanes(p.y, y);
  StoreLanes(p.z, z);
  StoreLanes(new_lambda, lambda_values);
  for (uint32_t l = 0; l < kLanes; ++l) {
    if (!runs[l]) continue;
    lambda_out[l] = lambda_values[l];
    Store3(positions, first + l, {x[l], y[l], z[l]});
  }
}

bool RowTablesFit(const UberConstraints& uber, std::size_t points) {
  return uber.inverse_masses_.size() >= points && uber.triangle_vertices_.size() >= 3 * points &&
         uber.polygon_indices_.size() >= points && uber.barycentric_u_.size() >= points &&
         uber.barycentric_v_.size() >= points && uber.surface_distances_.size() >= points &&
         uber.local_offsets_.size() >= 3 * points && uber.sliding_points_.size() >= 3 * points &&
         uber.hard_weights_.size() >= points && uber.soft_weights_.size() >= points &&
         uber.slide_weights_.size() >= points && uber.sliding_inactive_.size() >= points &&
         !uber.reference_positions_.empty() && !uber.polygon_normals_.empty();
}

}  // namespace

void SolveUberRows(const UberConstraints& uber, uint32_t first, uint32_t count, float compliance,
                   bool has_transform, const Matrix& world_matrix, const Matrix& world_matrix_inverse,
                   float* positions, float* lambdas) {
  if (count == 0 || !RowTablesFit(uber, static_cast<std::size_t>(first) + count)) return;
  const uint32_t end = first + count;
  uint32_t i = first;
  for (; i + kLanes <= end; i += kLanes)
    SolveEightUberRows(uber, i, compliance, has_transform, world_matrix, world_matrix_inverse, positions, lambdas);
  const uint32_t* corners = uber.triangle_vertices_.data();
  for (; i < end; ++i) {
    SolveUberConstraint(uber.lambda_base_ + i, i, corners[3 * i], corners[3 * i + 1], corners[3 * i + 2],
                        uber.polygon_indices_[i], uber.sliding_inactive_[i], uber.inverse_masses_[i],
                        uber.hard_weights_[i], uber.soft_weights_[i], uber.slide_weights_[i], compliance,
                        uber.barycentric_u_[i], uber.barycentric_v_[i], uber.surface_distances_[i], has_transform,
                        world_matrix, world_matrix_inverse, uber.reference_positions_.data(),
                        uber.polygon_normals_.data(), uber.local_offsets_.data(), uber.sliding_points_.data(),
                        positions, lambdas);
  }
}

}  // namespace myo_core
