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
  std::vector<float> gradients_;      // 3N scratch of the kernel, owned so a step allocates nothing
};

// Six times the signed volume: sum over triangles of (a x b) . c.
float SixTimesVolume(const std::vector<int32_t>& triangles, const float* positions);

// C = V - rest ratio, with V the sum above. Gradient per point: the sum of
// the cross products of the two other corners of its triangles. The solver's
// compliance; the displacement alone is scaled by the preservation.
// gradients: 3N scratch, zeroed here.
void SolveVolumeConstraint(uint32_t lambda_row, float rest_volume, float preservation, float ratio,
                           float compliance, const std::vector<float>& inverse_masses,
                           const std::vector<int32_t>& triangles, std::vector<float>& positions,
                           std::vector<float>& lambdas, std::vector<float>& gradients);

// Fills the row from the rest positions and appends it to lambdas.
void BuildVolumeConstraint(const std::vector<int32_t>& triangles, const std::vector<float>& positions,
                           uint32_t point_count, std::vector<float>& lambdas, VolumeConstraint& volume);

}  // namespace myo_core
