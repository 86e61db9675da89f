#pragma once
// MeshData from a Maya mesh, keeping Maya's own edge ids, triangulation and
// per-vertex orders, and its world space where a deformer reads one there.

#include <maya/MObject.h>

#include <string>

#include "core/mesh/mesh_data.h"

namespace myo_maya {

// Object-space points, polygon loops, the triangles of MFnMesh::getTriangles,
// the edges in MItMeshEdge order, and per vertex its connected edges,
// vertices and faces in the orders of MItMeshVertex; with `world` also the
// world-space points (MFnMesh::getPoints) and polygon normals
// (MFnMesh::getPolygonNormal) narrowed to float. False with a message in
// `error` when the object is no mesh or its arrays do not fit together.
bool ReadMayaMesh(const MObject& mesh_object, bool world, myo_core::MeshData& mesh, std::string& error);

// The object-space points alone. False when the object is no mesh.
bool ReadMayaMeshPoints(const MObject& mesh_object, myo_core::MeshData& mesh);

// What a frame reads of a mesh whose topology the solver froze at its build:
// the object-space points and the world-space points and polygon normals.
// False when the object is no mesh.
bool ReadMayaMeshWorldSpace(const MObject& mesh_object, myo_core::MeshData& mesh);

}  // namespace myo_maya
