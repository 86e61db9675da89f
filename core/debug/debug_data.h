#pragma once
// What a solver shows of its constraints while "debug" is on: plain float
// arrays that the draw code of a host reads, never copies. One record per
// solver; the solver writes it in its evaluation.

#include <cstdint>
#include <vector>

#include "core/math/matrix.h"
#include "core/math/vec3.h"

namespace myo_core {

struct DebugData {
  std::vector<float> lines_;        // 6 per line: start x, y, z, end x, y, z, world space
  std::vector<float> line_values_;  // one per line, 0 to 1, where a feature writes them
  std::vector<float> discs_;        // 7 per disc: position, normal, value
  float color_[4] = {1.0f, 0.0f, 0.0f, 1.0f};
  float width_ = 3.0f;              // pixels
  bool enabled_ = false;            // the node's "debug"
};

// A line no longer than this is not drawn.
constexpr float kShortestDebugLine = 0.003f;

// Stores the colour (alpha 1) and the width of an update and empties the
// lines and their values, ready for one feature's builder.
inline void ResetDebugData(DebugData& data, const float color[3], float width) {
  for (int k = 0; k < 3; ++k) data.color_[k] = color[k];
  data.color_[3] = 1.0f;
  data.width_ = width;
  data.lines_.clear();
  data.line_values_.clear();
}

// The point of a solver in world space: through `world` when the solver runs
// in the object space of a transformed mesh.
inline Vec3 DebugPoint(Vec3 point, bool has_transform, const Matrix& world) {
  return has_transform ? TransformPoint(point, world) : point;
}

}  // namespace myo_core
