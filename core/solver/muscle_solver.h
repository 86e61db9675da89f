#pragma once
// The muscle family: the closed muscle and the ribbon (an open sheet without
// the volume row) share their groups, their step and their assembly.

#include <cstdint>
#include <memory>
#include <vector>

#include "core/debug/debug_data.h"
#include "core/kernels/attachment_constraints.h"
#include "core/kernels/edge_constraints.h"
#include "core/kernels/geometry_constraints.h"
#include "core/kernels/shape_constraints.h"
#include "core/kernels/slide_on_segment_constraints.h"
#include "core/kernels/target_mesh.h"
#include "core/kernels/volume_constraint.h"
#include "core/solver/solver_data.h"

namespace myo_core {

enum SlidingConstraintsMode : int32_t { kSlidingFast = 0, kSlidingQuality = 1 };

// SolverData followed by the groups that the muscle and the ribbon share.
struct MuscleFamilySolver : SolverData {
  std::vector<TargetMesh> targets_;  // T, the connected target meshes in order of connection

  // Groups, in the order their rows stand in lambdas_ after assembly: edges,
  // shape, attachments, slide on segment, attachments to geometry, slide on
  // geometry, volume.
  std::unique_ptr<EdgeConstraints> edge_constraints_ = std::make_unique<EdgeConstraints>();
  std::unique_ptr<ShapeConstraints> shape_constraints_ = std::make_unique<ShapeConstraints>();
  std::unique_ptr<AttachmentConstraints> attachment_constraints_ = std::make_unique<AttachmentConstraints>();
  std::unique_ptr<SlideOnSegmentConstraints> slide_on_segment_constraints_ =
      std::make_unique<SlideOnSegmentConstraints>();
  std::unique_ptr<AttachmentToGeoConstraints> attachment_to_geo_constraints_ =
      std::make_unique<AttachmentToGeoConstraints>();
  std::unique_ptr<SlideOnGeometryConstraints> slide_on_geometry_constraints_ =
      std::make_unique<SlideOnGeometryConstraints>();
  int32_t sliding_constraints_mode_ = kSlidingFast;

  // Debug features: the record a host draws, and what the fiber lines of
  // the last update were made with, so that a painted fiber can redraw its
  // own line.
  DebugData debug_data_;
  float debug_fibers_scale_ = 1.0f;          // "debugFibersScale" of the last update
  std::vector<int32_t> fiber_line_offsets_;  // N while fibers are shown: each vertex's line, -1 for none
};

// The closed muscle: the family's groups and the volume row, whose
// multiplier comes last in lambdas_.
struct MuscleSolver : MuscleFamilySolver {
  std::unique_ptr<VolumeConstraint> volume_constraint_ = std::make_unique<VolumeConstraint>();
};

// The ribbon muscle: no volume row, and masses by density read the area.
struct RibbonMuscleSolver : MuscleFamilySolver {
  RibbonMuscleSolver() { mesh_dimension_ = 1; }
};

// One simulation step: attenuation, damping, prediction, the constraint rows
// iterations_ times in Gauss-Seidel order, velocity update, then the
// multipliers are cleared and the state becomes the previous state. The
// volume row runs last in each iteration when `volume` is given.
void StepMuscleFamily(MuscleFamilySolver& solver, VolumeConstraint* volume);
inline void Step(MuscleSolver& solver) { StepMuscleFamily(solver, solver.volume_constraint_.get()); }
inline void Step(RibbonMuscleSolver& solver) { StepMuscleFamily(solver, nullptr); }

// The rest activation that the edge rows divide by, capped below 1.
inline float ClampRestActivation(float rest_activation) {
  return rest_activation > 0.999f ? 0.999f : rest_activation;
}

}  // namespace myo_core
