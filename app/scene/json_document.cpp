#include "app/scene/json_document.h"

#include "app/scene/scene_field.h"

namespace myo_app {

namespace {

using nlohmann::json;

// The document builder of the library, which keeps where the first error
// stands instead of throwing an exception that has lost it.
class PositionedDomParser : public nlohmann::detail::json_sax_dom_parser<json> {
 public:
  explicit PositionedDomParser(json& root) : json_sax_dom_parser<json>(root, false) {}

  template <class Exception>
  bool parse_error(std::size_t position, const std::string& last_token, const Exception& error) {
    failed_ = true;
    position_ = position;
    last_token_ = last_token;
    error_id_ = error.id;
    what_ = error.what();
    return false;
  }

  bool failed() const { return failed_; }
  std::size_t position() const { return position_; }
  const std::string& last_token() const { return last_token_; }
  int error_id() const { return error_id_; }
  const std::string& what() const { return what_; }

 private:
  bool failed_ = false;
  std::size_t position_ = 0;
  std::string last_token_;
  int error_id_ = 0;
  std::string what_;
};

// The library's error ids: out_of_range 406 is a number it cannot hold.
constexpr int kNumberOverflow = 406;

// The library quotes the token it was reading ("last read: '...'"), which
// may be a whole long string: keep its end, where the fault is.
std::string WithShortLastToken(const std::string& what, const std::string& token) {
  const std::string quoted = "last read: '" + token + "'";
  const std::size_t at = what.find(quoted);
  if (token.size() <= kShownLength || at == std::string::npos) return what;
  std::size_t from = token.size() - kShownLength;
  while (from < token.size() && (static_cast<unsigned char>(token[from]) & 0xc0u) == 0x80u) ++from;
  return what.substr(0, at) + "last read: '..." + token.substr(from) + "'" + what.substr(at + quoted.size());
}

}  // namespace

std::string LineAndColumn(const std::string& text, std::size_t offset) {
  std::size_t line = 1, column = 1;
  for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else {
      ++column;
    }
  }
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

json ParseJsonDocument(const std::string& text, const std::string& path) {
  json root;
  PositionedDomParser parser(root);
  bool parsed = false;
  try {
    parsed = json::sax_parse(text, &parser);
  } catch (const json::exception& e) {
    // The builder throws only for sizes beyond what a container can hold.
    throw SceneFault{path + ": invalid JSON: " + e.what()};
  }
  if (parsed && !parser.failed()) return root;
  if (parser.error_id() == kNumberOverflow) {
    // The position is just past the number.
    const std::size_t start = parser.position() - std::min(parser.position(), parser.last_token().size());
    throw SceneFault{path + ": " + LineAndColumn(text, start) + ": invalid JSON: the number " +
                     Shortened(parser.last_token()) + " is beyond the range of a 64-bit float"};
  }
  const std::string what = WithShortLastToken(parser.what(), parser.last_token());
  const std::size_t cut = what.find("syntax error");
  const std::size_t at = parser.position() == 0 ? 0 : parser.position() - 1;
  throw SceneFault{path + ": " + LineAndColumn(text, at) + ": invalid JSON: " +
                   (cut == std::string::npos ? what : what.substr(cut))};
}

}  // namespace myo_app
