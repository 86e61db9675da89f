#include "app/scene/scene_field.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace myo_app {

void Field::Fail(const std::string& what) const {
  throw SceneFault{*file_ + ": " + (path_.empty() ? std::string() : path_ + ": ") + what};
}

namespace {

// The fewest significant digits from `least` to `most` whose text reads back
// as `value` through `read`.
template <typename Read>
std::string Shortest(double value, int least, int most, Read read) {
  char text[40];
  for (int digits = least; digits <= most; ++digits) {
    std::snprintf(text, sizeof text, "%.*g", digits, value);
    if (read(text)) break;
  }
  return text;
}

}  // namespace

std::string FormatNumber(double value) {
  // Whole numbers as a reader writes them: 3000000000, not 3e+09.
  if (value == std::floor(value) && std::fabs(value) < 1e16) {
    char text[24];
    std::snprintf(text, sizeof text, "%.0f", value);
    return text;
  }
  return Shortest(value, 6, 17, [value](const char* text) { return std::strtod(text, nullptr) == value; });
}

std::string FormatNumber(float value) {
  return Shortest(value, 6, 9, [value](const char* text) { return std::strtof(text, nullptr) == value; });
}

}  // namespace myo_app
