#include "app/cli/scene_batch.h"

#include <filesystem>
#include <map>

#include "io/file_text.h"
#include "io/number_text.h"

namespace myo_app {

namespace {

namespace fs = std::filesystem;

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string SceneName(const std::string& scene) { return fs::path(scene).stem().string(); }

// The index of the entry to play: --index, else the scheduler's variable.
bool ChooseIndex(const SceneBatchRequest& request, std::size_t listed, std::optional<std::size_t>& chosen,
                 std::string& error) {
  long long index = 0;
  std::string origin = "--index";
  if (request.index) {
    index = *request.index;
  } else if (request.array_index) {
    origin = "SLURM_ARRAY_TASK_ID";
    long parsed = 0;
    if (!myo_io::ParseIntText(*request.array_index, parsed)) {
      error = origin + ": expected a whole number, not " + myo_io::Quoted(*request.array_index);
      return false;
    }
    index = parsed;
  } else {
    return true;
  }
  if (index < 0 || static_cast<unsigned long long>(index) >= listed) {
    error = origin + " " + std::to_string(index) + ": the call names " + std::to_string(listed) +
            (listed == 1 ? " scene (index 0)" : " scenes (indices 0 to " + std::to_string(listed - 1) + ")");
    return false;
  }
  chosen = static_cast<std::size_t>(index);
  return true;
}

}  // namespace

std::string DefaultOutputFolder(const std::string& scene) {
  return (fs::path("myoforge-out") / SceneName(scene)).string();
}

bool ReadSceneList(const std::string& path, std::vector<std::string>& scenes, std::string& error) {
  std::string text;
  if (!myo_io::ReadFileText(path, text) || fs::is_directory(path)) {
    error = path + ": cannot read the list of scenes";
    return false;
  }
  const fs::path folder = fs::path(path).parent_path();
  std::size_t line_number = 0, begin = 0;
  while (begin < text.size()) {
    std::size_t end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(begin, end - begin);
    begin = end + 1;
    ++line_number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    line = Trimmed(line);
    if (line.empty() || line[0] == '#') continue;
    for (char c : line)
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
        error = path + ": line " + std::to_string(line_number) + ": " + myo_io::Quoted(line) +
                " holds a control character; give one scene file per line";
        return false;
      }
    const fs::path scene(line);
    scenes.push_back(scene.is_absolute() || folder.empty() ? line : (folder / scene).string());
  }
  if (scenes.empty()) {
    error = path + ": the list names no scene (one scene file per line; '#' starts a comment)";
    return false;
  }
  return true;
}

bool PlanSceneBatch(const SceneBatchRequest& request, SceneBatch& batch, std::string& error) {
  batch = SceneBatch();
  std::vector<std::string> scenes = request.scenes;
  if (!request.list_file.empty() && !ReadSceneList(request.list_file, scenes, error)) return false;
  if (scenes.empty()) {
    error = "no scene given: name scene files or a list of them (--list)";
    return false;
  }
  const bool several = scenes.size() > 1 || !request.list_file.empty();
  std::optional<std::size_t> chosen;
  SceneBatchRequest effective = request;
  if (!several) effective.array_index.reset();  // one scene named: the scheduler's index does not pick
  if (!ChooseIndex(effective, scenes.size(), chosen, error)) return false;
  if (!several) {
    batch.jobs.push_back({0, scenes[0], request.output.empty() ? DefaultOutputFolder(scenes[0]) : request.output});
    return true;
  }

  batch.root = request.output.empty() ? std::string("myoforge-out") : request.output;
  std::map<std::string, std::size_t> folders;
  for (std::size_t i = 0; i < scenes.size(); ++i) {
    const std::string name = SceneName(scenes[i]);
    const auto [taken, fresh] = folders.emplace(name, i);
    if (!fresh) {
      error = "scenes \"" + scenes[taken->second] + "\" and \"" + scenes[i] + "\"" +
              " would both write into " + (fs::path(batch.root) / name).string() +
              "; give the scene files different names";
      return false;
    }
  }
  for (std::size_t i = 0; i < scenes.size(); ++i)
    if (!chosen || *chosen == i)
      batch.jobs.push_back({i, scenes[i], (fs::path(batch.root) / SceneName(scenes[i])).string()});
  return true;
}

}  // namespace myo_app
