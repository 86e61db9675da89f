#pragma once
// Assembly of a shape solver: its state from the rest shape, the attraction
// forces, the distance rows along the edges, the shape preservation rows,
// the fall-backs of the rest and anim meshes, the collider and the
// activation, laid out in that order.

#include <omp.h>

#include <cstdint>
#include <string>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"
#include "core/shape/simshape_solver.h"

namespace myo_core {

// What a shape node keeps beside its solver for the solver's life.
struct ShapeNodeState {
  std::vector<float> masses_map_;     // N, "mass", each at least 1e-6
  std::vector<float> shape_map_;      // N, "shapePreservation"
  std::vector<float> collision_map_;  // N, "slideCollisionConstraints"
  // The rest mesh's triangulation.
  std::vector<int32_t> triangle_vertices_;         // 3T
  std::vector<int32_t> polygon_triangle_counts_;   // P
  std::vector<int32_t> polygon_triangle_offsets_;  // P
  // Display of the activation.
  bool draw_activation_ = false;    // "drawActivation" at the last initialisation
  bool colors_showing_ = false;     // the output shows the activation colours
  std::vector<float> colors_;       // 4N, RGBA per point
  int32_t activation_mode_ = 2;     // "activationMode" at the last initialisation
  bool has_collider_ = false;       // a collision mesh was connected at the last initialisation
  float mesh_diagonal_ = -1.0f;     // diagonal of the binding collider in world space
};

struct ShapeAssemblyInputs {
  std::string node_name;                      // for messages
  std::string node_type_name = "MyoSimshape"; // for messages and the progress status
  DeformerHost* host = nullptr;               // progress of a first build, activation outputs
  uint32_t map_index = 0;                     // geometry index: the list element the maps are read from
  Matrix world_matrix = IdentityMatrix();     // object to world space of the mesh
  Matrix attenuation_matrix = IdentityMatrix();  // "attenuationMatrix"
  bool read_points = true;                    // take positions from the rest shape, not from the simulation
  bool warn = true;                           // the animation is not playing
  int32_t thread_count = omp_get_max_threads();  // point blocks of the collision rows
};

// The rest shape of a build: the mesh on "restMesh" when it is usable, else
// the input geometry, with a warning for a rest mesh without vertices or of
// another vertex count. `rest` is null when "restMesh" is not connected.
const MeshData& ChooseRestMesh(const MeshData* rest, const MeshData& input);

// The state a shape starts from (rest positions when read_points, the area,
// masses, velocities 0, damping weights, attraction and activations 0, the
// attenuation matrices, an empty lambdas_, the point blocks) and the rest
// mesh's triangulation.
void InitSimshapeData(const MeshData& rest, const MapPort& maps, const ShapeAssemblyInputs& inputs,
                      ShapeNodeState& node, SimshapeSolver& solver);

// attract_forces_ from "attractForce" (default 1).
void InitAttractionForces(const MapPort& maps, const ShapeAssemblyInputs& inputs, SimshapeSolver& solver);

// One distance row per edge of the rest mesh, resistances from
// "compressionResistance" (default 0 here) and "stretchingResistance"
// (default 1), clamped to [0, 1].
void InitShapeDistanceConstraints(const MeshData& rest, const MapPort& maps, const ShapeAssemblyInputs& inputs,
                                  SimshapeSolver& solver);

// Shape preservation rows from "shapePreservation" (default 0), kept on the
// node, and the rest mesh's connected points in the host's order.
void InitShapeTriangles(const MeshData& rest, const MapPort& maps, const ShapeAssemblyInputs& inputs,
                        ShapeNodeState& node, SimshapeSolver& solver);

// positions_ and previous_positions_ from the anim mesh when it has the
// solver's point count; else from the input geometry, with a warning for an
// anim mesh without vertices or of another count. `anim` is null when
// "animMesh" is not connected.
void SetPositionsFromAnim(const MeshData* anim, const MeshData& input, SimshapeSolver& solver);

}  // namespace myo_core
