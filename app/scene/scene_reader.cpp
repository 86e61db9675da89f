#include "app/scene/scene_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <set>

#include <nlohmann/json.hpp>

#include "io/file_text.h"
#include "app/scene/json_document.h"
#include "app/scene/map_limits.h"
#include "app/scene/name_suggestion.h"
#include "app/scene/scene_field.h"
#include "app/scene/scene_names.h"
#include "app/scene/scene_numbers.h"
#include "io/map_file.h"

namespace myo_app {

namespace {

using nlohmann::json;
using myo_core::AttributeInfo;
using myo_core::AttributeType;

constexpr std::size_t kNone = static_cast<std::size_t>(-1);
// The largest set index of a map, as plugs allow at most nine digits.
constexpr double kMaxIndex = 999999999.0;

std::string ReadText(const std::string& path, const std::string& what) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) throw SceneFault{path + ": cannot read " + what + ": it is a folder"};
  std::string text;
  if (!myo_io::ReadFileText(path, text)) throw SceneFault{path + ": cannot open " + what};
  return text;
}

const json& Require(const json& object, const char* key, const Field& field) {
  const auto it = object.find(key);
  if (it == object.end()) field.Fail(std::string("missing \"") + key + "\"");
  return *it;
}

void ExpectObject(const json& value, const Field& field) {
  if (!value.is_object()) field.Fail("expected an object, not " + Shown(value));
}

void ExpectArray(const json& value, const Field& field) {
  if (!value.is_array()) field.Fail("expected an array, not " + Shown(value));
}

// Keys of an object that are not among `known`.
void RejectUnknownKeys(const json& object, std::initializer_list<const char*> known, const Field& field) {
  for (const auto& item : object.items()) {
    if (std::none_of(known.begin(), known.end(), [&](const char* k) { return item.key() == k; }))
      field[item.key()].Fail("unknown key" +
                             DidYouMean(item.key(), std::vector<std::string>(known.begin(), known.end())));
  }
}

std::string Text(const json& value, const Field& field) {
  if (!value.is_string() || value.get<std::string>().empty())
    field.Fail("expected a non-empty string, not " + Shown(value));
  return value.get<std::string>();
}

uint32_t Index(const json& value, const Field& field) {
  const double number = Number(value, field);
  if (number < 0.0 || number != std::floor(number) || number > kMaxIndex)
    field.Fail("expected an index (0, 1, 2, ... at most " + FormatNumber(kMaxIndex) + "), not " + FormatNumber(number));
  return static_cast<uint32_t>(number);
}

// N numbers whose floats are finite, as transform keys become.
template <std::size_t N>
std::array<double, N> FloatNumbers(const json& value, const Field& field) {
  if (!value.is_array() || value.size() != N)
    field.Fail("expected " + std::to_string(N) + " numbers, not " + Shown(value));
  std::array<double, N> out{};
  for (std::size_t i = 0; i < N; ++i) out[i] = FloatNumber(value[i], field[i]);
  return out;
}

std::string ResolvePath(const std::string& scene_path, const std::string& file) {
  const std::filesystem::path p(file);
  if (p.is_absolute()) return file;
  return (std::filesystem::path(scene_path).parent_path() / p).lexically_normal().string();
}

// The longest path the system opens.
constexpr std::size_t kMaxPathLength = 4096;

// A mesh or map file the scene names, resolved against the scene's folder.
// Only a regular file is read: a folder, a device such as /dev/zero or a
// pipe would give nothing, endless data or a reader that waits for ever. A
// file that is not there is left to its reader, which says so.
std::string InputFile(const std::string& scene_path, const json& value, const Field& field) {
  const std::string file = Text(value, field);
  if (file.size() > kMaxPathLength)
    field.Fail("the path " + Quote(file) + " is " + std::to_string(file.size()) + " characters long; at most " +
               std::to_string(kMaxPathLength) + " are allowed");
  const std::string path = ResolvePath(scene_path, file);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::is_directory(status)) field.Fail(path + " is a folder, not a file");
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    field.Fail(path + " is not a regular file");
  return path;
}

class SceneReader {
 public:
  SceneReader(const std::string& path, Scene& scene) : path_(path), scene_(scene) {}

  void Read() {
    const std::string text = ReadText(path_, "the scene file");
    scene_.inputs.push_back(path_);
    json root = ParseJsonDocument(text, path_);
    const Field top(path_, "");
    ExpectObject(root, top);
    RejectUnknownKeys(root, {"version", "timeline", "transforms", "meshes", "nodes"}, top);
    if (root.contains("version") && Number(root["version"], top["version"]) != 1.0)
      top["version"].Fail("version " + Shown(root["version"]) + " is not supported (this host reads version 1)");
    ReadTimeline(Require(root, "timeline", top), top["timeline"]);
    if (root.contains("transforms")) ReadTransforms(root["transforms"], top["transforms"]);
    if (root.contains("meshes")) ReadMeshes(root["meshes"], top["meshes"]);
    CheckTransformParents(top);
    ReadNodes(Require(root, "nodes", top), top["nodes"]);
    OrderNodes(top["nodes"]);
  }

