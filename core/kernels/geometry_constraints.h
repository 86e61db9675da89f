#pragma once
// Attachments to and slides on target meshes. Rows are targets times N,
// target-major. The kernels, the target meshes and the builder come with the
// target support.

#include <cstdint>
#include <vector>

#include "core/kernels/constraint_group.h"

namespace myo_core {

struct AttachmentToGeoConstraints : ConstraintGroup {
  // inverse_masses_: T N.
  std::vector<int32_t> faces_;               // T N, polygon of the anchor
  std::vector<int32_t> triangle_vertices_;   // 3 T N
  std::vector<float> bary_u_;                // T N
  std::vector<float> bary_v_;                // T N
  std::vector<float> distances_;             // T N, from the surface at rest
  std::vector<float> local_offsets_;         // 3 T N, in the triangle frame at rest
  std::vector<float> anchors_;               // 3 T N, anchor at rest
  bool hard_ = false;                        // attribute "hardAttachments"
};

struct SlideOnGeometryConstraints : ConstraintGroup {
  // inverse_masses_: T N.
  std::vector<int32_t> triangle_vertices_;   // 3 T N, closest triangle at rest
  std::vector<int32_t> faces_;               // T N
  std::vector<float> distances_;             // T N, distance to keep
  std::vector<float> closest_points_;        // 3 T N, current closest point
  std::vector<int32_t> candidates_;          // candidate triangles of all rows
  std::vector<int32_t> candidate_counts_;    // T N
  std::vector<int32_t> candidate_offsets_;   // T N
  std::vector<uint16_t> row_flags_;          // T N, 1 = inert in this step
};

}  // namespace myo_core
