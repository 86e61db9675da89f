#pragma once
// The whole content of a file, as bytes.

#include <string>

namespace myo_io {

// False when the file cannot be opened or read; `text` is then unspecified.
bool ReadFileText(const std::string& path, std::string& text);

}  // namespace myo_io