 private:
  void ReadTimeline(const json& value, const Field& field) {
    ExpectObject(value, field);
    RejectUnknownKeys(value, {"start", "end", "preroll", "fps"}, field);
    Timeline& t = scene_.timeline;
    t.start = WholeFrameNumber(Require(value, "start", field), field["start"]);
    t.end = WholeFrameNumber(Require(value, "end", field), field["end"]);
    t.preroll = value.contains("preroll") ? WholeFrameNumber(value["preroll"], field["preroll"]) : t.start;
    t.fps = value.contains("fps") ? FramesPerSecond(value["fps"], field["fps"]) : 24.0;
    if (t.end < t.start)
      field["end"].Fail("frame " + FormatNumber(t.end) + " comes before the start frame " + FormatNumber(t.start));
    if (t.preroll > t.start)
      field["preroll"].Fail("frame " + FormatNumber(t.preroll) + " comes after the start frame " +
                            FormatNumber(t.start));
  }

  void AddName(const std::string& name, SourceKind kind, std::size_t index, const Field& field) {
    CheckName(name, field);
    names_.Add(name, field);
    scene_.kinds.emplace(name, kind);
    scene_.index[name] = index;
  }

  void ReadTransforms(const json& list, const Field& field) {
    ExpectArray(list, field);
    for (std::size_t i = 0; i < list.size(); ++i) {
      const json& value = list[i];
      const Field f = field[i];
      ExpectObject(value, f);
      RejectUnknownKeys(value, {"name", "parent", "keys"}, f);
      SceneTransform item;
      item.name = Text(Require(value, "name", f), f["name"]);
      if (value.contains("parent")) item.parent = Text(value["parent"], f["parent"]);
      if (value.contains("keys")) ReadTransformKeys(value["keys"], f["keys"], item.track);
      AddName(item.name, SourceKind::kTransform, scene_.transforms.size(), f["name"]);
      scene_.transforms.push_back(std::move(item));
    }
  }

  void ReadTransformKeys(const json& keys, const Field& field, TransformTrack& track) {
    ExpectArray(keys, field);
    if (keys.empty()) field.Fail("expected at least one key");
    for (std::size_t k = 0; k < keys.size(); ++k) {
      const json& key = keys[k];
      const Field f = field[k];
      ExpectObject(key, f);
      RejectUnknownKeys(key, {"frame", "matrix", "translate", "rotate", "scale"}, f);
      track.frames.push_back(FrameNumber(Require(key, "frame", f), f["frame"]));
      const bool matrix = key.contains("matrix");
      if (k == 0) track.matrix_keys = matrix;
      if (matrix != track.matrix_keys)
        f.Fail("mixes matrix keys with translate, rotate and scale keys in one transform");
      if (matrix) {
        if (key.contains("translate") || key.contains("rotate") || key.contains("scale"))
          f.Fail("a key has either \"matrix\" or translate, rotate and scale");
        track.matrices.push_back(FloatNumbers<16>(key["matrix"], f["matrix"]));
      } else {
        TransformKeyTRS trs;
        if (key.contains("translate")) trs.translate = FloatNumbers<3>(key["translate"], f["translate"]);
        if (key.contains("rotate")) trs.rotate = FloatNumbers<3>(key["rotate"], f["rotate"]);
        if (key.contains("scale")) trs.scale = FloatNumbers<3>(key["scale"], f["scale"]);
        track.trs.push_back(trs);
      }
      if (k > 0 && !(track.frames[k] > track.frames[k - 1]))
        f["frame"].Fail("keyframes out of order: frame " + FormatNumber(track.frames[k]) + " follows frame " +
                        FormatNumber(track.frames[k - 1]));
    }
  }

  void ReadMeshes(const json& list, const Field& field) {
    ExpectArray(list, field);
    for (std::size_t i = 0; i < list.size(); ++i) {
      const json& value = list[i];
      const Field f = field[i];
      ExpectObject(value, f);
      RejectUnknownKeys(value, {"name", "file", "parent", "follows"}, f);
      SceneMesh item;
      item.name = Text(Require(value, "name", f), f["name"]);
      item.file = Text(Require(value, "file", f), f["file"]);
      for (const char* key : {"parent", "follows"}) {
        if (!value.contains(key)) continue;
        std::string& transform = key == std::string("parent") ? item.parent : item.follows;
        transform = Text(value[key], f[key]);
        if (scene_.FindTransform(transform) == nullptr)
          f[key].Fail(Quote(transform) + " is not a transform of the scene");
      }
      AddName(item.name, SourceKind::kMesh, scene_.meshes.size(), f["name"]);
      const std::string file = InputFile(path_, value["file"], f["file"]);
      std::string error;
      if (!myo_io::ReadObjMesh(file, item.obj, error)) f["file"].Fail(error);
      scene_.inputs.push_back(file);
      if (item.obj.polygons.points.empty()) f["file"].Fail(file + ": the mesh has no vertices");
      if (!myo_core::BuildMeshData(item.obj.polygons.points, item.obj.polygons.vertex_counts,
                                   item.obj.polygons.vertices, item.data, error))
        f["file"].Fail(file + ": " + error);
      scene_.meshes.push_back(std::move(item));
    }
  }

