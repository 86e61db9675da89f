#include "app/run/scene_run.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <sstream>

#include <nlohmann/json.hpp>

#include "app/run/debug_view.h"
#include "app/run/node_runner.h"
#include "app/run/output_folder.h"
#include "app/run/scene_meshes.h"
#include "app/run/scene_merge_host.h"
#include "app/viewer/viewer_writer.h"
#include "core/log/logger.h"
#include "io/atomic_file.h"
#include "io/map_file.h"
#include "io/obj_mesh.h"
#include "io/point_cache.h"

namespace myo_app {

namespace {

namespace fs = std::filesystem;

double PeakMemoryMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

// Per node: what the summary reports.
struct NodeTotals {
  std::size_t frames = 0;
  std::size_t steps = 0;
  double evaluate_ms_sum = 0.0;
  double evaluate_ms_max = 0.0;
  double max_speed = 0.0;
  std::optional<double> min_volume_ratio;  // nodes with a volume row
  std::optional<double> max_volume_ratio;
};

// A shape node whose "writeOutActivation" is on at some frame: its
// "outActivation" is written beside its frames.
bool WritesActivation(const SceneNode& node) {
  if (node.type->kind != NodeKind::kShape) return false;
  const auto track = node.attributes.find("writeOutActivation");
  if (track == node.attributes.end()) return false;
  return std::any_of(track->second.values.begin(), track->second.values.end(),
                     [](double value) { return value != 0.0; });
}

// Whether the node's "debug" is on at some frame: its debug lines may be written.
bool WritesDebugLines(const SceneNode& node) {
  const auto track = node.attributes.find("debug");
  if (track == node.attributes.end()) return false;
  return std::any_of(track->second.values.begin(), track->second.values.end(),
                     [](double value) { return value != 0.0; });
}

// The colour of a compression: white at 0, towards red as the surface
// squeezes (1 and above), towards blue as it stretches (-1 and below).
void CompressionColor(float compression, float* rgba) {
  const float t = std::max(-1.0f, std::min(1.0f, std::isfinite(compression) ? compression : 0.0f));
  rgba[0] = t >= 0.0f ? 1.0f : 1.0f + t;
  rgba[1] = t >= 0.0f ? 1.0f - t : 1.0f + t;
  rgba[2] = t >= 0.0f ? 1.0f - t : 1.0f;
  rgba[3] = 1.0f;
}

std::string Csv(double value) {
  std::ostringstream out;
  out.precision(9);
  out << value;
  return out.str();
}

class SceneRun {
 public:
  SceneRun(const Scene& scene, const RunOptions& options) : scene_(scene), options_(options) {}

