#pragma once
// A one-line progress bar on standard error, redrawn in place. It draws
// only when standard error is a terminal, so logs and pipes stay clean.

#include <cstddef>
#include <string>

namespace myo_app {

class ProgressBar {
 public:
  ProgressBar(std::string label, bool enabled);
  ~ProgressBar();
  void Update(std::size_t done, std::size_t total);
  void Finish();

 private:
  std::string label_;
  bool enabled_;
  bool drawn_ = false;
  int last_percent_ = -1;
};

// Whether standard error is a terminal.
bool StandardErrorIsTerminal();

}  // namespace myo_app
