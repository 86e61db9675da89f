#include "app/cli/snapshot_command.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include <nlohmann/json.hpp>

#include "app/cli/exit_codes.h"

extern char** environ;

namespace myo_app {

namespace {

namespace fs = std::filesystem;

const char* const kInstallHint =
    "Chromium is not installed; install it with \"apt-get install chromium\" (Debian 12), "
    "then run the snapshot again";

// Runs `argv` with its output discarded, for at most `seconds`. The exit
// status, or -1 when it could not start or was stopped for taking too long.
int RunBounded(const std::vector<std::string>& argv, int seconds, bool& timed_out) {
  std::vector<char*> args;
  for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  // Its own process group, so that stopping it stops its helper processes too.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  posix_spawnattr_setpgroup(&attributes, 0);
  pid_t pid = 0;
  const int started = posix_spawn(&pid, args[0], &actions, &attributes, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  timed_out = false;
  if (started != 0) return -1;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  int status = 0;
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      kill(-pid, SIGKILL);
      waitpid(pid, &status, 0);
      timed_out = true;
      return -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool IsPng(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  char magic[8] = {};
  in.read(magic, 8);
  return in && std::string(magic, 8) == "\x89PNG\r\n\x1a\n";
}

// The written frames of the run, from its summary.
bool WrittenFrames(const fs::path& folder, long long& start, long long& end) {
  std::ifstream in(folder / "summary.json");
  const nlohmann::json summary = nlohmann::json::parse(in, nullptr, false);
  if (summary.is_discarded() || !summary.is_object() || !summary.contains("timeline")) return false;
  const nlohmann::json& t = summary["timeline"];
  if (!t.is_object() || !t.value("start", nlohmann::json()).is_number() || !t.value("end", nlohmann::json()).is_number())
    return false;
  start = static_cast<long long>(t["start"].get<double>());
  end = static_cast<long long>(t["end"].get<double>());
  return start <= end;
}

std::string PercentEncoded(const std::string& text) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : text) {
    if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == ':' || c == ',' || c == '/') {
      out += static_cast<char>(c);
    } else {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    }
  }
  return out;
}

}  // namespace

std::string FindChromium() {
  const char* path = std::getenv("PATH");
  const std::string dirs = path != nullptr ? path : "/usr/bin:/bin";
  for (const char* name : {"chromium", "chromium-browser"}) {
    std::size_t begin = 0;
    while (begin <= dirs.size()) {
      const std::size_t end = std::min(dirs.find(':', begin), dirs.size());
      const fs::path candidate = fs::path(dirs.substr(begin, end - begin)) / name;
      if (end > begin && access(candidate.c_str(), X_OK) == 0) return candidate.string();
      begin = end + 1;
    }
  }
  return {};
}

std::vector<long long> DefaultSheetFrames(long long start, long long end) {
  std::vector<long long> frames;
  const long long span = end - start;
  const long long count = std::min<long long>(4, span + 1);
  for (long long k = 0; k < count; ++k) frames.push_back(count == 1 ? start : start + span * k / (count - 1));
  return frames;
}

std::string SheetAddress(const std::string& page, const SnapshotOptions& options, const std::vector<long long>& frames) {
  std::string address = "file://" + PercentEncoded(fs::absolute(page).lexically_normal().string()) + "#sheet=";
  for (std::size_t i = 0; i < frames.size(); ++i) address += (i ? "," : "") + std::to_string(frames[i]);
  if (options.columns > 0) address += "&columns=" + std::to_string(options.columns);
  address += "&width=" + std::to_string(options.width) + "&height=" + std::to_string(options.height);
  if (!options.colors.empty()) {
    address += "&color=";
    for (std::size_t i = 0; i < options.colors.size(); ++i) address += (i ? "," : "") + PercentEncoded(options.colors[i]);
  }
  return address;
}

SnapshotOutcome RunSnapshot(const SnapshotOptions& options) {
  SnapshotOutcome outcome;
  const fs::path folder(options.run_folder);
  const fs::path page = folder / "viewer.html";
  std::error_code ignored;
  if (!fs::is_regular_file(page, ignored)) {
    outcome.exit_code = kExitUsage;
    outcome.error = page.string() + ": no viewer page; run \"myoforge run SCENE -o " + options.run_folder +
                    "\" first (without --no-viewer)";
    return outcome;
  }
  std::vector<long long> frames = options.frames;
  if (frames.empty()) {
    long long start = 0, end = 0;
    if (!WrittenFrames(folder, start, end)) {
      outcome.exit_code = kExitUsage;
      outcome.error = (folder / "summary.json").string() + ": cannot read the run's frames; choose them with --frames";
      return outcome;
    }
    frames = DefaultSheetFrames(start, end);
  }
  const std::string browser = FindChromium();
  if (browser.empty()) {
    outcome.exit_code = kExitRunFailed;
    outcome.error = kInstallHint;
    return outcome;
  }
  const int columns = options.columns > 0 ? options.columns : [&frames] {
    int c = 1;
    while (static_cast<std::size_t>(c * c) < frames.size()) ++c;
    return c;
  }();
  const int rows = static_cast<int>((frames.size() + columns - 1) / columns);
  SnapshotOptions resolved = options;
  resolved.columns = columns;
  outcome.output = options.output.empty() ? (folder / "snapshot.png").string() : options.output;

  char profile_template[] = "/tmp/myoforge-chromium-XXXXXX";
  if (mkdtemp(profile_template) == nullptr) {
    outcome.exit_code = kExitRunFailed;
    outcome.error = "cannot make a temporary folder for Chromium's profile under /tmp";
    return outcome;
  }
  // Written beside the target and renamed: a failed snapshot leaves no half picture.
  const std::string partial = outcome.output + ".partial." + std::to_string(getpid()) + ".png";
  // The page is a local file of this run that loads nothing: no sandbox is
  // needed (and Chromium has none when run as root), no network is used.
  const std::vector<std::string> argv = {
      browser, "--headless", "--no-sandbox", "--use-angle=swiftshader", "--enable-unsafe-swiftshader",
      "--disable-background-networking", "--disable-component-update", "--disable-sync", "--no-first-run",
      "--hide-scrollbars", "--force-device-scale-factor=1", std::string("--user-data-dir=") + profile_template,
      "--window-size=" + std::to_string(columns * options.width) + "," + std::to_string(rows * options.height),
      "--virtual-time-budget=20000", "--screenshot=" + fs::absolute(partial).string(),
      SheetAddress(page.string(), resolved, frames)};
  bool timed_out = false;
  const int status = RunBounded(argv, options.timeout_seconds, timed_out);
  fs::remove_all(profile_template, ignored);
  if (status != 0 || !IsPng(partial)) {
    fs::remove(partial, ignored);
    outcome.exit_code = kExitRunFailed;
    outcome.error = timed_out ? "Chromium (" + browser + ") took more than " + std::to_string(options.timeout_seconds) +
                                    " s and was stopped; no picture written"
                              : "Chromium (" + browser + ") did not write the picture (exit status " +
                                    std::to_string(status) + "); no picture written";
    return outcome;
  }
  std::error_code renamed;
  fs::rename(partial, outcome.output, renamed);
  if (renamed) {
    fs::remove(partial, ignored);
    outcome.exit_code = kExitRunFailed;
    outcome.error = outcome.output + ": cannot write the picture";
  }
  return outcome;
}

}  // namespace myo_app
