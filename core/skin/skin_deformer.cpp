#include "core/skin/skin_deformer.h"

#include <algorithm>

#include "core/debug/skin_debug.h"
#include "core/log/logger.h"
#include "core/log/stream_text.h"
#include "core/mesh/world_space.h"
#include "core/skin/uber_assembly.h"
#include "core/skin/skin_mass_weights.h"

namespace myo_core {

SkinDeformer::SkinDeformer() : solver_(std::make_unique<SkinSolver>()) {}

SkinEvaluation SkinDeformer::Evaluate(const SkinFrameValues& frame, const std::vector<double>& input,
                                      DeformerHost& host, MapPort& maps, std::vector<double>& output) {
  SkinEvaluation result;
  output = input;
  if (!frame.enable) return result;
  if (!solver_) solver_ = std::make_unique<SkinSolver>();
  SkinSolver& s = *solver_;
  const bool warn = !host.IsPlaying();

  const FrameTimes times = FrameTimesOf(frame, last_time_, host, s.positions_.empty());
  ApplyMassScalars(frame, s);
  result.decision = DecideFrame(times);
  const FrameDecision& decision = result.decision;

  // The reference mesh, whole for a build and as world-space points for a
  // step (its topology stays frozen in the solver).
  const MeshData* reference = nullptr;
  const MeshInput found =
      host.ReadMesh("referenceMesh", decision.initialize ? MeshRead::kWhole : MeshRead::kWorldSpace, reference);
  if (found == MeshInput::kMissing || reference == nullptr) {
    ReportError("Input reference mesh is null but it is required for " + host.NodeName() +
                    " to compute. Aborting simulation.",
                "");
    result.succeeded = false;
    return result;
  }
  if (found == MeshInput::kUnreadable || reference->PointCount() == 0) {
    ReportError("Could not retrieve reference mesh data which is required for " + host.NodeName() +
                    " to compute. Aborting simulation.",
                "");
    result.succeeded = false;
    return result;
  }
  s.world_matrix_ = frame.local_to_world;

  if (decision.initialize) {
    MeshData mesh;
    if (!host.ReadInputMesh(mesh)) mesh = MeshData{};
    SkinAssemblyInputs inputs;
    inputs.node_name = host.NodeName();
    inputs.progress = &host;
    inputs.map_index = frame.geometry_index;
    inputs.world_matrix = frame.local_to_world;
    inputs.attenuation_matrix = frame.attenuation_matrix;
    inputs.read_points = decision.reset_positions;
    inputs.warn = warn;
    inputs.reference_mesh = reference;
    inputs.reference_matrix = frame.reference_matrix;
    inputs.max_sliding_distance = frame.max_sliding_distance;
    InitSkinData(mesh, maps, inputs, node_, s);
    mesh_diagonal_ = MeshDiagonal(reference->points, frame.reference_matrix);
    reference_warned_ = false;
  }
  if (decision.simulate) {
    ReadReference(*reference, frame.reference_matrix, host.NodeName());
    ApplyStepScalars(frame, decision.dt, warn, node_.masses_map_, s, *s.shape_constraints_);
    s.sliding_constraints_mode_ = frame.sliding_constraints_mode;
    DistanceConstraints& distances = *s.distance_constraints_;
    distances.rest_length_multiplier_ = frame.rest_length_multiplier;
    distances.compression_multiplier_ = frame.compression_multiplier;
    distances.stretching_multiplier_ = frame.stretching_multiplier;
    ApplyMassesToWeights(s, node_.shape_map_);
    StepSkin(s);
    result.stepped = true;
  }
  BlendByEnvelope(s.positions_, input, frame.envelope, output);
  last_time_ = frame.current_time;

  s.debug_data_.enabled_ = frame.debug;
  if (frame.debug) {
    const std::vector<float> shown(output.begin(), output.end());
    UpdateSkinDebugData(s, shown, frame.debug_feature, frame.debug_color, frame.debug_width);
  }
  return result;
}

void SkinDeformer::ReadReference(const MeshData& reference, const Matrix& matrix, const std::string& node_name) {
  UberConstraints& uber = *solver_->uber_constraints_;
  if (ReadReferenceMesh(reference, matrix, uber)) {
    reference_warned_ = false;
    return;
  }
  // The points are bound to triangles of the reference as it was at the
  // build: a mesh of another vertex count cannot be read onto them. The skin
  // stays on the last reference shape it read, and says so once.
  if (reference_warned_) return;
  reference_warned_ = true;
  const uint32_t bound = uber.reference_mesh_.TopologyVertexCount();
  if (reference.PointCount() != bound) {
    LogWarning("Reference mesh of " + node_name + " has " + StreamText(reference.PointCount()) +
               " vertices instead of the " + StreamText(bound) +
               " it was bound to. The skin keeps the last reference shape until it is initialized again.");
  } else {
    LogWarning("Reference mesh of " + node_name +
               " could not be read in world space. The skin keeps the last reference shape.");
  }
}

}  // namespace myo_core
