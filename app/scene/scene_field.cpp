#include "app/scene/scene_field.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace myo_app {

void Field::Fail(const std::string& what) const {
  throw SceneFault{*file_ + ": " + (path_.empty() ? std::string() : path_ + ": ") + what};
}

std::string Shortened(const std::string& text) {
  if (text.size() <= kShownLength) return text;
  std::size_t cut = kShownLength;
  // Back to the first byte of a UTF-8 character.
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xc0u) == 0x80u) --cut;
  return text.substr(0, cut) + "...";
}

std::string Quote(const std::string& text) { return "\"" + Shortened(text) + "\""; }

std::string Shown(const nlohmann::json& value) {
  switch (value.type()) {
    case nlohmann::json::value_t::string: return Quote(value.get<std::string>());
    case nlohmann::json::value_t::boolean: return value.get<bool>() ? "true" : "false";
    case nlohmann::json::value_t::null: return "null";
    case nlohmann::json::value_t::object: return "an object";
    case nlohmann::json::value_t::array:
      return value.empty() ? "an empty array" : "an array of " + std::to_string(value.size());
    case nlohmann::json::value_t::number_integer:
    case nlohmann::json::value_t::number_unsigned:
    case nlohmann::json::value_t::number_float: return FormatNumber(value.get<double>());
    default: return "a value of another kind";
  }
}

std::string Chain(const std::vector<std::string>& names) {
  constexpr std::size_t kFirst = 4, kLast = 2;
  std::string chain;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names.size() > kFirst + kLast + 1 && i == kFirst) {
      chain += " -> ... (" + std::to_string(names.size() - kFirst - kLast) + " more)";
      i = names.size() - kLast - 1;
      continue;
    }
    chain += (i == 0 ? "" : " -> ") + Shortened(names[i]);
  }
  return chain;
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
