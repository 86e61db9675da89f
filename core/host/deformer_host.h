#pragma once
// What a deformer's logic asks of the host beyond the attributes of the
// frame: host services (playing, time unit, progress, names) and the node's
// inputs that are meshes or connections. The logic asks for each when its
// order of work comes to it, so that nothing is read that the evaluation does
// not use. Maya answers with MAnimControl, MTime, MComputation, its plugs and
// mesh functions; the standalone host from its time line and scene.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/kernels/target_mesh.h"
#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

// Matrices of the connected elements of a list attribute.
struct ConnectedMatrices {
  std::vector<uint32_t> indices;  // logical indices, ascending
  std::vector<Matrix> matrices;   // one per element, or root and tip per segment
};

// What a deformer reads of a mesh input.
enum class MeshRead {
  kWhole,       // everything MeshData holds, world space included: for a build
  kPoints,      // the object-space points alone
  kWorldSpace,  // the object-space points and the world-space points and polygon normals
};

// How a mesh input was found.
enum class MeshInput {
  kMissing,     // nothing connected, or the data is no mesh
  kUnreadable,  // a mesh, but its data could not be read
  kRead,
};

class DeformerHost {
 public:
  virtual ~DeformerHost() = default;

  // Whether the animation is playing: repeated warnings are given only
  // while it is not.
  virtual bool IsPlaying() const = 0;
  // One second expressed in the current time unit of the user interface.
  virtual float FramesPerSecond() const = 0;
  // The input mesh of the deformed geometry, object space. False when there
  // is none.
  virtual bool ReadInputMesh(MeshData& mesh) = 0;
  // The node's name and type name, for messages.
  virtual std::string NodeName() const = 0;

  // Progress of a long build: "[MyoForge]" + status over `count` steps.
  virtual void BeginProgress(int count, const std::string& status) {
    (void)count;
    (void)status;
  }
  virtual void AdvanceProgress() {}
  virtual void EndProgress() {}

  // Muscle family. Elements of "attachmentConstraintsList" with
  // "attachmentMatrix" connected, and of "slideOnSegmentConstraintsList"
  // with both "slideOnSegmentRootMatrix" and "slideOnSegmentTipMatrix"
  // connected (root first), with their matrices of this frame.
  virtual void ReadAttachmentMatrices(ConnectedMatrices& out) { out = ConnectedMatrices(); }
  virtual void ReadSegmentMatrices(ConnectedMatrices& out) { out = ConnectedMatrices(); }
  // The elements of "targets" with both "targetWorldMesh" and
  // "targetWorldMatrix" connected, ascending logical index. `whole`: complete
  // meshes, for a build; else what a step reads of a mesh whose topology the
  // solver froze: its world-space points and polygon normals. The meshes stay
  // valid until the next call.
  virtual void ReadTargets(bool whole, std::vector<TargetInput>& out) {
    (void)whole;
    out.clear();
  }
  // Stores the clamped "currentInfluence" on the node.
  virtual void WriteCurrentInfluence(int32_t value) { (void)value; }

  // Shape. Writes the activations into "outActivation" of the geometry's
  // element of "outActivationList".
  virtual void WriteOutActivation(const std::vector<float>& activations) { (void)activations; }
  // The "activation" values of the geometry's element of "activationList":
  // entry i holds the element of logical index i, empty where there is none.
  // False when the list has no element for the geometry.
  virtual bool ReadActivationValues(std::vector<std::optional<float>>& values) {
    values.clear();
    return false;
  }
  // Shows `rgba` (4 floats a point) as the output mesh's vertex colours and
  // switches their display on; with null, switches the display off.
  virtual void ShowVertexColors(const std::vector<float>* rgba) { (void)rgba; }

  // A mesh attribute of the node by long name ("referenceMesh", "animMesh",
  // "collisionMesh", ...), read as `what` asks. `mesh` stays valid until the
  // next read of the same attribute.
  virtual MeshInput ReadMesh(const std::string& attribute, MeshRead what, const MeshData*& mesh) {
    (void)attribute;
    (void)what;
    mesh = nullptr;
    return MeshInput::kMissing;
  }
};

}  // namespace myo_core
