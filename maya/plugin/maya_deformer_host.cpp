#include "maya/plugin/maya_deformer_host.h"

#include <maya/MAnimControl.h>
#include <maya/MArrayDataHandle.h>
#include <maya/MDataHandle.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MIntArray.h>
#include <maya/MPlug.h>
#include <maya/MTime.h>

#include "core/log/logger.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_mesh_data.h"
#include "maya/plugin/node_helpers.h"

namespace myo_maya {

MayaDeformerHost::MayaDeformerHost(const MObject& node, MDataBlock& block, unsigned geometry_index,
                                   const NodeAttributes& attributes)
    : node_(node), block_(block), geometry_index_(geometry_index), attributes_(attributes) {}

bool MayaDeformerHost::IsPlaying() const { return MAnimControl::isPlaying(); }

float MayaDeformerHost::FramesPerSecond() const {
  return static_cast<float>(MTime(1.0, MTime::kSeconds).as(MTime::uiUnit()));
}

bool MayaDeformerHost::ReadInputMesh(myo_core::MeshData& mesh) {
  MObject input;
  GetInputMesh(input, block_, geometry_index_);
  if (input.isNull()) return false;
  std::string error;
  if (!ReadMayaMesh(input, false, mesh, error)) {
    myo_core::ReportError("The input mesh of " + NodeName() + " cannot be read: " + error, "");
    return false;
  }
  return true;
}

std::string MayaDeformerHost::NodeName() const {
  MFnDependencyNode fn(node_);
  return ToStdString(fn.name());
}

// The core hands in the whole status line, tag included.
void MayaDeformerHost::BeginProgress(int count, const std::string& status) {
  progress_shown_ = true;
  computation_.beginComputation(true, false, true);
  computation_.setProgressRange(0, count);
  computation_.setProgressStatus(ToMString(status));
}

void MayaDeformerHost::AdvanceProgress() { myo_maya::AdvanceProgress(computation_, progress_shown_); }

void MayaDeformerHost::EndProgress() {
  myo_maya::EndProgress(computation_, progress_shown_);
  progress_shown_ = false;
}

void MayaDeformerHost::ReadConnectedMatrices(const char* list, const std::vector<const char*>& children,
                                             myo_core::ConnectedMatrices& out) {
  out = myo_core::ConnectedMatrices();
  std::vector<MObject> child_attributes;
  for (const char* child : children) child_attributes.push_back(attributes_[child]);
  const std::vector<MObject> read = child_attributes;
  MIntArray indices;
  ConnectedChildrenIndices(node_, attributes_[list], child_attributes, indices);
  MArrayDataHandle elements = block_.inputArrayValue(attributes_[list]);
  for (unsigned k = 0; k < indices.length(); ++k) {
    if (!elements.jumpToElement(static_cast<unsigned>(indices[k]))) continue;
    MDataHandle element = elements.inputValue();
    out.indices.push_back(static_cast<uint32_t>(indices[k]));
    for (const MObject& child : read) out.matrices.push_back(ToCoreMatrix(element.child(child).asMatrix()));
  }
}

void MayaDeformerHost::ReadAttachmentMatrices(myo_core::ConnectedMatrices& out) {
  ReadConnectedMatrices("attachmentConstraintsList", {"attachmentMatrix"}, out);
}

void MayaDeformerHost::ReadSegmentMatrices(myo_core::ConnectedMatrices& out) {
  ReadConnectedMatrices("slideOnSegmentConstraintsList", {"slideOnSegmentRootMatrix", "slideOnSegmentTipMatrix"},
                        out);
}

void MayaDeformerHost::ReadTargets(bool whole, std::vector<myo_core::TargetInput>& out) {
  out.clear();
  std::vector<MObject> children = {attributes_["targetWorldMesh"], attributes_["targetWorldMatrix"]};
  MIntArray indices;
  ConnectedChildrenIndices(node_, attributes_["targets"], children, indices);
  target_meshes_.clear();
  target_meshes_.resize(indices.length());  // no reallocation below: the inputs point into it
  MArrayDataHandle targets = block_.inputArrayValue(attributes_["targets"]);
  MPlug target_plugs(node_, attributes_["targets"]);
  for (unsigned k = 0; k < indices.length(); ++k) {
    const unsigned logical = static_cast<unsigned>(indices[k]);
    myo_core::TargetInput input;
    input.logical_index = logical;
    input.name = ToStdString(target_plugs.elementByLogicalIndex(logical).name());
    if (targets.jumpToElement(logical)) {
      MDataHandle element = targets.inputValue();
      input.world_matrix = ToCoreMatrix(element.child(attributes_["targetWorldMatrix"]).asMatrix());
      const MObject mesh = element.child(attributes_["targetWorldMesh"]).asMesh();
      std::string error;
      const bool read = !mesh.isNull() && (whole ? ReadMayaMesh(mesh, true, target_meshes_[k], error)
                                                 : ReadMayaMeshWorldSpace(mesh, target_meshes_[k]));
      if (read) input.mesh = &target_meshes_[k];
    }
    out.push_back(input);
  }
}

void MayaDeformerHost::WriteCurrentInfluence(int32_t value) {
  block_.outputValue(attributes_["currentInfluence"]).set(static_cast<int>(value));
}

myo_core::MeshInput MayaDeformerHost::ReadMesh(const std::string& attribute, myo_core::MeshRead what,
                                               const myo_core::MeshData*& mesh) {
  mesh = nullptr;
  const MObject& plug_attribute = attributes_[attribute];
  if (plug_attribute.isNull()) return myo_core::MeshInput::kMissing;
  const MObject object = block_.inputValue(plug_attribute).asMesh();
  if (object.isNull()) return myo_core::MeshInput::kMissing;
  myo_core::MeshData& read = meshes_[attribute];
  std::string error;
  bool ok = false;
  switch (what) {
    case myo_core::MeshRead::kWhole: ok = ReadMayaMesh(object, true, read, error); break;
    case myo_core::MeshRead::kPoints: ok = ReadMayaMeshPoints(object, read); break;
    case myo_core::MeshRead::kWorldSpace: ok = ReadMayaMeshWorldSpace(object, read); break;
  }
  if (!ok) return myo_core::MeshInput::kUnreadable;
  mesh = &read;
  return myo_core::MeshInput::kRead;
}

}  // namespace myo_maya
