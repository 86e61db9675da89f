#include "core/muscle/muscle_deformer.h"


#include "core/debug/muscle_debug.h"
#include "core/kernels/target_mesh.h"
#include "core/log/logger.h"
#include "core/muscle/muscle_assembly.h"
#include "core/muscle/muscle_mass_weights.h"
#include "core/tables/enum_tables.h"
#include "core/tables/material_type.h"

namespace myo_core {

namespace {

constexpr int32_t kWeightsAttachmentsToTransform = 3;
constexpr int32_t kWeightsSlideOnSegment = 11;
constexpr int32_t kWeightsAttachmentsToGeometry = 12;
constexpr int32_t kWeightsSlideOnGeometry = 13;

// Copies the matrices of the connected elements when their count fits the
// table; a rebuild sizes the table first.
void TakeConnectedMatrices(const ConnectedMatrices& connected, uint32_t per_element, bool initialize,
                           std::vector<Matrix>& matrices, const char* what) {
  const std::size_t count = connected.indices.size() * per_element;
  if (initialize) matrices.resize(count);
  if (count == matrices.size() && connected.matrices.size() >= count) {
    std::copy(connected.matrices.begin(), connected.matrices.begin() + count, matrices.begin());
    return;
  }
  LogWarning(std::string("Inconsistency between the solver data and the number of the ") + what +
             " connected. Please, stop the simulation and go to the start frame to reinitialize the system.");
}

}  // namespace

int32_t ClampCurrentInfluence(int32_t displayed_weights, int32_t current, const InfluenceCounts& counts) {
  int64_t count = -1;
  if (displayed_weights == kWeightsAttachmentsToTransform) count = static_cast<int64_t>(counts.attachments);
  if (displayed_weights == kWeightsSlideOnSegment) count = static_cast<int64_t>(counts.segments);
  if (displayed_weights == kWeightsAttachmentsToGeometry || displayed_weights == kWeightsSlideOnGeometry)
    count = static_cast<int64_t>(counts.targets);
  if (count < 0 || count > current) return current;
  if (count != 0) return 0;
  return current == 0 ? 0 : -1;
}

template <class Solver>
MuscleFamilyDeformer<Solver>::MuscleFamilyDeformer() : solver_(std::make_unique<Solver>()) {}

template <class Solver>
void MuscleFamilyDeformer<Solver>::Initialize(const MuscleFrameValues& frame, const FrameConnections& connections,
                                              bool reset_positions, DeformerHost& host, MapPort& maps) {
  MeshData mesh;
  if (!host.ReadInputMesh(mesh)) mesh = MeshData{};
  MuscleAssemblyInputs inputs;
  inputs.node_name = host.NodeName();
  inputs.progress = &host;
  inputs.map_index = frame.geometry_index;
  inputs.world_matrix = frame.local_to_world;
  inputs.attenuation_matrix = frame.attenuation_matrix;
  inputs.fibers_scale = frame.debug_fibers_scale;
  inputs.reset_positions = reset_positions;
  inputs.warn = !host.IsPlaying();
  inputs.attachment_indices = connections.attachments.indices;
  inputs.attachment_matrices = solver_->attachment_constraints_->matrices_;
  inputs.hard_attachments = frame.hard_attachments;
  inputs.segment_indices = connections.segments.indices;
  inputs.segment_matrices = solver_->slide_on_segment_constraints_->matrices_;
  inputs.targets = connections.targets;
  inputs.max_sliding_distance = frame.max_sliding_distance;
  InitializeSolver(mesh, maps, inputs, node_, *solver_);
}

template <class Solver>
void MuscleFamilyDeformer<Solver>::SetFrameScalars(const MuscleFrameValues& frame,
                                                   const std::vector<TargetInput>& targets, float dt, bool warn) {
  Solver& s = *solver_;
  ApplyStepScalars(frame, dt, warn, node_.masses_map_, s, *s.shape_constraints_);
  s.sliding_constraints_mode_ = frame.sliding_constraints_mode;
  EdgeConstraints& edges = *s.edge_constraints_;
  edges.activation_ = frame.activation;
  edges.rest_activation_ = frame.rest_activation;
  edges.rest_length_multiplier_ = frame.rest_length_multiplier;
  edges.compression_multiplier_ = frame.compression_multiplier;
  edges.stretching_multiplier_ = frame.stretching_multiplier;
  if constexpr (std::is_same_v<Solver, MuscleSolver>) {
    s.volume_constraint_->volume_preservation_ = frame.volume_preservation;
    s.volume_constraint_->volume_ratio_ = frame.volume_ratio;
  }
  UpdateTargets(s.targets_, targets, warn);
  ApplyMassesToWeights(s, node_.shape_map_, node_.attachment_map_, node_.attachment_to_geo_map_,
                       node_.slide_on_segment_map_, node_.slide_on_geometry_map_);
}

template <class Solver>
MuscleEvaluation MuscleFamilyDeformer<Solver>::Evaluate(const MuscleFrameValues& frame, const std::vector<double>& input,
                                                        DeformerHost& host, MapPort& maps,
                                                        std::vector<double>& output) {
  MuscleEvaluation result;
  result.current_influence = frame.current_influence;
  if (!frame.enable) {
    output = input;
    return result;
  }
  if (!solver_) solver_ = std::make_unique<Solver>();
  Solver& s = *solver_;
  const bool warn = !host.IsPlaying();

  const FrameTimes times = FrameTimesOf(frame, last_time_, host, s.positions_.empty());
  ApplyMassScalars(frame, s);
  s.attachment_constraints_->hard_ = frame.hard_attachments;
  s.attachment_to_geo_constraints_->hard_ = frame.hard_attachments;
  result.decision = DecideFrame(times);
  const FrameDecision& decision = result.decision;

  // Matrices of the influences; a rebuild sizes the tables to them.
  FrameConnections connections;
  host.ReadAttachmentMatrices(connections.attachments);
  host.ReadSegmentMatrices(connections.segments);
  TakeConnectedMatrices(connections.attachments, 1, decision.initialize, s.attachment_constraints_->matrices_,
                        "attachments");
  TakeConnectedMatrices(connections.segments, 2, decision.initialize, s.slide_on_segment_constraints_->matrices_,
                        "segments");
  // Targets whole for a build, as world-space points for a step; a frame
  // that does neither reads them only to count them for the map on display.
  const bool shows_targets = frame.displayed_weights == kWeightsAttachmentsToGeometry ||
                             frame.displayed_weights == kWeightsSlideOnGeometry;
  if (decision.initialize || decision.simulate || shows_targets)
    host.ReadTargets(decision.initialize, connections.targets);

  const InfluenceCounts counts{connections.attachments.indices.size(), connections.segments.indices.size(),
                               connections.targets.size()};
  result.current_influence = ClampCurrentInfluence(frame.displayed_weights, frame.current_influence, counts);
  if (result.current_influence != frame.current_influence) host.WriteCurrentInfluence(result.current_influence);

  if (decision.initialize) Initialize(frame, connections, decision.reset_positions, host, maps);
  if (decision.simulate) {
    SetFrameScalars(frame, connections.targets, decision.dt, warn);
    Step(s);
    result.stepped = true;
  }

  BlendByEnvelope(s.positions_, input, frame.envelope, output);
  last_time_ = frame.current_time;

  s.debug_data_.enabled_ = frame.debug;
  if (frame.debug) {
    const std::vector<float> shown(output.begin(), output.end());
    UpdateMuscleDebugData(s, shown, frame.debug_feature, frame.debug_color, frame.debug_width,
                          frame.debug_fibers_scale);
  }
  return result;
}

template class MuscleFamilyDeformer<MuscleSolver>;
template class MuscleFamilyDeformer<RibbonMuscleSolver>;

}  // namespace myo_core
