#pragma once
// One evaluation of the skin deformer, host-neutral: the same frame logic as
// the muscle, around a skin solver held on a reference mesh.

#include <memory>
#include <string>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/maps/map_port.h"
#include "core/mesh/mesh_data.h"
#include "core/solver/frame_decision.h"
#include "core/skin/skin_assembly.h"
#include "core/skin/skin_frame.h"
#include "core/skin/skin_solver.h"
#include "core/solver/frame_values.h"

namespace myo_core {

class StateReader;
class StateWriter;

struct SkinEvaluation {
  FrameDecision decision;
  bool stepped = false;
  bool succeeded = true;  // false without a usable reference mesh
};

class SkinDeformer {
 public:
  SkinDeformer();

  // As MuscleDeformer::Evaluate, with the reference mesh asked of the host
  // once the frame is decided (whole for a rebuild). Without a reference
  // mesh, with one that cannot be read or has no vertices, it reports the
  // error and fails: the solver's tables, the last time and the output (the
  // input) stay. A reference whose vertex count changed since the binding is
  // not read; the step goes on with the last reference shape, and one
  // warning says so until a read succeeds again or the skin is rebuilt.
  SkinEvaluation Evaluate(const SkinFrameValues& frame, const std::vector<double>& input, DeformerHost& host,
                          MapPort& maps, std::vector<double>& output);

  const SkinSolver& solver() const { return *solver_; }
  SkinSolver& solver() { return *solver_; }
  const SkinNodeState& node() const { return node_; }
  SkinNodeState& node() { return node_; }
  float last_time() const { return last_time_; }
  // Diagonal of the reference mesh in world space at the last build; -1 before.
  float mesh_diagonal() const { return mesh_diagonal_; }
  // The state carried from one evaluation to the next, saved to and
  // restored from a checkpoint (core/state); a failed load names its fault
  // in the reader.
  void SaveState(StateWriter& writer) const;
  void LoadState(StateReader& reader);

 private:
  // One field list for SaveState and LoadState; Self is const to save.
  template <class Archive, class Self>
  static void StateFields(Archive& archive, Self& self);
  void ReadReference(const MeshData& reference, const Matrix& matrix, const std::string& node_name);

  std::unique_ptr<SkinSolver> solver_;
  SkinNodeState node_;
  float last_time_ = 1.17549435e-38f;  // the smallest positive normal float
  float mesh_diagonal_ = -1.0f;
  bool reference_warned_ = false;  // the warning of an unreadable reference was given
};

}  // namespace myo_core
