#pragma once
// The one global volume row of a closed muscle.

#include <cmath>
#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/math/vec3.h"

namespace myo_core {

// A part of a point's gradient from a triangle of a later run of triangles
// than the point's first.
struct LateGradient {
  uint32_t point;
  Vec3 gradient;
};

struct VolumeConstraint : ConstraintGroup {
  // inverse_masses_: N, 1 / mass of each point.
  float rest_volume_ = 0.0f;          // six times the signed volume at rest
  float volume_preservation_ = 1.0f;  // attribute "volumePreservation"
  float volume_ratio_ = 1.0f;         // attribute "volumeRatio"
  std::vector<int32_t> triangles_;    // 3T, a copy of the mesh triangulation
  // The first corner (3 t + k) of each point in triangle order, so that the
  // threads know which of them adds up a point's gradient.
  std::vector<uint32_t> point_first_corners_;  // N
  // Triangles of the threads' runs with a point that an earlier run adds
  // up, for a team of late_triangles_team_ threads (0: none listed).
  std::vector<uint32_t> late_triangles_;
  int late_triangles_team_ = 0;
  // Scratch of the kernel, owned so that a step allocates nothing once sized.
  std::vector<float> gradients_;                           // 3N, gradient of each point
  std::vector<std::vector<LateGradient>> late_gradients_;  // per run: parts for points of earlier runs
};

// Six times the signed volume: sum over triangles of (a x b) . c.
float SixTimesVolume(const std::vector<int32_t>& triangles, const float* positions);

// C = V - rest ratio, with V the sum above. Gradient per point: the sum of
// the cross products of the two other corners of its triangles. The solver's
// compliance; the displacement alone is scaled by the preservation. On
// large meshes one thread adds up the volume while the others form the
// gradients; the gradients and the two sums (volume and weighted gradient
// norm) are added in triangle and point order all the same, so the result
// is that of one thread.
void SolveVolumeConstraint(VolumeConstraint& volume, float compliance, std::vector<float>& positions,
                           std::vector<float>& lambdas);

// Fills the row from the rest positions and appends it to lambdas; lists
// the corners of each of point_count points.
void BuildVolumeConstraint(const std::vector<int32_t>& triangles, const std::vector<float>& positions,
                           uint32_t point_count, std::vector<float>& lambdas, VolumeConstraint& volume);

}  // namespace myo_core
