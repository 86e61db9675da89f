#pragma once
// The one global volume row of a closed muscle.

#include <cmath>
#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/math/vec3.h"

namespace myo_core {

struct VolumeConstraint : ConstraintGroup {
  // inverse_masses_: N, 1 / mass of each point.
  float rest_volume_ = 0.0f;          // six times the signed volume at rest
  float volume_preservation_ = 1.0f;  // attribute "volumePreservation"
  float volume_ratio_ = 1.0f;         // attribute "volumeRatio"
  std::vector<int32_t> triangles_;    // 3T, a copy of the mesh triangulation
  // The corners (3 t + k) of the triangles of each point, in triangle order,
  // so that each point's gradient is summed on its own, in that order.
  std::vector<uint32_t> point_corner_offsets_;  // N + 1, ranges into point_corners_
  std::vector<uint32_t> point_corners_;         // 3T
  // Scratch of the kernel, owned so that a step allocates nothing.
  std::vector<float> gradients_;  // 3N, gradient of each point
  std::vector<float> terms_;      // max(T, N): the volume term of each triangle, then the weighted norm of each point
};

// Six times the signed volume: sum over triangles of (a x b) . c.
float SixTimesVolume(const std::vector<int32_t>& triangles, const float* positions);

// C = V - rest ratio, with V the sum above. Gradient per point: the sum of
// the cross products of the two other corners of its triangles. The solver's
// compliance; the displacement alone is scaled by the preservation. Triangle
// and point terms are formed over the threads, and the two sums (volume and
// weighted gradient norm) are added in triangle and point order, so the
// result is that of one thread. Needs the corners of BuildVolumeConstraint.
void SolveVolumeConstraint(VolumeConstraint& volume, float compliance, std::vector<float>& positions,
                           std::vector<float>& lambdas);

// Fills the row from the rest positions and appends it to lambdas; lists
// the corners of each of point_count points.
void BuildVolumeConstraint(const std::vector<int32_t>& triangles, const std::vector<float>& positions,
                           uint32_t point_count, std::vector<float>& lambdas, VolumeConstraint& volume);

}  // namespace myo_core
