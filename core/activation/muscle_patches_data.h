#pragma once
// What a shape solver keeps for its per-point activation: the muscle patches
// file last loaded, the flattened ring neighbourhoods built from it, the rest
// and deform shapes, the activations themselves, and what the "Muscle
// Fibers" debug feature shows of the patches. Owned by the solver; the
// activation functions read and write it (core/activation/).

#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

// Values of the attribute "activationMode".
constexpr int32_t kActivationMusclePatches = 0;
constexpr int32_t kActivationPlugValues = 1;
constexpr int32_t kActivationNone = 2;

struct MusclePatchesData {
  // N points, P patch fibers, S entries in all ring neighbourhoods.

  // The file, loaded at initialisation (InitMuscleData).
  std::string muscles_file_;             // the path last loaded
  bool patches_loaded_ = false;          // the last load was accepted
  int32_t smoothing_rings_ = 1;          // the rings the smoothing arrays were built for
  std::vector<int32_t> patch_ids_;       // N, as read: 1-based, -1 outside every patch
  std::vector<float> patch_fibers_;      // 3P as read (a trailing partial triple is ignored)

  // Each point's ring neighbourhood as the patch ids of its points, the
  // point itself first (BuildSmoothingArrays).
  std::vector<int32_t> smoothing_counts_;     // N, entries of each point's list
  std::vector<int32_t> smoothing_patch_ids_;  // S, the lists one after the other in point order

  // Shapes, object space.
  std::vector<float> rest_positions_;    // 3N, read at initialisation by the solver
  std::vector<float> deform_positions_;  // 3N, the deform mesh, read anew each time

  // The result: 0 to 1 per point, kept between frames (the next frame's sum
  // starts from it).
  std::vector<float> activations_;       // N

  // "Muscle Fibers" debug feature (InitMuscleData).
  std::vector<float> vertex_fibers_;     // 3N, projected fiber of each point, display length
  std::vector<float> fiber_bary_u_;      // N, barycentric weight of the tip's triangle's first corner
  std::vector<float> fiber_bary_v_;      // N, of its second corner
  std::vector<int32_t> fiber_triangles_; // 3N, corners of the tip's triangle; 0s when degenerate
  float shortest_edge_ = 0.0f;           // shortest edge of the rest mesh, object space
  float fibers_scale_ = 1.0f;            // "debugMuscleFibersScale" at initialisation

  uint32_t PatchCount() const { return static_cast<uint32_t>(patch_fibers_.size() / 3); }
};

// Empties the arrays of the "Muscle Fibers" debug feature.
inline void ClearFiberDebugData(MusclePatchesData& data) {
  data.vertex_fibers_.clear();
  data.fiber_bary_u_.clear();
  data.fiber_bary_v_.clear();
  data.fiber_triangles_.clear();
}

}  // namespace myo_core
