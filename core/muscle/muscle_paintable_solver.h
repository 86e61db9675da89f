#pragma once
// The paint surface of the muscle and ribbon muscle deformers: where each of
// their maps lives, their influences, and the painted fiber's projection.

#include "core/muscle/muscle_deformer.h"
#include "core/paint/paintable_deformer.h"

namespace myo_core {

template <class Solver>
class MusclePaintableSolver : public PaintableSolver {
 public:
  explicit MusclePaintableSolver(MuscleFamilyDeformer<Solver>& deformer) : deformer_(deformer) {}

  const std::vector<WeightMapInfo>& WeightMaps() const override { return MuscleWeightMaps(); }
  const char* TypeName() const override;
  std::vector<float>* LiveArray(int32_t weights_type) override;
  uint32_t SolverInfluences(InfluenceKind kind) override;
  uint32_t PointCount() override { return deformer_.solver().point_count_; }
  bool IsEmpty() override { return deformer_.solver().positions_.empty(); }
  VertexNeighborsView Neighbors() override;
  void ProjectVertexFiber(uint32_t vertex, float direction[3]) override;
  void UpdateVertexFiber(uint32_t vertex) override;
  void SetConsolidateFibers(bool flag) override { deformer_.node().consolidate_fibers_ = flag; }

 private:
  MuscleFamilyDeformer<Solver>& deformer_;
};

}  // namespace myo_core
