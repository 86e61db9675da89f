#include "io/one_line.h"

#include <cstdio>

namespace myo_io {

std::string OneLine(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      out += c;
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", byte);
      out += escape;
    }
  }
  return out;
}

}  // namespace myo_io
