#pragma once
// The deformer host of the shape node: the shared Maya host plus the ports of
// the activation, which read and write the node's activation plugs through
// the data block and show the activations as vertex colours of the output
// mesh.

#include <maya/MColorArray.h>
#include <maya/MDataBlock.h>
#include <maya/MIntArray.h>
#include <maya/MObject.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "maya/plugin/maya_deformer_host.h"

namespace myo_maya {

// What MFnMesh::setVertexColors takes, kept by the node between evaluations
// so that showing colours at every frame does not allocate anew.
struct VertexColorBuffers {
  MIntArray vertex_ids;  // 0 to N - 1
  MColorArray colors;    // one per vertex
};

class MayaShapeHost : public MayaDeformerHost {
 public:
  // `point_count`: points of the deformed geometry; plug values of higher
  // logical indices are not read.
  MayaShapeHost(const MObject& node, MDataBlock& block, unsigned geometry_index, const NodeAttributes& attributes,
                uint32_t point_count, VertexColorBuffers& buffers);

  // Replaces the "outActivation" elements of the geometry's element of
  // "outActivationList" by one element per activation.
  void WriteOutActivation(const std::vector<float>& activations) override;
  // False when "activationList" has no more elements than the geometry
  // index, no element with a connection, or no element of the geometry
  // index; else `values` holds point_count entries, filled where an
  // "activation" element of that logical index exists.
  bool ReadActivationValues(std::vector<std::optional<float>>& values) override;
  // On the output mesh of the geometry index: display on and the colours set
  // per vertex, or the display off with null. Colours for more vertices than
  // the mesh has are not set.
  void ShowVertexColors(const std::vector<float>* rgba) override;

 private:
  uint32_t point_count_;
  VertexColorBuffers& buffers_;
};

}  // namespace myo_maya
