#pragma once
// Lanes: a routine written once over a lane type F runs on one float (F =
// float, masks bool) or on four side by side (F = Float4, masks Mask4). Each
// Float4 operation is the IEEE single-precision operation of every lane, so
// both give the same bits; such routines are written without branches, every
// choice a Select between values that were all computed.

#include <cmath>
#include <cstdint>
#include <cstring>

// MYO_LANES_PORTABLE forces the portable lanes, so that they can be tested
// on a machine that has SSE2.
#if !defined(MYO_LANES_PORTABLE) && \
    (defined(__SSE2__) || defined(_M_X64) || (defined(_M_IX86_FP) && _M_IX86_FP >= 2))
#include <emmintrin.h>
#define MYO_LANES_SSE2 1
#endif

// Lane routines are small in source and large in code; this keeps them in
// the loops that call them, where their values can stay in registers.
#if defined(__GNUC__) || defined(__clang__)
#define MYO_LANE_INLINE inline __attribute__((always_inline))
#elif defined(_MSC_VER)
#define MYO_LANE_INLINE __forceinline
#else
#define MYO_LANE_INLINE inline
#endif

namespace myo_core {

// A three-vector over a lane type.
template <typename F>
struct V3 {
  F x, y, z;
};

template <typename F>
inline V3<F> operator+(V3<F> a, V3<F> b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
template <typename F>
inline V3<F> operator-(V3<F> a, V3<F> b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <typename F>
inline V3<F> operator*(V3<F> a, F s) {
  return {a.x * s, a.y * s, a.z * s};
}
template <typename F>
inline V3<F> operator/(V3<F> a, F s) {
  return {a.x / s, a.y / s, a.z / s};
}
template <typename F>
inline F Dot(V3<F> a, V3<F> b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
template <typename F>
inline V3<F> Cross(V3<F> a, V3<F> b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// Scalar lanes.
inline float Sqrt(float x) { return std::sqrt(x); }
inline bool And(bool a, bool b) { return a & b; }
inline bool Or(bool a, bool b) { return a | b; }
inline float Select(bool mask, float a, float b) { return mask ? a : b; }

template <typename F, typename M>
inline V3<F> Select(M mask, V3<F> a, V3<F> b) {
  return {Select(mask, a.x, b.x), Select(mask, a.y, b.y), Select(mask, a.z, b.z)};
}
template <typename F>
inline F Length(V3<F> a) {
  return Sqrt(Dot(a, a));
}
// v divided by its length when the length is above 0, else v unchanged.
template <typename F>
inline V3<F> NormalizeSafe(V3<F> v, F length) {
  return Select(length > F(0.0f), v / length, v);
}
template <typename F>
inline V3<F> NormalizeSafe(V3<F> v) {
  return NormalizeSafe(v, Length(v));
}

// A mask lane is all bits set when true and all clear when false.
inline float MaskBits(bool value) {
  const uint32_t bits = value ? 0xFFFFFFFFu : 0u;
  float f;
  std::memcpy(&f, &bits, sizeof f);
  return f;
}

#if MYO_LANES_SSE2

struct Mask4 {
  __m128 v;
};

struct Float4 {
  __m128 v;
  Float4() = default;
  explicit Float4(__m128 value) : v(value) {}
  Float4(float s) : v(_mm_set1_ps(s)) {}  // NOLINT: a constant in lane code stands for all lanes
  Float4(float a, float b, float c, float d) : v(_mm_setr_ps(a, b, c, d)) {}
  void Store(float out[4]) const { _mm_storeu_ps(out, v); }
};

inline Float4 operator-(Float4 a) { return Float4(_mm_xor_ps(a.v, _mm_set1_ps(-0.0f))); }
inline Float4 operator+(Float4 a, Float4 b) { return Float4(_mm_add_ps(a.v, b.v)); }
inline Float4 operator-(Float4 a, Float4 b) { return Float4(_mm_sub_ps(a.v, b.v)); }
inline Float4 operator*(Float4 a, Float4 b) { return Float4(_mm_mul_ps(a.v, b.v)); }
inline Float4 operator/(Float4 a, Float4 b) { return Float4(_mm_div_ps(a.v, b.v)); }
inline Mask4 operator<(Float4 a, Float4 b) { return {_mm_cmplt_ps(a.v, b.v)}; }
inline Mask4 operator<=(Float4 a, Float4 b) { return {_mm_cmple_ps(a.v, b.v)}; }
inline Mask4 operator>(Float4 a, Float4 b) { return {_mm_cmpgt_ps(a.v, b.v)}; }
inline Mask4 operator>=(Float4 a, Float4 b) { return {_mm_cmpge_ps(a.v, b.v)}; }
inline Float4 Sqrt(Float4 x) { return Float4(_mm_sqrt_ps(x.v)); }
inline Mask4 And(Mask4 a, Mask4 b) { return {_mm_and_ps(a.v, b.v)}; }
inline Mask4 Or(Mask4 a, Mask4 b) { return {_mm_or_ps(a.v, b.v)}; }
inline Float4 Select(Mask4 mask, Float4 a, Float4 b) {
  return Float4(_mm_or_ps(_mm_and_ps(mask.v, a.v), _mm_andnot_ps(mask.v, b.v)));
}
inline Float4 Abs(Float4 x) { return Float4(_mm_andnot_ps(_mm_set1_ps(-0.0f), x.v)); }
inline Float4 Max(Float4 a, Float4 b) { return Select(a > b, a, b); }
inline Mask4 MakeMask4(bool a, bool b, bool c, bool d) {
  return {_mm_setr_ps(MaskBits(a), MaskBits(b), MaskBits(c), MaskBits(d))};
}
// Bit k set when lane k of the mask is set.
inline int MaskLanes(Mask4 mask) { return _mm_movemask_ps(mask.v); }

// Rows r0..r3 of four floats become columns: out[k] holds element k of each row.
inline void Transpose4(const float* r0, const float* r1, const float* r2, const float* r3, Float4 out[4]) {
  __m128 a = _mm_loadu_ps(r0), b = _mm_loadu_ps(r1), c = _mm_loadu_ps(r2), d = _mm_loadu_ps(r3);
  _MM_TRANSPOSE4_PS(a, b, c, d);
  out[0] = Float4(a);
  out[1] = Float4(b);
  out[2] = Float4(c);
  out[3] = Float4(d);
}

// The inverse of Transpose4: element k of column j goes to rows k[j].
inline void StoreTransposed(const Float4 columns[4], float* r0, float* r1, float* r2, float* r3) {
  __m128 a = columns[0].v, b = columns[1].v, c = columns[2].v, d = columns[3].v;
  _MM_TRANSPOSE4_PS(a, b, c, d);
  _mm_storeu_ps(r0, a);
  _mm_storeu_ps(r1, b);
  _mm_storeu_ps(r2, c);
  _mm_storeu_ps(r3, d);
}

inline Mask4 AsMask(Float4 bits) { return {bits.v}; }
inline Float4 AsFloat(Mask4 mask) { return Float4(mask.v); }

#else  // Portable lanes: the same operations lane by lane.

struct Mask4 {
  float v[4];
};

struct Float4 {
  float v[4];
  Float4() = default;
  Float4(float s) : v{s, s, s, s} {}  // NOLINT: a constant in lane code stands for all lanes
  Float4(float a, float b, float c, float d) : v{a, b, c, d} {}
  void Store(float out[4]) const { std::memcpy(out, v, sizeof v); }
};

namespace lanes_detail {
template <typename Op>
inline Float4 Map(Float4 a, Float4 b, Op op) {
  return {op(a.v[0], b.v[0]), op(a.v[1], b.v[1]), op(a.v[2], b.v[2]), op(a.v[3], b.v[3])};
}
template <typename Op>
inline Mask4 Compare(Float4 a, Float4 b, Op op) {
  return {{MaskBits(op(a.v[0], b.v[0])), MaskBits(op(a.v[1], b.v[1])), MaskBits(op(a.v[2], b.v[2])),
           MaskBits(op(a.v[3], b.v[3]))}};
}
inline bool IsSet(float lane) {
  uint32_t bits;
  std::memcpy(&bits, &lane, sizeof bits);
  return bits != 0;
}
}  // namespace lanes_detail

inline Float4 operator-(Float4 a) { return {-a.v[0], -a.v[1], -a.v[2], -a.v[3]}; }
inline Float4 operator+(Float4 a, Float4 b) { return lanes_detail::Map(a, b, [](float x, float y) { return x + y; }); }
inline Float4 operator-(Float4 a, Float4 b) { return lanes_detail::Map(a, b, [](float x, float y) { return x - y; }); }
inline Float4 operator*(Float4 a, Float4 b) { return lanes_detail::Map(a, b, [](float x, float y) { return x * y; }); }
inline Float4 operator/(Float4 a, Float4 b) { return lanes_detail::Map(a, b, [](float x, float y) { return x / y; }); }
inline Mask4 operator<(Float4 a, Float4 b) { return lanes_detail::Compare(a, b, [](float x, float y) { return x < y; }); }
inline Mask4 operator<=(Float4 a, Float4 b) { return lanes_detail::Compare(a, b, [](float x, float y) { return x <= y; }); }
inline Mask4 operator>(Float4 a, Float4 b) { return lanes_detail::Compare(a, b, [](float x, float y) { return x > y; }); }
inline Mask4 operator>=(Float4 a, Float4 b) { return lanes_detail::Compare(a, b, [](float x, float y) { return x >= y; }); }
inline Float4 Sqrt(Float4 x) { return {std::sqrt(x.v[0]), std::sqrt(x.v[1]), std::sqrt(x.v[2]), std::sqrt(x.v[3])}; }
inline Mask4 And(Mask4 a, Mask4 b) {
  Mask4 m;
  for (int k = 0; k < 4; ++k) m.v[k] = MaskBits(lanes_detail::IsSet(a.v[k]) && lanes_detail::IsSet(b.v[k]));
  return m;
}
inline Mask4 Or(Mask4 a, Mask4 b) {
  Mask4 m;
  for (int k = 0; k < 4; ++k) m.v[k] = MaskBits(lanes_detail::IsSet(a.v[k]) || lanes_detail::IsSet(b.v[k]));
  return m;
}
inline Float4 Select(Mask4 mask, Float4 a, Float4 b) {
  Float4 f;
  for (int k = 0; k < 4; ++k) f.v[k] = lanes_detail::IsSet(mask.v[k]) ? a.v[k] : b.v[k];
  return f;
}
inline Float4 Abs(Float4 x) { return {std::fabs(x.v[0]), std::fabs(x.v[1]), std::fabs(x.v[2]), std::fabs(x.v[3])}; }
inline Float4 Max(Float4 a, Float4 b) { return Select(a > b, a, b); }
inline Mask4 MakeMask4(bool a, bool b, bool c, bool d) { return {{MaskBits(a), MaskBits(b), MaskBits(c), MaskBits(d)}}; }
inline int MaskLanes(Mask4 mask) {
  int bits = 0;
  for (int k = 0; k < 4; ++k) bits |= lanes_detail::IsSet(mask.v[k]) ? 1 << k : 0;
  return bits;
}

inline void Transpose4(const float* r0, const float* r1, const float* r2, const float* r3, Float4 out[4]) {
  for (int k = 0; k < 4; ++k) out[k] = Float4(r0[k], r1[k], r2[k], r3[k]);
}

inline void StoreTransposed(const Float4 columns[4], float* r0, float* r1, float* r2, float* r3) {
  float* rows[4] = {r0, r1, r2, r3};
  for (int j = 0; j < 4; ++j)
    for (int k = 0; k < 4; ++k) rows[j][k] = columns[k].v[j];
}

inline Mask4 AsMask(Float4 bits) { return {{bits.v[0], bits.v[1], bits.v[2], bits.v[3]}}; }
inline Float4 AsFloat(Mask4 mask) { return {mask.v[0], mask.v[1], mask.v[2], mask.v[3]}; }

#endif

// Two lane values side by side: twice as many independent operations in
// flight, for chains of divisions and square roots whose latency would
// otherwise leave the units idle.
template <typename F>
struct Twin {
  F lo, hi;
  Twin() = default;
  Twin(float s) : lo(s), hi(s) {}  // NOLINT: a constant in lane code stands for all lanes
  Twin(F low, F high) : lo(low), hi(high) {}
};
template <typename M>
struct TwinMask {
  M lo, hi;
};

template <typename F>
inline Twin<F> operator-(Twin<F> a) { return {-a.lo, -a.hi}; }
template <typename F>
inline Twin<F> operator+(Twin<F> a, Twin<F> b) { return {a.lo + b.lo, a.hi + b.hi}; }
template <typename F>
inline Twin<F> operator-(Twin<F> a, Twin<F> b) { return {a.lo - b.lo, a.hi - b.hi}; }
template <typename F>
inline Twin<F> operator*(Twin<F> a, Twin<F> b) { return {a.lo * b.lo, a.hi * b.hi}; }
template <typename F>
inline Twin<F> operator/(Twin<F> a, Twin<F> b) { return {a.lo / b.lo, a.hi / b.hi}; }
template <typename F>
inline auto operator<(Twin<F> a, Twin<F> b) { return TwinMask<decltype(a.lo < b.lo)>{a.lo < b.lo, a.hi < b.hi}; }
template <typename F>
inline auto operator<=(Twin<F> a, Twin<F> b) { return TwinMask<decltype(a.lo <= b.lo)>{a.lo <= b.lo, a.hi <= b.hi}; }
template <typename F>
inline auto operator>(Twin<F> a, Twin<F> b) { return TwinMask<decltype(a.lo > b.lo)>{a.lo > b.lo, a.hi > b.hi}; }
template <typename F>
inline auto operator>=(Twin<F> a, Twin<F> b) { return TwinMask<decltype(a.lo >= b.lo)>{a.lo >= b.lo, a.hi >= b.hi}; }
template <typename F>
inline Twin<F> Sqrt(Twin<F> x) { return {Sqrt(x.lo), Sqrt(x.hi)}; }
template <typename M>
inline TwinMask<M> And(TwinMask<M> a, TwinMask<M> b) { return {And(a.lo, b.lo), And(a.hi, b.hi)}; }
template <typename M>
inline TwinMask<M> Or(TwinMask<M> a, TwinMask<M> b) { return {Or(a.lo, b.lo), Or(a.hi, b.hi)}; }
template <typename F, typename M>
inline Twin<F> Select(TwinMask<M> mask, Twin<F> a, Twin<F> b) {
  return {Select(mask.lo, a.lo, b.lo), Select(mask.hi, a.hi, b.hi)};
}

}  // namespace myo_core
