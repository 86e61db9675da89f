#pragma once
// Text from a file or the command line shown inside a one-line message.

#include <string>

namespace myo_io {

// The text with every control character written as an escape ("\n", "\r",
// "\t", "\x1b"), so that a message quoting user text stays on one line.
std::string OneLine(const std::string& text);

}  // namespace myo_io
