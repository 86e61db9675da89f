#pragma once
// A shape solver on a square grid that hangs over a collider grid, assembled
// with the whole build and uniform maps, and the per-frame scalars a node
// would set: shared by tests and benchmarks.

#include <cstdint>
#include <string>
#include <vector>

#include "core/maps/map_store.h"
#include "core/mesh/mesh_data.h"
#include "core/mesh/world_space.h"
#include "core/shape/shape_init.h"
#include "core/shape/simshape_solver.h"
#include "core/solver/compliance.h"
#include "scenes/muscle_meshes.h"

namespace myo_scenes {

struct ShapeSetupOptions {
  uint32_t cells = 9;                 // shape grid of cells x cells quads, (cells + 1)^2 points
  float size = 10.0f;                 // edge length of the square grids
  float height = 0.5f;                // shape above the collider grid, along y
  float attract_force = 1.0f;         // uniform "attractForce"
  float shape_preservation = 0.0f;    // uniform "shapePreservation"
  float collision_weight = 1.0f;      // uniform "slideCollisionConstraints"
  uint32_t collider_cells = 0;        // collider grid of c x c quads (2 c^2 triangles); 0: no collider
  float max_collision_sliding_distance = 0.0f;
  int32_t thread_count = 1;           // point blocks
  myo_core::Matrix world_matrix = myo_core::IdentityMatrix();     // the shape's object to world space
  myo_core::Matrix collider_matrix = myo_core::IdentityMatrix();  // the collider's
};

struct ShapeFrameSettings {
  float dt = 1.0f / 24.0f;
  float stiffness = 5000.0f;
  uint32_t iterations = 3;
  float gravity[3] = {0.0f, -980.0f, 0.0f};
  float attraction_multiplier = 1.0f;
  int32_t attraction_remap_mode = 0;  // linear
};

struct ShapeScene {
  myo_core::MeshData mesh;      // the shape, object space
  myo_core::MeshData collider;  // object space with its world space
  myo_core::MapStore maps;
  myo_core::ShapeNodeState node;
  myo_core::SimshapeSolver solver;
};

// Builds the grids and paints the maps. False with a message when a grid
// cannot be built.
inline bool MakeShapeInputs(const ShapeSetupOptions& options, ShapeScene& scene, std::string& error) {
  myo_core::PolygonMesh shape = MakeGrid(options.cells, options.cells, options.size, options.size);
  for (std::size_t i = 1; i < shape.points.size(); i += 3) shape.points[i] += options.height;
  if (!myo_core::BuildMeshData(shape.points, shape.vertex_counts, shape.vertices, scene.mesh, error)) return false;
  if (options.collider_cells > 0) {
    const myo_core::PolygonMesh collider =
        MakeGrid(options.collider_cells, options.collider_cells, options.size, options.size);
    if (!myo_core::BuildMeshData(collider.points, collider.vertex_counts, collider.vertices, scene.collider, error))
      return false;
    myo_core::FillWorldSpace(options.collider_matrix, scene.collider);
  }
  const uint32_t n = scene.mesh.PointCount();
  auto paint = [&](const char* list, const char* element, float value) {
    scene.maps.SetAll(list, element, 0, std::vector<float>(n, value));
  };
  paint("attractForceList", "attractForce", options.attract_force);
  paint("shapePreservationList", "shapePreservation", options.shape_preservation);
  paint("slideCollisionConstraintsList", "slideCollisionConstraints", options.collision_weight);
  return true;
}

// InitSimshape of `solver` on the scene's meshes and maps, as a node's first
// build with the collider bound on its own pose.
inline void BuildShapeSolver(const ShapeSetupOptions& options, const ShapeScene& scene,
                             myo_core::ShapeNodeState& node, myo_core::SimshapeSolver& solver) {
  const bool with_collider = options.collider_cells > 0;
  myo_core::ShapeBuildMeshes meshes;
  meshes.input = &scene.mesh;
  if (with_collider) {
    meshes.binding_collider = &scene.collider;
    meshes.binding_matrix = options.collider_matrix;
    meshes.collider = &scene.collider;
  }
  myo_core::ShapeBuildSettings settings;
  settings.has_collider = with_collider;
  settings.max_collision_sliding_distance = options.max_collision_sliding_distance;
  myo_core::ShapeAssemblyInputs inputs;
  inputs.node_name = "shapeScene";
  inputs.world_matrix = options.world_matrix;
  inputs.thread_count = options.thread_count;
  myo_core::InitSimshape(meshes, settings, scene.maps, inputs, node, solver);
  solver.world_matrix_ = options.world_matrix;
  solver.world_matrix_inverse_ = myo_core::InvertMatrix(options.world_matrix);
}

// Both of the above. False with a message when a grid cannot be built or a
// collider asked for is not bound.
inline bool AssembleShape(const ShapeSetupOptions& options, ShapeScene& scene, std::string& error) {
  if (!MakeShapeInputs(options, scene, error)) return false;
  BuildShapeSolver(options, scene, scene.node, scene.solver);
  if (options.collider_cells > 0 && !scene.solver.slide_collision_constraints_) {
    error = "the shape could not be bound to its collider";
    return false;
  }
  return true;
}

// Sets the scalars of one frame as a node does before a step: the targets
// (3N, object space) and, with a collider, the collider placed in the world
// by `collider_matrix`.
inline void ApplyShapeFrame(const ShapeFrameSettings& frame, const std::vector<float>& targets,
                            const myo_core::Matrix& collider_matrix, ShapeScene& scene) {
  myo_core::SimshapeSolver& solver = scene.solver;
  solver.time_step_ = frame.dt;
  solver.iterations_ = frame.iterations;
  for (int k = 0; k < 3; ++k) solver.gravity_[k] = frame.gravity[k];
  solver.attraction_multiplier_ = frame.attraction_multiplier;
  solver.attraction_remap_mode_ = frame.attraction_remap_mode;
  solver.attraction_targets_ = targets;
  myo_core::SetStiffnessAndCompliance(solver, frame.stiffness, frame.dt);
  myo_core::SetShapeCompliance(*solver.shape_constraints_, frame.dt * frame.dt, solver.compliance_, 0.0f, false);
  if (solver.slide_collision_constraints_) {
    myo_core::FillWorldSpace(collider_matrix, scene.collider);
    myo_core::ReadColliderMesh(scene.collider, false, *solver.slide_collision_constraints_);
  }
}

}  // namespace myo_scenes
