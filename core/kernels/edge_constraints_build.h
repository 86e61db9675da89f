#pragma once
// Assembly of the edge rows and of the per-point fibers from a mesh and its maps.

#include <cstdint>

#include "core/kernels/edge_constraints.h"
#include "core/maps/map_port.h"
#include "core/mesh/mesh_data.h"
#include "core/muscle/muscle_node_state.h"
#include "core/solver/solver_data.h"

namespace myo_core {

// Builds one row per mesh edge in id order from the rest positions of the
// solver, reads the resistance and tendon maps of list element `map_index`,
// and reads or derives the fibers. Appends E rows to the solver's lambdas_.
// A triangulation without one entry per polygon is reported and leaves the
// tables sized but unfilled. fibers_scale is the attribute "debugFibersScale".
void BuildEdgeConstraints(const MeshData& mesh, MapPort& maps, uint32_t map_index,
                          float fibers_scale, MuscleNodeState& node, SolverData& solver,
                          EdgeConstraints& edges);

// Fibers as the gradient of the tendon map diffused over the edges, so that
// they run from tendon to tendon through the belly. Fills fibers_ (3N), not
// normalised. The diffusion runs over the levels of the edge schedule, with
// the result of table order. With `cache`, a diffusion of the same map over
// the same edges is taken from it, and a new one is kept in it.
void ComputeFibersFromTendons(EdgeConstraints& edges, uint32_t point_count, DiffusedTendons* cache = nullptr);

// Projects the fiber of point i onto the surface of the reference mesh and
// scales it to its display length; stores it with the barycentric
// coordinates and triangle of its tip. `fiber` passes in and out.
void ProjectVertexFiber(uint32_t i, float fiber[3], const MuscleNodeState& node,
                        const SolverData& solver, EdgeConstraints& edges);

}  // namespace myo_core
