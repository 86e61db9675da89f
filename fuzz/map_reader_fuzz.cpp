// libFuzzer target of the map file reader: the input is a map file (numbers
// separated by blanks, commas or line ends, "#" starting a comment).
//
// Beyond the sanitizers' checks: no exception escapes; a refused file leaves
// the values as they were and one line of message; accepted values are
// finite floats.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "fuzz/reader_checks.h"

#include "io/map_file.h"

namespace {

constexpr const char* kReader = "ReadMapFile";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const myo_fuzz::PrivateDirectory directory("map");
  static const std::string path = directory.File("map.txt");
  myo_fuzz::WriteInput(path, data, size);

  // Values that are already there must survive a refusal.
  const std::vector<float> before = {0.25f, 0.5f};
  std::vector<float> values = before;
  std::string error;
  const std::optional<bool> read =
      myo_fuzz::CallReader(kReader, [&] { return myo_io::ReadMapFile(path, values, error); });
  if (!read) return 0;
  if (!*read) {
    myo_fuzz::CheckRefusalMessage(kReader, error);
    if (values != before) myo_fuzz::Finding(kReader, "a refused file changed the values", error);
    return 0;
  }
  const myo_fuzz::Fault fault = myo_fuzz::FindMapFault(values);
  if (fault.Found()) myo_fuzz::Finding(kReader, "accepted " + fault.kind, fault.detail);
  return 0;
}
