#include "maya/nodes/myo_skin_merge_deformer.h"

#include <maya/MAnimControl.h>
#include <maya/MArrayDataHandle.h>
#include <maya/MDataHandle.h>
#include <maya/MFloatMatrix.h>
#include <maya/MFnAttribute.h>
#include <maya/MGlobal.h>
#include <maya/MIntArray.h>
#include <maya/MPointArray.h>
#include <maya/MTime.h>

#include <string>
#include <utility>
#include <vector>

#include "core/log/logger.h"
#include "core/merge/skin_merge_attributes.h"
#include "core/plugin/registration_table.h"
#include "core/shape/shape_attributes.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_map_port.h"
#include "maya/plugin/maya_mesh_data.h"
#include "maya/plugin/node_helpers.h"

const MTypeId MyoSkinMergeDeformer::id(myo_core::kMyoSkinMergeId);
myo_maya::NodeAttributes MyoSkinMergeDeformer::attributes_;

namespace {

struct SourceAttributes {
  const char* list;
  const char* mesh;
  const char* matrix;
};

SourceAttributes AttributesOf(myo_core::MergeSourceKind kind) {
  if (kind == myo_core::MergeSourceKind::kSimulated) return {"simList", "simWorldMesh", "simWorldMatrix"};
  return {"animList", "animWorldMesh", "animWorldMatrix"};
}

// The sources from the node's connections and data block, and the
// deformer's weights.
class MayaSkinMergeHost : public myo_core::SkinMergeHost {
 public:
  MayaSkinMergeHost(MPxDeformerNode& node, MDataBlock& block, unsigned geometry_index,
                    const myo_maya::NodeAttributes& attributes)
      : node_(node), block_(block), geometry_index_(geometry_index), attributes_(attributes) {}

  bool IsPlaying() const override { return MAnimControl::isPlaying(); }

  void ReadConnections(myo_core::MergeSourceKind kind, myo_core::MergeConnections& out) override {
    const SourceAttributes names = AttributesOf(kind);
    MIntArray meshes, matrices;
    const MObject node = node_.thisMObject();
    myo_maya::ConnectedChildIndices(node, attributes_[names.list], attributes_[names.mesh], meshes);
    myo_maya::ConnectedChildIndices(node, attributes_[names.list], attributes_[names.matrix], matrices);
    out = myo_core::MergeConnections();
    for (unsigned k = 0; k < meshes.length(); ++k) out.mesh_indices.push_back(static_cast<uint32_t>(meshes[k]));
    for (unsigned k = 0; k < matrices.length(); ++k)
      out.matrix_indices.push_back(static_cast<uint32_t>(matrices[k]));
  }

  bool ReadSource(myo_core::MergeSourceKind kind, uint32_t logical_index, myo_core::MeshRead read,
                  myo_core::MeshData& mesh, myo_core::Matrix& matrix) override {
    const SourceAttributes names = AttributesOf(kind);
    MStatus status;
    MArrayDataHandle list = block_.inputArrayValue(attributes_[names.list], &status);
    if (!status || !list.jumpToElement(logical_index)) return false;
    MDataHandle element = list.inputValue(&status);
    if (!status) return false;
    matrix = myo_maya::ToCoreMatrix(element.child(attributes_[names.matrix]).asFloatMatrix());
    // A mesh of its own: its points are the world space Maya gives.
    const MObject object = element.child(attributes_[names.mesh]).asMesh();
    if (object.isNull()) return false;
    std::string error;
    return read == myo_core::MeshRead::kPoints ? myo_maya::ReadMayaMeshPoints(object, mesh)
                                               : myo_maya::ReadMayaMesh(object, false, mesh, error);
  }

  void ReadMergeWeights(uint32_t count, std::vector<float>& out) override {
    out.resize(count);
    for (uint32_t i = 0; i < count; ++i) out[i] = node_.weightValue(block_, geometry_index_, i);
  }

 private:
  MPxDeformerNode& node_;
  MDataBlock& block_;
  unsigned geometry_index_;
  const myo_maya::NodeAttributes& attributes_;
};

}  // namespace

void* MyoSkinMergeDeformer::creator() { return new MyoSkinMergeDeformer(); }

MStatus MyoSkinMergeDeformer::initialize() {
  MStatus status = attributes_.Create(
      myo_core::SkinMergeAttributes(), [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject& when_changes, const MObject& is_affected) {
        return attributeAffects(when_changes, is_affected);
      },
      outputGeom);
  if (!status) return status;
  const std::string paintable =
      myo_core::MakePaintableScript(myo_core::kMyoSkinMergeTypeName, myo_core::SkinMergePaintableMaps());
  MGlobal::executeCommandOnIdle(myo_maya::ToMString(paintable), false);
  return MS::kSuccess;
}

MStatus MyoSkinMergeDeformer::deform(MDataBlock& block, MItGeometry& iterator, const MMatrix& local_to_world,
                                     unsigned int multi_index) {
  myo_core::SkinMergeFrame frame;
  frame.initialization_time =
      static_cast<float>(block.inputValue(attributes_["initializationTime"]).asTime().as(MTime::kSeconds));
  frame.current_time = static_cast<float>(MAnimControl::currentTime().as(MTime::kSeconds));
  frame.envelope = block.inputValue(envelope).asFloat();
  frame.local_to_world = myo_maya::ToCoreMatrix(local_to_world);
  frame.geometry_index = multi_index;

  MPointArray points;
  iterator.allPositions(points, MSpace::kObject);
  const std::vector<double> input = myo_maya::ToFlatPoints(points);
  MayaSkinMergeHost host(*this, block, multi_index, attributes_);
  myo_maya::MayaMapPort maps(thisMObject(), &block, attributes_);
  std::vector<double> output;
  merge_.Evaluate(frame, input, host, maps, output);
  if (!merge_.bound()) return MS::kSuccess;
  myo_maya::FromFlatPoints(output, points);
  iterator.setAllPositions(points, MSpace::kObject);
  return MS::kSuccess;
}
