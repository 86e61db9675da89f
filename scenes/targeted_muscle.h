#pragma once
// A muscle with one target mesh that it slides on or is attached to, with
// uniform maps: shared by the tests and benchmarks of the geometry
// constraints.

#include <string>
#include <vector>

#include "core/maps/map_store.h"
#include "core/mesh/mesh_data.h"
#include "core/mesh/world_space.h"
#include "core/mesh/polygon_mesh.h"
#include "core/muscle/muscle_assembly.h"
#include "core/muscle/muscle_node_state.h"
#include "core/solver/muscle_solver.h"

namespace myo_scenes {

struct TargetedMuscleOptions {
  float slide_weight = 0.0f;           // uniform "slideOnGeometryConstraints"
  float attachment_weight = 0.0f;      // uniform "attachmentToGeoConstraints"
  float max_sliding_distance = 0.0f;   // attribute "maxSlidingDistance"
  bool hard_attachments = true;
  myo_core::Matrix target_matrix = myo_core::IdentityMatrix();
};

// Holds the meshes that its inputs point at, so it stays where it is built.
struct TargetedMuscle {
  TargetedMuscle() = default;
  TargetedMuscle(const TargetedMuscle&) = delete;
  TargetedMuscle& operator=(const TargetedMuscle&) = delete;

  myo_core::MeshData muscle_mesh;
  myo_core::MeshData target_mesh;
  myo_core::MapStore maps;
  myo_core::MuscleNodeState node;
  myo_core::MuscleSolver solver;
  myo_core::MuscleAssemblyInputs inputs;

  // The target's matrix of a new frame, refreshed as the node does before a step.
  void MoveTarget(const myo_core::Matrix& matrix) {
    myo_core::FillWorldSpace(matrix, target_mesh);
    inputs.targets[0].world_matrix = matrix;
    myo_core::UpdateTargets(solver.targets_, inputs.targets, false);
  }
};

// Builds both meshes, paints the uniform maps on target element 0 and
// assembles the solver. Returns false with the mesh error when a mesh is invalid.
inline bool AssembleTargetedMuscle(const myo_core::PolygonMesh& muscle, const myo_core::PolygonMesh& target,
                                   const TargetedMuscleOptions& options, TargetedMuscle& scene,
                                   std::string& error) {
  using namespace myo_core;
  if (!BuildMeshData(muscle.points, muscle.vertex_counts, muscle.vertices, scene.muscle_mesh, error) ||
      !BuildMeshData(target.points, target.vertex_counts, target.vertices, scene.target_mesh, error))
    return false;
  FillWorldSpace(options.target_matrix, scene.target_mesh);
  const uint32_t n = scene.muscle_mesh.PointCount();
  scene.maps.SetAll("targets", "slideOnGeometryConstraints", 0, std::vector<float>(n, options.slide_weight));
  scene.maps.SetAll("targets", "attachmentToGeoConstraints", 0, std::vector<float>(n, options.attachment_weight));
  scene.inputs.node_name = "muscle1";
  scene.inputs.warn = false;
  scene.inputs.hard_attachments = options.hard_attachments;
  scene.inputs.max_sliding_distance = options.max_sliding_distance;
  scene.inputs.targets = {TargetInput{"target1", 0, &scene.target_mesh, options.target_matrix}};
  InitializeSolver(scene.muscle_mesh, scene.maps, scene.inputs, scene.node, scene.solver);
  return true;
}

}  // namespace myo_scenes
