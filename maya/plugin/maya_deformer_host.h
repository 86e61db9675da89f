#pragma once
// The deformer host port answered by Maya: the animation control, the time
// unit, the input mesh of the deformed geometry and a progress bar.

#include <maya/MComputation.h>
#include <maya/MDataBlock.h>
#include <maya/MObject.h>

#include <string>

#include "core/host/deformer_host.h"

namespace myo_maya {

class MayaDeformerHost : public myo_core::DeformerHost {
 public:
  MayaDeformerHost(const MObject& node, MDataBlock& block, unsigned geometry_index);

  bool IsPlaying() const override;
  float FramesPerSecond() const override;
  bool ReadInputMesh(myo_core::MeshData& mesh) override;
  std::string NodeName() const override;

  void BeginProgress(int count, const std::string& status) override;
  void AdvanceProgress() override;
  void EndProgress() override;

 private:
  MObject node_;
  MDataBlock& block_;
  unsigned geometry_index_;
  MComputation computation_;
  bool progress_shown_ = false;
};

}  // namespace myo_maya
