#pragma once
// World space of a mesh placed by a matrix. FillWorldSpace serves hosts that
// place a mesh by a matrix of their own (the standalone host, tests): what
// Maya computes from a mesh in a DAG, the standalone host computes here.

#include <vector>

#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"

namespace myo_core {

// world_points: every object-space point through `matrix` (TransformPoint);
// world_polygon_normals: the normalised Newell normal of each world-space
// loop: with j the corner after i, n.x += (i.y - j.y)(i.z + j.z),
// n.y += (i.z - j.z)(i.x + j.x), n.z += (i.x - j.x)(i.y + j.y). It is the
// area-weighted normal of a non-planar polygon too, following the winding.
void FillWorldSpace(const Matrix& matrix, MeshData& mesh);

// Length of the diagonal of the object-space bounding box of `points` (3N),
// with both corners carried through `matrix`: the size of a mesh in world
// space as the nodes report it. 0 without points.
float MeshDiagonal(const std::vector<float>& points, const Matrix& matrix);

}  // namespace myo_core
