#pragma once
// Parses the text of a scene file into a JSON document. A syntax error, or a
// number beyond the range of a 64-bit float (1e400), is refused with the
// line and column where it stands.

#include <string>

#include <nlohmann/json.hpp>

namespace myo_app {

// Throws a SceneFault "<path>: line L, column C: invalid JSON: ..." when
// `text` is not one valid JSON value.
nlohmann::json ParseJsonDocument(const std::string& text, const std::string& path);

// "line L, column C" of the byte at `offset` (0-based) in `text`.
std::string LineAndColumn(const std::string& text, std::size_t offset);

}  // namespace myo_app
