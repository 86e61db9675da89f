#pragma once
// MeshData from a Maya mesh, keeping Maya's own edge ids and triangulation.

#include <maya/MObject.h>

#include <string>

#include "core/mesh/mesh_data.h"

namespace myo_maya {

// Object-space points, polygon loops, the triangles of MFnMesh::getTriangles
// and the edges in MItMeshEdge order. False with a message in `error` when
// the object is no mesh or its arrays do not fit together.
bool ReadMayaMesh(const MObject& mesh_object, myo_core::MeshData& mesh, std::string& error);

// Only the object-space points: what a frame reads of a mesh whose topology
// the solver froze at its build. False when the object is no mesh.
bool ReadMayaMeshPoints(const MObject& mesh_object, myo_core::MeshData& mesh);

// The whole mesh when `whole`, else only its points.
bool ReadMayaMeshFor(bool whole, const MObject& mesh_object, myo_core::MeshData& mesh);

}  // namespace myo_maya
