#pragma once
// The course of the learning command, host-neutral: validation in a fixed
// order with its messages, the informative lines, the stages and their
// progress, the clustering, the fibers, the colours and the patches file.
// A host answers through LearnPatchesHost: its user interface, its meshes by
// name, a progress bar, the neutral mesh's colours and the file.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

inline constexpr char kLearnMusclePatchesCommandName[] = "MyoLearnMusclePatches";

struct LearnPatchesRequest {
  std::string output_path;            // required
  int32_t patch_count = 0;            // K, above 0
  std::string neutral_name;           // required
  std::vector<std::string> targets;   // at least one
  std::vector<int32_t> vertices_mask; // empty: all vertices
  bool max_iterations_set = false;
  int32_t max_iterations = 0;         // 0 or less: no limit
  bool draw = false;                  // paint the patches onto the neutral mesh
  // The file must be written: a failed write fails the run with a message
  // instead of being passed over.
  bool require_written_file = false;
};

class LearnPatchesHost {
 public:
  virtual ~LearnPatchesHost() = default;
  // Whether the host has a user interface; false when the host cannot tell.
  virtual bool UserInterface(bool& has_interface) = 0;
  // Points of the neutral mesh, three floats per vertex in object space and
  // index order; empty when there is no such mesh.
  virtual std::vector<float> NeutralPoints(const std::string& name) = 0;
  // Points of a target; false when the target cannot be read.
  virtual bool TargetPoints(const std::string& name, std::vector<float>& points) = 0;
  // The progress bar of a host with a user interface: `count` steps,
  // "[MyoForge]" + the status text on begin and at every advance.
  virtual void BeginProgress(int32_t /*count*/, const std::string& /*status*/) {}
  virtual void AdvanceProgress(const std::string& /*status*/) {}
  virtual void EndProgress() {}
  // RGBA per vertex of the neutral mesh.
  virtual void SetNeutralColors(const std::vector<float>& /*rgba*/) {}
  // Writes the patches file; false when it could not be written.
  virtual bool WritePatchesFile(const std::string& path, int32_t vertex_count, const std::vector<int32_t>& ids,
                                const std::vector<std::array<double, 3>>& fibers);
};

struct LearnPatchesResult {
  bool ok = false;
  bool launch_state_failed = false;  // the host could not tell its interface
  std::string error;                 // the one message of a failure, for the host to log
  int32_t vertex_count = 0;
  std::vector<int32_t> ids;          // the ids of the file
  std::vector<std::array<double, 3>> fibers;
  std::vector<float> colors;         // with draw: RGBA per vertex
  int32_t passes = 0;                // passes of the clustering
};

// Runs the learning. Information and progress lines go to the logger; the
// failure message is returned, not logged, so that each host reports it its
// own way. Nothing is written or painted on a failure before the last stage.
LearnPatchesResult LearnMusclePatches(const LearnPatchesRequest& request, LearnPatchesHost& host);

}  // namespace myo_core
