#pragma once
// Three-float vector arithmetic over flat position arrays. Every operation is
// written out in a fixed order of operations, since results are compared bit
// for bit between hosts.

#include <cmath>
#include <cstdint>

namespace myo_core {

// The universal small number: a weight below it takes no part, a sum of
// weights below it skips a constraint.
constexpr float kEpsilon = 0.000001f;
// The same threshold where a test is made in double.
constexpr double kEpsilonDouble = 1e-6;

struct Vec3 {
  float x, y, z;
};

inline Vec3 Load3(const float* a, uint32_t i) { return {a[3 * i], a[3 * i + 1], a[3 * i + 2]}; }
inline void Store3(float* a, uint32_t i, Vec3 v) {
  a[3 * i] = v.x;
  a[3 * i + 1] = v.y;
  a[3 * i + 2] = v.z;
}

inline Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator*(Vec3 a, float s) { return {a.x * s, a.y * s, a.z * s}; }
inline Vec3& operator+=(Vec3& a, Vec3 b) { return a = a + b; }
inline Vec3& operator-=(Vec3& a, Vec3 b) { return a = a - b; }

inline float Dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3 Cross(Vec3 a, Vec3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float Length(Vec3 a) { return std::sqrt(Dot(a, a)); }

// v divided by its length when the length is above 0, else v unchanged.
inline Vec3 NormalizeSafe(Vec3 v, float length) {
  if (length > 0.0f) return {v.x / length, v.y / length, v.z / length};
  return v;
}
inline Vec3 NormalizeSafe(Vec3 v) { return NormalizeSafe(v, Length(v)); }

}  // namespace myo_core
