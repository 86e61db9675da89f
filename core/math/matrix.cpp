#include "core/math/matrix.h"

#include <cmath>
#include <utility>

namespace myo_core {

Matrix IdentityMatrix() {
  return {1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f,
          0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f};
}

Matrix TranslationMatrix(float x, float y, float z) {
  Matrix m = IdentityMatrix();
  m[12] = x;
  m[13] = y;
  m[14] = z;
  return m;
}

namespace {

Vec3 HomogeneousDivide(Vec3 p, float x, float y, float z, float w) {
  if (std::fabs(static_cast<double>(w)) < kEpsilonDouble) return p;
  const float k = static_cast<float>(1.0 / static_cast<double>(w));
  return {x * k, y * k, z * k};
}

}  // namespace

Vec3 TransformPoint(Vec3 p, const Matrix& m) {
  const float x = p.x * m[0] + p.y * m[4] + p.z * m[8] + m[12];
  const float y = p.x * m[1] + p.y * m[5] + p.z * m[9] + m[13];
  const float z = p.x * m[2] + p.y * m[6] + p.z * m[10] + m[14];
  const float w = p.x * m[3] + p.y * m[7] + p.z * m[11] + m[15];
  return HomogeneousDivide(p, x, y, z, w);
}

Vec3 TransformColumn(const Matrix& m, Vec3 v) {
  const float x = m[0] * v.x + m[1] * v.y + m[2] * v.z + m[3];
  const float y = m[4] * v.x + m[5] * v.y + m[6] * v.z + m[7];
  const float z = m[8] * v.x + m[9] * v.y + m[10] * v.z + m[11];
  const float w = m[12] * v.x + m[13] * v.y + m[14] * v.z + m[15];
  return HomogeneousDivide(v, x, y, z, w);
}

bool IsIdentity(const Matrix& m) {
  const Matrix identity = IdentityMatrix();
  for (int k = 0; k < 16; ++k)
    if (m[k] != identity[k]) return false;
  return true;
}

namespace {

bool IsAffine(const Matrix& m) {
  return std::fabs(m[3]) <= kEpsilon && std::fabs(m[7]) <= kEpsilon &&
         std::fabs(m[11]) <= kEpsilon && std::fabs(m[15] - 1.0f) <= kEpsilon;
}

// Affine inverse: the 3x3 block by cofactors, then the translation carried
// through it. Formed in double and rounded once.
Matrix InvertAffine(const Matrix& m) {
  const double a = m[0], b = m[1], c = m[2];
  const double d = m[4], e = m[5], f = m[6];
  const double g = m[8], h = m[9], i = m[10];
  const double c00 = e * i - f * h, c01 = c * h - b * i, c02 = b * f - c * e;
  const double det = a * c00 + d * c01 + g * c02;
  if (det == 0.0 || !std::isfinite(det)) return IdentityMatrix();
  const double k = 1.0 / det;
  double r[9] = {c00 * k, c01 * k, c02 * k,
                 (f * g - d * i) * k, (a * i - c * g) * k, (c * d - a * f) * k,
                 (d * h - e * g) * k, (b * g - a * h) * k, (a * e - b * d) * k};
  const double tx = m[12], ty = m[13], tz = m[14];
  Matrix out{};
  for (int row = 0; row < 3; ++row)
    for (int col = 0; col < 3; ++col) out[4 * row + col] = static_cast<float>(r[3 * row + col]);
  out[12] = static_cast<float>(-(tx * r[0] + ty * r[3] + tz * r[6]));
  out[13] = static_cast<float>(-(tx * r[1] + ty * r[4] + tz * r[7]));
  out[14] = static_cast<float>(-(tx * r[2] + ty * r[5] + tz * r[8]));
  out[15] = 1.0f;
  return out;
}

// General inverse by Gauss-Jordan elimination with partial pivoting, in double.
Matrix InvertGeneral(const Matrix& m) {
  double a[4][8];
  for (int row = 0; row < 4; ++row)
    for (int col = 0; col < 4; ++col) {
      a[row][col] = m[4 * row + col];
      a[row][col + 4] = row == col ? 1.0 : 0.0;
    }
  for (int col = 0; col < 4; ++col) {
    int pivot = col;
    for (int row = col + 1; row < 4; ++row)
      if (std::fabs(a[row][col]) > std::fabs(a[pivot][col])) pivot = row;
    if (a[pivot][col] == 0.0 || !std::isfinite(a[pivot][col])) return IdentityMatrix();
    if (pivot != col)
      for (int k = 0; k < 8; ++k) std::swap(a[pivot][k], a[col][k]);
    const double inv = 1.0 / a[col][col];
    for (int k = 0; k < 8; ++k) a[col][k] *= inv;
    for (int row = 0; row < 4; ++row) {
      if (row == col) continue;
      const double factor = a[row][col];
      if (factor == 0.0) continue;
      for (int k = 0; k < 8; ++k) a[row][k] -= factor * a[col][k];
    }
  }
  Matrix out{};
  for (int row = 0; row < 4; ++row)
    for (int col = 0; col < 4; ++col) out[4 * row + col] = static_cast<float>(a[row][col + 4]);
  return out;
}

}  // namespace

Matrix InvertMatrix(const Matrix& m) { return IsAffine(m) ? InvertAffine(m) : InvertGeneral(m); }

Matrix MultiplyMatrices(const Matrix& a, const Matrix& b) {
  Matrix out{};
  for (int row = 0; row < 4; ++row)
    for (int col = 0; col < 4; ++col)
      out[4 * row + col] = a[4 * row] * b[col] + a[4 * row + 1] * b[4 + col] +
                           a[4 * row + 2] * b[8 + col] + a[4 * row + 3] * b[12 + col];
  return out;
}

}  // namespace myo_core

