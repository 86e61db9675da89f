#pragma once
// Text from a file or the command line shown inside a one-line message.

#include <string>

namespace myo_io {

// The text with every character that could break or rewrite the line
// written as an escape: control bytes ("\n", "\r", "\t", "\x1b"), the C1
// controls and the Unicode line and paragraph separators ("\u0085",
// "\u2028"), and bytes that are not UTF-8 ("\xff"). Other text, UTF-8
// letters included, stays as it is.
std::string OneLine(const std::string& text);

}  // namespace myo_io
