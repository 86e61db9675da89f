#include "core/muscle/muscle_paintable_solver.h"

#include "core/debug/muscle_debug.h"
#include "core/kernels/edge_constraints_build.h"
#include "core/plugin/registration_table.h"

namespace myo_core {

template <class Solver>
const char* MusclePaintableSolver<Solver>::TypeName() const {
  return std::is_same_v<Solver, MuscleSolver> ? kMyoMuscleTypeName : kMyoRibbonMuscleTypeName;
}

template <class Solver>
std::vector<float>* MusclePaintableSolver<Solver>::LiveArray(int32_t weights_type) {
  MuscleNodeState& node = deformer_.node();
  Solver& solver = deformer_.solver();
  EdgeConstraints* edges = solver.edge_constraints_.get();
  switch (weights_type) {
    case kWeightsAttachmentsToTransform: return &node.attachment_map_;
    case kWeightsTendons: return edges == nullptr ? nullptr : &edges->tendons_;
    case kWeightsFibers: return edges == nullptr ? nullptr : &edges->fibers_;
    case kWeightsCompressionResistance: return &node.compression_map_;
    case kWeightsStretchingResistance: return &node.stretching_map_;
    case kWeightsGlobalDamping: return &solver.damping_weights_;
    case kWeightsSlidingDistanceMultiplier: return &node.max_sliding_map_;
    case kWeightsMasses: return &node.masses_map_;
    case kWeightsSlideOnSegment: return &node.slide_on_segment_map_;
    case kWeightsAttachmentsToGeometry: return &node.attachment_to_geo_map_;
    case kWeightsSlideOnGeometry: return &node.slide_on_geometry_map_;
    case kWeightsShapePreservation: return &node.shape_map_;
    default: return nullptr;
  }
}

template <class Solver>
uint32_t MusclePaintableSolver<Solver>::SolverInfluences(InfluenceKind kind) {
  Solver& solver = deformer_.solver();
  switch (kind) {
    case InfluenceKind::kAttachments:
      return solver.attachment_constraints_ == nullptr
                 ? 0
                 : static_cast<uint32_t>(solver.attachment_constraints_->matrices_.size());
    case InfluenceKind::kSegments:
      return solver.slide_on_segment_constraints_ == nullptr
                 ? 0
                 : static_cast<uint32_t>(solver.slide_on_segment_constraints_->matrices_.size() / 2);
    case InfluenceKind::kTargets: return static_cast<uint32_t>(solver.targets_.size());
    case InfluenceKind::kNone: break;
  }
  return 0;
}

template <class Solver>
VertexNeighborsView MusclePaintableSolver<Solver>::Neighbors() {
  const MuscleNodeState& node = deformer_.node();
  return {&node.vertex_neighbor_offsets_, &node.vertex_neighbor_counts_, &node.vertex_neighbors_};
}

template <class Solver>
void MusclePaintableSolver<Solver>::ProjectVertexFiber(uint32_t vertex, float direction[3]) {
  Solver& solver = deformer_.solver();
  EdgeConstraints* edges = solver.edge_constraints_.get();
  // The tables of a solver that is not built yet are empty.
  if (edges == nullptr || vertex >= solver.point_count_ || 3 * static_cast<size_t>(vertex) + 2 >= edges->fibers_.size() ||
      vertex >= edges->fiber_bary_u_.size() || vertex >= edges->fiber_bary_v_.size() ||
      3 * static_cast<size_t>(vertex) + 2 >= edges->fiber_triangles_.size() ||
      3 * static_cast<size_t>(vertex) + 2 >= solver.positions_.size())
    return;
  myo_core::ProjectVertexFiber(vertex, direction, deformer_.node(), solver, *edges);
}

template <class Solver>
void MusclePaintableSolver<Solver>::UpdateVertexFiber(uint32_t vertex) {
  UpdateMuscleVertexFiber(deformer_.solver(), vertex);
}

template class MusclePaintableSolver<MuscleSolver>;
template class MusclePaintableSolver<RibbonMuscleSolver>;

}  // namespace myo_core
