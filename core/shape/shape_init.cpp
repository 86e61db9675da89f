#include "core/shape/shape_init.h"

#include <chrono>

#include "core/log/logger.h"
#include "core/shape/shape_mass_weights.h"

namespace myo_core {

namespace {

void BindCollider(const ShapeBuildMeshes& meshes, const ShapeBuildSettings& settings, const MapPort& maps,
                  const ShapeAssemblyInputs& inputs, ShapeNodeState& node, SimshapeSolver& solver) {
  if (!settings.has_collider || meshes.binding_collider == nullptr) {
    LogDebug("Delete collider data structure");
    solver.slide_collision_constraints_.reset();
    return;
  }
  LogDebug("Use colliders for Simshape.");
  if (!solver.slide_collision_constraints_) {
    LogDebug("Create collider data structure.");
    solver.slide_collision_constraints_ = std::make_unique<SlideCollisionConstraints>();
    solver.slide_collision_constraints_->keep_orientation_ = true;
  }
  if (meshes.binding_collider->PointCount() == 0 || meshes.collider == nullptr ||
      meshes.collider->PointCount() == 0) {
    ReportWarning("Could not retrieve collider mesh data.", "");
    solver.slide_collision_constraints_.reset();
    return;
  }
  SlideCollisionBindingInput binding;
  binding.binding_mesh = meshes.binding_collider;
  binding.binding_matrix = meshes.binding_matrix;
  binding.current_mesh = meshes.collider;
  binding.map_index = inputs.map_index;
  binding.max_distance = settings.max_collision_sliding_distance;
  binding.world_matrix = inputs.world_matrix;
  InitSlideCollisionConstraints(binding, maps, solver.positions_, solver.lambdas_, node.collision_map_,
                                node.mesh_diagonal_, *solver.slide_collision_constraints_);
}

}  // namespace

void InitSimshape(const ShapeBuildMeshes& meshes, const ShapeBuildSettings& settings, const MapPort& maps,
                  const ShapeAssemblyInputs& inputs, ShapeNodeState& node, SimshapeSolver& solver) {
  const auto start = std::chrono::steady_clock::now();
  static const MeshData kNoMesh;
  const MeshData& input = meshes.input != nullptr ? *meshes.input : kNoMesh;
  DeformerHost* progress = solver.positions_.empty() ? inputs.host : nullptr;
  if (progress != nullptr)
    progress->BeginProgress(settings.initialize_to_anim ? 6 : 7,
                            "[MyoForge] Initializing " + inputs.node_type_name + "...");
  auto advance = [progress] {
    if (progress != nullptr) progress->AdvanceProgress();
  };
  LogDebug("Initializing " + inputs.node_name + " data...");

  const MeshData& rest = ChooseRestMesh(meshes.rest, input);
  InitSimshapeData(rest, maps, inputs, node, solver);
  advance();
  node.draw_activation_ = settings.draw_activation;
  node.colors_.assign(4 * static_cast<std::size_t>(solver.point_count_), 0.0f);
  for (std::size_t i = 3; i < node.colors_.size(); i += 4) node.colors_[i] = 1.0f;
  advance();
  InitAttractionForces(maps, inputs, solver);
  advance();
  InitShapeDistanceConstraints(rest, maps, inputs, solver);
  advance();
  InitShapeTriangles(rest, maps, inputs, node, solver);
  advance();

  // With a collision rest mesh the binding must see the rest pose, so the
  // jump to the anim pose waits until the collider is bound.
  bool at_anim = false;
  if (settings.initialize_to_anim && !meshes.collision_rest_connected) {
    SetPositionsFromAnim(meshes.anim, input, solver);
    at_anim = true;
  }
  node.has_collider_ = settings.has_collider;
  BindCollider(meshes, settings, maps, inputs, node, solver);
  advance();

  node.activation_mode_ = settings.activation.mode;
  ActivationSetup activation = settings.activation;
  if (activation.fiber_surface == nullptr) activation.fiber_surface = meshes.input;
  InitActivations(activation, settings.activation_frame, rest, solver);
  if (settings.initialize_to_anim && !at_anim) SetPositionsFromAnim(meshes.anim, input, solver);

  if (progress != nullptr) progress->EndProgress();
  ApplyMassesToWeights(solver, node.shape_map_, node.collision_map_);
  LogDebug(inputs.node_name + " data initialized.");
  if (GetLevel() == 0) {
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start);
    LogDebug("Init Simshape time (ns): " + std::to_string(ns.count()));
  }
}

}  // namespace myo_core
