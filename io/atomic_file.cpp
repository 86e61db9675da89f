#include "io/atomic_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace myo_io {

namespace {

std::string SystemError(const std::string& path, const char* action) {
  return path + ": cannot " + action + ": " + std::strerror(errno);
}

}  // namespace

AtomicFile::~AtomicFile() { Discard(); }

bool AtomicFile::Open(const std::string& path, std::string& error) {
  Discard();
  path_ = path;
  temporary_path_ = path + ".partial." + std::to_string(static_cast<long>(getpid()));
  file_ = std::fopen(temporary_path_.c_str(), "wb");
  if (file_ == nullptr) {
    error = SystemError(path, "write");
    temporary_path_.clear();
    return false;
  }
  return true;
}

bool AtomicFile::Write(const void* data, std::size_t size, std::string& error) {
  if (file_ == nullptr) {
    error = path_ + ": not open for writing";
    return false;
  }
  if (size != 0 && std::fwrite(data, 1, size, file_) != size) {
    error = SystemError(path_, "write");
    Discard();
    return false;
  }
  return true;
}

bool AtomicFile::Commit(std::string& error) {
  if (file_ == nullptr) {
    error = path_ + ": not open for writing";
    return false;
  }
  const bool flushed = std::fflush(file_) == 0;
  const bool closed = std::fclose(file_) == 0;
  file_ = nullptr;
  if (!flushed || !closed) {
    error = SystemError(path_, "write");
    Discard();
    return false;
  }
  if (std::rename(temporary_path_.c_str(), path_.c_str()) != 0) {
    error = SystemError(path_, "rename into place");
    Discard();
    return false;
  }
  temporary_path_.clear();
  return true;
}

void AtomicFile::Discard() {
  if (file_ != nullptr) {
    std::fclose(file_);
    file_ = nullptr;
  }
  if (!temporary_path_.empty()) {
    std::remove(temporary_path_.c_str());
    temporary_path_.clear();
  }
}

bool WriteFileAtomically(const std::string& path, const std::string& contents, std::string& error) {
  AtomicFile file;
  return file.Open(path, error) && file.Write(contents, error) && file.Commit(error);
}

}  // namespace myo_io