  void CheckTransformParents(const Field& top) {
    const std::vector<SceneTransform>& transforms = scene_.transforms;
    std::vector<std::size_t> parent(transforms.size(), kNone);
    for (std::size_t i = 0; i < transforms.size(); ++i) {
      if (transforms[i].parent.empty()) continue;
      if (scene_.FindTransform(transforms[i].parent) == nullptr)
        top["transforms"][i]["parent"].Fail(Quote(transforms[i].parent) + " is not a transform of the scene");
      parent[i] = scene_.index.at(transforms[i].parent);
    }
    // Walk up from each transform not yet known to reach a root; meeting the
    // walk itself again closes a cycle. Each transform is walked once.
    std::vector<int> state(transforms.size(), 0);  // 0 unseen, 1 on this walk, 2 reaches a root
    for (std::size_t i = 0; i < transforms.size(); ++i) {
      std::vector<std::size_t> walk;
      std::size_t current = i;
      while (current != kNone && state[current] == 0) {
        state[current] = 1;
        walk.push_back(current);
        current = parent[current];
      }
      if (current != kNone && state[current] == 1) {
        // The cycle from its first transform in the file, as that one's fault.
        std::size_t first = current;
        for (std::size_t k = parent[current]; k != current; k = parent[k]) first = std::min(first, k);
        std::vector<std::string> chain = {transforms[first].name};
        for (std::size_t k = parent[first]; k != first; k = parent[k]) chain.push_back(transforms[k].name);
        chain.push_back(transforms[first].name);
        top["transforms"][first]["parent"].Fail("a cycle of parents: " + Chain(chain));
      }
      for (const std::size_t k : walk) state[k] = 2;
    }
  }

  void ReadNodes(const json& list, const Field& field) {
    ExpectArray(list, field);
    if (list.empty()) field.Fail("expected at least one node");
    // Names first, so that a node may take a later node's output.
    for (std::size_t i = 0; i < list.size(); ++i) {
      ExpectObject(list[i], field[i]);
      const std::string name = Text(Require(list[i], "name", field[i]), field[i]["name"]);
      AddName(name, SourceKind::kNode, i, field[i]["name"]);
      SceneNode item;
      item.name = name;
      scene_.nodes.push_back(std::move(item));
    }
    for (std::size_t i = 0; i < list.size(); ++i) ReadNodeHead(list[i], field[i], scene_.nodes[i]);
    for (std::size_t i = 0; i < list.size(); ++i) {
      const SceneNode* input = scene_.FindNode(scene_.nodes[i].input);
      if (input != nullptr && !input->type->deformer)
        field[i]["input"].Fail(Quote(input->name) + " is a " + input->type->name + ", which outputs no mesh");
    }
    // Inputs alone must not form a cycle before base meshes are looked up;
    // connections are checked again once read.
    // Base meshes in that order, each from its input's, so that a long chain
    // of nodes is walked once.
    std::vector<const SceneMesh*> base(list.size(), nullptr);
    for (const std::size_t i : TopologicalOrder(field)) {
      const std::string& input = scene_.nodes[i].input;
      if (input.empty()) continue;
      base[i] = scene_.FindNode(input) != nullptr ? base[scene_.index.at(input)] : scene_.FindMesh(input);
    }
    for (std::size_t i = 0; i < list.size(); ++i)
      if (base[i] != nullptr) scene_.nodes[i].base_mesh = base[i]->name;
    for (std::size_t i = 0; i < list.size(); ++i) ReadNodeBody(list[i], field[i], scene_.nodes[i], base[i]);
  }

  void ReadNodeHead(const json& value, const Field& f, SceneNode& node) {
    RejectUnknownKeys(value, {"name", "type", "input", "attributes", "maps", "connections"}, f);
    const std::string type = Text(Require(value, "type", f), f["type"]);
    node.type = FindNodeType(type);
    if (node.type == nullptr) {
      std::string known;
      for (const NodeType& t : NodeTypes()) known += (known.empty() ? "" : ", ") + t.name;
      std::vector<std::string> names;
      for (const NodeType& t : NodeTypes()) names.push_back(t.name);
      f["type"].Fail("unknown node type " + Quote(type) + " (known: " + known + ")" + DidYouMean(type, names));
    }
    if (!node.type->deformer) {
      if (value.contains("input")) f["input"].Fail("a " + node.type->name + " deforms no mesh and takes no input");
      return;
    }
    node.input = Text(Require(value, "input", f), f["input"]);
    const auto kind = scene_.kinds.find(node.input);
    if (kind == scene_.kinds.end() || kind->second == SourceKind::kTransform)
      f["input"].Fail(Quote(node.input) + " is not a mesh or node of the scene");
    if (node.input == node.name) f["input"].Fail("a node cannot deform its own output");
  }

