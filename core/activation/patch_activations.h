#pragma once
// Activation from muscle patches: how far each point has moved along the
// fibers of the patches around it, smoothed over a ring neighbourhood and
// lagging behind the motion.

#include <cstdint>
#include <vector>

#include "core/activation/muscle_patches_data.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

// Flattens each point's ring neighbourhood into data.smoothing_patch_ids_
// and data.smoothing_counts_, from data.patch_ids_ (one per point of `mesh`).
// For each point v in point order: its own patch id, then the ids of the
// points first reached by a breadth-first walk of `rings` rings over the
// connected points in the host's order (mesh.vertex_connected): ring by ring,
// the points of the previous ring in the order they were found, each one's
// connected points in the host's order, every point once. The walk ends
// early at a ring that finds nothing new; with rings below 1 the list is the
// point alone. A point outside every patch stands in the lists with its -1.
// Entries of the connected lists outside the points are not followed.
// Returns false, with both arrays empty, when patch_ids_ does not hold one id
// per point of the mesh.
bool BuildSmoothingArrays(const MeshData& mesh, int32_t rings, MusclePatchesData& data);

// Adds to each activation the contributions of the patches in the point's
// list and divides the sum by the list's length. The sum starts from the
// activation already there (the previous frame's value after its remap): on
// a still pose with contributions c the value settles at sum(c) / (n - 1),
// and a point alone in its list (n = 1) only grows, until a remap clamps it.
//
// For point i and a list entry p: ids below 1 add nothing. Otherwise, with
// d = deform_i - rest_i of length ld and f = fiber p - 1 of length lf, both
// normalised when their length is above 0: c = 0 when lf is 0, else
// s = dot(f, d), taken as |s| when bidirectional and as max(s, 0) otherwise,
// and c = s * min(1, ld / lf). So c is 0 without motion or across the fiber,
// and 1 for a motion along the fiber at least as long as the fiber. The
// contribution of a patch is computed once per point and repeated from a
// cache for its other entries in the list.
//
// An id above the number of fiber triples (a patch left empty by the learning
// shifts the fibers of the patches after it, so the highest id finds none)
// adds 0: no fiber is read beyond the triples, and every valid id gives what
// it would give otherwise. This is this code's own choice for ids that name
// no triple.
//
// Returns false and changes nothing when the arrays do not agree: N is the
// length of `smoothing_counts`; `activations` must hold N values, the two
// position arrays 3N, and `smoothing_patch_ids` at least the sum of the
// counts, none of which may be negative. An empty list leaves its value.
bool ComputePatchActivations(const std::vector<float>& rest_positions, const std::vector<float>& deform_positions,
                             const std::vector<float>& patch_fibers, const std::vector<int32_t>& smoothing_counts,
                             const std::vector<int32_t>& smoothing_patch_ids, bool bidirectional,
                             std::vector<float>& activations);

}  // namespace myo_core
