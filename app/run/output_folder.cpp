#include "app/run/output_folder.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "io/atomic_file.h"

namespace myo_app {

namespace {

namespace fs = std::filesystem;

// One name: not empty, no separator, not "." or "..".
bool PlainName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
         name.find('\\') == std::string::npos;
}

// A relative path of one or two plain names.
bool InsideTheFolder(const std::string& path) {
  const std::size_t slash = path.find('/');
  if (slash == std::string::npos) return PlainName(path);
  return PlainName(path.substr(0, slash)) && PlainName(path.substr(slash + 1));
}

std::vector<std::string> ReadManifest(const fs::path& manifest) {
  std::vector<std::string> paths;
  std::ifstream in(manifest);
  std::string line;
  while (std::getline(in, line))
    if (InsideTheFolder(line)) paths.push_back(line);  // anything else is not ours to remove
  return paths;
}

bool IsTemporaryFile(const fs::path& file) { return file.filename().string().find(".partial.") != std::string::npos; }

bool IsResumableFile(const fs::path& file) {
  const std::string name = file.filename().string();
  const std::string ending = myo_io::kResumableSuffix;
  return name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

// No path of the plan is taken by something of another kind.
bool PlanPathsFree(const fs::path& folder, const OutputPlan& plan, std::string& error) {
  std::error_code ec;
  for (const std::string& file : plan.files)
    if (fs::exists(folder / file, ec) && !fs::is_regular_file(folder / file, ec)) {
      error = (folder / file).string() + ": an output file cannot be written there: the path is taken by a folder";
      return false;
    }
  for (const std::string& sub : plan.folders)
    if (fs::exists(folder / sub, ec) && !fs::is_directory(folder / sub, ec)) {
      error = (folder / sub).string() + ": an output folder cannot be made there: the path is taken by a file";
      return false;
    }
  return true;
}

// Writes the manifest of `paths`, then makes the plan's folders.
bool WriteManifestAndFolders(const fs::path& folder, const std::vector<std::string>& paths, const OutputPlan& plan,
                             std::string& error) {
  std::ostringstream manifest;
  for (const std::string& path : paths) manifest << path << "\n";
  if (!myo_io::WriteFileAtomically((folder / kManifestName).string(), manifest.str(), error)) return false;
  std::error_code ec;
  for (const std::string& sub : plan.folders) {
    fs::create_directories(folder / sub, ec);
    if (ec) {
      error = (folder / sub).string() + ": cannot create the folder: " + ec.message();
      return false;
    }
  }
  return true;
}

bool PlanInsideTheFolder(const std::string& folder_text, const OutputPlan& plan, std::string& error) {
  for (const std::vector<std::string>* paths : {&plan.files, &plan.folders})
    for (const std::string& path : *paths)
      if (!InsideTheFolder(path)) {
        error = folder_text + ": \"" + path + "\" is not a name inside the output folder";
        return false;
      }
  return true;
}

// Removes the temporary files of interrupted writes in `parents`, those a
// resumed run goes on with excepted when `keep_resumable`.
void RemoveTemporaryFiles(const std::set<fs::path>& parents, bool keep_resumable) {
  std::error_code ec;
  for (const fs::path& parent : parents)
    for (const fs::directory_entry& entry : fs::directory_iterator(parent, ec))
      if (entry.is_regular_file() && IsTemporaryFile(entry.path()) &&
          !(keep_resumable && IsResumableFile(entry.path())))
        fs::remove(entry.path(), ec);
}

// Removes what the last run listed, the folders it leaves empty and the
// temporary files of interrupted writes beside them.
bool RemoveLastRun(const fs::path& folder, std::string& error) {
  std::set<fs::path> parents = {folder};
  std::error_code ec;
  for (const std::string& relative : ReadManifest(folder / kManifestName)) {
    const fs::path file = folder / relative;
    parents.insert(file.parent_path());
    if (fs::is_directory(file, ec)) continue;  // a folder is removed once empty
    fs::remove(file, ec);
    if (ec) {
      error = file.string() + ": cannot remove the output of the last run: " + ec.message();
      return false;
    }
  }
  RemoveTemporaryFiles(parents, false);
  for (const fs::path& parent : parents)
    if (parent != folder && fs::is_directory(parent) && fs::is_empty(parent, ec)) fs::remove(parent, ec);
  fs::remove(folder / kManifestName, ec);
  return true;
}

}  // namespace

bool PrepareOutputFolder(const std::string& folder_text, const OutputPlan& plan, std::string& error) {
  const fs::path folder(folder_text);
  if (!PlanInsideTheFolder(folder_text, plan, error)) return false;
  std::error_code ec;
  if (fs::exists(folder, ec) && !fs::is_directory(folder, ec)) {
    error = folder_text + ": the output path exists and is not a folder";
    return false;
  }
  fs::create_directories(folder, ec);
  if (ec) {
    error = folder_text + ": cannot create the output folder: " + ec.message();
    return false;
  }
  if (fs::exists(folder / kManifestName, ec)) {
    if (!RemoveLastRun(folder, error)) return false;
  } else if (!fs::is_empty(folder, ec)) {
    error = folder_text +
            ": the output folder holds files that myoforge did not write; choose an empty or new folder (-o)";
    return false;
  }
  if (!PlanPathsFree(folder, plan, error)) return false;
  std::vector<std::string> paths = plan.files;
  paths.insert(paths.end(), plan.folders.begin(), plan.folders.end());
  return WriteManifestAndFolders(folder, paths, plan, error);
}

bool ResumeOutputFolder(const std::string& folder_text, const OutputPlan& plan, std::string& error) {
  const fs::path folder(folder_text);
  if (!PlanInsideTheFolder(folder_text, plan, error)) return false;
  std::error_code ec;
  if (!fs::is_regular_file(folder / kManifestName, ec)) {
    error = folder_text + ": no " + kManifestName + " in the folder: it holds no run to go on with";
    return false;
  }
  if (!PlanPathsFree(folder, plan, error)) return false;
  std::vector<std::string> paths = ReadManifest(folder / kManifestName);
  const std::set<std::string> listed(paths.begin(), paths.end());
  std::set<fs::path> parents = {folder};
  for (const std::vector<std::string>* planned : {&plan.files, &plan.folders})
    for (const std::string& path : *planned) {
      parents.insert((folder / path).parent_path());
      if (listed.count(path) == 0) paths.push_back(path);
    }
  RemoveTemporaryFiles(parents, true);
  return WriteManifestAndFolders(folder, paths, plan, error);
}

}  // namespace myo_app
