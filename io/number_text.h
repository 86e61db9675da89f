#pragma once
// Numbers as text files write them: what the readers of OBJ meshes and map
// files accept as a number, and whether it fits the 32-bit float it becomes.

#include <string>

namespace myo_io {

// A decimal number: an optional sign, digits with an optional fraction (or a
// fraction alone), and an optional exponent of at most four significant
// digits. No "nan", "inf", hexadecimal or trailing text.
bool IsDecimalNumber(const std::string& text);

// A decimal number whose value is finite as a 32-bit float. Sets `value` to
// the nearest double. False for text that is no decimal number or a value
// beyond the float range.
bool ParseFloatText(const std::string& text, double& value);

// Why `text` is refused: "is not a number" or "is outside the range of a
// 32-bit float", for messages that quote the text before it.
std::string FloatTextProblem(const std::string& text);

// A whole decimal number with an optional sign that fits 32 bits.
bool ParseIntText(const std::string& text, long& value);

// Text quoted for a one-line message: control characters escaped, long text
// cut.
std::string Quoted(const std::string& text);

}  // namespace myo_io
