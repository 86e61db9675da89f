#pragma once
// `myoforge snapshot`: one PNG contact sheet of chosen frames of a run, drawn
// by the run's own viewer.html in headless Chromium.

#include <string>
#include <vector>

namespace myo_app {

struct SnapshotOptions {
  std::string run_folder;      // a run's output folder, holding viewer.html
  std::vector<long long> frames;  // empty: four frames spread over the written ones
  std::string output;          // the PNG; empty: <run folder>/snapshot.png
  int columns = 0;             // 0: about square
  int width = 480;             // one picture, pixels
  int height = 360;
  std::vector<std::string> colors;  // "object:channel", as the viewer's panel names them
  int timeout_seconds = 120;
};

struct SnapshotOutcome {
  int exit_code = 0;
  std::string error;  // one line for a failure
  std::string output;  // the PNG written
};

// The browser: chromium or chromium-browser on PATH; empty when neither is.
std::string FindChromium();

// The frames a sheet shows when none are chosen: four spread evenly from
// `start` to `end` (fewer when there are fewer frames).
std::vector<long long> DefaultSheetFrames(long long start, long long end);

// The page address that asks viewer.html for the sheet.
std::string SheetAddress(const std::string& page, const SnapshotOptions& options, const std::vector<long long>& frames);

SnapshotOutcome RunSnapshot(const SnapshotOptions& options);

}  // namespace myo_app
