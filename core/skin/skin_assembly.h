#pragma once
// Assembly of a skin solver from its mesh, its painted maps and its reference
// mesh: the solver's state, the distance rows, the shape preservation rows and
// the binding to the reference mesh, laid out in that order in lambdas_.

#include <omp.h>

#include <cstdint>
#include <string>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"
#include "core/skin/skin_solver.h"

namespace myo_core {

// What a skin node keeps beside its solver: the painted maps the solver reads
// every frame, and the topology of the mesh at the last initialisation.
struct SkinNodeState {
  std::vector<float> masses_map_;        // N, "mass", each at least 1e-6
  std::vector<float> compression_map_;   // N, "compressionResistance", in [0, 1]
  std::vector<float> stretching_map_;    // N, "stretchingResistance", in [0, 1]
  std::vector<float> shape_map_;         // N, "shapePreservation"
  std::vector<float> max_sliding_map_;   // N, "maxSlidingDistanceMultiplier", in [0, 1]
  std::vector<int32_t> vertex_neighbor_offsets_;  // N, start of each point's list
  std::vector<int32_t> vertex_neighbor_counts_;   // N, connected edges of each point
  std::vector<int32_t> vertex_neighbors_;         // points across the connected edges, in the host's edge order
};

struct SkinAssemblyInputs {
  std::string node_name;                  // for messages
  std::string node_type_name = "MyoSkin"; // for messages and the progress status
  DeformerHost* progress = nullptr;       // shows the progress of a first build, when given
  uint32_t map_index = 0;                 // geometry index: the list element the maps are read from
  Matrix world_matrix = IdentityMatrix(); // object to world space of the skin
  Matrix attenuation_matrix = IdentityMatrix();  // "attenuationMatrix"
  bool read_points = true;                // take positions from the mesh, not from the simulation
  bool warn = true;                       // the animation is not playing
  int32_t thread_count = omp_get_max_threads();  // point blocks of the Uber pass

  // The reference mesh the points are bound to, in object space, with its
  // world matrix ("referenceMatrix"), and "maxSlidingDistance".
  const MeshData* reference_mesh = nullptr;
  Matrix reference_matrix = IdentityMatrix();
  float max_sliding_distance = 0.0f;
};

// The whole assembly, in this order: InitSolverData, InitDistanceConstraints,
// InitShapeConstraints, the binding to the reference mesh
// (InitUberConstraints), then the masses folded into the weights. A first
// build (no positions yet) shows its progress over N + 4 steps. Returns
// whether the points were bound; a failed binding has been reported, and the
// solver runs with what its tables hold.
bool InitSkinData(const MeshData& mesh, MapPort& maps, const SkinAssemblyInputs& inputs, SkinNodeState& node,
                  SkinSolver& solver);

// The state a skin starts from: velocities 0, damping weights, positions
// (when read_points), the area of the mesh, masses, the attenuation matrices,
// an empty lambdas_, the point blocks and the neighbour lists of the mesh.
// The mass scalars of the solver must be set beforehand.
void InitSolverData(const MeshData& mesh, const MapPort& maps, const SkinAssemblyInputs& inputs,
                    SkinNodeState& node, SkinSolver& solver);

// One distance row per mesh edge, with the resistance maps clamped to [0, 1].
void InitDistanceConstraints(const MeshData& mesh, const MapPort& maps, const SkinAssemblyInputs& inputs,
                             SkinNodeState& node, SkinSolver& solver);

// Shape preservation rows from the map "shapePreservation" (default 0) and
// each point's connected points in the host's order for them.
void InitShapeConstraints(const MeshData& mesh, const MapPort& maps, const SkinAssemblyInputs& inputs,
                          SkinNodeState& node, SkinSolver& solver);

// The map "mass" (default 1) with every value below 1e-6 raised to 1e-6,
// and one warning when any was.
void ReadSkinMassMap(const MapPort& maps, uint32_t map_index, uint32_t count, std::vector<float>& out);

}  // namespace myo_core
