// libFuzzer target of the muscle patches file reader: the input is a ".mmp"
// file (version, vertex count, one patch id per vertex, fiber values).
//
// The input is read for 4 vertices, as the seeds are, and for the count it
// declares itself when that is another small number, so that mutations reach
// the ids and fibers whatever count they write. Beyond the sanitizers'
// checks: no exception escapes; a refused file leaves both arrays empty; an
// accepted one holds one id per vertex and finite fiber values; and reading,
// though the file is opened for update, never changes it.

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "core/patches/muscle_patches_file.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/reader_checks.h"

namespace {

constexpr const char* kReader = "ReadMusclePatchesFile";
constexpr uint32_t kSeedVertexCount = 4;
// Larger declared counts would only make the mutations write more ids.
constexpr uint32_t kDeclaredCountLimit = 4096;

std::string FileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void CheckRead(const std::string& path, uint32_t count) {
  // Values that are already there must not survive a refusal.
  std::vector<int32_t> ids = {7, 7};
  std::vector<float> fibers = {7.0f};
  const std::optional<bool> read = myo_fuzz::CallReader(
      kReader, [&] { return myo_core::ReadMusclePatchesFile(path, count, ids, fibers); });
  if (!read) return;
  if (!*read) {
    if (!ids.empty() || !fibers.empty())
      myo_fuzz::Finding(kReader, "a refused file left values behind",
                        std::to_string(ids.size()) + " ids, " + std::to_string(fibers.size()) + " fiber values");
    return;
  }
  const myo_fuzz::Fault fault = myo_fuzz::FindPatchesFault(count, ids, fibers);
  if (fault.Found()) myo_fuzz::Finding(kReader, "accepted " + fault.kind, fault.detail);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const myo_fuzz::PrivateDirectory directory("patches");
  static const std::string path = directory.File("patches.mmp");
  myo_fuzz::WriteInput(path, data, size);

  CheckRead(path, kSeedVertexCount);
  const std::optional<uint32_t> declared = myo_fuzz::DeclaredVertexCount(data, size, kDeclaredCountLimit);
  if (declared && *declared != kSeedVertexCount) CheckRead(path, *declared);

  const std::string after = FileBytes(path);
  if (after != std::string(reinterpret_cast<const char*>(data), size))
    myo_fuzz::Finding(kReader, "reading changed the file",
                      std::to_string(size) + " bytes before, " + std::to_string(after.size()) + " after");
  return 0;
}
