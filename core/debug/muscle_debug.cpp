#include "core/debug/muscle_debug.h"

#include "core/debug/constraint_lines.h"
#include "core/debug/debug_features.h"
#include "core/debug/fiber_lines.h"

namespace myo_core {

namespace {

FiberLineFrame FiberFrame(const MuscleFamilySolver& solver, const float* positions) {
  FiberLineFrame frame;
  frame.positions = positions;
  frame.point_count = solver.point_count_;
  frame.scale = solver.edge_constraints_->fibers_scale_ * solver.debug_fibers_scale_;
  frame.has_transform = !IsIdentity(solver.world_matrix_);
  frame.world = solver.world_matrix_;
  return frame;
}

}  // namespace

void UpdateMuscleDebugData(MuscleFamilySolver& solver, const std::vector<float>& positions, int32_t feature,
                           const float color[3], float width, float fibers_scale) {
  DebugData& data = solver.debug_data_;
  ResetDebugData(data, color, width);
  solver.debug_fibers_scale_ = fibers_scale < 0.001f ? 0.001f : fibers_scale;
  solver.fiber_line_offsets_.clear();
  if (positions.size() != 3 * static_cast<std::size_t>(solver.point_count_)) return;
  const DebugLineFrame frame{positions.data(), solver.point_count_, !IsIdentity(solver.world_matrix_),
                             solver.world_matrix_};
  switch (feature) {
    case kDebugAttachmentsToGeometry:
      DebugAttachmentToGeoLines(*solver.attachment_to_geo_constraints_, solver.targets_, frame, data);
      break;
    case kDebugAttachmentsToTransform: DebugAttachmentLines(*solver.attachment_constraints_, frame, data); break;
    case kDebugFibers:
      DebugFiberLines(*solver.edge_constraints_, FiberFrame(solver, positions.data()), data,
                      solver.fiber_line_offsets_);
      break;
    case kDebugShapePreservation: DebugShapeLines(*solver.shape_constraints_, frame, data); break;
    case kDebugSlideOnGeometry:
      DebugSlideGeoLines(*solver.slide_on_geometry_constraints_, static_cast<uint32_t>(solver.targets_.size()),
                         frame, data);
      break;
    case kDebugSlideOnSegment: DebugSlideSegmentLines(*solver.slide_on_segment_constraints_, frame, data); break;
    default: break;
  }
}

void UpdateMuscleVertexFiber(MuscleFamilySolver& solver, uint32_t vertex) {
  if (solver.positions_.size() != 3 * static_cast<std::size_t>(solver.point_count_)) return;
  UpdateVertexFiber(vertex, *solver.edge_constraints_, FiberFrame(solver, solver.positions_.data()),
                    solver.fiber_line_offsets_, solver.debug_data_);
}

}  // namespace myo_core
