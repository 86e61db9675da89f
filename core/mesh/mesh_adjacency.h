#pragma once
// The steps of building MeshData that do not depend on where the edges and
// triangles came from, shared by BuildMeshData (edges numbered here) and
// BuildMeshDataFromHost (edges and triangles as the host numbers them).

#include <string>
#include <vector>

#include "core/mesh/mesh_data.h"

namespace myo_core {

// Checks sizes, counts and indices in the order BuildMeshData lists its
// messages. Returns an empty string when the input is a valid mesh.
std::string ValidatePolygons(const std::vector<float>& points, const std::vector<int32_t>& counts,
                             const std::vector<int32_t>& vertices);

// Fills `offsets` (N+1) as the running sum of `degree` (N).
void FillOffsets(const std::vector<int32_t>& degree, std::vector<int32_t>& offsets);

// polygon_vertex_offsets from polygon_vertex_counts.
void FillPolygonOffsets(MeshData& mesh);

// vertex_edge_offsets, vertex_edges, vertex_neighbors and vertex_connected
// from edge_vertices: walking edges in id order gives every point its edges
// in ascending id, and its connected points in the same order.
void BuildVertexEdges(MeshData& mesh);

// vertex_face_offsets and vertex_faces from the polygon loops: walking
// polygons in order gives every point its faces in ascending id; a loop never
// repeats a point, so each face appears once per point.
void BuildVertexFaces(MeshData& mesh);

}  // namespace myo_core
