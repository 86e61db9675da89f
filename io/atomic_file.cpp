#include "io/atomic_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace myo_io {

namespace {

std::string SystemError(const std::string& path, const char* action) {
  return path + ": cannot " + action + ": " + std::strerror(errno);
}

}  // namespace

AtomicFile::~AtomicFile() {
  if (!resumable_) {
    Discard();
  } else if (file_ != nullptr) {
    std::fclose(file_);
  }
}

bool AtomicFile::Open(const std::string& path, std::string& error) {
  Discard();
  path_ = path;
  temporary_path_ = path + ".partial." + std::to_string(static_cast<long>(getpid()));
  file_ = std::fopen(temporary_path_.c_str(), "wb");
  size_ = 0;
  if (file_ == nullptr) {
    error = SystemError(path, "write");
    temporary_path_.clear();
    return false;
  }
  return true;
}

bool AtomicFile::OpenResumable(const std::string& path, uint64_t keep_bytes, std::string& error) {
  Discard();
  path_ = path;
  temporary_path_ = ResumableFilePath(path);
  file_ = std::fopen(temporary_path_.c_str(), keep_bytes == 0 ? "wb" : "r+b");
  if (file_ == nullptr) {
    error = SystemError(temporary_path_, keep_bytes == 0 ? "write" : "open the file to go on with");
    temporary_path_.clear();
    return false;
  }
  resumable_ = true;
  size_ = 0;
  if (keep_bytes == 0) return true;
  struct stat status {};
  if (fstat(fileno(file_), &status) != 0 || static_cast<uint64_t>(status.st_size) < keep_bytes) {
    error = temporary_path_ + ": holds " + std::to_string(static_cast<long long>(status.st_size)) +
            " bytes, fewer than the " + std::to_string(keep_bytes) + " written before the checkpoint";
    std::fclose(file_);
    file_ = nullptr;
    return false;
  }
  if (ftruncate(fileno(file_), static_cast<off_t>(keep_bytes)) != 0 ||
      std::fseek(file_, static_cast<long>(keep_bytes), SEEK_SET) != 0) {
    error = SystemError(temporary_path_, "cut back to the checkpoint");
    std::fclose(file_);
    file_ = nullptr;
    return false;
  }
  size_ = keep_bytes;
  return true;
}

bool AtomicFile::Flush(std::string& error) {
  if (file_ != nullptr && std::fflush(file_) == 0) return true;
  error = file_ == nullptr ? path_ + ": not open for writing" : SystemError(path_, "write");
  return false;
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
  size_ += size;
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
  resumable_ = false;
  return true;
}

void AtomicFile::Discard() {
  resumable_ = false;
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
