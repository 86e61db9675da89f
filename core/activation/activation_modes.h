#pragma once
// Where a shape solver's per-point activations come from, by the node's
// "activationMode": muscle patches and the motion of a deform mesh (0), the
// values of an array plug (1), or nowhere (2). The host hands meshes, the
// remap ramp's entries and plug values as plain data.
//
// The node calls InitActivations when it initialises the solver (after the
// solver's activations_ were set to N zeros and its rest_positions_ read),
// stores the mode it read then, and calls UpdateActivations with that mode
// before each step.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/activation/muscle_patches_data.h"
#include "core/mesh/mesh_data.h"
#include "core/ramp/ramp_entries.h"

namespace myo_core {

// The "activation" values of the geometry's element of "activationList", as
// the host holds them: entry i is the element of logical index i, empty where
// no such element exists.
using PlugActivationValues = std::vector<std::optional<float>>;

// What one evaluation reads for activation.
struct ActivationFrame {
  bool bidirectional = false;                        // "bidirectionalActivation"
  RampEntries remap;                                 // "activationRemap"
  const MeshData* deform_mesh = nullptr;             // "deformMesh", null when missing
  // The geometry's "activation" values; null when "activationList" has no
  // element for the geometry or no connected children.
  const PlugActivationValues* plug_values = nullptr;
};

// What initialisation reads beyond the frame.
struct ActivationSetup {
  int32_t mode = kActivationNone;  // "activationMode", kept by the node until the next initialisation
  std::string muscles_file;        // "musclesFile"
  int32_t smoothing = 1;           // "activationSmoothing"
  float fibers_scale = 1.0f;       // "debugMuscleFibersScale"
  // The mesh the debug fibers are projected on; null for the rest mesh.
  const MeshData* fiber_surface = nullptr;
};

// Activations from the muscle patches and the deform mesh: deform_positions_
// takes the mesh's object-space points, ComputePatchActivations adds this
// frame's contributions, and each activation becomes the remap ramp's value
// at it, clamped to 0 to 1. Fails, leaving the activations alone, without a
// mesh, with a mesh without points, or with one whose point count is not the
// solver's (the length of activations_); when `verbose`, each with its
// warning:
//   "Could not compute activations from Muscle Patches file: deform mesh is null or not provided."
//   "Could not compute activations from Muscle Patches file: deform mesh data could not be retrieved."
//   "Inconsistency in the amount of vertices between the deform mesh and the mesh used for computing muscle activations."
// Also fails, silently, when the patches data does not match the solver's
// arrays (no file loaded).
bool ActivationsFromPatches(const MeshData* deform_mesh, bool bidirectional, bool verbose, const RampEntries& remap,
                            MusclePatchesData& data);

// Activations from plug values: each point with an element takes the remap
// ramp's value at the element's value, clamped to 0 to 1; a point without an
// element keeps its activation, and elements beyond the points are not read.
// Fails, changing nothing, when `values` is null.
bool ActivationsFromPlugValues(const PlugActivationValues* values, const RampEntries& remap,
                               std::vector<float>& activations);

// At the solver's initialisation, by setup.mode:
//  0: InitMuscleData on the rest mesh; with a file loaded,
//     ActivationsFromPatches with its warnings. Logs at info level "Using
//     point activations driven by muscle patches file and deformed mesh." on
//     success; a refused file warns "Muscles patches data is invalid, not
//     provided or does not match the number of vertices of the simulated
//     mesh.".
//  1: ActivationsFromPlugValues. Info "Using point activations driven by
//     input array plug." on success, else the warning "Input array data is
//     invalid or not provided.".
//  2, or any other value: nothing.
// Outside mode 0 with a loaded file, the fibers' debug arrays are emptied.
// Last, WarnIfRemapNotNormalized.
void InitActivations(const ActivationSetup& setup, const ActivationFrame& frame, const MeshData& rest_mesh,
                     MusclePatchesData& data);

// Before each step, with the mode stored at initialisation: mode 0 with a
// file loaded runs ActivationsFromPatches without warnings, mode 1
// ActivationsFromPlugValues; when either fails, every activation becomes 0
// for this frame. Other modes leave the activations alone.
void UpdateActivations(int32_t mode, const ActivationFrame& frame, MusclePatchesData& data);

// The warning "Activation remap contains non-normalized inputs. The output
// will be clamped between 0 and 1." when a position or value of the ramp lies
// outside 0 to 1 (IsRampNormalized). Evaluation goes on; results are clamped.
void WarnIfRemapNotNormalized(const RampEntries& remap);

// Whether the node writes activations_ into its "outActivation" plugs.
inline bool WritesOutActivation(bool write_out_activation, int32_t mode) {
  return write_out_activation && mode != kActivationNone;
}

// Vertex colours showing the activations: red = activation, green and blue
// 0, alpha 1; 4N floats.
void ActivationColors(const std::vector<float>& activations, std::vector<float>& rgba);

// What the host does with the output mesh's colours after an evaluation.
enum class ActivationDisplay {
  kShowColors,  // set the vertex colours (ActivationColors) and switch their display on
  kHideColors,  // switch the display of colours off
  kLeave,       // nothing
};

// With "drawActivation" on at initialisation the colours are shown (and
// remembered as showing); with it off, colours that are showing are switched
// off once and forgotten.
ActivationDisplay NextActivationDisplay(bool draw_activation, bool& colors_showing);

}  // namespace myo_core
