#include "fuzz/fuzz_support.h"

#include <cxxabi.h>
#include <signal.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "io/one_line.h"

namespace myo_fuzz {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPrefix = "myo-fuzz-";

// The process id in "myo-fuzz-<tag>-<pid>-XXXXXX", or 0 when the name is not
// one of ours.
pid_t OwnerOf(const std::string& name) {
  if (name.compare(0, std::strlen(kPrefix), kPrefix) != 0) return 0;
  const std::size_t last = name.rfind('-');
  if (last == std::string::npos || last == 0) return 0;
  const std::size_t before = name.rfind('-', last - 1);
  if (before == std::string::npos || before + 1 >= last) return 0;
  const std::string digits = name.substr(before + 1, last - before - 1);
  if (digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string::npos) return 0;
  return static_cast<pid_t>(std::stol(digits));
}

void RemoveAbandoned(const std::string& root) {
  std::error_code ec;
  for (fs::directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec)) {
    const pid_t owner = OwnerOf(it->path().filename().string());
    if (owner <= 0 || owner == getpid()) continue;
    if (kill(owner, 0) == -1 && errno == ESRCH) {
      std::error_code ignored;
      fs::remove_all(it->path(), ignored);
    }
  }
}

}  // namespace

std::string TemporaryRoot() {
  std::error_code ec;
  if (fs::is_directory("/dev/shm", ec) && access("/dev/shm", W_OK) == 0) return "/dev/shm";
  const char* tmpdir = std::getenv("TMPDIR");
  if (tmpdir != nullptr && *tmpdir != '\0') return tmpdir;
  return "/tmp";
}

bool FirstOfItsKind(const std::string& key) {
  const char* seen = std::getenv("MYO_FUZZ_SEEN_DIR");
  if (seen == nullptr || *seen == '\0') return true;
  std::string name;
  for (char c : key) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  const std::string record = std::string(seen) + "/" + name;
  std::FILE* file = std::fopen(record.c_str(), "wx");  // fails when the record exists
  if (file == nullptr) return errno != EEXIST;
  std::fprintf(file, "%s\n", key.c_str());
  std::fclose(file);
  return true;
}

PrivateDirectory::PrivateDirectory(const std::string& tag) {
  const std::string root = TemporaryRoot();
  RemoveAbandoned(root);
  std::string pattern = root + "/" + kPrefix + tag + "-" + std::to_string(getpid()) + "-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr)
    HarnessFailure("cannot make a directory " + pattern + ": " + std::strerror(errno));
  path_ = buffer.data();
}

PrivateDirectory::~PrivateDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string PrivateDirectory::File(const std::string& name) const { return path_ + "/" + name; }

void HarnessFailure(const std::string& what) {
  std::fprintf(stderr, "myo_fuzz: harness failure: %s\n", what.c_str());
  std::fflush(stderr);
  std::_Exit(2);
}

void Finding(const char* reader, const std::string& kind, const std::string& detail) {
  const std::string key = std::string(reader) + ": " + kind;
  if (!FirstOfItsKind(key)) return;
  std::fprintf(stderr, "myo_fuzz: FINDING [%s] %s\n", key.c_str(), Printable(detail).c_str());
  std::fflush(stderr);
  std::abort();
}

std::string Printable(const std::string& text) { return myo_io::OneLine(text); }

void EscapedException(const char* reader, const std::type_info* type, const std::string& what) {
  std::string name = "of unknown type";
  if (type != nullptr) {
    int status = 0;
    char* demangled = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
    name = status == 0 && demangled != nullptr ? demangled : type->name();
    std::free(demangled);
  }
  Finding(reader, "an exception escaped (" + name + ")", what);
}

void WriteInput(const std::string& path, const uint8_t* data, std::size_t size) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) HarnessFailure("cannot write " + path + ": " + std::strerror(errno));
  const bool written = size == 0 || std::fwrite(data, 1, size, file) == size;
  if (std::fclose(file) != 0 || !written) HarnessFailure("cannot write " + path + ": " + std::strerror(errno));
}

void CopyFiles(const std::string& from, const std::string& to) {
  std::error_code ec;
  fs::create_directories(to, ec);
  if (ec) HarnessFailure("cannot make " + to + ": " + ec.message());
  fs::directory_iterator it(from, ec);
  if (ec) HarnessFailure("cannot list " + from + ": " + ec.message());
  for (fs::directory_iterator end; it != end; it.increment(ec)) {
    if (ec) HarnessFailure("cannot list " + from + ": " + ec.message());
    if (!it->is_regular_file()) continue;
    fs::copy_file(it->path(), fs::path(to) / it->path().filename(), fs::copy_options::overwrite_existing, ec);
    if (ec) HarnessFailure("cannot copy " + it->path().string() + " to " + to + ": " + ec.message());
  }
}

std::string MessageFault(const std::string& error) {
  if (error.empty()) return "a refused input left an empty message";
  if (error.find_first_of("\r\n") != std::string::npos) return "the message of a refused input spans lines";
  return std::string();
}

void CheckRefusalMessage(const char* reader, const std::string& error) {
  const std::string fault = MessageFault(error);
  if (!fault.empty()) Finding(reader, fault, error);
}

}  // namespace myo_fuzz
