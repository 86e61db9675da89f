#pragma once
// Checkpoints of a run: the complete state of every node and of the run's
// own tables and streams after a frame, written beside the outputs, so that
// a run that was stopped goes on from the last one instead of starting
// again. They live in <output>/checkpoints/, one file per checkpoint,
// "checkpoint.<frame>.myostate", each written atomically; a run keeps the
// newest two (the one before stands in when the newest is damaged) and
// removes them all when it finishes.

#include <cstdint>
#include <string>
#include <vector>

#include "app/run/scene_fingerprint.h"
#include "app/scene/scene.h"
#include "core/state/state_archive.h"

namespace myo_app {

inline constexpr const char* kCheckpointFolder = "checkpoints";
// Frames between two checkpoints of a run that resumes and names none.
inline constexpr uint32_t kDefaultCheckpointInterval = 10;

// "checkpoint.<frame>.myostate", the frame as FrameTag writes it.
std::string CheckpointFileName(long long frame);

// Whether a checkpoint follows `frame`: after every `every` frames counted
// from the first simulated one, except the last frame (the run ends there).
// Never when `every` is 0.
bool CheckpointDue(const Timeline& timeline, uint32_t every, long long frame);

// Relative paths, inside the output folder, of every checkpoint a run of
// `timeline` may write, for its manifest.
std::vector<std::string> CheckpointPaths(const Timeline& timeline, uint32_t every);

struct CheckpointFile {
  long long frame = 0;
  std::string path;
};

// The checkpoints in the output folder, newest frame first.
std::vector<CheckpointFile> FindCheckpoints(const std::string& output_folder);

// Writes `state` behind its header as the checkpoint of `frame`,
// atomically, then removes the folder's checkpoints older than the one
// before it.
bool WriteCheckpoint(const std::string& output_folder, long long frame, const std::string& state, std::string& error);

// Removes the folder's checkpoints and their folder: a finished run needs none.
void RemoveCheckpoints(const std::string& output_folder);

// What a checkpoint says of the run it belongs to, ahead of the states.
struct CheckpointHead {
  long long frame = 0;          // the last frame done
  int32_t format = 0;           // OutputFormat of the run
  SceneFingerprint fingerprint;
};

template <class Archive>
void CheckpointHeadFields(Archive& a, myo_core::ArchiveRecord<Archive, CheckpointHead>& head) {
  a.Section("myoforge checkpoint");
  a.Value(head.frame);
  a.Value(head.format);
  SceneFingerprintFields(a, head.fingerprint);
}

}  // namespace myo_app
