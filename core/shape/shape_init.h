#pragma once
// The whole build of a shape solver, at the start frame, the preroll frame or
// a reset: its data on the rest shape, the attraction forces, the edge and
// triangle rows, the collider binding (the group comes and goes with the
// collider), the activation, the two places where the positions may jump to
// the anim mesh, and the masses folded into the weights.

#include "core/activation/activation_modes.h"
#include "core/shape/shape_assembly.h"

namespace myo_core {

// The meshes of a build, as the host has them. Pointers are null for inputs
// that are not connected.
struct ShapeBuildMeshes {
  const MeshData* input = nullptr;  // the input geometry: required
  const MeshData* rest = nullptr;   // "restMesh"
  const MeshData* anim = nullptr;   // "animMesh"
  // The mesh the collision binding is computed on ("collisionRestMesh" or
  // "collisionMesh") with its world matrix, and the collider as it is now.
  const MeshData* binding_collider = nullptr;
  Matrix binding_matrix = IdentityMatrix();
  const MeshData* collider = nullptr;
  bool collision_rest_connected = false;  // "collisionRestMesh" is connected
};

struct ShapeBuildSettings {
  bool initialize_to_anim = false;        // "initializeToAnimMesh"
  bool has_collider = false;              // "collisionMesh" is connected
  float max_collision_sliding_distance = 0.0f;
  bool draw_activation = false;           // "drawActivation"
  ActivationSetup activation;             // mode, file, smoothing, fiber scale
  ActivationFrame activation_frame;       // what the first activation reads
};

// In this order: progress (a first build only, 7 units, 6 with
// initialize_to_anim), the rest mesh (ChooseRestMesh), InitSimshapeData, the
// display state (draw flag, black colours), InitAttractionForces, the edge
// and triangle stages; the positions from the anim mesh when
// initialize_to_anim and no collision rest mesh is connected; the collider:
// none deletes the group, a collider without vertices warns "Could not
// retrieve collider mesh data." and deletes it, else the group (created when
// missing, orientation kept) is bound; the activation (InitActivations, the
// mode kept on the node); the positions from the anim mesh if still due;
// last ApplyMassesToWeights.
void InitSimshape(const ShapeBuildMeshes& meshes, const ShapeBuildSettings& settings, const MapPort& maps,
                  const ShapeAssemblyInputs& inputs, ShapeNodeState& node, SimshapeSolver& solver);

}  // namespace myo_core
