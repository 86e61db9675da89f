#pragma once
// Assembly of a muscle or ribbon muscle solver from a mesh, its matrices and
// its painted maps. It captures every rest value and lays out lambdas_ in
// group order.

#include <cstdint>
#include <string>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"
#include "core/muscle/muscle_node_state.h"
#include "core/solver/muscle_solver.h"

namespace myo_core {

struct MuscleAssemblyInputs {
  std::string node_name;               // for messages
  DeformerHost* progress = nullptr;    // shows the progress of a first build, when given
  uint32_t map_index = 0;              // geometry index: the list element the maps are read from
  Matrix world_matrix = IdentityMatrix();
  Matrix attenuation_matrix = IdentityMatrix();
  float fibers_scale = 1.0f;           // attribute "debugFibersScale"
  bool reset_positions = true;         // take positions from the mesh, not from the simulation
  bool warn = true;                    // the animation is not playing

  // Attachments to transforms: the logical indices of the elements of
  // "attachmentConstraintsList" whose "attachmentMatrix" is connected, and
  // those matrices in world space, in the same order (A each).
  std::vector<uint32_t> attachment_indices;
  std::vector<Matrix> attachment_matrices;
  bool hard_attachments = true;        // attribute "hardAttachments"
  // Slide on segment: the logical indices of the elements of
  // "slideOnSegmentConstraintsList" with root and tip connected (S), and
  // their matrices in world space (2S: root of segment s at 2s, tip at 2s + 1).
  std::vector<uint32_t> segment_indices;
  std::vector<Matrix> segment_matrices;
  // Geometry: the connected elements of "targets" in order of connection
  // (T), and the attribute "maxSlidingDistance".
  std::vector<TargetInput> targets;
  float max_sliding_distance = 0.0f;
};

// The two members of the family differ in their measure and their names.
enum class MuscleKind { kMuscle, kRibbon };

// The state every muscle family build starts from: points, velocities 0,
// damping weights, the mesh measure (the enclosed volume of a muscle, the
// area of a ribbon), masses and the topology of the mesh. Empties lambdas_.
// The mass scalars of the solver must be set beforehand.
void InitializeSolverBase(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                          MuscleKind kind, MuscleNodeState& node, SolverData& solver);

// Base, then edges, shape preservation, attachments, slide on segment,
// attachments to and slides on geometry, and (muscle only) volume, then the
// masses folded into the weights.
void InitializeSolver(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                      MuscleNodeState& node, MuscleSolver& solver);
void InitializeSolver(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                      MuscleNodeState& node, RibbonMuscleSolver& solver);

// The surface area of a triangulation: half the summed lengths of the edge
// cross products, summed in float.
float MeshArea(const std::vector<float>& positions, const std::vector<int32_t>& triangles);

}  // namespace myo_core
