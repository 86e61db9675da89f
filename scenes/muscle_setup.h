#pragma once
// A muscle assembled from a generated or loaded mesh with uniform maps, and
// the per-frame scalars a node would set: shared by tests, benchmarks and the
// demo.

#include <cstdint>
#include <string>
#include <vector>

#include "core/maps/map_store.h"
#include "core/mesh/mesh_data.h"
#include "core/mesh/polygon_mesh.h"
#include "core/muscle/muscle_node_state.h"
#include "core/solver/muscle_solver.h"

namespace myo_scenes {

struct MuscleSetupOptions {
  float shape_preservation = 0.0f;   // uniform "shapePreservation" map
  float tendon_ends = 0.0f;          // "tendons" value at the two ends along x (0: no tendons)
  float fibers_scale = 1.0f;
  float mass = 1.0f;                 // uniform painted mass
};

struct FrameSettings {
  float dt = 1.0f / 24.0f;
  float stiffness = 5000.0f;         // pascals
  uint32_t iterations = 10;
  float gravity_y = -980.0f;         // cm / s2
  float activation = 0.0f;
  float global_damping = 0.0f;
  float inertia_damper = 0.0f;
  float volume_preservation = 1.0f;
};

struct MuscleScene {
  myo_core::MeshData mesh;
  myo_core::MapStore maps;
  myo_core::MuscleNodeState node;
  myo_core::MuscleSolver solver;
};

// Builds the mesh data and assembles the solver. Returns false with the
// mesh error when the polygons are invalid.
bool AssembleMuscle(const myo_core::PolygonMesh& polygons, const MuscleSetupOptions& options,
                    MuscleScene& scene, std::string& error);

// Sets the scalars of one frame as a node does before a step.
void ApplyFrameSettings(const FrameSettings& frame, myo_core::MuscleSolver& solver);

// Points at the two ends along x (lowest and highest x), in index order.
std::vector<uint32_t> EndPoints(const std::vector<float>& points);

// Keeps the given points where they rest: zero weight in the edge and volume
// rows, and their positions restored after each step.
class PointHold {
 public:
  PointHold(myo_core::MuscleSolver& solver, std::vector<uint32_t> points);
  void Weigh(myo_core::MuscleSolver& solver) const;
  void Restore(myo_core::MuscleSolver& solver) const;

 private:
  std::vector<uint32_t> points_;
  std::vector<float> rest_;  // 3 per held point
};

}  // namespace myo_scenes