  void ReadNodeBody(const json& value, const Field& f, SceneNode& node, const SceneMesh* base) {
    if (value.contains("attributes")) ReadAttributes(value["attributes"], f["attributes"], node);
    if (value.contains("connections")) ReadConnections(value["connections"], f["connections"], node);
    if (value.contains("maps")) {
      if (base == nullptr) f["maps"].Fail("a " + node.type->name + " has no points to paint");
      ReadMaps(value["maps"], f["maps"], node, base->data.PointCount());
    }
    if (node.type->kind == NodeKind::kSkin &&
        std::none_of(node.connections.begin(), node.connections.end(),
                     [](const SceneConnection& c) { return c.attribute == "referenceMesh"; }))
      f.Fail("a MyoSkin needs \"referenceMesh\" connected to a mesh or a node");
  }

  void ReadAttributes(const json& object, const Field& field, SceneNode& node) {
    ExpectObject(object, field);
    for (const auto& item : object.items()) {
      const Field f = field[item.key()];
      const AttributeInfo* info = FindNodeAttribute(*node.type, item.key());
      if (info == nullptr)
        f.Fail("unknown attribute of " + node.type->name + DidYouMean(item.key(), AttributeNames(*node.type)));
      if (node.attributes.count(info->long_name) != 0 || node.texts.count(info->long_name) != 0 ||
          node.ramps.count(info->long_name) != 0)
        f.Fail("\"" + info->long_name + "\" is set twice (by its long and its short name)");
      if (info->type == AttributeType::kString) {
        const std::string text = item.value().is_string() ? item.value().get<std::string>() : Text(item.value(), f);
        node.texts[info->long_name] =
            info->Has(myo_core::kUsedAsFilename) && !text.empty() ? ResolvePath(path_, text) : text;
      } else if (info->type == AttributeType::kRamp) {
        node.ramps[info->long_name] = RampValue(item.value(), f);
      } else {
        node.attributes[info->long_name] = AttributeTrack(item.value(), *info, f);
      }
    }
  }

  // A ramp: entries [position, value, interpolation], the interpolation by
  // number (0 to 3) or name.
  static myo_core::RampEntries RampValue(const json& value, const Field& f) {
    if (!value.is_array() || value.empty())
      f.Fail("expected ramp entries [position, value, interpolation], not " + Shown(value));
    static const char* const kInterpolations[] = {"None", "Linear", "Smooth", "Spline"};
    myo_core::RampEntries ramp;
    for (std::size_t k = 0; k < value.size(); ++k) {
      const json& entry = value[k];
      const Field fk = f[k];
      if (!entry.is_array() || entry.size() != 3)
        fk.Fail("expected an entry [position, value, interpolation], not " + Shown(entry));
      ramp.positions.push_back(static_cast<float>(FloatNumber(entry[0], fk[0])));
      ramp.values.push_back(static_cast<float>(FloatNumber(entry[1], fk[1])));
      int32_t interpolation = -1;
      if (entry[2].is_string()) {
        for (int32_t i = 0; i < 4; ++i)
          if (entry[2].get<std::string>() == kInterpolations[i]) interpolation = i;
      } else if (entry[2].is_number()) {
        const double number = Number(entry[2], fk[2]);
        if (number == std::floor(number) && number >= 0.0 && number <= 3.0) interpolation = static_cast<int32_t>(number);
      }
      if (interpolation < 0)
        fk[2].Fail("expected an interpolation: 0 \"None\", 1 \"Linear\", 2 \"Smooth\" or 3 \"Spline\", not " +
                   Shown(entry[2]));
      ramp.interpolations.push_back(interpolation);
    }
    return ramp;
  }

