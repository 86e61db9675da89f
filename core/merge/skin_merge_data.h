#pragma once
// The skin merge's record: each point of the merged mesh bound to one vertex
// of a simulated source and one of an animated source, and the flat arrays a
// frame blends them from.

#include <cstdint>
#include <vector>

#include "core/math/matrix.h"

namespace myo_core {

struct SkinMergeData {
  // N points of the merged mesh, S simulated and A animated sources.
  std::vector<float> merge_weights_;    // N, the deformer's own weights, within 0 and 1
  std::vector<float> blend_weights_;    // N, map "blend", within 0 and 1: 0 animated, 1 simulated
  std::vector<float> bind_positions_;   // 3N, object space at binding
  std::vector<float> merge_positions_;  // 3N, the result; empty until bound
  std::vector<float> sim_positions_;    // points of all simulated sources, one after the other
  std::vector<float> anim_positions_;   // likewise for the animated sources
  uint32_t point_count_ = 0;            // N
  std::vector<uint32_t> sim_sources_;   // N, which simulated source holds the bound vertex
  std::vector<uint32_t> anim_sources_;  // N
  std::vector<uint32_t> sim_vertices_;  // N, bound vertex of that source
  std::vector<uint32_t> anim_vertices_; // N
  std::vector<uint32_t> sim_offsets_;   // S, float index in sim_positions_ where a source starts
  std::vector<uint32_t> anim_offsets_;  // A
  std::vector<bool> sim_transformed_;   // S, the source's matrix is not the identity
  std::vector<bool> anim_transformed_;  // A
  std::vector<Matrix> sim_matrices_;    // S, "simWorldMatrix" of each source
  std::vector<Matrix> anim_matrices_;   // A, "animWorldMatrix" of each source
  Matrix world_matrix_ = IdentityMatrix();          // local to world of the merged mesh
  Matrix world_matrix_inverse_ = IdentityMatrix();  // its inverse
};

// The arrays of one kind of source, so that binding and reading are written
// once for both kinds.
struct MergeSourceArrays {
  std::vector<float>& positions;
  std::vector<uint32_t>& sources;
  std::vector<uint32_t>& vertices;
  std::vector<uint32_t>& offsets;
  std::vector<bool>& transformed;
  std::vector<Matrix>& matrices;
};

MergeSourceArrays SimulatedArrays(SkinMergeData& data);
MergeSourceArrays AnimatedArrays(SkinMergeData& data);

// For every point i, in parallel: r = a (1 - b) + s b from its bound
// animated vertex a and simulated vertex s (each through its source's matrix
// when that is not the identity), r back through the inverse world matrix
// when that is not the identity, and merge_positions_[i] =
// (1 - w) bind + w r. A point whose bound vertex lies outside its source's
// array (a source that lost points since binding) keeps its bind position.
void BlendSkinMerge(SkinMergeData& data);

}  // namespace myo_core
