#pragma once
// The shape solver: a mesh free to jiggle, pulled point by point towards an
// animated target by a blend of its predicted positions (the attraction),
// kept in shape by distance rows along its edges and shape preservation
// rows, and, with a collider, kept off it by one slide collision row per
// point.

#include <cstdint>
#include <memory>
#include <vector>

#include "core/activation/muscle_patches_data.h"
#include "core/debug/debug_data.h"
#include "core/kernels/distance_constraints.h"
#include "core/kernels/shape_constraints.h"
#include "core/kernels/slide_collision_constraints.h"
#include "core/solver/point_blocks.h"
#include "core/solver/solver_data.h"

namespace myo_core {

// The activation's state (patches file, rings, rest and deform shapes,
// activations_) is the solver's own, so that the activation functions work on
// it as MusclePatchesData.
struct SimshapeSolver : SolverData, MusclePatchesData {
  SimshapeSolver() { SetSurfaceMassDefaults(*this); }

  // Groups, in the order their rows stand in lambdas_ after assembly.
  std::unique_ptr<DistanceConstraints> distance_constraints_ = std::make_unique<DistanceConstraints>();
  std::unique_ptr<ShapeConstraints> shape_constraints_ = std::make_unique<ShapeConstraints>();
  // Present only while a usable collider was connected at the last initialisation.
  std::unique_ptr<SlideCollisionConstraints> slide_collision_constraints_;

  std::vector<float> attraction_targets_;  // 3N, the target of this step, object space

  // Attraction: attraction_ = remap(clamp(multiplier force) blended towards 1
  // by the activation), recomputed every step.
  std::vector<float> attract_forces_;  // N, map "attractForce", default 1
  std::vector<float> attraction_;      // N, 0 to 1, this step
  float attraction_multiplier_ = 1.0f; // "attractionMultiplier"
  int32_t attraction_remap_mode_ = 3;  // "attractionRemapMode": 0 linear, 1 log, 2 square root, 3 cube root

  // The remap of each point's last value before the remap: a point whose
  // value has not changed takes its remap from here (a power or a logarithm
  // per point is the attraction's whole cost, and painted forces and
  // activations mostly hold still). Each pair is the remap of its own value
  // in `remap_mode`, so it never goes stale; not part of a saved state.
  struct AttractionRemapMemo {
    std::vector<uint32_t> value_bits;  // N, bits of the value before the remap
    std::vector<float> remapped;       // N, its remap
    int32_t remap_mode = -1;           // the mode of every pair; -1: no pairs
  } attraction_remap_memo_;

  // The points cut into one block per thread at assembly, for the collision rows.
  PointBlocks point_blocks_;
  bool compute_collisions_ = true;  // "computeCollisions"

  DebugData debug_data_;
};

// attraction_[i] for every point, in this order: a = multiplier * force,
// clamped to [0, 1]; a = min(1, (1 - a) activation + a); then the remap of
// attraction_remap_mode_: 1 ln(K a + 1) with K = e - 1, 2 and 3 a^(1 / mode)
// in double rounded to float, any other mode a itself.
void ComputeAttraction(SimshapeSolver& solver);

// p += (target - p) * attraction_[i] for every point, in object space.
void ApplyAttraction(SimshapeSolver& solver);

// Whether a step runs the collision rows: the group exists, was bound, and
// "computeCollisions" is on.
bool CollisionsActive(const SimshapeSolver& solver);

// One step: attenuation, damping and prediction; the attraction computed and
// applied; with collisions, one search of the closest collider points; then
// per iteration the distance rows (an edge with both ends at attraction 1 is
// skipped), the shape rows and, over the point blocks, the collision rows of
// the points below attraction 1; last the velocities, multipliers back to 0
// and this step kept as the previous one.
void StepSimshape(SimshapeSolver& solver);

}  // namespace myo_core
