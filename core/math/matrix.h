#pragma once
// 4x4 matrices as 16 floats, row-major, points as row vectors: the
// translation stands in elements 12, 13 and 14.

#include <array>

#include "core/math/vec3.h"

namespace myo_core {

using Matrix = std::array<float, 16>;

Matrix IdentityMatrix();

// The identity with a translation in elements 12 to 14.
Matrix TranslationMatrix(float x, float y, float z);

// Row vector times matrix with the homogeneous divide. A w within 1e-6 of 0
// returns p unchanged; otherwise each product is scaled by float(1.0 / w).
Vec3 TransformPoint(Vec3 p, const Matrix& m);

// Matrix times the column vector (v, 1), with the same divide and fallback.
Vec3 TransformColumn(const Matrix& m, Vec3 v);

// Exact comparison of all 16 elements with the identity.
bool IsIdentity(const Matrix& m);

// General inverse with a fast path for affine matrices (last column 0, 0, 0, 1
// within 1e-6). A singular matrix yields the identity.
Matrix InvertMatrix(const Matrix& m);

// Plain row-major product a times b.
Matrix MultiplyMatrices(const Matrix& a, const Matrix& b);

}  // namespace myo_core
