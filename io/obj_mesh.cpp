#include "io/obj_mesh.h"

#include <tiny_obj_loader.h>

namespace myo_io {

bool ReadObjMesh(const std::string& path, myo_core::PolygonMesh& mesh, std::string& error) {
  tinyobj::ObjReaderConfig config;
  config.triangulate = false;
  config.vertex_color = false;
  tinyobj::ObjReader reader;
  if (!reader.ParseFromFile(path, config)) {
    error = path + ": " + (reader.Error().empty() ? std::string("cannot be read") : reader.Error());
    while (!error.empty() && error.back() == '\n') error.pop_back();
    return false;
  }
  myo_core::PolygonMesh result;
  const auto& vertices = reader.GetAttrib().vertices;
  result.points.assign(vertices.begin(), vertices.end());
  for (const tinyobj::shape_t& shape : reader.GetShapes()) {
    std::size_t next = 0;
    for (unsigned char count : shape.mesh.num_face_vertices) {
      result.vertex_counts.push_back(count);
      for (unsigned k = 0; k < count; ++k) result.vertices.push_back(shape.mesh.indices[next + k].vertex_index);
      next += count;
    }
  }
  mesh = std::move(result);
  return true;
}

}  // namespace myo_io
