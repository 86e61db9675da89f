#pragma once
// Wavefront OBJ polygon meshes, polygons kept as they are, with their texture
// coordinates when the file has them.

#include <cstdint>
#include <string>
#include <vector>

#include "core/mesh/polygon_mesh.h"

namespace myo_io {

struct ObjMesh {
  myo_core::PolygonMesh polygons;
  std::vector<float> uvs;           // 2 per texture coordinate
  std::vector<int32_t> uv_indices;  // one per polygon corner, -1 where a corner has none; empty without uvs
};

// Reads every face of every object in the file into one mesh. Returns false
// with one message naming the file and the problem when it cannot be read or
// a face refers to a vertex or texture coordinate the file does not have.
bool ReadObjMesh(const std::string& path, ObjMesh& mesh, std::string& error);

// The OBJ text of `topology` with `points` (3N floats) as its vertices,
// printed so that every float reads back to the same bits. Faces keep their
// texture coordinates where all corners of the face have one.
std::string ObjText(const ObjMesh& topology, const std::vector<float>& points, const std::string& comment);

// OBJ text with a colour on every vertex line ("v x y z r g b", the form
// common viewers show as vertex colours), from ObjText's output and four
// floats per vertex (red, green, blue, alpha; alpha is not written).
std::string ColoredObjText(const std::string& topology_text, const std::vector<float>& rgba);

// Debug lines as OBJ line elements: `comment` as a comment line, then for
// each six floats of `lines` (start x y z, end x y z) two `v` lines and one
// `l a b` naming them (1-based). A trailing partial line is left out.
std::string ObjLinesText(const std::vector<float>& lines, const std::string& comment);

// Several named sets of lines in one OBJ: per set an "o <name>" object with
// its vertices and its line elements, indices counted across the file.
struct ObjLineObject {
  std::string name;
  const std::vector<float>* lines;  // 6 floats per line, as ObjLinesText
};
std::string ObjLineObjectsText(const std::vector<ObjLineObject>& objects, const std::string& comment);

}  // namespace myo_io
