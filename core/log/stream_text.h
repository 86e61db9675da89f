#pragma once
// Numbers in messages are printed as a default output stream prints them.

#include <sstream>
#include <string>

namespace myo_core {

template <typename T>
std::string StreamText(const T& value) {
  std::ostringstream stream;
  stream << value;
  return stream.str();
}

}  // namespace myo_core
