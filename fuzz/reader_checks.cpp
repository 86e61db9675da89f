#include "fuzz/reader_checks.h"

#include <cmath>
#include <filesystem>

#include <nlohmann/json.hpp>

namespace myo_fuzz {

namespace {

bool StaysInside(const std::string& file) {
  const std::filesystem::path path(file);
  if (path.is_absolute()) return false;
  for (const std::filesystem::path& part : path)
    if (part == "..") return false;
  return true;
}

}  // namespace

Fault FindMeshFault(const myo_io::ObjMesh& mesh) {
  const myo_core::PolygonMesh& polygons = mesh.polygons;
  if (polygons.points.size() % 3 != 0) return {"points that are not triples", std::to_string(polygons.points.size())};
  if (mesh.uvs.size() % 2 != 0) return {"texture coordinates that are not pairs", std::to_string(mesh.uvs.size())};
  const std::size_t point_count = polygons.points.size() / 3;
  const std::size_t uv_count = mesh.uvs.size() / 2;
  std::size_t corners = 0;
  for (int32_t count : polygons.vertex_counts) {
    if (count < 0) return {"a negative corner count", std::to_string(count)};
    corners += static_cast<std::size_t>(count);
  }
  if (corners != polygons.vertices.size())
    return {"corner counts that do not match the vertex indices",
            std::to_string(corners) + " corners, " + std::to_string(polygons.vertices.size()) + " indices"};
  for (int32_t v : polygons.vertices)
    if (v < 0 || static_cast<std::size_t>(v) >= point_count)
      return {"a vertex index out of range", std::to_string(v) + " of " + std::to_string(point_count) + " points"};
  if (!mesh.uv_indices.empty() && mesh.uv_indices.size() != corners)
    return {"texture indices that do not match the corners",
            std::to_string(mesh.uv_indices.size()) + " for " + std::to_string(corners) + " corners"};
  for (int32_t t : mesh.uv_indices)
    if (t < -1 || (t >= 0 && static_cast<std::size_t>(t) >= uv_count))
      return {"a texture index out of range", std::to_string(t) + " of " + std::to_string(uv_count)};
  for (std::size_t i = 0; i < polygons.points.size(); ++i)
    if (!std::isfinite(polygons.points[i]))
      return {"a point coordinate that is not finite", "point " + std::to_string(i / 3 + 1)};
  for (std::size_t i = 0; i < mesh.uvs.size(); ++i)
    if (!std::isfinite(mesh.uvs[i]))
      return {"a texture coordinate that is not finite", "texture coordinate " + std::to_string(i / 2 + 1)};
  return {};
}

Fault FindMapFault(const std::vector<float>& values) {
  for (std::size_t i = 0; i < values.size(); ++i)
    if (!std::isfinite(values[i])) return {"a value that is not a finite float", "value " + std::to_string(i + 1)};
  return {};
}

Fault FindPatchesFault(uint32_t expected_count, const std::vector<int32_t>& ids, const std::vector<float>& fibers) {
  if (ids.size() != expected_count)
    return {"ids that are not one per vertex",
            std::to_string(ids.size()) + " ids for " + std::to_string(expected_count) + " vertices"};
  if (fibers.empty()) return {"no fiber value", std::string()};
  const Fault values = FindMapFault(fibers);
  if (values.Found()) return {"a fiber with " + values.kind, values.detail};
  return {};
}

std::optional<uint32_t> DeclaredVertexCount(const uint8_t* data, std::size_t size, uint32_t limit) {
  auto blank = [](uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  std::size_t at = 0;
  for (int word = 0; word < 2; ++word) {
    while (at < size && blank(data[at])) ++at;
    if (word == 0)
      while (at < size && !blank(data[at])) ++at;
  }
  if (at < size && data[at] == '+') ++at;
  uint64_t value = 0;
  std::size_t digits = 0;
  for (; at < size && !blank(data[at]); ++at, ++digits) {
    if (data[at] < '0' || data[at] > '9') return std::nullopt;
    value = value * 10 + (data[at] - '0');
    if (value > limit) return std::nullopt;
  }
  if (digits == 0) return std::nullopt;
  return static_cast<uint32_t>(value);
}

Fault FindSceneFault(const myo_app::Scene& scene) {
  if (scene.nodes.empty()) return {"no nodes", std::string()};
  for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
    const myo_app::SceneNode& node = scene.nodes[i];
    if (node.type == nullptr) return {"a node without a type", node.name};
    const myo_app::SceneMesh* base = scene.BaseMesh(node);
    if (base == nullptr) return {"a node without a base mesh", node.name};
    std::vector<std::string> sources = {node.input};
    for (const myo_app::SceneConnection& connection : node.connections) sources.push_back(connection.source);
    for (const std::string& source : sources) {
      if (scene.FindNode(source) == nullptr) continue;
      const auto at = scene.index.find(source);
      if (at == scene.index.end() || at->second >= i)
        return {"a node evaluated before a node whose output it reads", node.name + " reads " + source};
    }
    const std::size_t points = base->data.PointCount();
    for (const myo_app::SceneMap& map : node.maps) {
      const std::size_t width = map.children.empty() ? 1 : map.children.size();
      if (map.values.size() != points * width)
        return {"a map whose size does not match its mesh", node.name + "." + map.element + ": " +
                                                                 std::to_string(map.values.size()) + " values for " +
                                                                 std::to_string(points) + " points"};
      const Fault values = FindMapFault(map.values);
      if (values.Found()) return {"a map with " + values.kind, node.name + "." + map.element + ": " + values.detail};
    }
  }
  return {};
}

bool NamesOutsideFile(const uint8_t* data, std::size_t size) {
  using nlohmann::json;
  json root;
  try {
    root = json::parse(data, data + size, nullptr, false);
  } catch (...) {
    return false;
  }
  std::vector<const json*> pending = {&root};
  while (!pending.empty()) {
    const json* value = pending.back();
    pending.pop_back();
    if (value->is_object()) {
      for (const auto& item : value->items()) {
        if (item.key() == "file" && item.value().is_string() && !StaysInside(item.value().get<std::string>()))
          return true;
        pending.push_back(&item.value());
      }
    } else if (value->is_array()) {
      for (const json& element : *value) pending.push_back(&element);
    }
  }
  return false;
}

}  // namespace myo_fuzz
