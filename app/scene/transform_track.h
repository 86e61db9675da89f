#pragma once
// An animated transform: keys of translate, rotate (degrees, applied in x, y,
// z order) and scale, or keys of whole 4x4 matrices, interpolated linearly
// component by component. Matrices are row-major with points as row vectors
// and the translation in elements 12 to 14, as everywhere in the system.

#include <array>
#include <vector>

namespace myo_app {

using Matrix4d = std::array<double, 16>;

struct TransformKeyTRS {
  std::array<double, 3> translate{0.0, 0.0, 0.0};
  std::array<double, 3> rotate{0.0, 0.0, 0.0};  // degrees
  std::array<double, 3> scale{1.0, 1.0, 1.0};
};

struct TransformTrack {
  std::vector<double> frames;             // K, increasing
  bool matrix_keys = false;
  std::vector<TransformKeyTRS> trs;       // K when !matrix_keys
  std::vector<Matrix4d> matrices;         // K when matrix_keys

  // The local matrix at `frame`; identity for a track without keys.
  Matrix4d LocalAt(double frame) const;
};

// scale, then rotation about x, y and z, then translation.
Matrix4d ComposeTRS(const TransformKeyTRS& key);
// a then b, for row vectors: p * a * b.
Matrix4d Multiply(const Matrix4d& a, const Matrix4d& b);
Matrix4d IdentityMatrix4d();

}  // namespace myo_app
