#pragma once
// The paint surface of the skin deformer: where each of its maps lives. It
// has no multi-influence map and no fibers.

#include "core/paint/paintable_deformer.h"
#include "core/skin/skin_deformer.h"

namespace myo_core {

class SkinPaintableSolver : public PaintableSolver {
 public:
  explicit SkinPaintableSolver(SkinDeformer& deformer) : deformer_(deformer) {}

  const std::vector<WeightMapInfo>& WeightMaps() const override { return SkinWeightMaps(); }
  const char* TypeName() const override;
  std::vector<float>* LiveArray(int32_t weights_type) override;
  uint32_t SolverInfluences(InfluenceKind) override { return 0; }
  uint32_t PointCount() override { return deformer_.solver().point_count_; }
  bool IsEmpty() override { return deformer_.solver().positions_.empty(); }
  VertexNeighborsView Neighbors() override;

 private:
  SkinDeformer& deformer_;
};

}  // namespace myo_core
