#include "core/solver/muscle_solver.h"

#include <algorithm>

#include "core/solver/solver_stages.h"
#include "core/solver/stop_request.h"

namespace myo_core {

void StepMuscleFamily(MuscleFamilySolver& solver, VolumeConstraint* volume) {
  BeginStep(solver);
  // Rows that meet world-space matrices carry points through the world matrix
  // unless it is exactly the identity.
  const bool has_transform = !IsIdentity(solver.world_matrix_);

  EdgeConstraints& edges = *solver.edge_constraints_;
  PrepareEdgeRows(edges, ClampRestActivation(edges.rest_activation_));
  PrepareShapeRows(*solver.shape_constraints_);
  PrepareSlideOnSegmentRows(*solver.slide_on_segment_constraints_, solver.point_count_);
  float* positions = solver.positions_.data();
  float* lambdas = solver.lambdas_.data();
  AttachmentToGeoConstraints& attachments_to_geo = *solver.attachment_to_geo_constraints_;
  SlideOnGeometryConstraints& slides_on_geo = *solver.slide_on_geometry_constraints_;
  const uint32_t target_count = static_cast<uint32_t>(solver.targets_.size());
  // The closest points on the targets: once per step (Fast) or at the start
  // of every iteration (Quality).
  const bool closest_points_per_iteration = solver.sliding_constraints_mode_ == kSlidingQuality;
  if (solver.sliding_constraints_mode_ == kSlidingFast)
    UpdateClosestPoints(solver.positions_, solver.world_matrix_, solver.targets_, slides_on_geo);

  for (uint32_t iteration = 0; iteration < solver.iterations_ && !StopRequested(); ++iteration) {
    if (closest_points_per_iteration)
      UpdateClosestPoints(solver.positions_, solver.world_matrix_, solver.targets_, slides_on_geo);
    SolveEdgeRows(edges, solver.compliance_, positions, lambdas);
    SolveShapeRows(*solver.shape_constraints_, positions, lambdas);
    SolveSlideOnSegmentRows(*solver.slide_on_segment_constraints_, solver.point_count_, solver.compliance_,
                            has_transform, solver.world_matrix_, solver.world_matrix_inverse_, positions, lambdas);
    SolveAttachmentRows(*solver.attachment_constraints_, solver.point_count_, solver.compliance_, has_transform,
                        solver.world_matrix_, solver.world_matrix_inverse_, positions, lambdas);
    SolveAttachmentToGeoRows(attachments_to_geo, solver.targets_, solver.point_count_, solver.compliance_,
                             has_transform, solver.world_matrix_, solver.world_matrix_inverse_, positions, lambdas);
    SolveSlideOnGeometryRows(slides_on_geo, target_count, solver.point_count_, solver.compliance_, has_transform,
                             solver.world_matrix_, solver.world_matrix_inverse_, positions, lambdas);
    if (volume != nullptr && !volume->triangles_.empty())
      SolveVolumeConstraint(*volume, solver.compliance_, solver.positions_, solver.lambdas_);
  }

  EndStep(solver);
}

}  // namespace myo_core
