#pragma once
// Binding of the skin's points to its reference mesh, and the per-step read
// of the reference mesh. The reference comes from the host as MeshData with
// its world-space points and polygon normals as the host computes them; the
// closest points of the binding are asked in its object space, which
// "referenceMatrix" places in the world. Everything the constraint reads of
// it is in world space.

#include <cstdint>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/kernels/uber_constraints.h"
#include "core/maps/map_port.h"
#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

// What the binding reads besides the table it fills.
struct UberBindingInput {
  const MeshData* reference_mesh = nullptr;      // object space, with the host's world space
  Matrix reference_matrix = IdentityMatrix();    // "referenceMatrix"
  uint32_t map_index = 0;                        // geometry index: element of the map lists
  float max_sliding_distance = 0.0f;             // "maxSlidingDistance"
  Matrix world_matrix = IdentityMatrix();        // the deformer's local-to-world matrix
  DeformerHost* progress = nullptr;              // advanced once per point, when given
};

// Binds every point of `positions` (3N, object space of the skin) to the
// reference mesh, in this order:
// 1. The maps "softConstraints" (default 0), "hardConstraints" (default 1)
//    and "slideConstraints" (default 0) of their lists at map_index.
// 2. NormalizeByPriority with "Hard - Slide - Soft". When it changed a
//    weight: the warning "Non-normalized Uber Constraint weights detected.
//    Proceeding to normalize weights for solver consistency." and the three
//    arrays written back at element 0 of "hardConstraintsList" (children
//    "hardConstraints", "softConstraints", "slideConstraints"); a host that
//    cannot place a child there ignores the failure.
// 3. "maxSlidingDistanceMultiplier" (default 1) into max_sliding_map (N),
//    clamped to 0..1; reach of point i = its value times max_sliding_distance.
// 4. All per-point arrays sized for N, sliding_inactive_ 0, N zeroed
//    multipliers appended to lambdas at lambda_base_, lists emptied;
//    inverse_masses_ keeps its values and is sized to N (zeros added).
// 5. A triangulation without one count per polygon reports the error
//    "Unexpected number of polygons during reference mesh processing" and the
//    binding stops there, returning false.
// 6. Per point: the closest point q of the reference (queried in the
//    reference's object space), its barycentrics, polygon, triangle and
//    distance; the offset p - q in the TriangleFrame at q; the sliding point
//    q; a candidate list (SearchCandidateTriangles from the bound triangle,
//    centre q) when both reach and slide weight are at least 1e-6. A point
//    with an empty list or no slide weight is inactive.
// 7. sliding_edges_ and the sliding scratch.
// Returns true when the points are bound. The caller keeps the node's mesh
// diagonal itself.
bool InitUberConstraints(const UberBindingInput& input, MapPort& maps, const std::vector<float>& positions,
                         std::vector<float>& lambdas, std::vector<float>& max_sliding_map, UberConstraints& uber);

// Before every step: reference_positions_ become the host's world-space
// points of the mesh and polygon_normals_ its world-space polygon normals, on
// the topology frozen at binding; `matrix` ("referenceMatrix") is kept with
// the record. False, with the arrays left as they were, when the mesh's
// vertex count is not that of the binding or the host handed no world space.
bool ReadReferenceMesh(const MeshData& mesh, const Matrix& matrix, UberConstraints& uber);

}  // namespace myo_core
