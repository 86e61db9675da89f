#pragma once
// Files that appear whole or not at all: everything is written to a
// temporary file beside the target, which is renamed over the target on
// Commit. A writer destroyed before Commit removes its temporary file, so an
// interrupted run leaves no half-written output.

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
};

// Writes `contents` to `path` atomically.
bool WriteFileAtomically(const std::string& path, const std::string& contents, std::string& error);

}  // namespace myo_io
