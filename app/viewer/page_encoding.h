#pragma once
// How viewer.html carries numbers and text: base64 of little-endian typed
// arrays (what the page turns back into Float32Array, Uint16Array, ...),
// points quantised to 16 bits within their bounding box, and text made safe
// inside the page's <script> elements.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace myo_app {

// Standard base64 with padding.
std::string Base64(const void* data, std::size_t bytes);

template <class T>
std::string Base64Of(const std::vector<T>& values) {
  return Base64(values.data(), values.size() * sizeof(T));
}

// Points (3N floats) as 16-bit integers within their bounding box:
// coordinate = low + value * (high - low) / 65535. Half the size of 32-bit
// floats, and the error stays below 1/131070 of the box's extent, far below a
// pixel. Coordinates that are not finite count as `low`.
struct QuantizedPoints {
  float low[3] = {0.0f, 0.0f, 0.0f};
  float high[3] = {0.0f, 0.0f, 0.0f};
  std::vector<uint16_t> values;  // 3N
};
QuantizedPoints QuantizePoints(const std::vector<float>& points);

// The point k of a quantised set as the page decodes it.
float DequantizedCoordinate(const QuantizedPoints& q, std::size_t index);

// Script text that cannot end its <script> element early nor open an HTML
// comment inside it: "</script" becomes "<\/script" and "<!--" "<\!--",
// which mean the same in JavaScript strings and regular expressions. (JSON
// in the page has every "<" written as \u003c instead.)
std::string InlineScriptText(const std::string& text);

}  // namespace myo_app
