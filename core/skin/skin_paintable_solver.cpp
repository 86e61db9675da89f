#include "core/skin/skin_paintable_solver.h"

#include "core/plugin/registration_table.h"

namespace myo_core {

const char* SkinPaintableSolver::TypeName() const { return kMyoSkinTypeName; }

std::vector<float>* SkinPaintableSolver::LiveArray(int32_t weights_type) {
  SkinSolver& solver = deformer_.solver();
  SkinNodeState& node = deformer_.node();
  UberConstraints* uber = solver.uber_constraints_.get();
  switch (weights_type) {
    case kWeightsHardConstraints: return uber == nullptr ? nullptr : &uber->hard_weights_;
    case kWeightsSoftConstraints: return uber == nullptr ? nullptr : &uber->soft_weights_;
    case kWeightsSlideConstraints: return uber == nullptr ? nullptr : &uber->slide_weights_;
    case kWeightsCompressionResistance: return &node.compression_map_;
    case kWeightsStretchingResistance: return &node.stretching_map_;
    case kWeightsGlobalDamping: return &solver.damping_weights_;
    case kWeightsSlidingDistanceMultiplier: return &node.max_sliding_map_;
    case kWeightsMasses: return &node.masses_map_;
    case kWeightsShapePreservation: return &node.shape_map_;
    default: return nullptr;
  }
}

VertexNeighborsView SkinPaintableSolver::Neighbors() {
  const SkinNodeState& node = deformer_.node();
  return {&node.vertex_neighbor_offsets_, &node.vertex_neighbor_counts_, &node.vertex_neighbors_};
}

}  // namespace myo_core
