#pragma once
// Where a value sits in a scene file, for messages
// ("nodes[0].attributes.iterations"), and the fault that stops reading a
// scene: one finished line naming the file, the field and what is wrong.

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "io/one_line.h"

namespace myo_app {

// A fault in the scene: the message is complete, the reader stops.
struct SceneFault {
  std::string message;
};

// Text from the file as a message shows it: at most kShownLength bytes, cut
// between two characters and ended by "..." when longer. Every message
// passes through OneLine, which escapes what would break the line.
constexpr std::size_t kShownLength = 80;
std::string Shortened(const std::string& text);
// The same between double quotes: "MyoCloth".
std::string Quote(const std::string& text);
// A JSON value as a message names what was found instead of what was
// expected: "ten" (quoted), 2.5, true, null, an object, an array of 2.
std::string Shown(const nlohmann::json& value);
// Names joined by " -> ", the middle left out of a long chain.
std::string Chain(const std::vector<std::string>& names);

class Field {
 public:
  Field(const std::string& file, std::string path) : file_(&file), path_(std::move(path)) {}
  // Keys from the file are shown shortened, as quoted text is.
  Field operator[](const std::string& key) const {
    return Field(*file_, path_.empty() ? Shortened(key) : path_ + "." + Shortened(key));
  }
  Field operator[](std::size_t i) const { return Field(*file_, path_ + "[" + std::to_string(i) + "]"); }
  // Throws a SceneFault "<file>: <field>: <what>".
  [[noreturn]] void Fail(const std::string& what) const;

 private:
  const std::string* file_;
  std::string path_;
};

// Messages quote user text through myo_io::OneLine.
using myo_io::OneLine;

// The shortest decimal text that reads back as `value`: 0.1, 1e+39, 3000000000.
std::string FormatNumber(double value);
// Likewise for a 32-bit float: 0.3 rather than the digits of its double.
std::string FormatNumber(float value);

}  // namespace myo_app
