#pragma once
// The measure of a closed mesh for density masses.

#include <cstdint>
#include <vector>

#include "core/math/vec3.h"

namespace myo_core {

// Signed sum of the tetrahedra from `outside` to each triangle: a triangle
// whose outward side faces away from `outside` adds, one facing it subtracts,
// and one whose plane passes through `outside` counts nothing. Positive for a
// closed mesh with outward-facing triangles. positions: 3N; triangles: 3T.
float MeshVolume(const std::vector<float>& positions, const std::vector<int32_t>& triangles, Vec3 outside);

}  // namespace myo_core
