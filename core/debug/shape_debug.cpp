#include "core/debug/shape_debug.h"

#include "core/debug/constraint_lines.h"
#include "core/debug/debug_features.h"
#include "core/debug/fiber_lines.h"

namespace myo_core {

void UpdateShapeDebugData(SimshapeSolver& solver, const std::vector<float>& positions, int32_t feature,
                          const float color[3], float width, float fibers_scale) {
  DebugData& data = solver.debug_data_;
  ResetDebugData(data, color, width);
  if (positions.size() != 3 * static_cast<std::size_t>(solver.point_count_)) return;
  const bool has_transform = !IsIdentity(solver.world_matrix_);
  const DebugLineFrame frame{positions.data(), solver.point_count_, has_transform, solver.world_matrix_};
  const SlideCollisionConstraints* collision = solver.slide_collision_constraints_.get();
  switch (feature) {
    case kDebugFibers: {
      FiberLineFrame fibers;
      fibers.positions = positions.data();
      fibers.point_count = solver.point_count_;
      fibers.scale = solver.fibers_scale_ * (fibers_scale < 0.001f ? 0.001f : fibers_scale);
      fibers.has_transform = has_transform;
      fibers.world = solver.world_matrix_;
      std::vector<int32_t> offsets;
      DebugFiberLines(static_cast<const MusclePatchesData&>(solver), fibers, data, offsets);
      break;
    }
    case kDebugShapePreservation: DebugShapeLines(*solver.shape_constraints_, frame, data); break;
    case kDebugSlideCollision:
      if (collision != nullptr) DebugSlideCollisionLines(*collision, frame, data);
      break;
    case kDebugSlidingSurface:
      if (collision != nullptr) DebugSurfaceLines(collision->sliding_edges_, collision->collider_positions_, data);
      break;
    default: break;
  }
}

}  // namespace myo_core
