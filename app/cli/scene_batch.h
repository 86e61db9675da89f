#pragma once
// Which scenes one `myoforge run` plays and where each one's results go. A
// call names one scene, several scenes, a list file of scenes, or both; with
// an index it plays only that entry, so that each task of a farm's job array
// runs one scene of the same list.
//
// Output folders: a call that names one scene (and no list) writes into the
// folder given with -o, or myoforge-out/<scene name>. A call with several
// scenes or a list writes each scene into <root>/<scene name>, root being
// the folder given with -o or myoforge-out, whether it plays them all or one
// by its index: a farm task and a local run of the whole list put the same
// scene in the same folder.

#include <optional>
#include <string>
#include <vector>

namespace myo_app {

struct SceneBatchRequest {
  std::vector<std::string> scenes;  // scene files named on the command line
  std::string list_file;            // a list of scene files, or empty
  std::string output;               // -o, or empty
  std::optional<long long> index;   // --index
  // The scheduler's array index (SLURM_ARRAY_TASK_ID) when set: the index
  // when none is given and the call names several scenes or a list.
  std::optional<std::string> array_index;
};

struct SceneJob {
  std::size_t index = 0;  // position in the whole list, from 0
  std::string scene;
  std::string output;
};

struct SceneBatch {
  std::vector<SceneJob> jobs;  // the scenes to play, in order
  std::string root;            // the folder above the scenes' folders; empty for a single scene
};

// Reads a list file: one scene file per line; blank lines and lines starting
// with '#' are skipped, spaces around a name are trimmed; a relative name is
// taken from the list file's folder. False with one message naming the file
// and line of the fault (an unreadable file, a line holding a control
// character, a list of no scene).
bool ReadSceneList(const std::string& path, std::vector<std::string>& scenes, std::string& error);

// The scenes to play and their folders. False with one message for a list
// that cannot be read, an index that is not a whole number or lies outside
// the list, or two scenes that would write into the same folder.
bool PlanSceneBatch(const SceneBatchRequest& request, SceneBatch& batch, std::string& error);

// The folder of a single scene run without -o: myoforge-out/<scene name>.
std::string DefaultOutputFolder(const std::string& scene);

}  // namespace myo_app
