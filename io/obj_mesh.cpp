#include "io/obj_mesh.h"

#include <tiny_obj_loader.h>

#include <cstdio>

namespace myo_io {

namespace {

std::string FaceError(const std::string& path, std::size_t face, const char* what, int index, std::size_t count) {
  return path + ": face " + std::to_string(face + 1) + ": " + what + " index " + std::to_string(index + 1) +
         " is out of range (the file has " + std::to_string(count) + ")";
}

}  // namespace

bool ReadObjMesh(const std::string& path, ObjMesh& mesh, std::string& error) {
  tinyobj::ObjReaderConfig config;
  config.triangulate = false;
  config.vertex_color = false;
  tinyobj::ObjReader reader;
  if (!reader.ParseFromFile(path, config)) {
    error = path + ": " + (reader.Error().empty() ? std::string("cannot be read") : reader.Error());
    while (!error.empty() && error.back() == '\n') error.pop_back();
    return false;
  }
  const tinyobj::attrib_t& attrib = reader.GetAttrib();
  const std::size_t vertex_count = attrib.vertices.size() / 3;
  const std::size_t uv_count = attrib.texcoords.size() / 2;

  ObjMesh result;
  result.polygons.points.assign(attrib.vertices.begin(), attrib.vertices.end());
  bool any_uv = false;
  std::size_t face = 0;
  for (const tinyobj::shape_t& shape : reader.GetShapes()) {
    std::size_t next = 0;
    for (unsigned char count : shape.mesh.num_face_vertices) {
      result.polygons.vertex_counts.push_back(count);
      for (unsigned k = 0; k < count; ++k) {
        const tinyobj::index_t& index = shape.mesh.indices[next + k];
        if (index.vertex_index < 0 || static_cast<std::size_t>(index.vertex_index) >= vertex_count) {
          error = FaceError(path, face, "vertex", index.vertex_index, vertex_count);
          return false;
        }
        if (index.texcoord_index >= 0 && static_cast<std::size_t>(index.texcoord_index) >= uv_count) {
          error = FaceError(path, face, "texture coordinate", index.texcoord_index, uv_count);
          return false;
        }
        any_uv = any_uv || index.texcoord_index >= 0;
        result.polygons.vertices.push_back(index.vertex_index);
        result.uv_indices.push_back(index.texcoord_index);
      }
      next += count;
      ++face;
    }
  }
  if (any_uv) {
    result.uvs.assign(attrib.texcoords.begin(), attrib.texcoords.end());
  } else {
    result.uv_indices.clear();
  }
  mesh = std::move(result);
  return true;
}

std::string ObjText(const ObjMesh& topology, const std::vector<float>& points, const std::string& comment) {
  std::string text;
  text.reserve(points.size() * 14 + topology.polygons.vertices.size() * 12);
  char line[128];
  if (!comment.empty()) text += "# " + comment + "\n";
  for (std::size_t i = 0; i + 2 < points.size(); i += 3) {
    std::snprintf(line, sizeof line, "v %.9g %.9g %.9g\n", points[i], points[i + 1], points[i + 2]);
    text += line;
  }
  for (std::size_t i = 0; i + 1 < topology.uvs.size(); i += 2) {
    std::snprintf(line, sizeof line, "vt %.9g %.9g\n", topology.uvs[i], topology.uvs[i + 1]);
    text += line;
  }
  std::size_t corner = 0;
  for (int32_t count : topology.polygons.vertex_counts) {
    bool with_uv = !topology.uv_indices.empty();
    for (int32_t k = 0; with_uv && k < count; ++k) with_uv = topology.uv_indices[corner + k] >= 0;
    text += 'f';
    for (int32_t k = 0; k < count; ++k, ++corner) {
      const int32_t v = topology.polygons.vertices[corner] + 1;
      if (with_uv) {
        std::snprintf(line, sizeof line, " %d/%d", v, topology.uv_indices[corner] + 1);
      } else {
        std::snprintf(line, sizeof line, " %d", v);
      }
      text += line;
    }
    text += '\n';
  }
  return text;
}

}  // namespace myo_io
