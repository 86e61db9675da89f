#pragma once
// One evaluation of the shape deformer, host-neutral: the frame logic of the
// skin around a shape solver. Nothing here fails: every missing or
// mismatching input falls back to the input geometry, with a warning where
// the build says so.

#include <memory>
#include <vector>

#include "core/activation/activation_modes.h"
#include "core/host/deformer_host.h"
#include "core/maps/map_port.h"
#include "core/shape/shape_assembly.h"
#include "core/shape/shape_frame.h"
#include "core/shape/simshape_solver.h"
#include "core/solver/frame_decision.h"

namespace myo_core {

class StateReader;
class StateWriter;

struct ShapeEvaluation {
  FrameDecision decision;
  bool stepped = false;
};

class ShapeDeformer {
 public:
  ShapeDeformer();

  // With "enable" off the output is the input. Otherwise, in order: the
  // frame decided as on the skin; a build (InitSimshape) on the input mesh,
  // binding the collider on "collisionRestMesh" only when the build reads
  // the rest pose and "restMesh" is connected, else on "collisionMesh"; a
  // step with the frame's rest edge lengths ("animatableRestMesh"), collider,
  // targets ("animMesh" of the solver's point count, else the input) and
  // activations; "outActivation"; the output by envelope; the activation
  // colours; the debug record.
  ShapeEvaluation Evaluate(const ShapeFrameValues& frame, const std::vector<double>& input, DeformerHost& host,
                           MapPort& maps, std::vector<double>& output);

  const SimshapeSolver& solver() const { return *solver_; }
  SimshapeSolver& solver() { return *solver_; }
  const ShapeNodeState& node() const { return node_; }
  float last_time() const { return last_time_; }
  // Diagonal of the binding collider in world space at the last build; -1 before.
  float mesh_diagonal() const { return node_.mesh_diagonal_; }
  // A collision mesh was connected at the last build.
  bool has_collider() const { return node_.has_collider_; }
  // The state carried from one evaluation to the next, saved to and
  // restored from a checkpoint (core/state); a failed load names its fault
  // in the reader.
  void SaveState(StateWriter& writer) const;
  void LoadState(StateReader& reader);

 private:
  // One field list for SaveState and LoadState; Self is const to save.
  template <class Archive, class Self>
  static void StateFields(Archive& archive, Self& self);
  void Build(const ShapeFrameValues& frame, const FrameDecision& decision, const MeshData& input_mesh,
             DeformerHost& host, MapPort& maps);
  void Step(const ShapeFrameValues& frame, const FrameDecision& decision, const std::vector<double>& input,
            DeformerHost& host);
  void ReadActivationFrame(const ShapeFrameValues& frame, DeformerHost& host, bool whole, ActivationFrame& out);

  std::unique_ptr<SimshapeSolver> solver_;
  ShapeNodeState node_;
  std::vector<std::optional<float>> plug_activations_;
  float last_time_ = 1.17549435e-38f;  // the smallest positive normal float
};

// A rest mesh that moves: each distance row whose index is an edge of `rest`
// takes that edge's object-space length (formed in double, kept as float).
// Nothing happens unless `rest` has `point_count` points, not 0.
void SetRestLengthsFromMesh(const MeshData& rest, uint32_t point_count, DistanceConstraints& distances);

}  // namespace myo_core