  ScalarTrack AttributeTrack(const json& value, const AttributeInfo& info, const Field& f) {
    switch (info.type) {
      case AttributeType::kMatrix:
      case AttributeType::kFloatMatrix:
      case AttributeType::kMesh:
      case AttributeType::kMessage:
        f.Fail("a " + TypeName(info.type) + " attribute takes a connection, not a value");
      case AttributeType::kCompound:
      case AttributeType::kColor:
        f.Fail("a compound attribute: set its children one by one");
      default:
        break;
    }
    if (info.Has(myo_core::kArray)) f.Fail("a per-point attribute: give it as a map in \"maps\"");
    ScalarTrack track;
    track.stepped = info.type != AttributeType::kFloat && info.type != AttributeType::kTime;
    if (value.is_object()) {
      RejectUnknownKeys(value, {"keys"}, f);
      const json& keys = Require(value, "keys", f);
      ExpectArray(keys, f["keys"]);
      if (keys.empty()) f["keys"].Fail("expected at least one key");
      for (std::size_t k = 0; k < keys.size(); ++k) {
        const Field fk = f["keys"][k];
        if (!keys[k].is_array() || keys[k].size() != 2) fk.Fail("expected a key [frame, value], not " + Shown(keys[k]));
        const double frame = FrameNumber(keys[k][0], fk[0]);
        if (k > 0 && !(frame > track.frames.back()))
          fk.Fail("keyframes out of order: frame " + FormatNumber(frame) + " follows frame " + FormatNumber(track.frames.back()));
        track.frames.push_back(frame);
        track.values.push_back(AttributeValue(keys[k][1], info, fk[1]));
      }
    } else {
      track.frames.push_back(0.0);
      track.values.push_back(AttributeValue(value, info, f));
      track.stepped = true;
    }
    return track;
  }

  double AttributeValue(const json& value, const AttributeInfo& info, const Field& f) {
    double number = 0.0;
    switch (info.type) {
      case AttributeType::kBool:
        if (value.is_boolean()) return value.get<bool>() ? 1.0 : 0.0;
        if (!value.is_number() || (value.get<double>() != 0.0 && value.get<double>() != 1.0))
          f.Fail("expected true or false (or 1 or 0), not " + Shown(value));
        return value.get<double>();
      case AttributeType::kEnum:
        if (value.is_string()) {
          for (const myo_core::EnumField& field : info.fields)
            if (field.name == value.get<std::string>()) return field.value;
          f.Fail(Quote(value.get<std::string>()) + " is not one of " + EnumChoices(info));
        }
        if (!value.is_number()) f.Fail("expected one of " + EnumChoices(info) + ", not " + Shown(value));
        number = value.get<double>();
        for (const myo_core::EnumField& field : info.fields)
          if (field.value == number) return number;
        f.Fail(FormatNumber(number) + " is not one of " + EnumChoices(info));
      case AttributeType::kInt:
        number = IntNumber(value, f);
        break;
      case AttributeType::kTime:
        number = FrameNumber(value, f);
        break;
      default:
        number = FloatNumber(value, f);
        break;
    }
    CheckAttributeLimits(number, info, f);
    return number;
  }

  static std::string EnumChoices(const AttributeInfo& info) {
    std::string text;
    for (const myo_core::EnumField& field : info.fields)
      text += (text.empty() ? "" : ", ") + std::string("\"") + field.name + "\" (" + std::to_string(field.value) + ")";
    return text;
  }

  void ReadConnections(const json& object, const Field& field, SceneNode& node) {
    ExpectObject(object, field);
    std::set<std::string> plugs;
    for (const auto& item : object.items()) {
      const Field f = field[item.key()];
      SceneConnection connection = ParsePlug(item.key(), *node.type, f);
      connection.source = Text(item.value(), f);
      const AttributeInfo* target = FindNodeAttribute(*node.type, connection.attribute);
      if (IsPositionAttribute(*target, *node.type)) {
        ReadPositionSource(connection, f);
        if (connection.source == node.name) f.Fail("a node cannot take its own output");
        if (!plugs.insert(connection.attribute).second) f.Fail("the plug is connected twice");
        node.connections.push_back(std::move(connection));
        continue;
      }
      if (IsValueAttribute(*target)) {
        ReadValueSource(connection, f);
        if (connection.source == node.name) f.Fail("a node cannot take its own output");
        if (node.attributes.count(connection.attribute) != 0)
          f.Fail("\"" + connection.attribute + "\" is both set in \"attributes\" and connected");
        const std::string key = connection.attribute;
        if (!plugs.insert(key).second) f.Fail("the plug is connected twice");
        node.connections.push_back(std::move(connection));
        continue;
      }
      if (target->type == AttributeType::kMessage) {
        ReadMessageSource(connection, node, f);
        const std::string key = connection.attribute + "[" + std::to_string(connection.index) + "]";
        if (!plugs.insert(key).second) f.Fail("the plug is connected twice");
        node.connections.push_back(std::move(connection));
        continue;
      }
      const std::string key = connection.list + "[" + std::to_string(connection.index) + "]." + connection.attribute;
      if (!plugs.insert(key).second) f.Fail("the plug is connected twice");
      const AttributeInfo* info = FindNodeAttribute(*node.type, connection.attribute);
      const auto kind = scene_.kinds.find(connection.source);
      if (kind == scene_.kinds.end()) f.Fail(Quote(connection.source) + " is not in the scene");
      if (info->IsMatrix() && kind->second != SourceKind::kTransform)
        f.Fail("a matrix attribute takes a transform, and " + Quote(connection.source) + " is not one");
      if (info->type == AttributeType::kMesh && kind->second == SourceKind::kTransform)
        f.Fail("a mesh attribute takes a mesh or a node, and " + Quote(connection.source) + " is a transform");
      if (info->type == AttributeType::kMesh && kind->second == SourceKind::kNode &&
          !scene_.FindNode(connection.source)->type->deformer)
        f.Fail("a mesh attribute takes a mesh or a deformer, and " + Quote(connection.source) + " outputs no mesh");
      if (connection.source == node.name) f.Fail("a node cannot take its own output");
      node.connections.push_back(std::move(connection));
    }
  }

