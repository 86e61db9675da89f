#pragma once
// What every fuzz target of the standalone host's readers shares: a private
// directory for the files the readers take, writing an input there, calling
// a reader so that an escaping exception is caught, and the checks a
// reader's answer must pass. A failed check is a finding: it prints the
// reason and aborts, which libFuzzer records with the input.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <typeinfo>

namespace myo_fuzz {

// Where private directories go: /dev/shm when it exists and is writable,
// else $TMPDIR, else /tmp.
std::string TemporaryRoot();

// A directory of this process alone, "myo-fuzz-<tag>-<pid>-XXXXXX" under
// TemporaryRoot(). Directories left behind by earlier processes that
// have since died (a crash skips clean-up) are removed when one is made;
// this one is removed at normal exit.
class PrivateDirectory {
 public:
  explicit PrivateDirectory(const std::string& tag);
  ~PrivateDirectory();
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  const std::string& path() const { return path_; }
  // `name` inside the directory.
  std::string File(const std::string& name) const;

 private:
  std::string path_;
};

// Stops the run: the harness itself cannot go on (a file cannot be written,
// the example is missing). Not a finding about a reader.
[[noreturn]] void HarnessFailure(const std::string& what);

// Reports a finding about `reader`. `kind` names the fault without the
// input's particulars (no numbers or names taken from it), `detail` gives
// them.
// Prints "myo_fuzz: FINDING [reader: kind] detail" and aborts, so that
// libFuzzer keeps the input. When MYO_FUZZ_SEEN_DIR names a directory, a
// kind found before in it (by any process of the run) is not reported again:
// the call returns and fuzzing goes on past a fault already known.
void Finding(const char* reader, const std::string& kind, const std::string& detail);

// False when MYO_FUZZ_SEEN_DIR is set and holds a record of `key` already;
// else makes the record there (of the processes of a run only one can) and
// returns true.
bool FirstOfItsKind(const std::string& key);

// `text` on one line: control characters written as \n, \r, \xNN.
std::string Printable(const std::string& text);

// Reports an exception that escaped `reader`: readers answer with false
// and a message, never by throwing.
void EscapedException(const char* reader, const std::type_info* type, const std::string& what);

// Calls `read` (a reader's call, returning its bool). Empty when an
// exception escaped it, which is then reported.
template <typename Read>
std::optional<bool> CallReader(const char* reader, Read read) {
  try {
    return read();
  } catch (const std::exception& e) {
    EscapedException(reader, &typeid(e), e.what());
  } catch (...) {
    EscapedException(reader, nullptr, std::string());
  }
  return std::nullopt;
}

// Replaces the file at `path` with the bytes of the input.
void WriteInput(const std::string& path, const uint8_t* data, std::size_t size);

// Copies the regular files of directory `from` into `to` (made when missing),
// one level deep.
void CopyFiles(const std::string& from, const std::string& to);

// Why `error`, the message of a refused input, is not one clear line: empty
// when it is fine, else the kind of fault.
std::string MessageFault(const std::string& error);

// Checks the message of a refused input; a bad one is a finding.
void CheckRefusalMessage(const char* reader, const std::string& error);

}  // namespace myo_fuzz
