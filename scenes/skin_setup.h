#pragma once
// A skin over a reference mesh, assembled from generated grids with uniform
// maps, and the per-frame scalars a node would set: shared by tests and
// benchmarks.

#include <cstdint>
#include <string>

#include "core/maps/map_store.h"
#include "core/mesh/mesh_data.h"
#include "core/mesh/world_space.h"
#include "core/skin/skin_assembly.h"
#include "core/skin/uber_assembly.h"
#include "core/solver/compliance.h"
#include "scenes/muscle_meshes.h"

namespace myo_scenes {

struct SkinSetupOptions {
  uint32_t cells = 9;               // grid of cells x cells quads, (cells + 1)^2 points
  float size = 10.0f;               // edge length of the square grids
  float height = 0.5f;              // skin above the reference grid, along y
  float hard = 1.0f;                // uniform "hardConstraints"
  float soft = 0.0f;                // uniform "softConstraints"
  float slide = 0.0f;               // uniform "slideConstraints"
  float shape_preservation = 0.0f;  // uniform "shapePreservation"
  float max_sliding_distance = 0.0f;
  int32_t thread_count = 1;         // point blocks
};

struct SkinFrameSettings {
  float dt = 1.0f / 24.0f;
  float stiffness = 5000.0f;
  uint32_t iterations = 10;
  float gravity[3] = {0.0f, -980.0f, 0.0f};
  int32_t sliding_mode = 0;        // 0 Fast, 1 Quality
};

struct SkinScene {
  myo_core::MeshData mesh;            // the skin, object space
  myo_core::MeshData reference_mesh;  // the reference, object space with its world space
  myo_core::MapStore maps;
  myo_core::SkinNodeState node;
  myo_core::SkinSolver solver;
};

// Builds both grids, paints the maps and runs InitSkinData. False with a
// message when a grid or the binding fails.
inline bool AssembleSkin(const SkinSetupOptions& options, SkinScene& scene, std::string& error) {
  myo_core::PolygonMesh skin = MakeGrid(options.cells, options.cells, options.size, options.size);
  for (std::size_t i = 1; i < skin.points.size(); i += 3) skin.points[i] += options.height;
  const myo_core::PolygonMesh reference = MakeGrid(options.cells, options.cells, options.size, options.size);
  if (!myo_core::BuildMeshData(skin.points, skin.vertex_counts, skin.vertices, scene.mesh, error)) return false;
  if (!myo_core::BuildMeshData(reference.points, reference.vertex_counts, reference.vertices, scene.reference_mesh,
                               error))
    return false;
  myo_core::FillWorldSpace(myo_core::IdentityMatrix(), scene.reference_mesh);

  const uint32_t n = scene.mesh.PointCount();
  auto paint = [&](const char* list, const char* element, float value) {
    scene.maps.SetAll(list, element, 0, std::vector<float>(n, value));
  };
  paint("hardConstraintsList", "hardConstraints", options.hard);
  paint("softConstraintsList", "softConstraints", options.soft);
  paint("slideConstraintsList", "slideConstraints", options.slide);
  paint("shapePreservationList", "shapePreservation", options.shape_preservation);

  myo_core::SkinAssemblyInputs inputs;
  inputs.node_name = "skinScene";
  inputs.thread_count = options.thread_count;
  inputs.reference_mesh = &scene.reference_mesh;
  inputs.max_sliding_distance = options.max_sliding_distance;
  if (!myo_core::InitSkinData(scene.mesh, scene.maps, inputs, scene.node, scene.solver)) {
    error = "the skin could not be bound to its reference";
    return false;
  }
  return true;
}

// Sets the scalars of one frame as a node does before a step, and reads the
// reference mesh placed in the world by `reference_matrix`.
inline void ApplySkinFrame(const SkinFrameSettings& frame, const myo_core::Matrix& reference_matrix,
                           SkinScene& scene) {
  myo_core::SkinSolver& solver = scene.solver;
  solver.time_step_ = frame.dt;
  solver.iterations_ = frame.iterations;
  for (int k = 0; k < 3; ++k) solver.gravity_[k] = frame.gravity[k];
  solver.sliding_constraints_mode_ = frame.sliding_mode;
  myo_core::SetStiffnessAndCompliance(solver, frame.stiffness, frame.dt);
  myo_core::SetShapeCompliance(*solver.shape_constraints_, frame.dt * frame.dt, solver.compliance_, 0.0f, false);
  myo_core::FillWorldSpace(reference_matrix, scene.reference_mesh);
  myo_core::ReadReferenceMesh(scene.reference_mesh, reference_matrix, *solver.uber_constraints_);
}

}  // namespace myo_scenes
