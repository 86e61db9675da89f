#include "core/debug/muscle_debug.h"

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
  for (int k = 0; k < 3; ++k) data.color_[k] = color[k];
  data.color_[3] = 1.0f;
  data.width_ = width;
  solver.debug_fibers_scale_ = fibers_scale < 0.001f ? 0.001f : fibers_scale;
  data.lines_.clear();
  data.line_values_.clear();
  solver.fiber_line_offsets_.clear();
  if (positions.size() != 3 * static_cast<std::size_t>(solver.point_count_)) return;
  if (feature == kDebugMuscleFibers)
    DebugFiberLines(*solver.edge_constraints_, FiberFrame(solver, positions.data()), data,
                    solver.fiber_line_offsets_);
}

void UpdateMuscleVertexFiber(MuscleFamilySolver& solver, uint32_t vertex) {
  if (solver.positions_.size() != 3 * static_cast<std::size_t>(solver.point_count_)) return;
  UpdateVertexFiber(vertex, *solver.edge_constraints_, FiberFrame(solver, solver.positions_.data()),
                    solver.fiber_line_offsets_, solver.debug_data_);
}

}  // namespace myo_core
