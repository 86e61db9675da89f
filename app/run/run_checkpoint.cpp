#include "app/run/run_checkpoint.h"

#include <algorithm>
#include <filesystem>

#include "app/run/scene_run.h"
#include "core/state/state_envelope.h"
#include "io/atomic_file.h"
#include "io/number_text.h"

namespace myo_app {

namespace {

namespace fs = std::filesystem;

constexpr const char* kPrefix = "checkpoint.";
constexpr const char* kSuffix = ".myostate";

// The frame of a checkpoint's file name; false for any other name.
bool CheckpointFrame(const std::string& name, long long& frame) {
  const std::string prefix = kPrefix, suffix = kSuffix;
  if (name.size() <= prefix.size() + suffix.size() || name.compare(0, prefix.size(), prefix) != 0 ||
      name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0)
    return false;
  long parsed = 0;
  if (!myo_io::ParseIntText(name.substr(prefix.size(), name.size() - prefix.size() - suffix.size()), parsed))
    return false;
  frame = parsed;
  return true;
}

}  // namespace

std::string CheckpointFileName(long long frame) {
  return kPrefix + FrameTag(static_cast<double>(frame)) + kSuffix;
}

bool CheckpointDue(const Timeline& timeline, uint32_t every, long long frame) {
  if (every == 0 || frame >= static_cast<long long>(timeline.end)) return false;
  return (frame - static_cast<long long>(timeline.preroll) + 1) % every == 0;
}

std::vector<std::string> CheckpointPaths(const Timeline& timeline, uint32_t every) {
  std::vector<std::string> paths;
  for (long long frame = static_cast<long long>(timeline.preroll); frame <= static_cast<long long>(timeline.end);
       ++frame)
    if (CheckpointDue(timeline, every, frame))
      paths.push_back(std::string(kCheckpointFolder) + "/" + CheckpointFileName(frame));
  return paths;
}

std::vector<CheckpointFile> FindCheckpoints(const std::string& output_folder) {
  std::vector<CheckpointFile> files;
  std::error_code ec;
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(output_folder) / kCheckpointFolder, ec)) {
    CheckpointFile file;
    if (entry.is_regular_file(ec) && CheckpointFrame(entry.path().filename().string(), file.frame)) {
      file.path = entry.path().string();
      files.push_back(file);
    }
  }
  std::sort(files.begin(), files.end(),
            [](const CheckpointFile& a, const CheckpointFile& b) { return a.frame > b.frame; });
  return files;
}

bool WriteCheckpoint(const std::string& output_folder, long long frame, const std::string& state, std::string& error) {
  const fs::path folder = fs::path(output_folder) / kCheckpointFolder;
  std::error_code ec;
  fs::create_directories(folder, ec);
  myo_io::AtomicFile file;
  if (!file.Open((folder / CheckpointFileName(frame)).string(), error) ||
      !file.Write(myo_core::StateHeader(state), error) || !file.Write(state, error) || !file.Commit(error))
    return false;
  const std::vector<CheckpointFile> files = FindCheckpoints(output_folder);
  for (std::size_t k = 2; k < files.size(); ++k) fs::remove(files[k].path, ec);
  return true;
}

void RemoveCheckpoints(const std::string& output_folder) {
  std::error_code ec;
  for (const CheckpointFile& file : FindCheckpoints(output_folder)) fs::remove(file.path, ec);
  const fs::path folder = fs::path(output_folder) / kCheckpointFolder;
  if (fs::is_directory(folder, ec) && fs::is_empty(folder, ec)) fs::remove(folder, ec);
}

}  // namespace myo_app
