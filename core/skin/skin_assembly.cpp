#include "core/skin/skin_assembly.h"

#include <algorithm>

#include "core/log/logger.h"
#include "core/log/stream_text.h"
#include "core/muscle/muscle_assembly.h"
#include "core/skin/uber_assembly.h"
#include "core/skin/skin_mass_weights.h"
#include "core/solver/masses.h"

namespace myo_core {

void ReadSkinMassMap(const MapPort& maps, uint32_t map_index, uint32_t count, std::vector<float>& out) {
  // One text for the skin and the shape solver.
  ReadPaintedMasses(maps, map_index, count, "Simshape", out);
}

void InitSolverData(const MeshData& mesh, const MapPort& maps, const SkinAssemblyInputs& inputs,
                    SkinNodeState& node, SkinSolver& solver) {
  const uint32_t n = mesh.PointCount();
  solver.point_count_ = n;
  solver.world_matrix_ = inputs.world_matrix;
  solver.world_matrix_inverse_ =
      IsIdentity(inputs.world_matrix) ? inputs.world_matrix : InvertMatrix(inputs.world_matrix);
  solver.velocities_.assign(3 * static_cast<std::size_t>(n), 0.0f);
  maps.ReadFloats("globalDampingList", "globalDamping", inputs.map_index, n, 1.0f, solver.damping_weights_);
  const bool positions_fit = solver.positions_.size() == 3 * static_cast<std::size_t>(n);
  if (!inputs.read_points && !positions_fit)
    LogWarning(inputs.node_name + ": the simulated points do not match the mesh's " + StreamText(n) +
               " points. Points are read from the mesh.");
  if (inputs.read_points || !positions_fit) {
    solver.positions_ = mesh.points;
    solver.previous_positions_ = solver.positions_;
  }
  solver.mesh_measure_ = MeshArea(solver.positions_, mesh.triangle_vertices);

  solver.masses_.assign(n, 1.0f);
  ReadSkinMassMap(maps, inputs.map_index, n, node.masses_map_);
  EvaluateMasses(solver.point_mass_mode_, solver.space_scale_mode_, solver.mesh_dimension_, solver.density_,
                 solver.mesh_measure_, solver.global_mass_multiplier_, solver.space_scale_, inputs.warn, true,
                 node.masses_map_, solver.masses_);

  solver.attenuation_matrix_ = inputs.attenuation_matrix;
  solver.previous_attenuation_matrix_ = inputs.attenuation_matrix;
  solver.lambdas_.clear();
  BuildPointBlocks(n, inputs.thread_count, solver.point_blocks_);

  // Neighbour lists in the order of each point's connected edges.
  node.vertex_neighbor_offsets_.assign(n, 0);
  node.vertex_neighbor_counts_.assign(n, 0);
  if (mesh.vertex_edge_offsets.size() == n + static_cast<std::size_t>(1) &&
      mesh.vertex_connected.size() == mesh.vertex_neighbors.size()) {
    for (uint32_t i = 0; i < n; ++i) {
      node.vertex_neighbor_offsets_[i] = mesh.vertex_edge_offsets[i];
      node.vertex_neighbor_counts_[i] = mesh.vertex_edge_offsets[i + 1] - mesh.vertex_edge_offsets[i];
    }
    node.vertex_neighbors_ = mesh.vertex_neighbors;
  } else {
    node.vertex_neighbors_.clear();
  }
}

namespace {

void ReadResistanceMap(const MapPort& maps, const char* list, const char* element, uint32_t index,
                       uint32_t count, std::vector<float>& out) {
  maps.ReadFloats(list, element, index, count, 1.0f, out);
  for (float& value : out) value = std::clamp(value, 0.0f, 1.0f);
}

}  // namespace

void InitDistanceConstraints(const MeshData& mesh, const MapPort& maps, const SkinAssemblyInputs& inputs,
                             SkinNodeState& node, SkinSolver& solver) {
  const uint32_t n = solver.point_count_;
  ReadResistanceMap(maps, "compressionResistanceList", "compressionResistance", inputs.map_index, n,
                    node.compression_map_);
  ReadResistanceMap(maps, "stretchingResistanceList", "stretchingResistance", inputs.map_index, n,
                    node.stretching_map_);
  BuildDistanceConstraints(*solver.distance_constraints_, mesh.edge_vertices, solver.positions_,
                           node.compression_map_, node.stretching_map_, solver.lambdas_);
}

void InitShapeConstraints(const MeshData& mesh, const MapPort& maps, const SkinAssemblyInputs& inputs,
                          SkinNodeState& node, SkinSolver& solver) {
  maps.ReadFloats("shapePreservationList", "shapePreservation", inputs.map_index, solver.point_count_, 0.0f,
                  node.shape_map_);
  BuildShapeConstraints(*solver.shape_constraints_, solver.positions_, node.shape_map_, mesh.vertex_connected,
                        node.vertex_neighbor_counts_, node.vertex_neighbor_offsets_, solver.lambdas_);
}

bool InitSkinData(const MeshData& mesh, MapPort& maps, const SkinAssemblyInputs& inputs, SkinNodeState& node,
                  SkinSolver& solver) {
  LogDebug("Initializing " + inputs.node_type_name + " data...");
  DeformerHost* progress = solver.positions_.empty() ? inputs.progress : nullptr;
  if (progress != nullptr)
    progress->BeginProgress(static_cast<int>(mesh.PointCount()) + 4,
                            std::string(kLogCommonTag) + " Initializing " + inputs.node_type_name + "...");
  auto advance = [progress] {
    if (progress != nullptr) progress->AdvanceProgress();
  };

  InitSolverData(mesh, maps, inputs, node, solver);
  advance();
  InitDistanceConstraints(mesh, maps, inputs, node, solver);
  advance();
  InitShapeConstraints(mesh, maps, inputs, node, solver);
  advance();

  bool bound = false;
  if (inputs.reference_mesh == nullptr) {
    LogError(inputs.node_name + ": no reference mesh to bind the skin to.");
  } else {
    UberBindingInput binding;
    binding.reference_mesh = inputs.reference_mesh;
    binding.reference_matrix = inputs.reference_matrix;
    binding.map_index = inputs.map_index;
    binding.max_sliding_distance = inputs.max_sliding_distance;
    binding.world_matrix = inputs.world_matrix;
    binding.progress = progress;
    bound = InitUberConstraints(binding, maps, solver.positions_, solver.lambdas_, node.max_sliding_map_,
                                *solver.uber_constraints_);
  }
  advance();
  if (progress != nullptr) progress->EndProgress();

  ApplyMassesToWeights(solver, node.shape_map_);
  LogDebug(inputs.node_name + " data initialized.");
  return bound;
}

}  // namespace myo_core
