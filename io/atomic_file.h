#pragma once
// Files that appear whole or not at all: everything is written to a
// temporary file beside the target, which is renamed over the target on
// Commit. A writer destroyed before Commit removes its temporary file, so an
// interrupted run leaves no half-written output; a resumable one keeps it
// for the run that goes on from a checkpoint.

#include <cstdint>
#include <cstdio>
#include <string>

namespace myo_io {

class AtomicFile {
 public:
  AtomicFile() = default;
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  ~AtomicFile();

  // Opens the temporary file for `path`. False with a message naming the path.
  bool Open(const std::string& path, std::string& error);
  // Opens a file that a later process may go on with: its temporary file is
  // ResumableFilePath(path), and it stays when the writer is destroyed
  // without Commit. `keep_bytes` 0 starts it anew; otherwise the file must
  // hold at least that many bytes, is cut to them and goes on from there.
  bool OpenResumable(const std::string& path, uint64_t keep_bytes, std::string& error);
  // Hands what was written to the system, so that a process that is killed
  // afterwards loses none of it.
  bool Flush(std::string& error);
  // Bytes in the temporary file so far.
  uint64_t size() const { return size_; }
  bool Write(const void* data, std::size_t size, std::string& error);
  bool Write(const std::string& text, std::string& error) { return Write(text.data(), text.size(), error); }
  // Flushes, closes and renames the temporary file over the target.
  bool Commit(std::string& error);
  // Closes and removes the temporary file; the target is left as it was.
  void Discard();

 private:
  std::string path_;
  std::string temporary_path_;
  std::FILE* file_ = nullptr;
  uint64_t size_ = 0;
  bool resumable_ = false;  // destroyed without Commit, the temporary file stays
};

// The temporary file of a resumable writer of `path`, and its ending.
constexpr const char* kResumableSuffix = ".partial.resume";
inline std::string ResumableFilePath(const std::string& path) { return path + kResumableSuffix; }

// Writes `contents` to `path` atomically.
bool WriteFileAtomically(const std::string& path, const std::string& contents, std::string& error);

}  // namespace myo_io
