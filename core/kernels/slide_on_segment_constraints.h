#pragma once
// Points sliding along the segment between two animated matrices. Rows are
// segments times N, set-major. The kernels and the builder come with the bone
// attachments.

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/math/matrix.h"

namespace myo_core {

struct SlideOnSegmentConstraints : ConstraintGroup {
  // inverse_masses_: S N, map value over the mass.
  std::vector<Matrix> matrices_;              // 2S, root at 2s, tip at 2s + 1
  std::vector<float> radii_;                  // S N, distance from the segment at rest
  std::vector<float> closest_points_;         // 3 S N, written by the kernel
  std::vector<float> reference_directions_;   // 3S, in the root's rotation frame
  std::vector<float> rotations_;              // 4 S N, axis and angle per row
  bool initialised_ = false;                  // set at the end of a full build

  uint32_t SetCount() const { return static_cast<uint32_t>(matrices_.size() / 2); }
};

}  // namespace myo_core
