#include "io/one_line.h"

#include <cstdint>
#include <cstdio>

namespace myo_io {

namespace {

// The length of the well-formed UTF-8 sequence at `text[i]` and its code
// point, or 0 when the bytes there are no such sequence (a stray
// continuation byte, a cut or overlong sequence, a surrogate).
std::size_t Utf8Sequence(const std::string& text, std::size_t i, uint32_t& code) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  std::size_t length = 0;
  uint32_t least = 0;
  if (lead >= 0xc2 && lead <= 0xdf) {
    length = 2, least = 0x80, code = lead & 0x1fu;
  } else if (lead >= 0xe0 && lead <= 0xef) {
    length = 3, least = 0x800, code = lead & 0x0fu;
  } else if (lead >= 0xf0 && lead <= 0xf4) {
    length = 4, least = 0x10000, code = lead & 0x07u;
  } else {
    return 0;
  }
  if (text.size() - i < length) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte(i + k) & 0xc0u) != 0x80u) return 0;
    code = (code << 6) | (byte(i + k) & 0x3fu);
  }
  if (code < least || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff)) return 0;
  return length;
}

// Characters that end or rewrite a line on some terminal or viewer: the C1
// controls (U+0085 is a line break, U+009B starts a terminal command) and the
// Unicode line and paragraph separators.
bool BreaksLines(uint32_t code) { return (code >= 0x80 && code <= 0x9f) || code == 0x2028 || code == 0x2029; }

}  // namespace

std::string OneLine(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  char escape[12];
  std::size_t i = 0;
  while (i < text.size()) {
    const unsigned char byte = static_cast<unsigned char>(text[i]);
    uint32_t code = 0;
    const std::size_t length = byte >= 0x80 ? Utf8Sequence(text, i, code) : 1;
    if (byte >= 0x20 && byte < 0x7f) {
      out += text[i];
    } else if (byte == '\n') {
      out += "\\n";
    } else if (byte == '\r') {
      out += "\\r";
    } else if (byte == '\t') {
      out += "\\t";
    } else if (length == 0 || byte < 0x80) {
      // A control byte, or a byte that is not UTF-8: the byte itself, so
      // that the message stays one line of valid text.
      std::snprintf(escape, sizeof escape, "\\x%02x", byte);
      out += escape;
    } else if (BreaksLines(code)) {
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(code));
      out += escape;
    } else {
      out.append(text, i, length);
    }
    i += length == 0 ? 1 : length;
  }
  return out;
}

}  // namespace myo_io
