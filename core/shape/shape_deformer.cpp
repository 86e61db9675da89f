#include "core/shape/shape_deformer.h"

#include <cmath>

#include "core/debug/shape_debug.h"
#include "core/kernels/slide_collision_constraints.h"
#include "core/log/logger.h"
#include "core/shape/shape_init.h"
#include "core/shape/shape_mass_weights.h"

namespace myo_core {

namespace {

// A mesh input of the node, or null when it is not connected or unreadable.
const MeshData* ReadOptionalMesh(DeformerHost& host, const char* attribute, MeshRead what) {
  const MeshData* mesh = nullptr;
  const MeshInput found = host.ReadMesh(attribute, what, mesh);
  if (found == MeshInput::kMissing) return nullptr;
  // A mesh whose data cannot be read counts as one without vertices.
  static const MeshData kEmpty;
  return found == MeshInput::kRead && mesh != nullptr ? mesh : &kEmpty;
}

}  // namespace

ShapeDeformer::ShapeDeformer() : solver_(std::make_unique<SimshapeSolver>()) {}

void SetRestLengthsFromMesh(const MeshData& rest, uint32_t point_count, DistanceConstraints& distances) {
  if (point_count == 0 || rest.PointCount() != point_count) return;
  const std::size_t edges = std::min<std::size_t>(rest.edge_vertices.size() / 2, distances.RowCount());
  for (std::size_t e = 0; e < edges; ++e) {
    const uint32_t a = static_cast<uint32_t>(rest.edge_vertices[2 * e]);
    const uint32_t b = static_cast<uint32_t>(rest.edge_vertices[2 * e + 1]);
    if (a >= point_count || b >= point_count) continue;
    const double dx = static_cast<double>(rest.points[3 * b]) - rest.points[3 * a];
    const double dy = static_cast<double>(rest.points[3 * b + 1]) - rest.points[3 * a + 1];
    const double dz = static_cast<double>(rest.points[3 * b + 2]) - rest.points[3 * a + 2];
    distances.rest_lengths_[e] = static_cast<float>(std::sqrt(dx * dx + dy * dy + dz * dz));
  }
}

void ShapeDeformer::ReadActivationFrame(const ShapeFrameValues& frame, DeformerHost& host, bool whole,
                                        ActivationFrame& out) {
  out.bidirectional = frame.bidirectional_activation;
  out.remap = frame.activation_remap;
  out.deform_mesh = nullptr;
  out.plug_values = nullptr;
  const int32_t mode = whole ? frame.activation_mode : node_.activation_mode_;
  // A step without a loaded patches file computes nothing from the mesh.
  if (mode == kActivationMusclePatches && (whole || solver_->patches_loaded_)) {
    out.deform_mesh = ReadOptionalMesh(host, "deformMesh", MeshRead::kPoints);
  } else if (mode == kActivationPlugValues) {
    if (host.ReadActivationValues(plug_activations_)) out.plug_values = &plug_activations_;
  }
}

void ShapeDeformer::Build(const ShapeFrameValues& frame, const FrameDecision& decision, const MeshData& input_mesh,
                          DeformerHost& host, MapPort& maps) {
  SimshapeSolver& s = *solver_;
  ShapeBuildMeshes meshes;
  meshes.input = &input_mesh;
  meshes.rest = ReadOptionalMesh(host, "restMesh", MeshRead::kWhole);
  meshes.anim = ReadOptionalMesh(host, "animMesh", MeshRead::kPoints);
  const MeshData* collision = ReadOptionalMesh(host, "collisionMesh", MeshRead::kWhole);
  const MeshData* collision_rest = ReadOptionalMesh(host, "collisionRestMesh", MeshRead::kWhole);
  meshes.collision_rest_connected = collision_rest != nullptr;
  meshes.collider = collision;

  ShapeBuildSettings settings;
  settings.has_collider = collision != nullptr;
  if (settings.has_collider) {
    // The rest collider goes with the rest pose of the shape only: a reset
    // inside a simulation binds on the collider as it is now.
    const bool rest_pose = collision_rest != nullptr && decision.reset_positions && meshes.rest != nullptr;
    meshes.binding_collider = rest_pose ? collision_rest : collision;
    meshes.binding_matrix = rest_pose ? frame.collision_rest_mesh_matrix : frame.collision_mesh_matrix;
  }
  settings.initialize_to_anim = frame.initialize_to_anim_mesh;
  settings.max_collision_sliding_distance = frame.max_collision_sliding_distance;
  settings.draw_activation = frame.draw_activation;
  settings.activation.mode = frame.activation_mode;
  settings.activation.muscles_file = frame.muscles_file;
  settings.activation.smoothing = frame.activation_smoothing;
  settings.activation.fibers_scale = frame.debug_muscle_fibers_scale;
  ReadActivationFrame(frame, host, true, settings.activation_frame);

  ShapeAssemblyInputs inputs;
  inputs.node_name = host.NodeName();
  inputs.host = &host;
  inputs.map_index = frame.geometry_index;
  inputs.world_matrix = frame.local_to_world;
  inputs.attenuation_matrix = frame.attenuation_matrix;
  inputs.read_points = decision.reset_positions;
  inputs.warn = !host.IsPlaying();
  InitSimshape(meshes, settings, maps, inputs, node_, s);
  if (meshes.anim == nullptr)
    LogDebug("Anim mesh plug has no input connections. The input geometry will be used to compute the Simshape "
             "attractions.");
}

void ShapeDeformer::Step(const ShapeFrameValues& frame, const FrameDecision& decision,
                         const std::vector<double>& input, DeformerHost& host) {
  SimshapeSolver& s = *solver_;
  const bool warn = !host.IsPlaying();
  if (frame.animatable_rest_mesh) {
    if (const MeshData* rest = ReadOptionalMesh(host, "restMesh", MeshRead::kWhole))
      SetRestLengthsFromMesh(*rest, s.point_count_, *s.distance_constraints_);
  }

  s.compute_collisions_ = frame.compute_collisions;
  if (frame.compute_collisions && s.slide_collision_constraints_) {
    const MeshData* collider = ReadOptionalMesh(host, "collisionMesh", MeshRead::kWorldSpace);
    // A collider that cannot be read onto the binding (another vertex count)
    // keeps its last shape.
    if (collider != nullptr && collider->PointCount() > 0) {
      ReadColliderMesh(*collider, warn, *s.slide_collision_constraints_);
      s.slide_collision_constraints_->keep_orientation_ = frame.keep_collision_orientation;
    }
  }

  const MeshData* anim = ReadOptionalMesh(host, "animMesh", MeshRead::kPoints);
  if (anim != nullptr && anim->PointCount() == s.point_count_ && s.point_count_ != 0) {
    s.attraction_targets_ = anim->points;
  } else {
    // The input geometry of this evaluation: a deformer stack below this
    // node drives the target.
    s.attraction_targets_.assign(input.begin(), input.end());
  }

  ActivationFrame activation;
  ReadActivationFrame(frame, host, false, activation);
  UpdateActivations(node_.activation_mode_, activation, s);

  ApplyStepScalars(frame, decision.dt, warn, node_.masses_map_, s, *s.shape_constraints_);
  s.attraction_remap_mode_ = frame.attraction_remap_mode;
  s.attraction_multiplier_ = frame.attraction_multiplier;
  DistanceConstraints& distances = *s.distance_constraints_;
  distances.rest_length_multiplier_ = frame.rest_length_multiplier;
  distances.compression_multiplier_ = frame.compression_multiplier;
  distances.stretching_multiplier_ = frame.stretching_multiplier;
  ApplyMassesToWeights(s, node_.shape_map_, node_.collision_map_);
  StepSimshape(s);
}

ShapeEvaluation ShapeDeformer::Evaluate(const ShapeFrameValues& frame, const std::vector<double>& input,
                                        DeformerHost& host, MapPort& maps, std::vector<double>& output) {
  ShapeEvaluation result;
  output = input;
  if (!frame.enable) return result;
  if (!solver_) solver_ = std::make_unique<SimshapeSolver>();
  SimshapeSolver& s = *solver_;

  const FrameTimes times = FrameTimesOf(frame, last_time_, host, s.positions_.empty());
  ApplyMassScalars(frame, s);
  result.decision = DecideFrame(times);
  const FrameDecision& decision = result.decision;
  s.world_matrix_ = frame.local_to_world;

  if (decision.initialize) {
    MeshData input_mesh;
    if (!host.ReadInputMesh(input_mesh)) input_mesh = MeshData{};
    Build(frame, decision, input_mesh, host, maps);
  }
  if (decision.simulate) {
    Step(frame, decision, input, host);
    result.stepped = true;
  }
  if (WritesOutActivation(frame.write_out_activation, node_.activation_mode_))
    host.WriteOutActivation(s.activations_);
  BlendByEnvelope(s.positions_, input, frame.envelope, output);
  last_time_ = frame.current_time;

  switch (NextActivationDisplay(node_.draw_activation_, node_.colors_showing_)) {
    case ActivationDisplay::kShowColors:
      ActivationColors(s.activations_, node_.colors_);
      host.ShowVertexColors(&node_.colors_);
      break;
    case ActivationDisplay::kHideColors: host.ShowVertexColors(nullptr); break;
    case ActivationDisplay::kLeave: break;
  }

  s.debug_data_.enabled_ = frame.debug;
  if (frame.debug) {
    const std::vector<float> shown(output.begin(), output.end());
    UpdateShapeDebugData(s, shown, frame.debug_feature, frame.debug_color, frame.debug_width,
                         frame.debug_muscle_fibers_scale);
  }
  return result;
}

}  // namespace myo_core
