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
#include "app/run/run_checkpoint.h"
#include "app/run/run_tables.h"
#include "app/run/scene_fingerprint.h"
#include "app/run/scene_meshes.h"
#include "app/run/scene_merge_host.h"
#include "app/viewer/viewer_writer.h"
#include "core/log/logger.h"
#include "core/state/state_envelope.h"
#include "io/atomic_file.h"
#include "io/file_text.h"
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

class SceneRun {
 public:
  SceneRun(const Scene& scene, const RunOptions& options)
      : scene_(scene),
        options_(options),
        fingerprint_(options.checkpoint_every > 0 || options.resume ? FingerprintScene(scene) : SceneFingerprint()) {}

  RunResult Run(std::string& error) {
    const auto begin = std::chrono::steady_clock::now();
    const Timeline& t = scene_.timeline;
    // Every output is named and its place checked before the first frame.
    if (options_.resume && !FindResumePoint(resumed_from_, error)) return RunResult::kFailed;
    resume_seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (resumed_from_) {
      if (!ResumeOutputFolder(options_.output_directory, Plan(), error)) return RunResult::kFailed;
    } else {
      if (!PrepareOutputFolder(options_.output_directory, Plan(), error)) return RunResult::kFailed;
      CreateRunners();
    }
    if (!OpenOutputs(error)) return RunResult::kFailed;
    OpenViewer();

    const long long first = resumed_from_ ? *resumed_from_ + 1 : static_cast<long long>(t.preroll);
    const std::size_t total = static_cast<std::size_t>(t.end - t.preroll) + 1;
    std::size_t done = static_cast<std::size_t>(first - static_cast<long long>(t.preroll));
    RunMeshes meshes(scene_, Outputs());
    // Frames are whole numbers: counted as integers, they always advance.
    for (long long whole = first; whole <= static_cast<long long>(t.end); ++whole) {
      const double frame = static_cast<double>(whole);
      if (Interrupted()) return RunResult::kInterrupted;
      const bool playing = frame != t.preroll;
      meshes.SetFrame(frame);
      for (auto& runner : runners_) {
        if (!runner->Evaluate(frame, playing, meshes, error)) return RunResult::kFailed;
        // A step cut short by a stop request is never written.
        if (Interrupted()) return RunResult::kInterrupted;
        if (!FiniteOutput(frame, *runner, error)) return RunResult::kFailed;
        if (frame >= t.start) tables_->Record(frame, *runner);
      }
      if (frame >= t.start) tables_->RecordValues(frame);
      if (frame >= t.start && !WriteFrame(frame, error)) return RunResult::kFailed;
      if (frame >= t.start && viewer_ && !viewer_->AddFrame(frame, runners_, error)) return RunResult::kFailed;
      if (CheckpointDue(t, options_.checkpoint_every, whole) && !SaveCheckpoint(whole, error))
        return RunResult::kFailed;
      if (options_.progress) options_.progress(++done, total);
    }
    if (!CommitOutputs(error)) return RunResult::kFailed;
    if (!myo_io::WriteFileAtomically(Path("figures.csv"), tables_->figures(), error)) return RunResult::kFailed;
    if (!tables_->values().empty() && !myo_io::WriteFileAtomically(Path("values.csv"), tables_->values(), error))
      return RunResult::kFailed;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    const std::string summary = Summary(seconds).dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
    if (!myo_io::WriteFileAtomically(Path("summary.json"), summary + "\n", error)) return RunResult::kFailed;
    if (viewer_ && !viewer_->Commit(error)) return RunResult::kFailed;
    RemoveCheckpoints(options_.output_directory);
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

  void CreateRunners() {
    runners_.clear();
    by_name_.clear();
    const NodeRunner::OutputValues values = [this](const std::string& node, const std::string& attribute) {
      const auto it = by_name_.find(node);
      return it != by_name_.end() ? it->second->OutputValue(attribute) : 0.0;
    };
    for (const SceneNode& node : scene_.nodes) runners_.push_back(std::make_unique<NodeRunner>(scene_, node, values));
    for (std::size_t i = 0; i < runners_.size(); ++i) by_name_[scene_.nodes[i].name] = runners_[i].get();
    tables_ = std::make_unique<RunTables>(runners_);
  }

  // Point caches and the page go to files a later run can go on with when
  // the run writes checkpoints or goes on from one.
  bool ResumableStreams() const { return options_.checkpoint_every > 0 || resumed_from_.has_value(); }

  // The page is a help, not a result: without three.js the run goes on. A
  // resumed run goes on with the page of the run before the checkpoint, and
  // writes none when that run wrote none.
  void OpenViewer() {
    if (!options_.viewer || (resumed_from_ && !resume_viewer_)) return;
    viewer_ = std::make_unique<ViewerWriter>();
    std::string reason;
    if (viewer_->Open(Path("viewer.html"), scene_, reason, ResumableStreams(),
                      resume_viewer_.value_or(ViewerProgress())))
      return;
    myo_core::LogWarning(reason);
    viewer_.reset();
  }

  // The newest checkpoint of the output folder that can be gone on with,
  // its states loaded into fresh runners: `resumed` is its frame, or empty
  // when the folder holds no checkpoint. A damaged checkpoint is passed over
  // with a warning for the one before it; a checkpoint of a changed scene
  // or of another format stops the run.
  bool FindResumePoint(std::optional<long long>& resumed, std::string& error) {
    const std::vector<CheckpointFile> files = FindCheckpoints(options_.output_directory);
    if (files.empty()) {
      myo_core::LogInfo("No checkpoint in " + options_.output_directory + ": the run starts from its first frame.");
      return true;
    }
    for (std::size_t k = 0; k < files.size(); ++k) {
      std::string reason;
      switch (LoadCheckpoint(files[k], reason, error)) {
        case CheckpointUse::kUsable:
          resumed = files[k].frame;
          myo_core::LogInfo("Going on from the checkpoint of frame " + std::to_string(files[k].frame) + " (" +
                            files[k].path + ").");
          return true;
        case CheckpointUse::kStop: return false;
        case CheckpointUse::kPassedOver: break;
      }
      myo_core::LogWarning(files[k].path + ": checkpoint refused: " + reason +
                           (k + 1 < files.size() ? "; trying the one before it" : ""));
    }
    error = options_.output_directory + ": no usable checkpoint (" + std::to_string(files.size()) +
            " refused); run without --resume to start again";
    return false;
  }

  enum class CheckpointUse { kUsable, kPassedOver, kStop };

  // Loads `file` into fresh runners. kPassedOver with `reason` for a file
  // that is damaged, holds another frame than its name or lacks its streams;
  // kStop with `error` for a checkpoint of a changed scene or another format.
  CheckpointUse LoadCheckpoint(const CheckpointFile& file, std::string& reason, std::string& error) {
    std::string bytes;
    if (!myo_io::ReadFileText(file.path, bytes)) {
      reason = "cannot be read";
      return CheckpointUse::kPassedOver;
    }
    if (!myo_core::OpenState(bytes, reason)) return CheckpointUse::kPassedOver;
    myo_core::StateReader reader(bytes.data() + myo_core::kStateHeaderSize, bytes.size() - myo_core::kStateHeaderSize);
    CheckpointHead head;
    CheckpointHeadFields(reader, head);
    if (reader.ok()) {
      const std::string changed = FingerprintDifference(head.fingerprint, fingerprint_);
      if (!changed.empty()) {
        error = file.path + ": the checkpoint belongs to another state of the scene: " + changed +
                "; run without --resume to start again";
        return CheckpointUse::kStop;
      }
      if (head.format != static_cast<int32_t>(options_.format)) {
        error = file.path + ": the run before the checkpoint wrote " +
                (head.format == static_cast<int32_t>(OutputFormat::kPc2) ? "point caches (-f pc2)" : "OBJ frames") +
                "; go on with the same format, or run without --resume to start again";
        return CheckpointUse::kStop;
      }
      if (head.frame != file.frame)
        reader.Fail("the checkpoint holds frame " + std::to_string(head.frame) + ", not the frame of its name");
    }
    if (!reader.ok()) {
      reason = reader.error();
      return CheckpointUse::kPassedOver;
    }
    CreateRunners();
    RunStateFields(reader, *this);
    if (!reader.Finish()) {
      reason = reader.error();
      return CheckpointUse::kPassedOver;
    }
    return StreamsReady(reason) ? CheckpointUse::kUsable : CheckpointUse::kPassedOver;
  }

  // The point caches and the page of a checkpoint are still there, at least
  // as long as they were then.
  bool StreamsReady(std::string& reason) const {
    std::error_code ec;
    auto holds = [&](const std::string& name, uint64_t bytes) {
      const std::string path = myo_io::ResumableFilePath(Path(name));
      if (bytes == 0 || (fs::is_regular_file(path, ec) && fs::file_size(path, ec) >= bytes)) return true;
      reason = path + " is missing or shorter than at the checkpoint";
      return false;
    };
    for (std::size_t i = 0; i < resume_samples_.size() && i < scene_.nodes.size(); ++i) {
      if (!scene_.nodes[i].type->deformer) continue;
      const uint32_t points = scene_.BaseMesh(scene_.nodes[i])->data.PointCount();
      if (resume_samples_[i] != 0 &&
          !holds(scene_.nodes[i].name + ".pc2", myo_io::PointCacheWriter::FileSize(points, resume_samples_[i])))
        return false;
    }
    return !resume_viewer_ || holds("viewer.html", resume_viewer_->bytes);
  }

  // How far the point caches (samples written per node, 0 for none) and
  // the page had come at a checkpoint.
  struct StreamProgress {
    std::vector<uint32_t> samples;
    bool viewer = false;
    ViewerProgress page;
  };

  template <class Archive>
  static void StreamProgressFields(Archive& a, myo_core::ArchiveRecord<Archive, StreamProgress>& progress) {
    a.Array(progress.samples);
    a.Value(progress.viewer);
    a.Value(progress.page.bytes);
    a.Value(progress.page.frames);
  }

  StreamProgress Progress() const {
    StreamProgress progress;
    for (const auto& cache : caches_) progress.samples.push_back(cache ? cache->written() : 0);
    progress.samples.resize(runners_.size(), 0);
    progress.viewer = static_cast<bool>(viewer_);
    if (viewer_) progress.page = viewer_->progress();
    return progress;
  }

  // The run's own state in a checkpoint, after its head: its tables, how far
  // its point caches and page have come, then every node.
  template <class Archive, class Self>
  static void RunStateFields(Archive& a, Self& self) {
    a.Section("run");
    myo_core::ObjectState(a, *self.tables_);
    if constexpr (Archive::kLoading) {
      StreamProgress progress;
      StreamProgressFields(a, progress);
      self.resume_samples_ = std::move(progress.samples);
      self.resume_viewer_ = progress.viewer ? std::optional<ViewerProgress>(progress.page) : std::nullopt;
      if (a.ok() && self.resume_samples_.size() != self.runners_.size())
        a.Fail("the checkpoint's run had " + std::to_string(self.resume_samples_.size()) + " nodes, the scene " +
               std::to_string(self.runners_.size()));
    } else {
      StreamProgressFields(a, self.Progress());
    }
    for (const auto& runner : self.runners_) myo_core::ObjectState(a, *runner);
  }

  // Hands the streams to the system, then writes the state after `frame`.
  bool SaveCheckpoint(long long frame, std::string& error) {
    for (auto& cache : caches_)
      if (cache && !cache->Flush(error)) return false;
    if (viewer_ && !viewer_->Flush(error)) return false;
    const auto begin = std::chrono::steady_clock::now();
    myo_core::StateWriter writer;
    writer.Reserve(checkpoint_bytes_ + checkpoint_bytes_ / 16);
    CheckpointHead head;
    head.frame = frame;
    head.format = static_cast<int32_t>(options_.format);
    head.fingerprint = fingerprint_;
    CheckpointHeadFields(writer, head);
    RunStateFields(writer, *this);
    if (!WriteCheckpoint(options_.output_directory, frame, writer.bytes(), error)) return false;
    ++checkpoints_written_;
    checkpoint_bytes_ = writer.bytes().size() + myo_core::kStateHeaderSize;
    checkpoint_seconds_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return true;
  }

  // What the checkpoints of the run cost, and where it went on from.
  nlohmann::json CheckpointSummary() const {
    nlohmann::json summary = {{"every", options_.checkpoint_every},
                              {"written", checkpoints_written_},
                              {"seconds", checkpoint_seconds_},
                              {"bytes", checkpoint_bytes_}};
    if (resumed_from_) {
      summary["resumed_from_frame"] = *resumed_from_;
      summary["resume_seconds"] = resume_seconds_;
    }
    return summary;
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
    if (options_.checkpoint_every > 0) {
      plan.folders.push_back(kCheckpointFolder);
      for (std::string& path : CheckpointPaths(t, options_.checkpoint_every)) plan.files.push_back(std::move(path));
    }
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
      const uint32_t samples = static_cast<uint32_t>(t.end - t.start) + 1;
      const std::size_t i = caches_.size();
      const bool opened =
          ResumableStreams()
              ? cache->OpenResumable(Path(node.name + ".pc2"), points, static_cast<float>(t.start), samples,
                                     i < resume_samples_.size() ? resume_samples_[i] : 0, error)
              : cache->Open(Path(node.name + ".pc2"), points, static_cast<float>(t.start), samples, error);
      if (!opened) return false;
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
      const NodeTotals totals = tables_->Totals(node.name);
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
    nlohmann::json summary = {
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
    if (options_.checkpoint_every > 0 || options_.resume) summary["checkpoints"] = CheckpointSummary();
    return summary;
  }

  const Scene& scene_;
  const RunOptions& options_;
  std::vector<std::unique_ptr<NodeRunner>> runners_;
  std::map<std::string, const NodeRunner*> by_name_;
  std::vector<std::unique_ptr<myo_io::PointCacheWriter>> caches_;
  std::unique_ptr<RunTables> tables_;
  std::unique_ptr<ViewerWriter> viewer_;
  const SceneFingerprint fingerprint_;
  // What a checkpoint says of the streams of the run before it: the samples
  // of each node's point cache (0 for a node without), and the page's
  // progress, none when that run wrote no page.
  std::vector<uint32_t> resume_samples_;
  std::optional<ViewerProgress> resume_viewer_;
  // The last frame of the checkpoint the run goes on from.
  std::optional<long long> resumed_from_;
  double resume_seconds_ = 0.0;  // finding and loading the checkpoint
  std::size_t checkpoints_written_ = 0;
  double checkpoint_seconds_ = 0.0;
  std::size_t checkpoint_bytes_ = 0;  // of the last one
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
