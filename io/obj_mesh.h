#pragma once
// Wavefront OBJ polygon meshes, polygons kept as they are.

#include <string>

#include "core/mesh/polygon_mesh.h"

namespace myo_io {

// Reads every face of every object in the file into one mesh. Returns false
// with a message naming the file and the problem when it cannot be read.
bool ReadObjMesh(const std::string& path, myo_core::PolygonMesh& mesh, std::string& error);

}  // namespace myo_io
