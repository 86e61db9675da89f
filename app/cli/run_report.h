#pragma once
// The lines myoforge prints after a run: what was simulated, how long it
// took, the volume range of every muscle, and where the viewer page is.
// Read back from the run's summary.json, the same figures a script reads.

#include <string>

namespace myo_app {

// For example:
//   Simulated 108 frames (96 written) of 5 nodes in 0.84 s
//   Volume ratio: biceps 0.9812 to 1.0120
//   Viewer: myoforge-out/forearm/viewer.html (open it in a browser)
// The volume line is left out when no node has a volume, the viewer line
// when the run wrote no page. Empty when summary.json cannot be read.
std::string RunReport(const std::string& output_directory);

}  // namespace myo_app
