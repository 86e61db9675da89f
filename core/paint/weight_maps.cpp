#include "core/paint/weight_maps.h"

namespace myo_core {

namespace {

WeightMapInfo Map(int32_t type, const char* list, const char* element, float value, MapOwner owner) {
  WeightMapInfo info;
  info.weights_type = type;
  info.list = list;
  info.element = element;
  info.default_value = value;
  info.owner = owner;
  return info;
}

WeightMapInfo Multi(int32_t type, const char* list, const char* element, InfluenceKind influence) {
  WeightMapInfo info = Map(type, list, element, 0.0f, MapOwner::kDeformer);
  info.influence = influence;
  return info;
}

constexpr MapOwner kDeformer = MapOwner::kDeformer;
constexpr MapOwner kSolver = MapOwner::kSolver;

}  // namespace

const std::vector<WeightMapInfo>& MuscleWeightMaps() {
  static const std::vector<WeightMapInfo> table = [] {
    WeightMapInfo fibers = Map(kWeightsFibers, "fibersList", "fibers", 0.0f, kSolver);
    fibers.components = {"fibersX", "fibersY", "fibersZ"};
    return std::vector<WeightMapInfo>{
        Multi(kWeightsAttachmentsToTransform, "attachmentConstraintsList", "attachmentConstraints",
              InfluenceKind::kAttachments),
        Map(kWeightsTendons, "tendonsList", "tendons", 0.0f, kSolver),
        fibers,
        Map(kWeightsCompressionResistance, "compressionResistanceList", "compressionResistance", 1.0f, kDeformer),
        Map(kWeightsStretchingResistance, "stretchingResistanceList", "stretchingResistance", 1.0f, kDeformer),
        Map(kWeightsGlobalDamping, "globalDampingList", "globalDamping", 1.0f, kSolver),
        Map(kWeightsSlidingDistanceMultiplier, "maxSlidingDistanceMultiplierList", "maxSlidingDistanceMultiplier",
            1.0f, kDeformer),
        Map(kWeightsMasses, "massList", "mass", 1.0f, kDeformer),
        Multi(kWeightsSlideOnSegment, "slideOnSegmentConstraintsList", "slideOnSegmentConstraints",
              InfluenceKind::kSegments),
        Multi(kWeightsAttachmentsToGeometry, "targets", "attachmentToGeoConstraints", InfluenceKind::kTargets),
        Multi(kWeightsSlideOnGeometry, "targets", "slideOnGeometryConstraints", InfluenceKind::kTargets),
        Map(kWeightsShapePreservation, "shapePreservationList", "shapePreservation", 0.0f, kDeformer),
    };
  }();
  return table;
}

const std::vector<WeightMapInfo>& SkinWeightMaps() {
  static const std::vector<WeightMapInfo> table = {
      Map(kWeightsHardConstraints, "hardConstraintsList", "hardConstraints", 1.0f, kSolver),
      Map(kWeightsSoftConstraints, "softConstraintsList", "softConstraints", 0.0f, kSolver),
      Map(kWeightsSlideConstraints, "slideConstraintsList", "slideConstraints", 0.0f, kSolver),
      Map(kWeightsCompressionResistance, "compressionResistanceList", "compressionResistance", 1.0f, kDeformer),
      Map(kWeightsStretchingResistance, "stretchingResistanceList", "stretchingResistance", 1.0f, kDeformer),
      Map(kWeightsGlobalDamping, "globalDampingList", "globalDamping", 1.0f, kSolver),
      Map(kWeightsSlidingDistanceMultiplier, "maxSlidingDistanceMultiplierList", "maxSlidingDistanceMultiplier",
          1.0f, kDeformer),
      Map(kWeightsMasses, "massList", "mass", 1.0f, kDeformer),
      Map(kWeightsShapePreservation, "shapePreservationList", "shapePreservation", 0.0f, kDeformer),
  };
  return table;
}

const WeightMapInfo* FindWeightMap(const std::vector<WeightMapInfo>& maps, int32_t weights_type) {
  for (const WeightMapInfo& map : maps)
    if (map.weights_type == weights_type) return &map;
  return nullptr;
}

const std::vector<std::string>& InfluenceConnectionChildren(InfluenceKind kind) {
  static const std::vector<std::string> none;
  static const std::vector<std::string> attachments = {"attachmentMatrix"};
  static const std::vector<std::string> segments = {"slideOnSegmentRootMatrix", "slideOnSegmentTipMatrix"};
  static const std::vector<std::string> targets = {"targetWorldMesh", "targetWorldMatrix"};
  switch (kind) {
    case InfluenceKind::kAttachments: return attachments;
    case InfluenceKind::kSegments: return segments;
    case InfluenceKind::kTargets: return targets;
    case InfluenceKind::kNone: break;
  }
  return none;
}

const std::vector<std::string>& InfluenceNameChildren(InfluenceKind kind) {
  static const std::vector<std::string> none;
  static const std::vector<std::string> attachments = {"attachmentMatrix"};
  static const std::vector<std::string> segments = {"slideOnSegmentRootMatrix", "slideOnSegmentTipMatrix"};
  static const std::vector<std::string> targets = {"targetWorldMatrix"};
  switch (kind) {
    case InfluenceKind::kAttachments: return attachments;
    case InfluenceKind::kSegments: return segments;
    case InfluenceKind::kTargets: return targets;
    case InfluenceKind::kNone: break;
  }
  return none;
}

float InfluenceDefault(uint32_t influences) {
  return influences == 0 ? 0.0f : 1.0f / static_cast<float>(influences);
}

}  // namespace myo_core
