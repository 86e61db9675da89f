#include "app/cli/progress_bar.h"

#include <unistd.h>

#include <cstdio>

namespace myo_app {

bool StandardErrorIsTerminal() { return isatty(STDERR_FILENO) == 1; }

ProgressBar::ProgressBar(std::string label, bool enabled) : label_(std::move(label)), enabled_(enabled) {}

ProgressBar::~ProgressBar() { Finish(); }

void ProgressBar::Update(std::size_t done, std::size_t total) {
  if (!enabled_ || total == 0) return;
  const int percent = static_cast<int>(done * 100 / total);
  if (percent == last_percent_ && done != total) return;
  last_percent_ = percent;
  constexpr int kWidth = 30;
  const int filled = static_cast<int>(done * kWidth / total);
  std::string bar(static_cast<std::size_t>(filled), '=');
  bar.resize(kWidth, ' ');
  std::fprintf(stderr, "\r%s [%s] %3d%% %zu/%zu frames", label_.c_str(), bar.c_str(), percent, done, total);
  std::fflush(stderr);
  drawn_ = true;
}

void ProgressBar::Finish() {
  if (drawn_) std::fputc('\n', stderr);
  drawn_ = false;
}

}  // namespace myo_app
