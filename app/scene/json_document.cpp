#include "app/scene/json_document.h"

#include <set>
#include <string>
#include <vector>

#include "app/scene/scene_field.h"

namespace myo_app {

namespace {

using nlohmann::json;

// The document builder of the library, which keeps where the first error
// stands instead of throwing an exception that has lost it, and refuses a
// key given twice in one object (the library would keep the last silently).
class PositionedDomParser : public nlohmann::detail::json_sax_dom_parser<json> {
  using Base = nlohmann::detail::json_sax_dom_parser<json>;

 public:
  explicit PositionedDomParser(json& root) : Base(root, false) {}

  // The events of the parser, hiding the builder's own: sax_parse calls them
  // on this type. Each value first counts as an element of its array.
  bool null() { return Element() && Base::null(); }
  bool boolean(bool value) { return Element() && Base::boolean(value); }
  bool number_integer(json::number_integer_t value) { return Element() && Base::number_integer(value); }
  bool number_unsigned(json::number_unsigned_t value) { return Element() && Base::number_unsigned(value); }
  bool number_float(json::number_float_t value, const std::string& text) {
    return Element() && Base::number_float(value, text);
  }
  bool string(std::string& value) { return Element() && Base::string(value); }
  bool binary(json::binary_t& value) { return Element() && Base::binary(value); }
  bool start_object(std::size_t size) {
    if (!Element() || !Base::start_object(size)) return false;
    open_.push_back({true});
    return true;
  }
  bool key(std::string& name) {
    Container& object = open_.back();
    object.key = name;
    if (!object.keys.insert(name).second) {
      duplicate_ = Path();
      return false;
    }
    return Base::key(name);
  }
  bool end_object() {
    open_.pop_back();
    return Base::end_object();
  }
  bool start_array(std::size_t size) {
    if (!Element() || !Base::start_array(size)) return false;
    open_.push_back({false});
    return true;
  }
  bool end_array() {
    open_.pop_back();
    return Base::end_array();
  }

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
  // The field of a key given twice ("nodes[0].attributes.gravity"), or "".
  const std::string& duplicate() const { return duplicate_; }

 private:
  struct Container {
    bool object;
    std::set<std::string> keys = {};  // objects: the keys so far
    std::string key = {};             // objects: the key of the value being read
    std::size_t elements = 0;         // arrays: the elements so far
  };

  bool Element() {
    if (!open_.empty() && !open_.back().object) ++open_.back().elements;
    return true;
  }

  // Where the parser stands, as messages name fields.
  std::string Path() const {
    std::string path;
    for (const Container& c : open_) {
      if (!c.object) {
        path += "[" + std::to_string(c.elements - 1) + "]";
      } else {
        path += (path.empty() ? "" : ".") + Shortened(c.key);
      }
    }
    return path;
  }

  bool failed_ = false;
  std::size_t position_ = 0;
  std::string last_token_;
  int error_id_ = 0;
  std::string what_;
  std::vector<Container> open_;  // the objects and arrays being read, outermost first
  std::string duplicate_;
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
  if (!parser.duplicate().empty())
    throw SceneFault{path + ": " + parser.duplicate() + ": the key is given twice"};
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
