#include "scenes/muscle_setup.h"

#include <algorithm>

#include "core/kernels/shape_constraints.h"
#include "core/muscle/muscle_assembly.h"
#include "core/solver/compliance.h"

namespace myo_scenes {

using namespace myo_core;

bool AssembleMuscle(const PolygonMesh& polygons, const MuscleSetupOptions& options, MuscleScene& scene,
                    std::string& error) {
  if (!BuildMeshData(polygons.points, polygons.vertex_counts, polygons.vertices, scene.mesh, error)) return false;
  const uint32_t n = scene.mesh.PointCount();
  scene.maps.SetAll("shapePreservationList", "shapePreservation", 0,
                    std::vector<float>(n, options.shape_preservation));
  scene.maps.SetAll("massList", "mass", 0, std::vector<float>(n, options.mass));
  if (options.tendon_ends > 0.0f) {
    std::vector<float> tendons(n, 0.0f);
    for (uint32_t i : EndPoints(scene.mesh.points)) tendons[i] = options.tendon_ends;
    scene.maps.SetAll("tendonsList", "tendons", 0, tendons);
  }
  MuscleAssemblyInputs inputs;
  inputs.node_name = "muscle1";
  inputs.fibers_scale = options.fibers_scale;
  inputs.warn = false;
  InitializeSolver(scene.mesh, scene.maps, inputs, scene.node, scene.solver);
  return true;
}

void ApplyFrameSettings(const FrameSettings& frame, MuscleSolver& solver) {
  solver.time_step_ = frame.dt;
  solver.iterations_ = frame.iterations;
  solver.gravity_[0] = 0.0f;
  solver.gravity_[1] = frame.gravity_y;
  solver.gravity_[2] = 0.0f;
  solver.global_damping_multiplier_ = frame.global_damping;
  solver.inertia_damper_ = frame.inertia_damper;
  SetStiffnessAndCompliance(solver, frame.stiffness, frame.dt);
  SetShapeCompliance(*solver.shape_constraints_, frame.dt * frame.dt, solver.compliance_, 0.0f, false);
  solver.edge_constraints_->activation_ = frame.activation;
  solver.volume_constraint_->volume_preservation_ = frame.volume_preservation;
}

std::vector<uint32_t> EndPoints(const std::vector<float>& points) {
  const uint32_t n = static_cast<uint32_t>(points.size() / 3);
  if (n == 0) return {};
  uint32_t low = 0, high = 0;
  for (uint32_t i = 1; i < n; ++i) {
    if (points[3 * i] < points[3 * low]) low = i;
    if (points[3 * i] > points[3 * high]) high = i;
  }
  if (low == high) return {low};
  return {std::min(low, high), std::max(low, high)};
}

PointHold::PointHold(MuscleSolver& solver, std::vector<uint32_t> points) : points_(std::move(points)) {
  for (uint32_t i : points_)
    for (int k = 0; k < 3; ++k) rest_.push_back(solver.positions_[3 * i + k]);
}

void PointHold::Weigh(MuscleSolver& solver) const {
  for (uint32_t i : points_) {
    solver.edge_constraints_->inverse_masses_[i] = 0.0f;
    solver.volume_constraint_->inverse_masses_[i] = 0.0f;
  }
}

void PointHold::Restore(MuscleSolver& solver) const {
  for (std::size_t h = 0; h < points_.size(); ++h)
    for (int k = 0; k < 3; ++k) {
      const std::size_t at = 3 * static_cast<std::size_t>(points_[h]) + k;
      solver.positions_[at] = solver.previous_positions_[at] = rest_[3 * h + k];
      solver.velocities_[at] = 0.0f;
    }
}

}  // namespace myo_scenes
