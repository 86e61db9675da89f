#include "io/number_text.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "io/one_line.h"

namespace myo_io {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool IsDecimalNumber(const std::string& text) {
  std::size_t i = 0;
  const std::size_t n = text.size();
  if (i < n && (text[i] == '+' || text[i] == '-')) ++i;
  std::size_t digits = 0;
  while (i < n && IsDigit(text[i])) ++i, ++digits;
  if (i < n && text[i] == '.') {
    ++i;
    while (i < n && IsDigit(text[i])) ++i, ++digits;
  }
  if (digits == 0) return false;
  if (i < n && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    if (i < n && (text[i] == '+' || text[i] == '-')) ++i;
    std::size_t digits_of_exponent = 0, significant = 0;
    for (; i < n && IsDigit(text[i]); ++i) {
      ++digits_of_exponent;
      if (significant > 0 || text[i] != '0') ++significant;
    }
    // No float means anything beyond 10^9999 or below 10^-9999, and parsers
    // that gather the exponent in an int overflow on much larger ones.
    if (digits_of_exponent == 0 || significant > 4) return false;
  }
  return i == n;
}

bool ParseFloatText(const std::string& text, double& value) {
  if (!IsDecimalNumber(text)) return false;
  value = std::strtod(text.c_str(), nullptr);
  return std::isfinite(value) && std::isfinite(static_cast<float>(value));
}

std::string FloatTextProblem(const std::string& text) {
  return IsDecimalNumber(text) ? "is outside the range of a 32-bit float" : "is not a number";
}

bool ParseIntText(const std::string& text, long& value) {
  std::size_t i = (!text.empty() && (text[0] == '+' || text[0] == '-')) ? 1 : 0;
  if (i == text.size() || text.size() - i > 10) return false;
  for (std::size_t k = i; k < text.size(); ++k)
    if (!IsDigit(text[k])) return false;
  const long long parsed = std::strtoll(text.c_str(), nullptr, 10);
  if (parsed < std::numeric_limits<int>::min() || parsed > std::numeric_limits<int>::max()) return false;
  value = static_cast<long>(parsed);
  return true;
}

std::string Quoted(const std::string& text) {
  constexpr std::size_t kLongest = 40;
  std::string quoted;
  for (const char c : text.substr(0, kLongest)) {
    if (c == '\\' || c == '"') quoted += '\\';
    quoted += c;
  }
  return "\"" + OneLine(quoted) + (text.size() > kLongest ? "..." : "") + "\"";
}

}  // namespace myo_io
