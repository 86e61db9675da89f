#pragma once
// Where each paintable map of a deformer is stored: its list and element
// attributes, its default, whether it holds one block per influence, and
// whether its live array belongs to the deformer or to the solver. The paint
// commands and the nodes find a map here by its WeightsType value.

#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

// WeightsType values (core/tables/enum_tables.h has their names).
constexpr int32_t kWeightsHardConstraints = 0;
constexpr int32_t kWeightsSoftConstraints = 1;
constexpr int32_t kWeightsSlideConstraints = 2;
constexpr int32_t kWeightsAttachmentsToTransform = 3;
constexpr int32_t kWeightsTendons = 4;
constexpr int32_t kWeightsFibers = 5;
constexpr int32_t kWeightsCompressionResistance = 6;
constexpr int32_t kWeightsStretchingResistance = 7;
constexpr int32_t kWeightsGlobalDamping = 8;
constexpr int32_t kWeightsSlidingDistanceMultiplier = 9;
constexpr int32_t kWeightsMasses = 10;
constexpr int32_t kWeightsSlideOnSegment = 11;
constexpr int32_t kWeightsAttachmentsToGeometry = 12;
constexpr int32_t kWeightsSlideOnGeometry = 13;
constexpr int32_t kWeightsShapePreservation = 14;

enum class MapOwner { kDeformer, kSolver };

// What makes an influence of a multi-influence map: an element of `list`
// with all of `connected_children` connected.
enum class InfluenceKind { kNone, kAttachments, kSegments, kTargets };

struct WeightMapInfo {
  int32_t weights_type = 0;
  std::string list;                             // list attribute
  std::string element;                          // per-vertex element attribute
  std::vector<std::string> components;          // children of a vector element ("Fibers"), else empty
  float default_value = 0.0f;                   // single-influence maps; 1/influences otherwise
  InfluenceKind influence = InfluenceKind::kNone;
  MapOwner owner = MapOwner::kDeformer;

  bool MultiInfluence() const { return influence != InfluenceKind::kNone; }
  // Floats per vertex of one influence: 3 for a vector map, else 1.
  uint32_t Width() const { return components.empty() ? 1u : static_cast<uint32_t>(components.size()); }
};

// The maps of "MyoMuscle" and "MyoRibbonMuscle", ascending WeightsType.
const std::vector<WeightMapInfo>& MuscleWeightMaps();
// The maps of "MyoSkin", ascending WeightsType.
const std::vector<WeightMapInfo>& SkinWeightMaps();

// The row of `weights_type`, or null when the deformer has no such map.
const WeightMapInfo* FindWeightMap(const std::vector<WeightMapInfo>& maps, int32_t weights_type);

// The children that must all be connected for an element of the influence
// list to count, and the child whose plug names the influence (for segments
// both matrices name it, root first).
const std::vector<std::string>& InfluenceConnectionChildren(InfluenceKind kind);
const std::vector<std::string>& InfluenceNameChildren(InfluenceKind kind);

// The default of a multi-influence map over `influences` influences: 1 / n,
// or 0 with none.
float InfluenceDefault(uint32_t influences);

}  // namespace myo_core
