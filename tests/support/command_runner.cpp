#include "support/command_runner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace myo_test {

namespace fs = std::filesystem;

CommandResult RunCommand(const std::string& binary, const std::string& arguments) {
  TemporaryDirectory capture;
  const std::string command = "'" + binary + "' " + arguments + " >'" + capture.File("out") + "' 2>'" +
                              capture.File("err") + "' </dev/null";
  const int status = std::system(command.c_str());
  CommandResult result;
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.out = ReadFile(capture.File("out"));
  result.err = ReadFile(capture.File("err"));
  return result;
}

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (fs::temp_directory_path() / "myo_test_XXXXXX").string();
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) != nullptr) path_ = buffer.data();
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ec;
  if (!path_.empty()) fs::remove_all(path_, ec);
}

void TemporaryDirectory::Write(const std::string& name, const std::string& text) const {
  const fs::path file = fs::path(path_) / name;
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
}

std::string ListFiles(const std::string& directory) {
  std::vector<std::string> files;
  std::error_code ec;
  if (!fs::exists(directory, ec)) return "";
  for (const auto& entry : fs::recursive_directory_iterator(directory))
    if (entry.is_regular_file()) files.push_back(fs::relative(entry.path(), directory).string());
  std::sort(files.begin(), files.end());
  std::string text;
  for (const std::string& f : files) text += f + "\n";
  return text;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace myo_test
