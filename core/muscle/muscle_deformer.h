#pragma once
// One evaluation of a muscle or ribbon muscle deformer, host-neutral: the
// node of a host fills the frame values, hands in the input points and writes
// the output points. The two deformers share all of it; the ribbon has no
// volume row and reads no volume attributes.

#include <memory>
#include <type_traits>
#include <string>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/maps/map_port.h"
#include "core/solver/frame_decision.h"
#include "core/muscle/muscle_frame.h"
#include "core/muscle/muscle_node_state.h"
#include "core/solver/muscle_solver.h"

namespace myo_core {

class StateReader;
class StateWriter;

struct MuscleEvaluation {
  FrameDecision decision;         // what this evaluation did
  bool stepped = false;
  int32_t current_influence = 0;  // "currentInfluence" after the clamp; written to the host when it changed
};

// What one evaluation reads of the node's connections.
struct FrameConnections {
  ConnectedMatrices attachments;     // "attachmentConstraintsList" with "attachmentMatrix"
  ConnectedMatrices segments;        // "slideOnSegmentConstraintsList", root and tip
  std::vector<TargetInput> targets;  // "targets" with mesh and matrix connected
};

// The connected influences of the three multi-influence kinds.
struct InfluenceCounts {
  std::size_t attachments = 0;
  std::size_t segments = 0;
  std::size_t targets = 0;
};

template <class Solver>
class MuscleFamilyDeformer {
 public:
  MuscleFamilyDeformer();

  // input: 3N object-space points of the deformed geometry, as the host
  // reads them; output: the points to write, (simulated - input) * envelope
  // + input in double, one per solver point. With "enable" off the output is
  // the input and nothing else changes. Otherwise, in this order: the times
  // decide once whether to rebuild and whether to step; the matrices of the
  // influences and the targets are asked of the host (whole meshes only for
  // a rebuild); a "currentInfluence" beyond the influences of the map on
  // display is clamped and written back; then the rebuild, the step and the
  // blend.
  MuscleEvaluation Evaluate(const MuscleFrameValues& frame, const std::vector<double>& input, DeformerHost& host,
                            MapPort& maps, std::vector<double>& output);

  const Solver& solver() const { return *solver_; }
  Solver& solver() { return *solver_; }
  const MuscleNodeState& node() const { return node_; }
  MuscleNodeState& node() { return node_; }
  float last_time() const { return last_time_; }
  // The state carried from one evaluation to the next, saved to and
  // restored from a checkpoint (core/state); a failed load names its fault
  // in the reader.
  void SaveState(StateWriter& writer) const;
  void LoadState(StateReader& reader);

 private:
  // One field list for SaveState and LoadState; Self is const to save.
  template <class Archive, class Self>
  static void StateFields(Archive& archive, Self& self);
  void Initialize(const MuscleFrameValues& frame, const FrameConnections& connections, bool reset_positions,
                  DeformerHost& host, MapPort& maps);
  void SetFrameScalars(const MuscleFrameValues& frame, const std::vector<TargetInput>& targets, float dt,
                       bool warn);

  std::unique_ptr<Solver> solver_;
  MuscleNodeState node_;
  float last_time_ = 1.17549435e-38f;  // the smallest positive normal float
};

using MuscleDeformer = MuscleFamilyDeformer<MuscleSolver>;
using RibbonMuscleDeformer = MuscleFamilyDeformer<RibbonMuscleSolver>;

// The clamped current influence: when the map on display has per-influence
// sets and no more than `current` of them, it falls back to 0 (or -1 when
// there are none).
int32_t ClampCurrentInfluence(int32_t displayed_weights, int32_t current, const InfluenceCounts& counts);

}  // namespace myo_core
