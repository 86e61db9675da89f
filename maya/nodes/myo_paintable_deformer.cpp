#include "maya/nodes/myo_paintable_deformer.h"

#include <maya/MNodeMessage.h>
#include <maya/MPlug.h>

#include <algorithm>
#include <string>

#include "core/log/logger.h"
#include "maya/plugin/helper_cleanup.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/node_helpers.h"
#include "maya/plugin/typed_readers.h"

using myo_core::InfluenceKind;
using myo_core::ReportDebug;
using myo_core::WeightMapInfo;

namespace {

const char* InfluenceList(InfluenceKind kind) {
  switch (kind) {
    case InfluenceKind::kAttachments: return "attachmentConstraintsList";
    case InfluenceKind::kSegments: return "slideOnSegmentConstraintsList";
    case InfluenceKind::kTargets: return "targets";
    case InfluenceKind::kNone: break;
  }
  return "";
}

}  // namespace

// The record of the maps: the node's list attributes, read outside
// evaluation through plugs.
class MyoPaintableDeformer::PlugMapRecord : public myo_core::MapRecord {
 public:
  explicit PlugMapRecord(MyoPaintableDeformer& node) : node_(node) {}

  std::vector<int32_t> ConnectedInfluences(InfluenceKind kind) override {
    const myo_maya::NodeAttributes& attributes = node_.Attributes();
    const char* list = InfluenceList(kind);
    if (kind == InfluenceKind::kNone || attributes[list].isNull()) return {};
    std::vector<MObject> children;
    for (const std::string& child : myo_core::InfluenceConnectionChildren(kind)) children.push_back(attributes[child]);
    MIntArray indices;
    myo_maya::ConnectedChildrenIndices(node_.thisMObject(), attributes[list], children, indices);
    std::vector<int32_t> out;
    for (unsigned k = 0; k < indices.length(); ++k) out.push_back(indices[k]);
    return out;
  }

  void ReadFloats(const WeightMapInfo& map, uint32_t list_index, uint32_t offset, uint32_t count, uint32_t total,
                  float default_value, std::vector<float>& out) override {
    const myo_maya::NodeAttributes& attributes = node_.Attributes();
    myo_maya::ReadPlugFloatsAt(node_.thisMObject(), list_index, offset, count, total, attributes[map.list],
                               attributes[map.element], default_value, out);
  }

  void ReadVectors(const WeightMapInfo& map, uint32_t list_index, uint32_t count, float default_value,
                   std::vector<float>& out) override {
    const myo_maya::NodeAttributes& attributes = node_.Attributes();
    myo_maya::ReadPlugVectors(node_.thisMObject(), list_index, count, map.Width(), attributes[map.list],
                              attributes[map.element], default_value, out);
  }

  int32_t CurrentInfluence() override {
    return MPlug(node_.thisMObject(), node_.Attributes()["currentInfluence"]).asInt();
  }

  void SetCurrentInfluence(int32_t influence) override {
    MPlug(node_.thisMObject(), node_.Attributes()["currentInfluence"]).setInt(influence);
  }

 private:
  MyoPaintableDeformer& node_;
};

MyoPaintableDeformer::MyoPaintableDeformer() : store_(std::make_unique<PlugMapRecord>(*this)) {}

MyoPaintableDeformer::~MyoPaintableDeformer() {
  if (about_to_delete_callback_ != 0) MMessage::removeCallback(about_to_delete_callback_);
}

void MyoPaintableDeformer::AttachPaintSolver(std::unique_ptr<myo_core::PaintableSolver> solver,
                                             int32_t display_weight) {
  paint_solver_ = std::move(solver);
  paint_ = std::make_unique<myo_core::PaintableDeformer>(*paint_solver_, *store_, display_weight);
  paint_->RefreshDisplayWeights();
}

void MyoPaintableDeformer::RegisterHelperCleanup() {
  MObject node = thisMObject();
  about_to_delete_callback_ = myo_maya::AddHelperCleanupCallback(node);
}

void MyoPaintableDeformer::SetCurrentDisplayWeights(int32_t type) { paint_->SetCurrentDisplayWeights(type); }

void MyoPaintableDeformer::ProjectVertexFiber(uint32_t vertex, float direction[3]) {
  paint_->ProjectVertexFiber(vertex, direction);
}

void MyoPaintableDeformer::UpdateVertexFiber(uint32_t vertex) { paint_->UpdateVertexFiber(vertex); }

void MyoPaintableDeformer::ConsolidateWeights() { paint_->ConsolidateWeights(); }

void MyoPaintableDeformer::ConsolidateFibers(bool flag) { paint_->ConsolidateFibers(flag); }

void MyoPaintableDeformer::GetDisplayPlugs(int32_t type, uint32_t influences, MPlugArray& out) {
  out.clear();
  const WeightMapInfo* map = myo_core::FindWeightMap(paint_->WeightMaps(), type);
  if (map == nullptr) {
    const std::string where = std::string(" in ") + paint_->TypeName() + "::GetDisplayPlugs";
    ReportDebug("Attribute query not implemented for WeightsType provided" + where, "");
    ReportDebug("Plug query not implemented for WeightsType provided" + where, "");
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
  for (int32_t index : store_->ConnectedInfluences(map->influence))
    out.append(myo_maya::ChildPlug(list.elementByLogicalIndex(static_cast<unsigned>(index)), element));
}

void MyoPaintableDeformer::GetWeightArray(int32_t type, std::vector<float>*& out) {
  if (std::vector<float>* array = paint_->GetWeightArray(type)) out = array;
}

void MyoPaintableDeformer::UpdateSolverWeights() { paint_->UpdateSolverWeights(); }

MStringArray MyoPaintableDeformer::GetInfluencesNames() {
  MStringArray names;
  const std::vector<WeightMapInfo>& maps = paint_->WeightMaps();
  if (std::none_of(maps.begin(), maps.end(), [](const WeightMapInfo& map) { return map.MultiInfluence(); })) {
    ReportDebug("Calling non-overloaded \"GetInfluencesNames\" in MyoPaintableDeformer", "");
    return names;
  }
  const WeightMapInfo* map = myo_core::FindWeightMap(maps, paint_->DisplayWeight());
  if (map == nullptr || !map->MultiInfluence()) return names;
  const myo_maya::NodeAttributes& attributes = Attributes();
  MPlug list(thisMObject(), attributes[map->list]);
  for (int32_t index : store_->ConnectedInfluences(map->influence)) {
    MPlug element = list.elementByLogicalIndex(static_cast<unsigned>(index));
    for (const std::string& child : myo_core::InfluenceNameChildren(map->influence))
      names.append(myo_maya::ChildPlug(element, attributes[child]).name());
  }
  return names;
}

MIntArray MyoPaintableDeformer::GetInfluencesIndices() {
  MIntArray indices;
  for (int32_t index : paint_->GetInfluencesIndices()) indices.append(index);
  return indices;
}

uint32_t MyoPaintableDeformer::GetNumPoints() { return paint_->GetNumPoints(); }

void MyoPaintableDeformer::SetCurrentInfluence(int32_t influence) { paint_->SetCurrentInfluence(influence); }

int32_t MyoPaintableDeformer::GetCurrentInfluence() { return paint_->GetCurrentInfluence(); }

bool MyoPaintableDeformer::IsSolverEmpty() { return paint_->IsSolverEmpty(); }
