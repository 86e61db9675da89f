#pragma once
// The output folder of a run: what the run will write there, checked and
// announced before the first frame, and the outputs of an earlier run
// replaced. A folder holds a manifest (".myoforge-run") of the files its last
// run writes; a rerun removes exactly those before it starts. A folder that
// holds other files and no manifest is refused, so that myoforge never
// deletes or mixes in files it did not write.

#include <string>
#include <vector>

namespace myo_app {

// The manifest's file name in the output folder.
inline constexpr const char* kManifestName = ".myoforge-run";

struct OutputPlan {
  std::vector<std::string> files;    // relative paths of every file the run may write
  std::vector<std::string> folders;  // relative paths of the folders it makes (node folders)
};

// Makes `folder` ready for a run that writes `plan`:
// 1. every path of the plan is one plain name or a folder and a plain name
//    inside the output folder (no "..", no separators elsewhere);
// 2. the folder is made when missing; an existing path that is not a folder
//    is refused;
// 3. a folder with a manifest loses the files that manifest lists, its
//    folders when they are left empty, and temporary files of interrupted
//    writes ("*.partial.<pid>") beside them; a non-empty folder without one
//    is refused;
// 4. no path of the plan is taken by something of another kind (a folder
//    where a file goes, a file where a folder goes);
// 5. the plan's folders are made and the new manifest is written.
// False with one message naming the path and the fault; nothing of the plan
// is written then.
bool PrepareOutputFolder(const std::string& folder, const OutputPlan& plan, std::string& error);

// Makes the folder of a run that goes on from a checkpoint ready for `plan`:
// its manifest must be there; the files of the run so far stay, temporary
// files of interrupted writes go (not the resumable ones,
// "*.partial.resume"), the plan's folders are made, and the manifest lists
// what it listed and what the plan adds. False with one message naming the
// path and the fault.
bool ResumeOutputFolder(const std::string& folder, const OutputPlan& plan, std::string& error);

}  // namespace myo_app