  // "attribute" or "list[index].attribute", by long or short names.
  SceneConnection ParsePlug(const std::string& plug, const NodeType& type, const Field& f) {
    SceneConnection c;
    c.plug = plug;
    std::string attribute = plug;
    const std::size_t open = plug.find('[');
    if (open != std::string::npos && plug.back() == ']' && plug.find("].") == std::string::npos) {
      // "list[index]": an element of a list of messages.
      const AttributeInfo* list = FindNodeAttribute(type, plug.substr(0, open));
      const std::string digits = plug.substr(open + 1, plug.size() - open - 2);
      if (list == nullptr || list->type != AttributeType::kMessage || !list->Has(myo_core::kArray))
        f.Fail(Quote(plug.substr(0, open)) + " is not a list of messages of " + type.name);
      if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos || digits.size() > 9)
        f.Fail("expected a plug \"" + list->long_name + "[index]\"");
      c.attribute = list->long_name;
      c.index = static_cast<uint32_t>(std::stoul(digits));
      return c;
    }
    if (open != std::string::npos) {
      const std::size_t close = plug.find("].", open);
      if (close == std::string::npos || close == open + 1) f.Fail("expected a plug \"list[index].attribute\"");
      const std::string digits = plug.substr(open + 1, close - open - 1);
      if (digits.find_first_not_of("0123456789") != std::string::npos || digits.size() > 9)
        f.Fail("expected a plug \"list[index].attribute\"");
      const AttributeInfo* list = FindNodeAttribute(type, plug.substr(0, open));
      if (list == nullptr || list->type != AttributeType::kCompound || !list->Has(myo_core::kArray))
        f.Fail(Quote(plug.substr(0, open)) + " is not a list attribute of " + type.name);
      c.list = list->long_name;
      c.index = static_cast<uint32_t>(std::stoul(digits));
      attribute = plug.substr(close + 2);
      const AttributeInfo* child = FindNodeAttribute(type, attribute);
      if (child == nullptr || std::find(list->children.begin(), list->children.end(), child->long_name) ==
                                  list->children.end())
        f.Fail(Quote(attribute) + " is not an attribute of " + c.list);
    }
    const AttributeInfo* info = FindNodeAttribute(type, attribute);
    if (info == nullptr) f.Fail("unknown attribute of " + type.name + DidYouMean(attribute, AttributeNames(type)));
    c.attribute = info->long_name;
    if (info->type == AttributeType::kMessage && info->Has(myo_core::kArray))
      f.Fail("needs an index: connect \"" + info->long_name + "[0]\"");
    if (!info->IsMatrix() && info->type != AttributeType::kMesh && info->type != AttributeType::kMessage &&
        !IsValueAttribute(*info) && !IsPositionAttribute(*info, type))
      f.Fail("only matrix, mesh, message, position and single value attributes take connections here");
    if (c.list.empty()) {
      for (const AttributeInfo& parent : *type.attributes)
        if (parent.Has(myo_core::kArray) && std::find(parent.children.begin(), parent.children.end(),
                                                      info->long_name) != parent.children.end())
          f.Fail("needs an index: connect \"" + parent.long_name + "[0]." + info->long_name + "\"");
    }
    return c;
  }

  void ReadMaps(const json& list, const Field& field, SceneNode& node, uint32_t points) {
    ExpectArray(list, field);
    std::set<std::pair<std::string, uint32_t>> seen;
    for (std::size_t i = 0; i < list.size(); ++i) {
      const json& value = list[i];
      const Field f = field[i];
      ExpectObject(value, f);
      RejectUnknownKeys(value, {"name", "set", "values", "value", "file"}, f);
      const std::string name = Text(Require(value, "name", f), f["name"]);
      const AttributeInfo* element = FindNodeAttribute(*node.type, name);
      const AttributeInfo* list_info = element ? FindMapList(*node.type, element->long_name) : nullptr;
      if (list_info == nullptr) f["name"].Fail(Quote(name) + " is not a per-point map of " + node.type->name);
      SceneMap map;
      map.list = list_info->long_name;
      map.element = element->long_name;
      if (element->type == AttributeType::kCompound) map.children = element->children;
      map.set = value.contains("set") ? Index(value["set"], f["set"]) : 0;
      if (list_info->children.size() == 1 && map.set != 0)
        f["set"].Fail("\"" + map.element + "\" has one set per deformed mesh: use set 0");
      if (!seen.emplace(map.element, map.set).second) f.Fail("the map is given twice for this set");
      const std::vector<const AttributeInfo*> components = MapComponents(*node.type, map);
      const std::size_t width = components.size();
      const int sources = value.contains("values") + value.contains("value") + value.contains("file");
      if (sources != 1) f.Fail("give exactly one of \"values\", \"value\" and \"file\"");
      std::string file;  // the map file, when the values come from one
      if (value.contains("value")) {
        // One number for every component of every point.
        float number = 0.0f;
        for (const AttributeInfo* component : components) number = MapNumber(value["value"], *component, f["value"]);
        map.values.assign(static_cast<std::size_t>(points) * width, number);
      } else if (value.contains("values")) {
        const json& values = value["values"];
        ExpectArray(values, f["values"]);
        for (std::size_t k = 0; k < values.size(); ++k) {
          // Arrays of a point each, or numbers in a row: a mix would shift
          // the components of the points that follow.
          if (values[k].is_array() != values[0].is_array())
            f["values"][k].Fail("mixes numbers and arrays: give every point as an array of " + std::to_string(width) +
                                " numbers, or every value as a number");
          if (values[k].is_array()) {
            if (values[k].size() != width)
              f["values"][k].Fail("expected " + std::to_string(width) + " numbers, not " + Shown(values[k]));
            for (std::size_t c = 0; c < width; ++c)
              map.values.push_back(MapNumber(values[k][c], *components[c], f["values"][k][c]));
          } else {
            map.values.push_back(MapNumber(values[k], *components[map.values.size() % width], f["values"][k]));
          }
        }
      } else {
        file = InputFile(path_, value["file"], f["file"]);
        std::string error;
        if (!myo_io::ReadMapFile(file, map.values, error)) f["file"].Fail(error);
        scene_.inputs.push_back(file);
      }
      if (map.values.size() != static_cast<std::size_t>(points) * width)
        f.Fail("the map has " + std::to_string(map.values.size()) + " values; the mesh has " +
               std::to_string(points) + " points" +
               (width > 1 ? " and the map " + std::to_string(width) + " per point" : std::string()));
      if (!file.empty()) CheckMapFileValues(map.values, components, file, f["file"]);
      node.maps.push_back(std::move(map));
    }
  }

  // A single number that a connection from another node's output may drive.
  static bool IsValueAttribute(const AttributeInfo& info) {
    if (info.Has(myo_core::kArray) || info.Has(myo_core::kNotWritable)) return false;
    return info.type == AttributeType::kFloat || info.type == AttributeType::kInt ||
           info.type == AttributeType::kBool || info.type == AttributeType::kEnum;
  }

  // A position: a compound of three floats, not per point.
  static bool IsPositionAttribute(const AttributeInfo& info, const NodeType& type) {
    if (info.type != AttributeType::kCompound || info.Has(myo_core::kArray) || info.children.size() != 3) return false;
    for (const std::string& child : info.children) {
      const AttributeInfo* c = myo_core::FindAttribute(*type.attributes, child);
      if (c == nullptr || c->type != AttributeType::kFloat) return false;
    }
    return true;
  }

  // A transform (its world position) or "mesh.vtx[i]", the point of a mesh
  // or of a deformer's output in world space.
  void ReadPositionSource(SceneConnection& c, const Field& f) const {
    const std::string& text = c.source;
    const std::size_t mark = text.rfind(".vtx[");
    if (mark == std::string::npos) {
      if (scene_.FindTransform(text) == nullptr)
        f.Fail("a position takes a transform or \"mesh.vtx[index]\", and " + Quote(text) + " is neither");
      return;
    }
    const std::string name = text.substr(0, mark);
    const std::string digits = text.substr(mark + 5, text.size() - mark - 6);
    if (text.back() != ']' || digits.empty() || digits.size() > 9 ||
        digits.find_first_not_of("0123456789") != std::string::npos)
      f.Fail("expected \"mesh.vtx[index]\", not " + Quote(text));
    const SceneMesh* mesh = scene_.FindMesh(name);
    const SceneNode* node = mesh == nullptr ? scene_.FindNode(name) : nullptr;
    if (node != nullptr && !node->type->deformer) f.Fail(Quote(name) + " outputs no mesh");
    if (mesh == nullptr && node == nullptr) f.Fail(Quote(name) + " is not a mesh or node of the scene");
    if (node != nullptr) mesh = scene_.BaseMesh(*node);  // a deformer outputs the points of its base mesh
    const uint64_t vertex = std::stoull(digits);
    if (vertex >= mesh->data.PointCount())
      f.Fail("vertex " + digits + " is beyond the " + std::to_string(mesh->data.PointCount()) + " points of " +
             Quote(name));
    c.source = name;
    c.vertex = static_cast<int64_t>(vertex);
  }

  // The message of another node: a simulation deformer into a data node's
  // "inputs", a data node into a debug locator's "data".
  void ReadMessageSource(const SceneConnection& c, const SceneNode& node, const Field& f) const {
    const SceneNode* source = scene_.FindNode(c.source);
    if (source == nullptr) f.Fail(Quote(c.source) + " is not a node of the scene");
    if (source == &node) f.Fail("a node cannot take its own output");
    if (node.type->kind == NodeKind::kDataNode && !HasDebugLines(*source->type))
      f.Fail("takes the message of a MyoMuscle, MyoRibbonMuscle, MyoSkin or MyoSimshape, and " + Quote(c.source) +
             " is a " + source->type->name);
    if (node.type->kind == NodeKind::kDebugLocator && source->type->kind != NodeKind::kDataNode)
      f.Fail("takes the message of a MyoDataNode, and " + Quote(c.source) + " is a " + source->type->name);
  }

  // "node.attribute": a single value output of another node.
  void ReadValueSource(SceneConnection& c, const Field& f) const {
    const std::size_t dot = c.source.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == c.source.size())
      f.Fail("a value attribute takes \"node.attribute\", an output of another node, not " + Quote(c.source));
    const std::string node_name = c.source.substr(0, dot);
    const SceneNode* source = scene_.FindNode(node_name);
    if (source == nullptr) f.Fail(Quote(node_name) + " is not a node of the scene");
    const AttributeInfo* output = FindNodeAttribute(*source->type, c.source.substr(dot + 1));
    if (output == nullptr || !output->Has(myo_core::kNotWritable) || output->Has(myo_core::kArray) ||
        output->type != AttributeType::kFloat)
      f.Fail(Quote(c.source.substr(dot + 1)) + " is not a single value output of " + source->type->name);
    c.source = node_name;
    c.source_attribute = output->long_name;
  }

  // Nodes a node depends on: its input and the node outputs it connects.
  std::vector<std::size_t> Dependencies(const SceneNode& node) const {
    std::vector<std::size_t> out;
    if (scene_.FindNode(node.input) != nullptr) out.push_back(scene_.index.at(node.input));
    for (const SceneConnection& c : node.connections)
      if (scene_.FindNode(c.source) != nullptr) out.push_back(scene_.index.at(c.source));
    return out;
  }

  // Depth-first order; a node met again while on the path closes a cycle.
  // The path is kept on the heap: a chain of many nodes, each taking the
  // next one's output, must not exhaust the stack.
  std::vector<std::size_t> TopologicalOrder(const Field& field) const {
    const std::size_t n = scene_.nodes.size();
    std::vector<int> state(n, 0);  // 0 unseen, 1 on the path, 2 done
    std::vector<std::size_t> order;
    struct Visit {
      std::size_t node;
      std::vector<std::size_t> dependencies;
      std::size_t next = 0;
    };
    std::vector<Visit> path;
    for (std::size_t root = 0; root < n; ++root) {
      if (state[root] != 0) continue;
      state[root] = 1;
      path.push_back({root, Dependencies(scene_.nodes[root])});
      while (!path.empty()) {
        Visit& top = path.back();
        if (top.next == top.dependencies.size()) {
          state[top.node] = 2;
          order.push_back(top.node);
          path.pop_back();
          continue;
        }
        const std::size_t d = top.dependencies[top.next++];
        if (state[d] == 1) {
          std::vector<std::string> cycle;
          std::size_t from = 0;
          while (path[from].node != d) ++from;
          for (std::size_t k = from; k < path.size(); ++k) cycle.push_back(scene_.nodes[path[k].node].name);
          cycle.push_back(scene_.nodes[d].name);
          field.Fail("a cycle of connections: " + Chain(cycle));
        }
        if (state[d] == 2) continue;
        state[d] = 1;
        path.push_back({d, Dependencies(scene_.nodes[d])});
      }
    }
    return order;
  }

  void OrderNodes(const Field& field) {
    const std::vector<std::size_t> order = TopologicalOrder(field);
    std::vector<SceneNode> nodes;
    for (std::size_t i : order) nodes.push_back(std::move(scene_.nodes[i]));
    scene_.nodes = std::move(nodes);
    for (std::size_t i = 0; i < scene_.nodes.size(); ++i) scene_.index[scene_.nodes[i].name] = i;
  }

  const std::string& path_;
  Scene& scene_;
  SceneNameSet names_;
};

}  // namespace

bool ReadScene(const std::string& path, Scene& scene, std::string& error) {
  Scene result;
  result.path = path;
  try {
    SceneReader(path, result).Read();
  } catch (const SceneFault& fault) {
    error = OneLine(fault.message);
    return false;
  } catch (const nlohmann::json::exception& e) {
    // Values are checked for their type before they are read; this is the
    // last guard of that rule.
    error = OneLine(path + ": " + e.what());
    return false;
  }
  scene = std::move(result);
  return true;
}

}  // namespace myo_app