  RunResult Run(std::string& error) {
    const auto begin = std::chrono::steady_clock::now();
    // Every output is named and its place checked before the first frame.
    if (!PrepareOutputFolder(options_.output_directory, Plan(), error)) return RunResult::kFailed;
    const NodeRunner::OutputValues values = [this](const std::string& node, const std::string& attribute) {
      const auto it = by_name_.find(node);
      return it != by_name_.end() ? it->second->OutputValue(attribute) : 0.0;
    };
    for (const SceneNode& node : scene_.nodes)
      runners_.push_back(std::make_unique<NodeRunner>(scene_, node, values));
    for (std::size_t i = 0; i < runners_.size(); ++i) by_name_[scene_.nodes[i].name] = runners_[i].get();
    if (!OpenOutputs(error)) return RunResult::kFailed;
    OpenViewer();

    const Timeline& t = scene_.timeline;
    const std::size_t total = static_cast<std::size_t>(t.end - t.preroll) + 1;
    std::string csv = "frame,node,stepped,evaluate_ms,iterations,volume_ratio,max_speed\n";
    std::string values_csv = ValuesHeader();
    std::size_t done = 0;
    RunMeshes meshes(scene_, Outputs());
    // Frames are whole numbers: counted as integers, they always advance.
    for (long long whole = static_cast<long long>(t.preroll); whole <= static_cast<long long>(t.end); ++whole) {
      const double frame = static_cast<double>(whole);
      if (Interrupted()) return RunResult::kInterrupted;
      const bool playing = frame != t.preroll;
      meshes.SetFrame(frame);
      for (auto& runner : runners_) {
        if (!runner->Evaluate(frame, playing, meshes, error)) return RunResult::kFailed;
        // A step cut short by a stop request is never written.
        if (Interrupted()) return RunResult::kInterrupted;
        if (!FiniteOutput(frame, *runner, error)) return RunResult::kFailed;
        if (frame >= t.start) Record(frame, *runner, csv);
      }
      if (frame >= t.start && !values_csv.empty()) RecordValues(frame, values_csv);
      if (frame >= t.start && !WriteFrame(frame, error)) return RunResult::kFailed;
      if (frame >= t.start && viewer_ && !viewer_->AddFrame(frame, runners_, error)) return RunResult::kFailed;
      if (options_.progress) options_.progress(++done, total);
    }
    if (!CommitOutputs(error)) return RunResult::kFailed;
    if (!myo_io::WriteFileAtomically(Path("figures.csv"), csv, error)) return RunResult::kFailed;
    if (!values_csv.empty() && !myo_io::WriteFileAtomically(Path("values.csv"), values_csv, error))
      return RunResult::kFailed;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (!myo_io::WriteFileAtomically(Path("summary.json"), Summary(seconds).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n", error))
      return RunResult::kFailed;
    if (viewer_ && !viewer_->Commit(error)) return RunResult::kFailed;
    return RunResult::kDone;
  }

 private:
  std::string Path(const std::string& name) const { return (fs::path(options_.output_directory) / name).string(); }

  RunMeshes::NodeOutput Outputs() const {
    return [this](const std::string& name) -> const myo_core::MeshData* {
      const auto it = by_name_.find(name);
      return it != by_name_.end() ? &it->second->output() : nullptr;
    };
  }

  // The page is a help, not a result: without three.js the run goes on.
  void OpenViewer() {
    if (!options_.viewer) return;
    viewer_ = std::make_unique<ViewerWriter>();
    std::string reason;
    if (viewer_->Open(Path("viewer.html"), scene_, reason)) return;
    myo_core::LogWarning(reason);
    viewer_.reset();
  }

  bool Interrupted() const { return options_.interrupted != nullptr && options_.interrupted->load(); }

  // Every file and folder the run may write, relative to the output folder.
  OutputPlan Plan() const {
    OutputPlan plan;
    const Timeline& t = scene_.timeline;
    bool values = false;
    for (const SceneNode& node : scene_.nodes) {
      if (node.type->kind == NodeKind::kEdgeEvaluator) {
        plan.folders.push_back(node.name);
        for (long long frame = static_cast<long long>(t.start); frame <= static_cast<long long>(t.end); ++frame) {
          plan.files.push_back(node.name + "/" + FrameFileName(node.name, static_cast<double>(frame)));
          plan.files.push_back(node.name + "/" + CompressionFileName(node.name, static_cast<double>(frame)));
        }
      }
      if (node.type->kind == NodeKind::kDebugLocator) {
        plan.folders.push_back(node.name);
        for (long long frame = static_cast<long long>(t.start); frame <= static_cast<long long>(t.end); ++frame)
          plan.files.push_back(node.name + "/" + DebugFileName(node.name, static_cast<double>(frame)));
      }
      values = values || !ValueOutputsOf(*node.type).empty();
      if (!node.type->deformer) continue;
      const bool objs = options_.format != OutputFormat::kPc2;
      const bool activations = WritesActivation(node);
      const bool debug = WritesDebugLines(node);
      if (!objs) plan.files.push_back(node.name + ".pc2");
      if (objs || activations || debug) plan.folders.push_back(node.name);
      for (long long frame = static_cast<long long>(t.start); frame <= static_cast<long long>(t.end); ++frame) {
        if (objs) plan.files.push_back(node.name + "/" + FrameFileName(node.name, static_cast<double>(frame)));
        if (activations)
          plan.files.push_back(node.name + "/" + ActivationFileName(node.name, static_cast<double>(frame)));
        if (debug) plan.files.push_back(node.name + "/" + DebugFileName(node.name, static_cast<double>(frame)));
      }
    }
    plan.files.push_back("figures.csv");
    if (values) plan.files.push_back("values.csv");
    plan.files.push_back("summary.json");
    if (options_.viewer) plan.files.push_back("viewer.html");
    return plan;
  }

  // A node whose simulation left the finite numbers stops the run: its frame
  // and the ones after it would be all NaN.
  bool FiniteOutput(double frame, const NodeRunner& runner, std::string& error) const {
    const std::vector<float>& points = runner.output().points;
    for (std::size_t k = 0; k < points.size(); ++k) {
      if (std::isfinite(points[k])) continue;
      error = runner.node().name + " at frame " + std::to_string(static_cast<long long>(frame)) +
              ": the simulation produced a point that is " +
              "not a finite number (vertex " + std::to_string(k / 3) + "); the frames before it are complete";
      return false;
    }
    return true;
  }

  bool OpenOutputs(std::string& error) {
    const Timeline& t = scene_.timeline;
    if (options_.format != OutputFormat::kPc2) return true;
    for (const SceneNode& node : scene_.nodes) {
      if (!node.type->deformer) {
        caches_.push_back(nullptr);
        continue;
      }
      auto cache = std::make_unique<myo_io::PointCacheWriter>();
      const uint32_t points = scene_.BaseMesh(node)->data.PointCount();
      if (!cache->Open(Path(node.name + ".pc2"), points, static_cast<float>(t.start),
                       static_cast<uint32_t>(t.end - t.start) + 1, error))
        return false;
      caches_.push_back(std::move(cache));
    }
    return true;
  }

  bool WriteFrame(double frame, std::string& error) {
    for (std::size_t i = 0; i < runners_.size(); ++i) {
      const NodeRunner& runner = *runners_[i];
      if (runner.node().type->kind == NodeKind::kEdgeEvaluator && !WriteCompression(frame, runner, error)) return false;
      if (runner.node().type->kind == NodeKind::kDebugLocator && !WriteDebugView(frame, runner, error)) return false;
      if (!runner.node().type->deformer) continue;
      if (WritesActivation(runner.node()) && !WriteActivation(frame, runner, error)) return false;
      if (!WriteDebugLines(frame, runner, error)) return false;
      if (options_.format == OutputFormat::kPc2) {
        if (!caches_[i]->Append(runner.output().points, error)) return false;
        continue;
      }
      const std::string& name = runner.node().name;
      const std::string file = (fs::path(Path(name)) / FrameFileName(name, frame)).string();
      const std::string text = myo_io::ObjText(scene_.BaseMesh(runner.node())->obj, runner.output().points,
                                               name + " at frame " + FrameTag(frame));
      if (!myo_io::WriteFileAtomically(file, text, error)) return false;
    }
    return true;
  }

  // The deform mesh coloured by compression, and the values as a map file.
  bool WriteCompression(double frame, const NodeRunner& runner, std::string& error) {
    const std::string& name = runner.node().name;
    const std::vector<float>& values = runner.compression();
    const myo_core::MeshData* mesh = runner.compressed_mesh();
    const std::string source = ConnectedSource(runner.node(), "deformMesh");
    const SceneMesh* topology = scene_.FindMesh(source);
    if (topology == nullptr && scene_.FindNode(source) != nullptr) topology = scene_.BaseMesh(*scene_.FindNode(source));
    std::vector<float> rgba(4 * (mesh != nullptr ? mesh->PointCount() : 0), 1.0f);
    for (std::size_t i = 0; i < values.size() && 4 * i + 3 < rgba.size(); ++i) CompressionColor(values[i], &rgba[4 * i]);
    const std::string comment = name + " compression at frame " + FrameTag(frame) + " (v x y z r g b)";
    const std::string obj =
        topology != nullptr && mesh != nullptr
            ? myo_io::ColoredObjText(myo_io::ObjText(topology->obj, mesh->points, comment), rgba)
            : "# " + comment + ": no deform mesh\n";
    const fs::path folder = Path(name);
    return myo_io::WriteFileAtomically((folder / FrameFileName(name, frame)).string(), obj, error) &&
           myo_io::WriteFileAtomically((folder / CompressionFileName(name, frame)).string(),
                                       myo_io::MapFileText(values, name + " compression at frame " + FrameTag(frame)),
                                       error);
  }

  // The lines of the feature on display, when "debug" is on at this frame.
  bool WriteDebugLines(double frame, const NodeRunner& runner, std::string& error) {
    const myo_core::DebugData* data = runner.debug_data();
    if (data == nullptr || !data->enabled_) return true;
    const std::string& name = runner.node().name;
    const std::string file = (fs::path(Path(name)) / DebugFileName(name, frame)).string();
    const std::string text = myo_io::ObjLinesText(data->lines_, name + " debug lines at frame " + FrameTag(frame));
    return myo_io::WriteFileAtomically(file, text, error);
  }

  // A debug locator's lines of all its deformers whose "debug" is on.
  bool WriteDebugView(double frame, const NodeRunner& runner, std::string& error) {
    std::vector<DebugViewEntry> entries;
    for (const std::string& deformer : DebugViewDeformers(scene_, runner.node())) {
      const auto it = by_name_.find(deformer);
      entries.push_back({deformer, it != by_name_.end() ? it->second->debug_data() : nullptr});
    }
    const std::string& name = runner.node().name;
    const std::string file = (fs::path(Path(name)) / DebugFileName(name, frame)).string();
    return myo_io::WriteFileAtomically(file, DebugViewText(name, FrameTag(frame), entries), error);
  }

  bool WriteActivation(double frame, const NodeRunner& runner, std::string& error) {
    const std::string& name = runner.node().name;
    const std::string file = (fs::path(Path(name)) / ActivationFileName(name, frame)).string();
    const std::string text =
        myo_io::MapFileText(runner.out_activation(), name + " outActivation at frame " + FrameTag(frame));
    return myo_io::WriteFileAtomically(file, text, error);
  }

  bool CommitOutputs(std::string& error) {
    for (auto& cache : caches_)
      if (cache && !cache->Commit(error)) return false;
    return true;
  }

  // One column per single value output of every node that is no deformer,
  // "node.attribute"; empty when there is none.
  std::string ValuesHeader() const {
    std::string header;
    for (const auto& runner : runners_)
      for (const std::string& output : runner->ValueOutputs()) header += "," + runner->node().name + "." + output;
    return header.empty() ? header : "frame" + header + "\n";
  }

  void RecordValues(double frame, std::string& csv) const {
    csv += FrameTag(frame);
    for (const auto& runner : runners_)
      for (const std::string& output : runner->ValueOutputs()) csv += "," + Csv(runner->OutputValue(output));
    csv += "\n";
  }

  void Record(double frame, const NodeRunner& runner, std::string& csv) {
    const NodeFigures& f = runner.figures();
    NodeTotals& totals = totals_[runner.node().name];
    ++totals.frames;
    totals.steps += f.stepped ? 1 : 0;
    totals.evaluate_ms_sum += f.evaluate_ms;
    totals.evaluate_ms_max = std::max(totals.evaluate_ms_max, f.evaluate_ms);
    totals.max_speed = std::max(totals.max_speed, f.max_speed);
    if (f.volume_ratio) {
      totals.min_volume_ratio = std::min(totals.min_volume_ratio.value_or(*f.volume_ratio), *f.volume_ratio);
      totals.max_volume_ratio = std::max(totals.max_volume_ratio.value_or(*f.volume_ratio), *f.volume_ratio);
    }
    csv += FrameTag(frame) + "," + runner.node().name + "," + (f.stepped ? "1" : "0") + "," + Csv(f.evaluate_ms) +
           "," + std::to_string(f.iterations) + "," + (f.volume_ratio ? Csv(*f.volume_ratio) : "") + "," +
           Csv(f.max_speed) + "\n";
  }

  // Where the summary says a node's results are.
  std::string OutputOf(const SceneNode& node) const {
    switch (node.type->kind) {
      case NodeKind::kEdgeEvaluator: return node.name + "/" + node.name + ".####.obj";
      case NodeKind::kDebugLocator: return node.name + "/" + node.name + ".debug.####.obj";
      case NodeKind::kDataNode: return "";
      default: break;
    }
    if (!node.type->deformer) return "values.csv";
    return options_.format == OutputFormat::kPc2 ? node.name + ".pc2" : node.name + "/" + node.name + ".####.obj";
  }

  nlohmann::json Summary(double seconds) const {
    const Timeline& t = scene_.timeline;
    nlohmann::json nodes = nlohmann::json::array();
    for (const SceneNode& node : scene_.nodes) {
      const NodeTotals& totals = totals_.at(node.name);
      nlohmann::json entry = {
          {"name", node.name},
          {"type", node.type->name},
          {"points", node.type->deformer ? scene_.BaseMesh(node)->data.PointCount() : 0},
          {"frames_written", totals.frames},
          {"steps", totals.steps},
          {"mean_evaluate_ms", totals.frames ? totals.evaluate_ms_sum / totals.frames : 0.0},
          {"max_evaluate_ms", totals.evaluate_ms_max},
          {"max_speed", totals.max_speed},
          {"output", OutputOf(node)},
      };
      if (WritesActivation(node)) entry["out_activation"] = node.name + "/" + node.name + ".outActivation.####.txt";
      if (totals.min_volume_ratio) {
        entry["min_volume_ratio"] = *totals.min_volume_ratio;
        entry["max_volume_ratio"] = *totals.max_volume_ratio;
      }
      nodes.push_back(entry);
    }
    return {
        {"scene", scene_.path},
        {"timeline", {{"preroll", t.preroll}, {"start", t.start}, {"end", t.end}, {"fps", t.fps}}},
        {"frames_simulated", static_cast<std::size_t>(t.end - t.preroll) + 1},
        {"frames_written", static_cast<std::size_t>(t.end - t.start) + 1},
        {"format", options_.format == OutputFormat::kPc2 ? "pc2" : "obj"},
        {"seconds", seconds},
        {"peak_memory_mb", PeakMemoryMegabytes()},
        {"nodes", nodes},
        {"figures", "figures.csv"},
    };
  }

  const Scene& scene_;
  const RunOptions& options_;
  std::vector<std::unique_ptr<NodeRunner>> runners_;
  std::map<std::string, const NodeRunner*> by_name_;
  std::vector<std::unique_ptr<myo_io::PointCacheWriter>> caches_;
  std::map<std::string, NodeTotals> totals_;
  std::unique_ptr<ViewerWriter> viewer_;
};

}  // namespace

std::string DebugFileName(const std::string& node, double frame) {
  return node + ".debug." + FrameTag(frame) + ".obj";
}

std::string FrameFileName(const std::string& node, double frame) { return node + "." + FrameTag(frame) + ".obj"; }

std::string CompressionFileName(const std::string& node, double frame) {
  return node + ".compression." + FrameTag(frame) + ".txt";
}

std::string ActivationFileName(const std::string& node, double frame) {
  return node + ".outActivation." + FrameTag(frame) + ".txt";
}

std::string FrameTag(double frame) {
  char text[32];
  std::snprintf(text, sizeof text, "%04lld", static_cast<long long>(frame));
  return text;
}

RunResult RunScene(const Scene& scene, const RunOptions& options, std::string& error) {
  return SceneRun(scene, options).Run(error);
}

}  // namespace myo_app
