#include "core/paint/paint_session.h"

#include <optional>

#include "core/log/logger.h"
#include "core/paint/paint_stamp.h"
#include "core/paint/paint_vocabulary.h"

namespace myo_core {

namespace {

// The live array of the map on display and the display copy, taken anew at
// each command: a rebuilt solver has moved its arrays.
void BindArrays(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display) {
  context.source_weights_ = deformer.DisplayWeights();
  context.target_weights_ = &display.Weights();
}

void CopyLiveToDisplay(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display) {
  BindArrays(context, deformer, display);
  if (context.source_weights_ != nullptr)
    *context.target_weights_ = *context.source_weights_;
  else
    context.target_weights_->clear();
}

}  // namespace

bool SetPaintDeformerType(PaintContext& context, const std::string& type_name) {
  if (PaintableAttributeNames(type_name) == nullptr) {
    ReportError("Could not find a valid deformer with the given type name: " + type_name, "");
    return false;
  }
  context.deformer_type_ = type_name;
  return true;
}

bool SelectPaintWeights(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display,
                        const std::string& name) {
  const std::optional<int32_t> type = WeightsTypeByName(name);
  if (!type) {
    ReportError("Could not find custom paintable attributes", "");
    return false;
  }
  context.weight_name_ = name;
  deformer.SetCurrentDisplayWeights(*type);
  CopyLiveToDisplay(context, deformer, display);
  display.SetShowFibers(deformer.DisplayWeight() == kWeightsFibers);
  display.FlipTrigger();
  return true;
}

void SelectPaintInfluence(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display,
                          int32_t influence) {
  context.current_influence_ = influence;
  context.influence_offset_ = static_cast<uint32_t>(influence) * context.point_count_;
  deformer.SetCurrentInfluence(influence);
  CopyLiveToDisplay(context, deformer, display);
  display.FlipTrigger();
}

void ClearPaintContext(PaintContext& context) {
  context.current_influence_ = 0;
  context.influence_offset_ = 0;
  context.source_weights_ = nullptr;
  context.target_weights_ = nullptr;
}

bool BeginPaintStroke(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display,
                      int32_t modifiers) {
  CopyLiveToDisplay(context, deformer, display);
  context.point_count_ = deformer.GetNumPoints();
  const bool fibers = deformer.DisplayWeight() == kWeightsFibers;
  display.SetShowFibers(fibers);
  ApplyModifierKeys(context, modifiers);
  return fibers;
}

PaintBaseValue GetPaintBaseValue(const PaintContext& context, int32_t display_weight, int32_t vertex) {
  PaintBaseValue base;
  if (vertex < 0 || context.target_weights_ == nullptr ||
      static_cast<size_t>(vertex) >= context.target_weights_->size())
    return base;
  if (display_weight == kWeightsFibers) {
    const std::vector<float>* source = context.source_weights_;
    const size_t first = 3 * static_cast<size_t>(vertex);
    if (source == nullptr || first + 2 >= source->size()) return base;
    base.present = true;
    base.fibers = true;
    for (int k = 0; k < 3; ++k) base.fiber[k] = (*source)[first + k];
    return base;
  }
  base.present = true;
  base.value = context.active_paint_mode_ == kPaintScale ? 1.0f : 0.0f;
  return base;
}

void ApplyPaintStamp(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display, uint32_t vertex,
                     double strength, const double direction[3]) {
  BindArrays(context, deformer, display);
  if (context.source_weights_ == nullptr) return;
  std::vector<float>& source = *context.source_weights_;
  std::vector<float>& target = *context.target_weights_;
  if (static_cast<size_t>(vertex) + context.influence_offset_ >= target.size()) return;

  if (deformer.DisplayWeight() != kWeightsFibers) {
    StampFloatMap(context, source, target, vertex, strength, deformer.Neighbors());
  } else {
    float fiber[3];
    const size_t first = 3 * static_cast<size_t>(vertex);
    if (first + 2 < target.size() &&
        FiberStampDirection(context.active_paint_mode_, direction, source, vertex, deformer.Neighbors(), fiber)) {
      for (int k = 0; k < 3; ++k) target[first + k] = fiber[k];
      deformer.ProjectVertexFiber(vertex, fiber);
      deformer.UpdateVertexFiber(vertex);
    }
  }
  display.FlipTrigger();
}

bool FloodPaint(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display) {
  BindArrays(context, deformer, display);
  std::vector<float>& target = *context.target_weights_;
  if (context.source_weights_ == nullptr ||
      static_cast<size_t>(context.influence_offset_) + context.point_count_ > target.size()) {
    ReportError("Cannot flood influence " + std::to_string(context.current_influence_) + ": the weights on display hold " +
                    std::to_string(target.size()) + " values for " + std::to_string(context.point_count_) + " points.",
                "");
    return false;
  }
  const std::vector<float>& source = *context.source_weights_;
  const VertexNeighborsView neighbors = deformer.Neighbors();

  if (deformer.DisplayWeight() == kWeightsFibers) {
    // Only smoothing acts on fibers. All directions come from the live
    // fibers before any is projected, since projecting rewrites them.
    if (context.paint_mode_ == kPaintSmooth) {
      const auto count = static_cast<int64_t>(context.point_count_);
      std::vector<uint8_t> painted(context.point_count_, 0);
      const double none[3] = {0.0, 0.0, 0.0};
#pragma omp parallel for schedule(static)
      for (int64_t v = 0; v < count; ++v) {
        const size_t first = 3 * static_cast<size_t>(v);
        float fiber[3];
        if (first + 2 >= target.size() ||
            !FiberStampDirection(kPaintSmooth, none, source, static_cast<uint32_t>(v), neighbors, fiber))
          continue;
        for (int k = 0; k < 3; ++k) target[first + k] = fiber[k];
        painted[v] = 1;
      }
#pragma omp parallel for schedule(static)
      for (int64_t v = 0; v < count; ++v) {
        if (painted[v] == 0) continue;
        float fiber[3] = {target[3 * v], target[3 * v + 1], target[3 * v + 2]};
        deformer.ProjectVertexFiber(static_cast<uint32_t>(v), fiber);
        deformer.UpdateVertexFiber(static_cast<uint32_t>(v));
      }
    }
    display.FlipTrigger();
    return true;
  }
  if (context.paint_mode_ < kPaintReplace || context.paint_mode_ > kPaintSmooth) {
    ReportError("Unrecognized paint mode during flood operation.", "");
    return false;
  }
  if (!FloodFloatMap(context, source, target, neighbors)) return false;
  display.FlipTrigger();
  return true;
}

bool FinishPaintStroke(PaintContext& context, PaintableDeformer& deformer, MapWriter& writer) {
  context.source_weights_ = deformer.DisplayWeights();
  if (context.source_weights_ == nullptr || context.target_weights_ == nullptr) {
    ReportError("Nothing is being painted: choose a deformer and a map with MyoPaintDataCommand first.", "");
    return false;
  }
  if (context.source_weights_->size() != context.target_weights_->size()) {
    ReportError("The painted weights no longer fit the deformer, which was rebuilt during the stroke: "
                "paint the stroke again.",
                "");
    return false;
  }
  *context.source_weights_ = *context.target_weights_;
  const auto influences = static_cast<uint32_t>(deformer.GetInfluencesIndices().size());
  deformer.WriteStrokeMaps(influences, writer);
  return true;
}

void ShowConsolidatedWeights(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display) {
  const int32_t type = deformer.DisplayWeight();
  if (type != kWeightsAttachmentsToTransform && type != kWeightsSlideOnSegment &&
      type != kWeightsAttachmentsToGeometry && type != kWeightsSlideOnGeometry)
    return;
  CopyLiveToDisplay(context, deformer, display);
}

void ReloadPaintedWeights(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display,
                          int32_t stroke_weight) {
  const int32_t shown = deformer.DisplayWeight();
  if (stroke_weight != shown) {
    // Another map went on display since the stroke: reload the stroke's map
    // and leave the display as it is.
    deformer.SetCurrentDisplayWeights(stroke_weight);
    if (deformer.DisplayWeight() == stroke_weight) deformer.UpdateSolverWeights();
    deformer.SetCurrentDisplayWeights(shown);
    return;
  }
  deformer.UpdateSolverWeights();
  CopyLiveToDisplay(context, deformer, display);
  display.FlipTrigger();
}

bool GetPaintWeight(const PaintContext& context, int32_t vertex, double& value) {
  const std::vector<float>* source = context.source_weights_;
  if (vertex < 0 || static_cast<uint32_t>(vertex) >= context.point_count_ || source == nullptr ||
      static_cast<size_t>(vertex) + context.influence_offset_ >= source->size()) {
    ReportError("No weight to read at vertex " + std::to_string(vertex) + ": the map on display has " +
                    std::to_string(context.point_count_) + " vertices.",
                "");
    return false;
  }
  value = (*source)[static_cast<size_t>(vertex) + context.influence_offset_];
  return true;
}

}  // namespace myo_core
