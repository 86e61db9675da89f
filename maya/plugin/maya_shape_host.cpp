#include "maya/plugin/maya_shape_host.h"

#include <maya/MArrayDataBuilder.h>
#include <maya/MArrayDataHandle.h>
#include <maya/MColor.h>
#include <maya/MDataHandle.h>
#include <maya/MFnMesh.h>
#include <maya/MPlug.h>
#include <maya/MPxGeometryFilter.h>

namespace myo_maya {

namespace {

// The output mesh of element `index` of the deformer's output geometry; a
// null object when there is none.
MObject OutputMesh(MDataBlock& block, unsigned index) {
  MStatus status;
  MArrayDataHandle outputs = block.outputArrayValue(MPxGeometryFilter::outputGeom, &status);
  if (!status || !outputs.jumpToElement(index)) return MObject::kNullObj;
  MDataHandle output = outputs.outputValue(&status);
  if (!status) return MObject::kNullObj;
  return output.asMesh();
}

// 4N floats, RGBA per vertex, as the colour and vertex lists of
// MFnMesh::setVertexColors.
void ToVertexColors(const std::vector<float>& rgba, VertexColorBuffers& buffers) {
  const unsigned count = static_cast<unsigned>(rgba.size() / 4);
  if (buffers.vertex_ids.length() != count) {
    buffers.vertex_ids.setLength(count);
    for (unsigned i = 0; i < count; ++i) buffers.vertex_ids[i] = static_cast<int>(i);
  }
  buffers.colors.setLength(count);
  for (unsigned i = 0; i < count; ++i)
    buffers.colors[i] = MColor(rgba[4 * i], rgba[4 * i + 1], rgba[4 * i + 2], rgba[4 * i + 3]);
}

}  // namespace

MayaShapeHost::MayaShapeHost(const MObject& node, MDataBlock& block, unsigned geometry_index,
                             const NodeAttributes& attributes, uint32_t point_count, VertexColorBuffers& buffers)
    : MayaDeformerHost(node, block, geometry_index, attributes), point_count_(point_count), buffers_(buffers) {}

void MayaShapeHost::WriteOutActivation(const std::vector<float>& activations) {
  const MObject& list_attribute = attributes_["outActivationList"];
  const MObject& value_attribute = attributes_["outActivation"];
  if (list_attribute.isNull() || value_attribute.isNull()) return;
  MStatus status;
  MArrayDataHandle list = block_.outputArrayValue(list_attribute, &status);
  if (!status) return;
  MArrayDataBuilder list_builder = list.builder(&status);
  if (!status) return;
  MDataHandle element = list_builder.addElement(geometry_index_, &status);
  if (!status) return;
  MArrayDataHandle values(element.child(value_attribute), &status);
  if (!status) return;
  const unsigned count = static_cast<unsigned>(activations.size());
  // A new builder drops the elements of a former, longer write.
  MArrayDataBuilder values_builder(&block_, value_attribute, count, &status);
  if (!status) return;
  for (unsigned i = 0; i < count; ++i) {
    MDataHandle value = values_builder.addElement(i, &status);
    if (!status) return;
    value.setFloat(activations[i]);
  }
  values.set(values_builder);
  list.set(list_builder);
  list.setAllClean();
}

bool MayaShapeHost::ReadActivationValues(std::vector<std::optional<float>>& values) {
  values.clear();
  const MObject& list_attribute = attributes_["activationList"];
  const MObject& value_attribute = attributes_["activation"];
  if (list_attribute.isNull() || value_attribute.isNull()) return false;
  MStatus status;
  MArrayDataHandle list = block_.inputArrayValue(list_attribute, &status);
  if (!status || list.elementCount() <= geometry_index_) return false;
  // Values only count when something drives them.
  if (MPlug(node_, list_attribute).numConnectedElements() == 0) return false;
  if (!list.jumpToElement(geometry_index_)) return false;
  MDataHandle element = list.inputValue(&status);
  if (!status) return false;
  MArrayDataHandle elements(element.child(value_attribute), &status);
  if (!status) return false;

  values.assign(point_count_, std::nullopt);
  const unsigned count = elements.elementCount();
  for (unsigned k = 0; k < count; ++k) {
    if (!elements.jumpToArrayElement(k)) break;
    const unsigned index = elements.elementIndex(&status);
    if (!status || index >= point_count_) continue;
    MDataHandle value = elements.inputValue(&status);
    if (status) values[index] = value.asFloat();
  }
  return true;
}

void MayaShapeHost::ShowVertexColors(const std::vector<float>* rgba) {
  MObject mesh = OutputMesh(block_, geometry_index_);
  if (mesh.isNull()) return;
  MStatus status;
  MFnMesh fn(mesh, &status);
  if (!status) return;
  if (rgba == nullptr) {
    fn.setDisplayColors(false);
    return;
  }
  ToVertexColors(*rgba, buffers_);
  const int vertices = fn.numVertices(&status);
  if (!status || static_cast<int64_t>(buffers_.colors.length()) > vertices) return;
  fn.setDisplayColors(true);
  fn.setVertexColors(buffers_.colors, buffers_.vertex_ids);
}

}  // namespace myo_maya
