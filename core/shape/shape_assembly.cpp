#include "core/shape/shape_assembly.h"

#include <algorithm>

#include "core/kernels/distance_constraints.h"
#include "core/kernels/shape_constraints.h"
#include "core/log/logger.h"
#include "core/log/stream_text.h"
#include "core/muscle/muscle_assembly.h"
#include "core/solver/masses.h"

namespace myo_core {

namespace {

void ReadClampedMap(const MapPort& maps, const char* list, const char* element, uint32_t index, uint32_t count,
                    float fallback, std::vector<float>& out) {
  maps.ReadFloats(list, element, index, count, fallback, out);
  for (float& value : out) value = std::clamp(value, 0.0f, 1.0f);
}

}  // namespace

const MeshData& ChooseRestMesh(const MeshData* rest, const MeshData& input) {
  if (rest == nullptr) return input;
  if (rest->PointCount() == 0) {
    ReportWarning("Could not retrieve rest mesh data. Input rest mesh will be ignored.", "");
    return input;
  }
  if (rest->PointCount() != input.PointCount()) {
    LogWarning("Number of vertices in the rest mesh does not match with the number of vertices of the mesh to "
               "deform: expected " +
               StreamText(input.PointCount()) + ", got " + StreamText(rest->PointCount()) +
               ". Input rest mesh will be ignored.");
    return input;
  }
  return *rest;
}

void InitSimshapeData(const MeshData& rest, const MapPort& maps, const ShapeAssemblyInputs& inputs,
                      ShapeNodeState& node, SimshapeSolver& solver) {
  const uint32_t n = rest.PointCount();
  const std::size_t floats = 3 * static_cast<std::size_t>(n);
  // A rebuild inside a simulation keeps the simulated points, as long as they
  // are points of this mesh.
  const bool keep = !inputs.read_points && solver.positions_.size() == floats;
  if (!inputs.read_points && !keep)
    LogWarning(inputs.node_name + ": the simulated points do not match the mesh's " + StreamText(n) +
               " points. Points are read from the mesh.");
  if (!keep) {
    solver.rest_positions_ = rest.points;
    solver.positions_ = rest.points;
    solver.previous_positions_ = rest.points;
    LogDebug("Reading input geometry points: " + StreamText(n));
  } else {
    LogDebug("Skipping reading rest mesh points");
  }
  solver.point_count_ = n;
  if (n == 0) LogDebug("0 amount of vertices read from input mesh");
  if (solver.rest_positions_.size() != floats)
    LogDebug("Number of points differ from the data stored in the rest mesh points array");

  node.triangle_vertices_ = rest.triangle_vertices;
  node.polygon_triangle_counts_ = rest.polygon_triangle_counts;
  node.polygon_triangle_offsets_.assign(rest.polygon_triangle_counts.size(), 0);
  int32_t first = 0;
  for (std::size_t p = 0; p < rest.polygon_triangle_counts.size(); ++p) {
    node.polygon_triangle_offsets_[p] = first;
    first += rest.polygon_triangle_counts[p];
  }
  solver.mesh_measure_ = MeshArea(solver.positions_, node.triangle_vertices_);

  solver.masses_.assign(n, 1.0f);
  ReadPaintedMasses(maps, inputs.map_index, n, "Simshape", node.masses_map_);
  EvaluateMasses(solver.point_mass_mode_, solver.space_scale_mode_, solver.mesh_dimension_, solver.density_,
                 solver.mesh_measure_, solver.global_mass_multiplier_, solver.space_scale_, inputs.warn, true,
                 node.masses_map_, solver.masses_);

  solver.velocities_.assign(floats, 0.0f);
  maps.ReadFloats("globalDampingList", "globalDamping", inputs.map_index, n, 1.0f, solver.damping_weights_);
  solver.attraction_.assign(n, 0.0f);
  solver.activations_.assign(n, 0.0f);
  if (inputs.host != nullptr) inputs.host->WriteOutActivation(solver.activations_);

  solver.attenuation_matrix_ = inputs.attenuation_matrix;
  solver.previous_attenuation_matrix_ = inputs.attenuation_matrix;
  solver.lambdas_.clear();

  BuildPointBlocks(n, inputs.thread_count, solver.point_blocks_);
  const PointBlocks& blocks = solver.point_blocks_;
  const uint32_t threads = static_cast<uint32_t>(blocks.thread_count_);
  LogDebug("Number of threads for slide collision constraints: " + StreamText(blocks.thread_count_));
  LogDebug("Thread default size: " + StreamText(threads == 0 ? 0u : n / threads));
  LogDebug("Thread size ramainder: " + StreamText(threads == 0 ? 0u : n % threads));
  LogDebug("Point based thread max size: " + StreamText(blocks.thread_block_max_));
}

void InitAttractionForces(const MapPort& maps, const ShapeAssemblyInputs& inputs, SimshapeSolver& solver) {
  maps.ReadFloats("attractForceList", "attractForce", inputs.map_index, solver.point_count_, 1.0f,
                  solver.attract_forces_);
  LogDebug("Reading attraction weights: " + StreamText(solver.attract_forces_.size()));
}

void InitShapeDistanceConstraints(const MeshData& rest, const MapPort& maps, const ShapeAssemblyInputs& inputs,
                                  SimshapeSolver& solver) {
  const uint32_t n = solver.point_count_;
  std::vector<float> compression, stretching;  // N each, for the edge means only
  ReadClampedMap(maps, "compressionResistanceList", "compressionResistance", inputs.map_index, n, 0.0f,
                 compression);
  ReadClampedMap(maps, "stretchingResistanceList", "stretchingResistance", inputs.map_index, n, 1.0f, stretching);
  LogDebug("Reading compression weights: " + StreamText(compression.size()));
  LogDebug("Reading stretching weights: " + StreamText(stretching.size()));
  DistanceConstraints& group = *solver.distance_constraints_;
  BuildDistanceConstraints(group, rest.edge_vertices, solver.positions_, compression, stretching, solver.lambdas_);
  for (uint32_t e = 0; e < group.RowCount(); ++e)
    if (static_cast<double>(group.rest_lengths_[e]) < kEpsilonDouble)
      LogDebug("Overlapping vertices during initialization for edge: " + StreamText(e));
}

void InitShapeTriangles(const MeshData& rest, const MapPort& maps, const ShapeAssemblyInputs& inputs,
                        ShapeNodeState& node, SimshapeSolver& solver) {
  const uint32_t n = solver.point_count_;
  maps.ReadFloats("shapePreservationList", "shapePreservation", inputs.map_index, n, 0.0f, node.shape_map_);
  std::vector<int32_t> counts(n, 0), offsets(n, 0);  // N each
  const bool whole = rest.vertex_edge_offsets.size() == static_cast<std::size_t>(n) + 1 &&
                     rest.vertex_connected.size() == rest.vertex_neighbors.size();
  if (whole)
    for (uint32_t i = 0; i < n; ++i) {
      offsets[i] = rest.vertex_edge_offsets[i];
      counts[i] = rest.vertex_edge_offsets[i + 1] - rest.vertex_edge_offsets[i];
    }
  BuildShapeConstraints(*solver.shape_constraints_, solver.positions_, node.shape_map_, rest.vertex_connected,
                        counts, offsets, solver.lambdas_);
}

void SetPositionsFromAnim(const MeshData* anim, const MeshData& input, SimshapeSolver& solver) {
  const std::vector<float>* points = &input.points;
  if (anim != nullptr) {
    if (anim->PointCount() == 0) {
      ReportWarning("Could not retrieve animated mesh data. Input anim mesh will be ignored.", "");
    } else if (anim->PointCount() != solver.point_count_) {
      ReportWarning("Inconsistency in the amount of vertices between the animated mesh and the simulated mesh. "
                    "Input anim mesh will be ignored.",
                    "");
    } else {
      points = &anim->points;
    }
  }
  solver.positions_ = *points;
  solver.previous_positions_ = *points;
}

}  // namespace myo_core
