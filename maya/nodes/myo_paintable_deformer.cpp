#include "maya/nodes/myo_paintable_deformer.h"

#include <maya/MNodeMessage.h>
#include <maya/MPlug.h>

#include <algorithm>

#include "core/log/logger.h"
#include "maya/plugin/helper_cleanup.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/node_helpers.h"
#include "maya/plugin/typed_readers.h"

using myo_core::InfluenceKind;
using myo_core::ReportDebug;
using myo_core::WeightMapInfo;

MyoPaintableDeformer::MyoPaintableDeformer() = default;
MyoPaintableDeformer::~MyoPaintableDeformer() {
  if (about_to_delete_callback_ != 0) MMessage::removeCallback(about_to_delete_callback_);
}

void MyoPaintableDeformer::RegisterHelperCleanup() {
  MObject node = thisMObject();
  auto* helper_types = const_cast<std::vector<std::string>*>(&myo_maya::DeformerHelperTypes());
  about_to_delete_callback_ =
      MNodeMessage::addNodeAboutToDeleteCallback(node, myo_maya::OnNodeAboutToDelete, helper_types);
}

void MyoPaintableDeformer::SetCurrentDisplayWeights(int32_t type) {
  if (myo_core::FindWeightMap(WeightMaps(), type) == nullptr) {
    ReportDebug(std::string("No implemented display_weight_ type provided in ") + TypeName() +
                    "::SetCurrentDisplayWeights",
                "");
    return;
  }
  display_weight_ = type;
  display_weights_ = LiveArray(type);
}

void MyoPaintableDeformer::ProjectVertexFiber(uint32_t, float[3]) {}

void MyoPaintableDeformer::UpdateVertexFiber(uint32_t) {}

void MyoPaintableDeformer::ConsolidateFibers(bool) {
  ReportDebug("Calling non-overloaded \"ConsolidateFibers\" in MyoPaintableDeformer", "");
}

MIntArray MyoPaintableDeformer::ConnectedInfluences(InfluenceKind kind) {
  MIntArray indices;
  const myo_maya::NodeAttributes& attributes = Attributes();
  std::vector<MObject> children;
  for (const std::string& child : myo_core::InfluenceConnectionChildren(kind)) children.push_back(attributes[child]);
  const char* list = kind == InfluenceKind::kAttachments ? "attachmentConstraintsList"
                     : kind == InfluenceKind::kSegments  ? "slideOnSegmentConstraintsList"
                                                         : "targets";
  if (kind == InfluenceKind::kNone || attributes[list].isNull()) return indices;
  myo_maya::ConnectedChildrenIndices(thisMObject(), attributes[list], children, indices);
  return indices;
}

void MyoPaintableDeformer::GetDisplayPlugs(int32_t type, uint32_t influences, MPlugArray& out) {
  out.clear();
  const WeightMapInfo* map = myo_core::FindWeightMap(WeightMaps(), type);
  if (map == nullptr) {
    ReportDebug(std::string("Attribute query not implemented for WeightsType provided in ") + TypeName() +
                    "::GetDisplayPlugs",
                "");
    ReportDebug(std::string("Plug query not implemented for WeightsType provided in ") + TypeName() +
                    "::GetDisplayPlugs",
                "");
    return;
  }
  const myo_maya::NodeAttributes& attributes = Attributes();
  MPlug list(thisMObject(), attributes[map->list]);
  const MObject& element = attributes[map->element];
  if (!map->MultiInfluence()) {
    for (uint32_t b = 0; b < std::max(influences, 1u); ++b)
      out.append(myo_maya::ChildPlug(list.elementByLogicalIndex(b), element));
    return;
  }
  const MIntArray indices = ConnectedInfluences(map->influence);
  for (unsigned k = 0; k < indices.length(); ++k)
    out.append(myo_maya::ChildPlug(list.elementByLogicalIndex(static_cast<unsigned>(indices[k])), element));
}

void MyoPaintableDeformer::GetWeightArray(int32_t type, std::vector<float>*& out) {
  if (myo_core::FindWeightMap(WeightMaps(), type) == nullptr) {
    ReportDebug(std::string("No implemented WeightsType provided in ") + TypeName() + "::GetWeightArray", "");
    return;
  }
  out = LiveArray(type);
}

void MyoPaintableDeformer::UpdateSolverWeights() {
  const WeightMapInfo* map = myo_core::FindWeightMap(WeightMaps(), display_weight_);
  std::vector<float>* array = map == nullptr ? nullptr : LiveArray(display_weight_);
  if (map == nullptr || array == nullptr) {
    ReportDebug(std::string("No implemented display_weight_ type provided in ") + TypeName() +
                    "::UpdateSolverWeights",
                "");
    return;
  }
  const myo_maya::NodeAttributes& attributes = Attributes();
  const MObject& list = attributes[map->list];
  const MObject& element = attributes[map->element];
  const uint32_t points = GetNumPoints();

  if (!map->components.empty()) {
    myo_maya::ReadPlugVectors(thisMObject(), 0, static_cast<uint32_t>(array->size() / map->Width()), map->Width(),
                              list, element, map->default_value, *array);
    return;
  }
  if (!map->MultiInfluence()) {
    myo_maya::ReadPlugFloats(thisMObject(), 0, static_cast<uint32_t>(array->size()), list, element,
                             map->default_value, *array);
    return;
  }
  // A map over influences is re-read only when the connected influences are
  // those the solver holds.
  const uint32_t n = SolverInfluences(map->influence);
  const float default_value = myo_core::InfluenceDefault(n);
  const MIntArray indices = ConnectedInfluences(map->influence);
  if (n == 0 || indices.length() != n) return;
  for (uint32_t k = 0; k < n; ++k)
    myo_maya::ReadPlugFloatsAt(thisMObject(), static_cast<uint32_t>(indices[k]), k * points, points, n * points,
                               list, element, default_value, *array);
}

MStringArray MyoPaintableDeformer::GetInfluencesNames() {
  ReportDebug("Calling non-overloaded \"GetInfluencesNames\" in MyoPaintableDeformer", "");
  return MStringArray();
}

MIntArray MyoPaintableDeformer::GetInfluencesIndices() {
  ReportDebug("Calling non-overloaded \"GetInfluencesIndices\" in MyoPaintableDeformer", "");
  return MIntArray();
}

void MyoPaintableDeformer::SetCurrentInfluence(int32_t influence) {
  MPlug plug(thisMObject(), Attributes()["currentInfluence"]);
  plug.setInt(influence);
}

int32_t MyoPaintableDeformer::GetCurrentInfluence() {
  MPlug plug(thisMObject(), Attributes()["currentInfluence"]);
  return plug.asInt();
}
