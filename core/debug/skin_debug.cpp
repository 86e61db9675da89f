#include "core/debug/skin_debug.h"

#include "core/debug/constraint_lines.h"
#include "core/debug/debug_features.h"

namespace myo_core {

void UpdateSkinDebugData(SkinSolver& solver, const std::vector<float>& positions, int32_t feature,
                         const float color[3], float width) {
  DebugData& data = solver.debug_data_;
  ResetDebugData(data, color, width);
  if (positions.size() != 3 * static_cast<std::size_t>(solver.point_count_)) return;
  const DebugLineFrame frame{positions.data(), solver.point_count_, !IsIdentity(solver.world_matrix_),
                             solver.world_matrix_};
  const UberConstraints& uber = *solver.uber_constraints_;
  switch (feature) {
    case kDebugHardConstraints:
    case kDebugSlideConstraints:
    case kDebugSoftConstraints: DebugUberLines(uber, feature, frame, data); break;
    case kDebugShapePreservation: DebugShapeLines(*solver.shape_constraints_, frame, data); break;
    case kDebugSlidingSurface: DebugSurfaceLines(uber.sliding_edges_, uber.reference_positions_, data); break;
    default: break;
  }
}

}  // namespace myo_core
