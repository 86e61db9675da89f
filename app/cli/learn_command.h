#pragma once
// `myoforge learn`: learns a muscle patches file from a neutral OBJ and
// target OBJs of the same vertex count, through the same course as the
// plug-in's learning command, and optionally writes the neutral mesh with
// the patch colours as an OBJ with vertex colours.

#include <cstdint>
#include <string>
#include <vector>

namespace myo_app {

struct LearnOptions {
  std::string neutral;               // OBJ
  std::vector<std::string> targets;  // OBJs
  std::string mask_file;             // map-like file of vertex indices; empty: none
  std::vector<int32_t> vertices;     // vertex indices from the command line
  int32_t patches = 0;
  int32_t max_iterations = 0;        // 0 or less: no limit
  std::string output;                // the .mmp file
  std::string colors;                // the coloured neutral mesh (OBJ); empty: none
  bool progress_bar = false;         // a bar on standard error instead of progress log lines
};

struct LearnOutcome {
  int exit_code = 0;
  std::string error;  // one line for a failure
  int32_t vertex_count = 0;
  int32_t patches_with_vertices = 0;
  int32_t passes = 0;
};

LearnOutcome RunLearn(const LearnOptions& options);

}  // namespace myo_app
