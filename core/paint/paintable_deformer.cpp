#include "core/paint/paintable_deformer.h"

#include <algorithm>
#include <string>

#include "core/log/logger.h"
#include "core/paint/weight_normalization.h"

namespace myo_core {

namespace {

bool IsUberMap(int32_t weights_type) {
  return weights_type == kWeightsHardConstraints || weights_type == kWeightsSoftConstraints ||
         weights_type == kWeightsSlideConstraints;
}

bool HasMultiInfluenceMap(const std::vector<WeightMapInfo>& maps) {
  return std::any_of(maps.begin(), maps.end(), [](const WeightMapInfo& map) { return map.MultiInfluence(); });
}

}  // namespace

uint32_t VertexNeighborsView::Count(uint32_t vertex) const {
  if (offsets == nullptr || counts == nullptr || vertices == nullptr || vertex >= counts->size() ||
      vertex >= offsets->size())
    return 0;
  const int32_t first = (*offsets)[vertex];
  const int32_t count = (*counts)[vertex];
  if (first < 0 || count <= 0 || static_cast<size_t>(first) + static_cast<size_t>(count) > vertices->size()) return 0;
  return static_cast<uint32_t>(count);
}

PaintableDeformer::PaintableDeformer(PaintableSolver& solver, MapRecord& store, int32_t display_weight)
    : solver_(solver), store_(store), display_weight_(display_weight) {}

bool PaintableDeformer::HasMap(int32_t weights_type) const {
  return FindWeightMap(solver_.WeightMaps(), weights_type) != nullptr;
}

void PaintableDeformer::SetCurrentDisplayWeights(int32_t weights_type) {
  if (!HasMap(weights_type)) {
    ReportDebug(std::string("No implemented display_weight_ type provided in ") + solver_.TypeName() +
                    "::SetCurrentDisplayWeights",
                "");
    return;
  }
  display_weight_ = weights_type;
  display_weights_ = solver_.LiveArray(weights_type);
}

void PaintableDeformer::RefreshDisplayWeights() {
  display_weights_ = HasMap(display_weight_) ? solver_.LiveArray(display_weight_) : nullptr;
}

std::vector<float>* PaintableDeformer::GetWeightArray(int32_t weights_type) {
  if (!HasMap(weights_type)) {
    ReportDebug(std::string("No implemented WeightsType provided in ") + solver_.TypeName() + "::GetWeightArray", "");
    return nullptr;
  }
  return solver_.LiveArray(weights_type);
}

void PaintableDeformer::ConsolidateWeights() {
  const WeightMapInfo* map = FindWeightMap(solver_.WeightMaps(), display_weight_);
  if (map == nullptr) {
    ReportDebug(std::string("No implemented display_weight_ type provided in ") + solver_.TypeName() +
                    "::ConsolidateWeights",
                "");
    return;
  }
  const uint32_t points = solver_.PointCount();
  if (map->MultiInfluence()) {
    std::vector<float>* array = solver_.LiveArray(display_weight_);
    if (array != nullptr) NormalizeInfluences(*array, points, store_.CurrentInfluence());
    return;
  }
  if (!IsUberMap(display_weight_)) return;
  std::vector<float>* hard = solver_.LiveArray(kWeightsHardConstraints);
  std::vector<float>* soft = solver_.LiveArray(kWeightsSoftConstraints);
  std::vector<float>* slide = solver_.LiveArray(kWeightsSlideConstraints);
  if (hard != nullptr && soft != nullptr && slide != nullptr)
    NormalizeUberWeights(*hard, *soft, *slide, points, display_weight_);
}

void PaintableDeformer::ConsolidateFibers(bool flag) {
  if (!HasMap(kWeightsFibers)) {
    ReportDebug("Calling non-overloaded \"ConsolidateFibers\" in MyoPaintableDeformer", "");
    return;
  }
  solver_.SetConsolidateFibers(flag);
}

void PaintableDeformer::ReadMap(const WeightMapInfo& map) {
  std::vector<float>* array = solver_.LiveArray(map.weights_type);
  if (array == nullptr) return;
  const uint32_t points = solver_.PointCount();
  if (!map.components.empty()) {
    store_.ReadVectors(map, 0, static_cast<uint32_t>(array->size() / map.Width()), map.default_value, *array);
    return;
  }
  if (!map.MultiInfluence()) {
    const auto size = static_cast<uint32_t>(array->size());
    store_.ReadFloats(map, 0, 0, size, size, map.default_value, *array);
    return;
  }
  const uint32_t n = solver_.SolverInfluences(map.influence);
  const std::vector<int32_t> indices = store_.ConnectedInfluences(map.influence);
  if (n == 0 || indices.size() != n) return;
  const float default_value = InfluenceDefault(n);
  for (uint32_t k = 0; k < n; ++k)
    store_.ReadFloats(map, static_cast<uint32_t>(indices[k]), k * points, points, n * points, default_value, *array);
}

void PaintableDeformer::UpdateSolverWeights() {
  const WeightMapInfo* map = FindWeightMap(solver_.WeightMaps(), display_weight_);
  if (map == nullptr || solver_.LiveArray(display_weight_) == nullptr) {
    ReportDebug(std::string("No implemented display_weight_ type provided in ") + solver_.TypeName() +
                    "::UpdateSolverWeights",
                "");
    return;
  }
  if (!IsUberMap(display_weight_)) {
    ReadMap(*map);
    return;
  }
  for (int32_t type : {kWeightsHardConstraints, kWeightsSoftConstraints, kWeightsSlideConstraints})
    if (const WeightMapInfo* uber = FindWeightMap(solver_.WeightMaps(), type)) ReadMap(*uber);
}

std::vector<int32_t> PaintableDeformer::GetInfluencesIndices() {
  if (!HasMultiInfluenceMap(solver_.WeightMaps())) {
    ReportDebug("Calling non-overloaded \"GetInfluencesIndices\" in MyoPaintableDeformer", "");
    return {};
  }
  const WeightMapInfo* map = FindWeightMap(solver_.WeightMaps(), display_weight_);
  if (map == nullptr || !map->MultiInfluence()) return {};
  return store_.ConnectedInfluences(map->influence);
}

void PaintableDeformer::WriteMap(const WeightMapInfo& map, uint32_t influences, MapWriter& writer) {
  const std::vector<float>* array = solver_.LiveArray(map.weights_type);
  if (array == nullptr) return;
  const uint32_t points = solver_.PointCount();
  const uint32_t blocks = map.components.empty() ? std::max(influences, 1u) : 1u;
  writer.Write(map, blocks, *array, points);
}

void PaintableDeformer::WriteStrokeMaps(uint32_t influences, MapWriter& writer) {
  const WeightMapInfo* map = FindWeightMap(solver_.WeightMaps(), display_weight_);
  if (map == nullptr) {
    ReportDebug("No implemented WeightsType provided in MyoPaintFinalizeCommand::SetPlugValuesFromWeights", "");
    return;
  }
  if (display_weight_ == kWeightsTendons) ConsolidateFibers(true);
  if (display_weight_ == kWeightsFibers) ConsolidateFibers(false);
  if (map->MultiInfluence() || IsUberMap(display_weight_)) ConsolidateWeights();
  if (!IsUberMap(display_weight_)) {
    WriteMap(*map, influences, writer);
    return;
  }
  // Consolidating changed the other two as well.
  for (int32_t type : {kWeightsHardConstraints, kWeightsSoftConstraints, kWeightsSlideConstraints})
    if (const WeightMapInfo* uber = FindWeightMap(solver_.WeightMaps(), type)) WriteMap(*uber, 0, writer);
}

}  // namespace myo_core
