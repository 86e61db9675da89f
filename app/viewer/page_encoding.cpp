#include "app/viewer/page_encoding.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace myo_app {

std::string Base64(const void* data, std::size_t bytes) {
  static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const auto* in = static_cast<const unsigned char*>(data);
  std::string out;
  out.reserve((bytes + 2) / 3 * 4);
  std::size_t i = 0;
  for (; i + 3 <= bytes; i += 3) {
    const uint32_t word = (uint32_t{in[i]} << 16) | (uint32_t{in[i + 1]} << 8) | in[i + 2];
    out += kDigits[(word >> 18) & 63];
    out += kDigits[(word >> 12) & 63];
    out += kDigits[(word >> 6) & 63];
    out += kDigits[word & 63];
  }
  const std::size_t rest = bytes - i;
  if (rest > 0) {
    const uint32_t word = (uint32_t{in[i]} << 16) | (rest == 2 ? uint32_t{in[i + 1]} << 8 : 0u);
    out += kDigits[(word >> 18) & 63];
    out += kDigits[(word >> 12) & 63];
    out += rest == 2 ? kDigits[(word >> 6) & 63] : '=';
    out += '=';
  }
  return out;
}

QuantizedPoints QuantizePoints(const std::vector<float>& points) {
  QuantizedPoints q;
  const std::size_t count = points.size() / 3;
  q.values.resize(3 * count, 0);
  for (int axis = 0; axis < 3; ++axis) {
    bool any = false;
    for (std::size_t k = 0; k < count; ++k) {
      const float v = points[3 * k + axis];
      if (!std::isfinite(v)) continue;
      q.low[axis] = any ? std::min(q.low[axis], v) : v;
      q.high[axis] = any ? std::max(q.high[axis], v) : v;
      any = true;
    }
    // In double: the extent of two floats far apart may not fit a float.
    const double extent = static_cast<double>(q.high[axis]) - q.low[axis];
    if (!(extent > 0.0) || !std::isfinite(extent)) continue;
    for (std::size_t k = 0; k < count; ++k) {
      const float v = points[3 * k + axis];
      if (!std::isfinite(v)) continue;
      const double t = (static_cast<double>(v) - q.low[axis]) / extent;
      q.values[3 * k + axis] = static_cast<uint16_t>(std::lround(std::clamp(t, 0.0, 1.0) * 65535.0));
    }
  }
  return q;
}

float DequantizedCoordinate(const QuantizedPoints& q, std::size_t index) {
  const int axis = static_cast<int>(index % 3);
  const double extent = static_cast<double>(q.high[axis]) - q.low[axis];
  return static_cast<float>(q.low[axis] + q.values[index] * (extent / 65535.0));
}

std::string InlineScriptText(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    out += text[i];
    if (text[i] != '<') continue;
    if (text.compare(i + 1, 3, "!--") == 0) {
      out += '\\';
      continue;
    }
    if (i + 8 <= text.size() && text[i + 1] == '/') {
      std::string word = text.substr(i + 2, 6);
      std::transform(word.begin(), word.end(), word.begin(), [](unsigned char c) { return std::tolower(c); });
      if (word == "script") out += '\\';
    }
  }
  return out;
}

}  // namespace myo_app
