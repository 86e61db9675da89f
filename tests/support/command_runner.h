#pragma once
// Runs a command line in a shell and collects its exit code and output, for
// the end-to-end tests of the myoforge command.

#include <string>

namespace myo_test {

struct CommandResult {
  int exit_code = -1;
  std::string out;  // standard output
  std::string err;  // standard error
};

// `arguments` is appended to the binary as it stands (quote what needs it).
CommandResult RunCommand(const std::string& binary, const std::string& arguments);

// A fresh empty directory under the system's temporary folder, removed by
// the destructor.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }
  void Write(const std::string& name, const std::string& text) const;

 private:
  std::string path_;
};

// Every regular file below `directory`, relative paths, sorted.
std::string ListFiles(const std::string& directory);
std::string ReadFile(const std::string& path);

}  // namespace myo_test
