#include "maya/plugin/maya_deformer_host.h"

#include <maya/MAnimControl.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MTime.h>

#include "core/log/logger.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/maya_mesh_data.h"
#include "maya/plugin/node_helpers.h"

namespace myo_maya {

MayaDeformerHost::MayaDeformerHost(const MObject& node, MDataBlock& block, unsigned geometry_index)
    : node_(node), block_(block), geometry_index_(geometry_index) {}

bool MayaDeformerHost::IsPlaying() const { return MAnimControl::isPlaying(); }

float MayaDeformerHost::FramesPerSecond() const {
  return static_cast<float>(MTime(1.0, MTime::kSeconds).as(MTime::uiUnit()));
}

bool MayaDeformerHost::ReadInputMesh(myo_core::MeshData& mesh) {
  MObject input;
  GetInputMesh(input, block_, geometry_index_);
  if (input.isNull()) return false;
  std::string error;
  if (!ReadMayaMesh(input, mesh, error)) {
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

}  // namespace myo_maya
