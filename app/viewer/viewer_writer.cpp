#include "app/viewer/viewer_writer.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "io/file_text.h"
#include "app/run/scene_merge_host.h"
#include "app/viewer/page_encoding.h"
#include "app/viewer/viewer_script.h"

namespace myo_app {

namespace {

const char* const kThreeJsFiles[] = {"/usr/share/javascript/three/three.min.js",
                                     "/usr/share/javascript/three/three.js"};

// JSON text safe inside a <script> element: "<" only occurs in strings,
// where \u003c reads the same.
std::string ScriptJson(const nlohmann::json& value) {
  const std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  std::string out;
  out.reserve(text.size());
  for (char c : text) out += c == '<' ? std::string("\\u003c") : std::string(1, c);
  return out;
}

std::string MatrixBase64(const Matrix4d& m) {
  std::vector<float> values(m.begin(), m.end());
  return Base64Of(values);
}

// Scalar per-point maps of a node, by the name the page shows: the map's
// attribute, with its set when the node has several of that attribute.
nlohmann::json PaintedMaps(const SceneNode& node, std::size_t point_count) {
  nlohmann::json maps = nlohmann::json::object();
  for (const SceneMap& map : node.maps) {
    if (!map.children.empty() || map.values.size() != point_count) continue;
    std::size_t same = 0;
    for (const SceneMap& other : node.maps) same += other.element == map.element ? 1 : 0;
    const std::string name = same > 1 ? map.element + "[" + std::to_string(map.set) + "]" : map.element;
    maps[name] = Base64Of(map.values);
  }
  return maps;
}

}  // namespace

std::string FindThreeJs() {
  if (const char* chosen = std::getenv("MYO_THREE_JS"); chosen != nullptr && *chosen != '\0')
    return std::ifstream(chosen).good() ? std::string(chosen) : std::string();
  for (const char* path : kThreeJsFiles)
    if (std::ifstream(path).good()) return path;
  return {};
}

bool ViewerWriter::Open(const std::string& path, const Scene& scene, std::string& reason, bool resumable,
                        ViewerProgress from) {
  scene_ = &scene;
  // A resumed page has its head, three.js inlined, in the file already.
  const std::string three_path = FindThreeJs();
  std::string three;
  if (three_path.empty() || (from.bytes == 0 && (!myo_io::ReadFileText(three_path, three) || three.empty()))) {
    reason = "viewer.html not written: three.js not found (looked for " + std::string(kThreeJsFiles[0]) +
             "); install it with \"apt-get install libjs-three\", or pass --no-viewer";
    return false;
  }
  for (const SceneNode& node : scene.nodes) {
    if (!node.type->deformer) continue;
    Object object;
    object.name = node.name;
    object.type = node.type->name;
    object.node = &node;
    object.mesh = scene.BaseMesh(node);
    if (object.mesh != nullptr) objects_.push_back(object);
  }
  for (const SceneMesh& mesh : scene.meshes) {
    bool deformed = false;
    for (const SceneNode& node : scene.nodes) deformed = deformed || (node.type->deformer && node.base_mesh == mesh.name);
    if (deformed) continue;
    Object object;
    object.name = mesh.name;
    object.type = "mesh";
    object.mesh = &mesh;
    object.animated = !mesh.parent.empty() || !mesh.follows.empty();
    objects_.push_back(object);
  }
  const bool opened = resumable ? file_.OpenResumable(path, from.bytes, reason) : file_.Open(path, reason);
  if (!opened) {
    reason = "viewer.html not written: " + reason;
    return false;
  }
  frames_ = from.frames;
  if (from.bytes != 0) return true;  // the head is in the file already
  const std::string head = ViewerPageHead(scene.path) + "<script>\n" + InlineScriptText(three) + "\n</script>\n";
  if (!file_.Write(head, reason)) {
    reason = "viewer.html not written: " + reason;
    file_.Discard();
    return false;
  }
  return true;
}

Matrix4d ViewerWriter::ObjectMatrix(const Object& object, double frame) const {
  const Matrix4d placed = scene_->WorldMatrix(object.mesh->parent, frame);
  if (object.node != nullptr || object.mesh->follows.empty()) return placed;
  // A mesh carried by a transform: its points through that transform, then placed.
  return Multiply(scene_->WorldMatrix(object.mesh->follows, frame), placed);
}

int ViewerWriter::ObjectIndex(const std::string& name) const {
  for (std::size_t i = 0; i < objects_.size(); ++i)
    if (objects_[i].name == name) return static_cast<int>(i);
  return -1;
}

bool ViewerWriter::AddFrame(double frame, const std::vector<std::unique_ptr<NodeRunner>>& runners,
                            std::string& error) {
  nlohmann::json data = {{"frame", frame}};
  nlohmann::json matrices = nlohmann::json::object(), points = nlohmann::json::object();
  nlohmann::json channels = nlohmann::json::object(), lines = nlohmann::json::object();
  for (std::size_t i = 0; i < objects_.size(); ++i) {
    const Object& object = objects_[i];
    if (object.node != nullptr || object.animated) matrices[std::to_string(i)] = MatrixBase64(ObjectMatrix(object, frame));
  }
  for (const auto& runner : runners) {
    const SceneNode& node = runner->node();
    if (node.type->kind == NodeKind::kEdgeEvaluator) {
      const int target = ObjectIndex(ConnectedSource(node, "deformMesh"));
      const std::vector<float>& values = runner->compression();
      // "compression", named after its evaluator when several measure one mesh.
      std::size_t measuring = 0;
      for (const auto& other : runners)
        measuring += other->node().type->kind == NodeKind::kEdgeEvaluator &&
                     ConnectedSource(other->node(), "deformMesh") == ConnectedSource(node, "deformMesh");
      const std::string name = measuring > 1 ? "compression (" + node.name + ")" : std::string("compression");
      if (target >= 0 && values.size() == objects_[target].mesh->data.PointCount())
        channels[std::to_string(target)][name] = Base64Of(values);
      continue;
    }
    const int index = ObjectIndex(node.name);
    if (index < 0 || objects_[index].node == nullptr) continue;
    const std::string key = std::to_string(index);
    const std::vector<float>& output = runner->output().points;
    if (output.size() == objects_[index].mesh->data.points.size()) {
      const QuantizedPoints q = QuantizePoints(output);
      points[key] = {q.low[0], q.low[1], q.low[2], q.high[0], q.high[1], q.high[2], Base64Of(q.values)};
    }
    const std::vector<float>& activation = runner->out_activation();
    if (!activation.empty() && activation.size() == output.size() / 3) channels[key]["activation"] = Base64Of(activation);
    const myo_core::DebugData* debug = runner->debug_data();
    if (debug != nullptr && debug->enabled_) {
      lines[key] = {{"color", {debug->color_[0], debug->color_[1], debug->color_[2]}},
                    {"data", Base64Of(debug->lines_)}};
    }
  }
  data["m"] = std::move(matrices);
  data["p"] = std::move(points);
  data["c"] = std::move(channels);
  data["l"] = std::move(lines);
  ++frames_;
  return file_.Write("<script type=\"application/json\" class=\"myo-frame\">" + ScriptJson(data) + "</script>\n",
                     error);
}

std::string ViewerWriter::SceneDescription() const {
  nlohmann::json objects = nlohmann::json::array();
  for (const Object& object : objects_) {
    const myo_core::MeshData& mesh = object.mesh->data;
    // A deformer whose output another deformer deforms shows through that one.
    bool deformed_further = false;
    for (const SceneNode& node : scene_->nodes)
      deformed_further = deformed_further || (object.node != nullptr && node.type->deformer && node.input == object.name);
    const bool wide = mesh.PointCount() > 65535;
    std::vector<uint16_t> narrow;
    std::vector<uint32_t> full;
    for (int32_t v : mesh.triangle_vertices) {
      if (wide) full.push_back(static_cast<uint32_t>(v));
      else narrow.push_back(static_cast<uint16_t>(v));
    }
    const bool skin = object.node != nullptr && object.node->type->kind == NodeKind::kSkin;
    objects.push_back({
        {"name", object.name},
        {"type", object.type},
        {"deformer", object.node != nullptr},
        {"visible", !deformed_further},
        {"opacity", skin ? 0.55 : 1.0},
        {"points", Base64Of(mesh.points)},
        {"triangles", wide ? Base64Of(full) : Base64Of(narrow)},
        {"wideIndex", wide},
        {"maps", object.node != nullptr ? PaintedMaps(*object.node, mesh.PointCount()) : nlohmann::json::object()},
    });
  }
  const Timeline& t = scene_->timeline;
  return ScriptJson({{"scene", scene_->path}, {"fps", t.fps}, {"start", t.start}, {"end", t.end},
                     {"frames", frames_}, {"objects", objects}});
}

bool ViewerWriter::Commit(std::string& error) {
  const std::string tail = "<script type=\"application/json\" id=\"myo-scene\">" + SceneDescription() +
                           "</script>\n<script>\n" + InlineScriptText(ViewerScript()) + "\n</script>\n</body>\n</html>\n";
  return file_.Write(tail, error) && file_.Commit(error);
}

}  // namespace myo_app
