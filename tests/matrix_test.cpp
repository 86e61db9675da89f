#include <gtest/gtest.h>

#include <cmath>

#include "core/math/matrix.h"

using namespace myo_core;

namespace {

Matrix RotationZ(double angle) {
  Matrix m = IdentityMatrix();
  m[0] = static_cast<float>(std::cos(angle));
  m[1] = static_cast<float>(std::sin(angle));
  m[4] = -m[1];
  m[5] = m[0];
  return m;
}

void ExpectNear(const Matrix& a, const Matrix& b, float tolerance) {
  for (int k = 0; k < 16; ++k) EXPECT_NEAR(a[k], b[k], tolerance) << "element " << k;
}

}  // namespace

TEST(MatrixTest, HomogeneousDivideAndItsFallback) {
  Matrix m = IdentityMatrix();
  m[15] = 2.0f;  // w = 2 for every point
  const Vec3 halved = TransformPoint({2.0f, 4.0f, 6.0f}, m);
  EXPECT_EQ(halved.x, 1.0f);
  EXPECT_EQ(halved.z, 3.0f);

  // w of 0: the point comes back unchanged, not merely undivided.
  m = IdentityMatrix();
  m[0] = 5.0f;
  m[15] = 0.0f;
  const Vec3 same = TransformPoint({2.0f, 4.0f, 6.0f}, m);
  EXPECT_EQ(same.x, 2.0f);
  EXPECT_EQ(same.y, 4.0f);

  m = IdentityMatrix();
  m[3] = 1.0f;  // column product: w = m[12] x + ... + m[15], unaffected by m[3]
  m[15] = 4.0f;
  const Vec3 column = TransformColumn(m, {1.0f, 0.0f, 0.0f});
  EXPECT_EQ(column.x, (1.0f + 1.0f) * 0.25f);
  m[15] = 0.0f;
  const Vec3 fallback = TransformColumn(m, {1.0f, 2.0f, 3.0f});
  EXPECT_EQ(fallback.y, 2.0f);
}

TEST(MatrixTest, IsIdentityIsExact) {
  EXPECT_TRUE(IsIdentity(IdentityMatrix()));
  Matrix almost = IdentityMatrix();
  almost[5] = std::nextafter(1.0f, 2.0f);
  EXPECT_FALSE(IsIdentity(almost));
}

TEST(MatrixTest, InverseOfAffineGeneralAndSingularMatrices) {
  const Matrix affine = MultiplyMatrices(RotationZ(0.7), TranslationMatrix(1.0f, -2.0f, 3.5f));
  ExpectNear(MultiplyMatrices(affine, InvertMatrix(affine)), IdentityMatrix(), 1e-6f);

  Matrix projective = affine;
  projective[3] = 0.25f;
  projective[11] = -0.5f;
  projective[15] = 2.0f;
  ExpectNear(MultiplyMatrices(projective, InvertMatrix(projective)), IdentityMatrix(), 1e-5f);

  Matrix flat = IdentityMatrix();
  flat[10] = 0.0f;  // collapses z
  EXPECT_TRUE(IsIdentity(InvertMatrix(flat)));
}

TEST(MatrixTest, NormalizeSafeKeepsZero) {
  EXPECT_EQ(NormalizeSafe(Vec3{0.0f, 0.0f, 0.0f}).x, 0.0f);
  EXPECT_EQ(NormalizeSafe(Vec3{3.0f, 0.0f, 4.0f}).z, 0.8f);
}
