#pragma once
// Initialisation of activation from muscle patches: loading the patches
// file, building the ring neighbourhoods, and the per-point fibers that the
// "Muscle Fibers" debug feature shows.

#include <cstdint>
#include <string>

#include "core/activation/muscle_patches_data.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

// Runs when a shape solver is initialised with activation from muscle
// patches. `rest_mesh` is the mesh the solver was built on (its N points and
// topology), `smoothing` the "activationSmoothing", `fibers_scale` the
// "debugMuscleFibersScale". In order:
//  1. A rebuild of the smoothing arrays is due when a file is loaded and
//     `smoothing` differs from smoothing_rings_.
//  2. When `path` differs from muscles_file_, it is stored and the file is
//     read for N points (ReadMusclePatchesFile); patches_loaded_ takes the
//     result, and an accepted file makes a rebuild due. An unchanged path is
//     not read again, even when the file on the disk has changed.
//  3. Without a loaded file nothing more is done.
//  4. When due, BuildSmoothingArrays for `smoothing` rings, which become
//     smoothing_rings_.
//  5. The debug arrays are sized and vertex_fibers_ set to each point's mean
//     fiber (ComputeVertexFibers).
//  6. shortest_edge_ = ShortestEdgeLength of the mesh.
//  7. Each point's fiber is projected on the mesh (ProjectVertexFibers). A
//     triangulation without one entry per polygon is reported as the error
//     "Unexpected number of polygons during reference mesh processing" and
//     leaves the fibers unprojected.
// With the log level at 0 the time taken is logged as "Init Muscle Data time
// (ns): ".
// `surface`, when given, is the mesh the fibers are projected on (the
// node's input geometry); else the rest mesh itself.
void InitMuscleData(const std::string& path, int32_t smoothing, const MeshData& rest_mesh, float fibers_scale,
                    MusclePatchesData& data, const MeshData* surface = nullptr);

// vertex_fibers_ (3N) from the smoothing lists: for each point the sum of
// the fibers of the patches in its list (ids below 1 or without a fiber
// triple add nothing; an entry counts as often as it occurs), divided by the
// list's length and normalised when its length is above 0. Also sizes
// fiber_bary_u_, fiber_bary_v_ (N) and fiber_triangles_ (3N) to zeros. A
// point without a list keeps a zero fiber.
void ComputeVertexFibers(MusclePatchesData& data);

// The shortest edge of the mesh in object space, from 1e10: each edge's
// length is formed and compared in double and kept as a float.
float ShortestEdgeLength(const MeshData& mesh);

// For each point with a normalised fiber (or one of length at most 1e-6):
// the tip at the point plus the fiber times shortest_edge_ is taken to the
// closest point of the mesh; the fiber becomes the direction from the point
// to it, normalised, times fibers_scale_ times shortest_edge_, with the tip's
// barycentric coordinates and its triangle's corners (0s when the point and
// its tip are less than 1e-6 apart). A fiber whose length is above 1e-6 and
// differs from 1 by more than 1e-6 is left as it is, with the warning
// "Projecting vertex fiber without a normalized direction.".
// The tips start at the points of `mesh` and are taken to the closest point
// of `surface` when given, else of `mesh`.
void ProjectVertexFibers(const MeshData& mesh, MusclePatchesData& data, const MeshData* surface = nullptr);

}  // namespace myo_core
