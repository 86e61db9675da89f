#include "core/muscle/muscle_assembly.h"

#include <algorithm>

#include "core/kernels/edge_constraints_build.h"
#include "core/log/logger.h"
#include "core/log/stream_text.h"
#include "core/muscle/mesh_volume.h"
#include "core/muscle/muscle_mass_weights.h"
#include "core/solver/masses.h"

namespace myo_core {

namespace {

// A point surely outside the mesh: the far corner of the bounding box pushed
// out by the box's size again, in the space of the world matrix.
Vec3 OutsidePoint(const std::vector<float>& points, const Matrix& world_matrix) {
  if (points.size() < 3) return {0.0f, 0.0f, 0.0f};
  Vec3 low = Load3(points.data(), 0), high = low;
  const uint32_t count = static_cast<uint32_t>(points.size() / 3);
  for (uint32_t i = 1; i < count; ++i) {
    const Vec3 p = Load3(points.data(), i);
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  low = TransformPoint(low, world_matrix);
  high = TransformPoint(high, world_matrix);
  const Vec3 size = high - low;
  return size + size + low;
}

}  // namespace

float MeshArea(const std::vector<float>& positions, const std::vector<int32_t>& triangles) {
  float sum = 0.0f;
  const float* p = positions.data();
  for (std::size_t t = 0; t + 2 < triangles.size(); t += 3) {
    const Vec3 a = Load3(p, triangles[t]), b = Load3(p, triangles[t + 1]), c = Load3(p, triangles[t + 2]);
    sum += Length(Cross(b - a, c - a));
  }
  return sum * 0.5f;
}

void InitializeSolverBase(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                          MuscleKind kind, MuscleNodeState& node, SolverData& solver) {
  const uint32_t n = solver.point_count_;
  solver.world_matrix_ = inputs.world_matrix;
  solver.masses_.assign(n, 1.0f);
  solver.velocities_.assign(3 * static_cast<std::size_t>(n), 0.0f);
  maps.ReadFloats("globalDampingList", "globalDamping", inputs.map_index, n, 1.0f, solver.damping_weights_);
  if (inputs.reset_positions) {
    solver.positions_ = mesh.points;
    solver.positions_.resize(3 * static_cast<std::size_t>(n), 0.0f);
    solver.previous_positions_ = solver.positions_;
  }
  if (kind == MuscleKind::kMuscle) {
    const Vec3 outside = OutsidePoint(mesh.points, inputs.world_matrix);
    ReadMeshTopology(mesh, node);
    solver.mesh_measure_ = MeshVolume(solver.positions_, node.triangle_vertices_, outside);
  } else {
    ReadMeshTopology(mesh, node);
    solver.mesh_measure_ = MeshArea(solver.positions_, node.triangle_vertices_);
  }

  solver.masses_.assign(n, 1.0f);
  ReadPaintedMasses(maps, inputs.map_index, n, kind == MuscleKind::kMuscle ? "Muscle" : "Ribbon Muscle",
                    node.masses_map_);
  EvaluateMasses(solver.point_mass_mode_, solver.space_scale_mode_, solver.mesh_dimension_, solver.density_,
                 solver.mesh_measure_, solver.global_mass_multiplier_, solver.space_scale_, inputs.warn,
                 true, node.masses_map_, solver.masses_);

  solver.attenuation_matrix_ = inputs.attenuation_matrix;
  solver.previous_attenuation_matrix_ = inputs.attenuation_matrix;
  solver.lambdas_.clear();
}

namespace {

// The family's build; `volume` is null for the ribbon. A first build shows its
// progress, one unit per table.
void InitializeMuscleFamily(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                            MuscleKind kind, MuscleNodeState& node, MuscleFamilySolver& solver,
                            VolumeConstraint* volume) {
  LogDebug("Initializing " + inputs.node_name + " data...");
  DeformerHost* progress = solver.positions_.empty() ? inputs.progress : nullptr;
  if (progress != nullptr)
    progress->BeginProgress(kind == MuscleKind::kMuscle ? 7 : 6,
                            std::string("[MyoForge] Initializing ") +
                                (kind == MuscleKind::kMuscle ? "MyoMuscle" : "MyoRibbonMuscle") + "...");
  auto advance = [progress] {
    if (progress != nullptr) progress->AdvanceProgress();
  };

  solver.point_count_ = mesh.PointCount();
  InitializeSolverBase(mesh, maps, inputs, kind, node, solver);
  advance();
  BuildEdgeConstraints(mesh, maps, inputs.map_index, inputs.fibers_scale, node, solver,
                       *solver.edge_constraints_);
  advance();
  maps.ReadFloats("shapePreservationList", "shapePreservation", inputs.map_index, solver.point_count_, 0.0f,
                  node.shape_map_);
  // Shape rows take each point's connected points in the host's own order
  // for them, which may differ from the order of its connected edges.
  BuildShapeConstraints(*solver.shape_constraints_, solver.positions_, node.shape_map_, mesh.vertex_connected,
                        node.vertex_neighbor_counts_, node.vertex_neighbor_offsets_, solver.lambdas_);
  advance();
  AttachmentConstraints& attachments = *solver.attachment_constraints_;
  attachments.hard_ = inputs.hard_attachments;
  attachments.matrices_ = inputs.attachment_matrices;
  BuildAttachmentConstraints(attachments, solver, inputs.attachment_indices, maps, node.attachment_map_,
                             inputs.world_matrix);
  advance();
  SlideOnSegmentConstraints& segments = *solver.slide_on_segment_constraints_;
  segments.matrices_ = inputs.segment_matrices;
  BuildSlideOnSegmentConstraints(segments, solver, inputs.segment_indices, maps, node.slide_on_segment_map_,
                                 inputs.world_matrix);
  advance();
  solver.attachment_to_geo_constraints_->hard_ = inputs.hard_attachments;
  BuildGeometryConstraints(inputs.targets, inputs.node_name, maps, inputs.map_index, inputs.max_sliding_distance,
                           solver.point_count_, inputs.world_matrix, node, solver);
  advance();
  if (volume != nullptr) {
    BuildVolumeConstraint(node.triangle_vertices_, solver.positions_, solver.point_count_, solver.lambdas_, *volume);
    advance();
  }
  if (progress != nullptr) progress->EndProgress();
  ApplyMassesToWeights(solver, volume, node.shape_map_, node.attachment_map_, node.attachment_to_geo_map_,
                       node.slide_on_segment_map_, node.slide_on_geometry_map_);
  LogDebug(inputs.node_name + " data initialized.");
}

}  // namespace

void InitializeSolver(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                      MuscleNodeState& node, MuscleSolver& solver) {
  InitializeMuscleFamily(mesh, maps, inputs, MuscleKind::kMuscle, node, solver, solver.volume_constraint_.get());
}

void InitializeSolver(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                      MuscleNodeState& node, RibbonMuscleSolver& solver) {
  InitializeMuscleFamily(mesh, maps, inputs, MuscleKind::kRibbon, node, solver, nullptr);
}

}  // namespace myo_core
