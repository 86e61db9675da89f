#pragma once
// Attachments of points to animated matrices. Rows are sets times N,
// set-major. The kernels and the builder come with the bone attachments.

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"
#include "core/math/matrix.h"

namespace myo_core {

struct AttachmentConstraints : ConstraintGroup {
  // inverse_masses_: A N, map value, over the mass unless hard_.
  std::vector<Matrix> matrices_;         // A, updated each frame
  std::vector<uint16_t> row_flags_;      // A N, 1 = inert row
  std::vector<float> local_positions_;   // 3 A N, point in the matrix frame at rest
  bool hard_ = false;                    // attribute "hardAttachments"

  uint32_t SetCount() const { return static_cast<uint32_t>(matrices_.size()); }
};

}  // namespace myo_core
