#include "app/scene/transform_track.h"

#include <cmath>

#include "app/scene/keyframe_track.h"

namespace myo_app {

namespace {

constexpr double kDegrees = 3.14159265358979323846 / 180.0;

template <std::size_t N>
std::array<double, N> Lerp(const std::array<double, N>& a, const std::array<double, N>& b, double t) {
  std::array<double, N> out{};
  for (std::size_t i = 0; i < N; ++i) out[i] = a[i] + (b[i] - a[i]) * t;
  return out;
}

}  // namespace

Matrix4d IdentityMatrix4d() { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}; }

Matrix4d Multiply(const Matrix4d& a, const Matrix4d& b) {
  Matrix4d out{};
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k) sum += a[r * 4 + k] * b[k * 4 + c];
      out[r * 4 + c] = sum;
    }
  return out;
}

Matrix4d ComposeTRS(const TransformKeyTRS& key) {
  const double cx = std::cos(key.rotate[0] * kDegrees), sx = std::sin(key.rotate[0] * kDegrees);
  const double cy = std::cos(key.rotate[1] * kDegrees), sy = std::sin(key.rotate[1] * kDegrees);
  const double cz = std::cos(key.rotate[2] * kDegrees), sz = std::sin(key.rotate[2] * kDegrees);
  const Matrix4d rx = {1, 0, 0, 0, 0, cx, sx, 0, 0, -sx, cx, 0, 0, 0, 0, 1};
  const Matrix4d ry = {cy, 0, -sy, 0, 0, 1, 0, 0, sy, 0, cy, 0, 0, 0, 0, 1};
  const Matrix4d rz = {cz, sz, 0, 0, -sz, cz, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  Matrix4d scale = IdentityMatrix4d();
  scale[0] = key.scale[0];
  scale[5] = key.scale[1];
  scale[10] = key.scale[2];
  Matrix4d m = Multiply(Multiply(Multiply(scale, rx), ry), rz);
  m[12] = key.translate[0];
  m[13] = key.translate[1];
  m[14] = key.translate[2];
  return m;
}

Matrix4d TransformTrack::LocalAt(double frame) const {
  if (frames.empty()) return IdentityMatrix4d();
  const KeySpan span = FindKeySpan(frames, frame);
  const std::size_t next = span.weight == 0.0 ? span.key : span.key + 1;
  if (matrix_keys) return Lerp(matrices[span.key], matrices[next], span.weight);
  TransformKeyTRS key;
  key.translate = Lerp(trs[span.key].translate, trs[next].translate, span.weight);
  key.rotate = Lerp(trs[span.key].rotate, trs[next].rotate, span.weight);
  key.scale = Lerp(trs[span.key].scale, trs[next].scale, span.weight);
  return ComposeTRS(key);
}

}  // namespace myo_app
