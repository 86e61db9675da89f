#pragma once
// The deformer host port answered by Maya: the animation control, the time
// unit, the input mesh of the deformed geometry, a progress bar, and the
// node's connections read from its data block when the core logic asks for
// them.

#include <maya/MComputation.h>
#include <maya/MDataBlock.h>
#include <maya/MObject.h>

#include <map>
#include <string>
#include <vector>

#include "core/host/deformer_host.h"
#include "maya/plugin/node_attributes.h"

namespace myo_maya {

class MayaDeformerHost : public myo_core::DeformerHost {
 public:
  MayaDeformerHost(const MObject& node, MDataBlock& block, unsigned geometry_index,
                   const NodeAttributes& attributes);

  bool IsPlaying() const override;
  float FramesPerSecond() const override;
  bool ReadInputMesh(myo_core::MeshData& mesh) override;
  std::string NodeName() const override;

  void BeginProgress(int count, const std::string& status) override;
  void AdvanceProgress() override;
  void EndProgress() override;

  void ReadAttachmentMatrices(myo_core::ConnectedMatrices& out) override;
  void ReadSegmentMatrices(myo_core::ConnectedMatrices& out) override;
  void ReadTargets(bool whole, std::vector<myo_core::TargetInput>& out) override;
  void WriteCurrentInfluence(int32_t value) override;
  myo_core::MeshInput ReadMesh(const std::string& attribute, myo_core::MeshRead what,
                               const myo_core::MeshData*& mesh) override;

 protected:
  MObject node_;
  MDataBlock& block_;
  unsigned geometry_index_;
  const NodeAttributes& attributes_;

 private:
  // The matrices of the elements of `list` with every one of `children`
  // connected, by logical index.
  void ReadConnectedMatrices(const char* list, const std::vector<const char*>& children,
                             myo_core::ConnectedMatrices& out);

  MComputation computation_;
  bool progress_shown_ = false;
  std::vector<myo_core::MeshData> target_meshes_;  // what the targets of the last read point to
  std::map<std::string, myo_core::MeshData> meshes_;  // the last read of each mesh attribute
};

}  // namespace myo_maya
