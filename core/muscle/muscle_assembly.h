#pragma once
// Assembly of a MuscleSolver from a mesh, its matrices and its painted maps.
// It captures every rest value and lays out lambdas_ in group order.

#include <cstdint>
#include <string>

#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"
#include "core/muscle/muscle_node_state.h"
#include "core/solver/muscle_solver.h"

namespace myo_core {

struct MuscleAssemblyInputs {
  std::string node_name;               // for messages
  uint32_t map_index = 0;              // geometry index: the list element the maps are read from
  Matrix world_matrix = IdentityMatrix();
  Matrix attenuation_matrix = IdentityMatrix();
  float fibers_scale = 1.0f;           // attribute "debugFibersScale"
  bool reset_positions = true;         // take positions from the mesh, not from the simulation
  bool warn = true;                    // the animation is not playing
};

// The state every muscle family build starts from: points, velocities 0,
// damping weights, the mesh measure, masses and the topology of the mesh.
// Empties lambdas_. The mass scalars of the solver must be set beforehand.
void InitializeSolverBase(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                          MuscleNodeState& node, SolverData& solver);

// Base, then edges, shape preservation and volume, then the masses folded
// into the weights.
void InitializeSolver(const MeshData& mesh, MapPort& maps, const MuscleAssemblyInputs& inputs,
                      MuscleNodeState& node, MuscleSolver& solver);

}  // namespace myo_core
