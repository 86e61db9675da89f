#include "app/cli/listings.h"

#include <iomanip>
#include <sstream>
#include <vector>

#include "core/help/attribute_help.h"

namespace myo_app {

namespace {

using myo_core::AttributeInfo;
using myo_core::AttributeType;

// The listing fits a terminal of this width; continuation lines are indented.
constexpr std::size_t kColumns = 100;
constexpr std::size_t kIndent = 4;

std::string Number(double value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

std::string DefaultText(const AttributeInfo& info) {
  switch (info.type) {
    case AttributeType::kMatrix:
    case AttributeType::kFloatMatrix: return "identity";
    case AttributeType::kMesh:
    case AttributeType::kMessage:
    case AttributeType::kCompound: return "-";
    case AttributeType::kBool: return info.Default() != 0.0 ? "true" : "false";
    case AttributeType::kColor: {
      std::string text;
      for (double v : info.defaults) text += (text.empty() ? "" : " ") + Number(v);
      return text;
    }
    case AttributeType::kEnum:
      for (const myo_core::EnumField& field : info.fields)
        if (field.value == info.Default()) return Number(info.Default()) + " \"" + field.name + "\"";
      return Number(info.Default());
    default: return Number(info.Default());
  }
}

std::string Range(const std::optional<double>& min, const std::optional<double>& max) {
  if (!min && !max) return "-";
  return (min ? Number(*min) : std::string()) + ".." + (max ? Number(*max) : std::string());
}

// Words joined with single spaces into lines of at most kColumns characters,
// each starting with `indent` spaces; a word longer than a line stands alone.
void AppendWrapped(const std::vector<std::string>& words, std::size_t indent, std::ostringstream& out) {
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty() && indent + line.size() + 1 + word.size() > kColumns) {
      out << std::string(indent, ' ') << line << "\n";
      line.clear();
    }
    line += (line.empty() ? "" : " ") + word;
  }
  if (!line.empty()) out << std::string(indent, ' ') << line << "\n";
}

// A help text under its attribute: each of its paragraphs wrapped on its own.
void AppendHelp(const std::string& text, std::ostringstream& out) {
  std::istringstream paragraphs(text);
  std::string paragraph;
  while (std::getline(paragraphs, paragraph)) {
    std::istringstream stream(paragraph);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    AppendWrapped(words, kIndent, out);
  }
}

// The notes of an attribute as the units a line may break between: an
// enum field or a child name is never split.
std::vector<std::string> Notes(const AttributeInfo& info) {
  std::vector<std::string> notes;
  if (info.Has(myo_core::kArray)) notes.push_back("array");
  if (info.Has(myo_core::kKeyable)) notes.push_back("keyable");
  if (info.Has(myo_core::kHidden)) notes.push_back("hidden");
  if (!info.children.empty()) {
    notes.push_back("children:");
    for (const std::string& child : info.children) notes.push_back(child);
  }
  if (!info.fields.empty()) {
    notes.push_back("fields:");
    for (const myo_core::EnumField& field : info.fields)
      notes.push_back(std::to_string(field.value) + "=\"" + field.name + "\"");
  }
  return notes;
}

std::string Columns(const std::string& name, const std::string& short_name, const std::string& type,
                    const std::string& default_text, const std::string& limits, const std::string& soft_limits) {
  std::ostringstream line;
  line << std::left << std::setw(35) << name << std::setw(7) << short_name << std::setw(13) << type << std::setw(21)
       << default_text << std::setw(11) << limits << soft_limits;
  std::string text = line.str();
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

// One line per attribute; its notes follow on the same line when they fit
// in kColumns, otherwise on the lines below; its help text, if it has one,
// below that.
void AppendTable(const std::string& type_name, const myo_core::AttributeTable& table, std::ostringstream& out) {
  for (const AttributeInfo& info : table) {
    std::string line = Columns(info.long_name, info.short_name, TypeName(info.type), DefaultText(info),
                               Range(info.min, info.max), Range(info.soft_min, info.soft_max));
    const std::vector<std::string> notes = Notes(info);
    std::string joined;
    for (const std::string& note : notes) joined += " " + note;
    if (line.size() + joined.size() <= kColumns) {
      out << line << joined << "\n";
    } else {
      out << line << "\n";
      AppendWrapped(notes, kIndent, out);
    }
    if (const char* help = myo_core::FindAttributeHelp(type_name, info.long_name)) AppendHelp(help, out);
  }
}

}  // namespace

std::string NodeListing() {
  std::ostringstream out;
  for (const NodeType& type : NodeTypes()) out << std::left << std::setw(18) << type.name << type.summary << "\n";
  return out.str();
}

std::string AttributeListing(const NodeType& type) {
  std::ostringstream out;
  out << Columns("attribute", "short", "type", "default", "limits", "soft limits") << "\n";
  AppendTable(type.name, *type.attributes, out);
  if (type.deformer) AppendTable(type.name, DeformerAttributes(), out);
  return out.str();
}

}  // namespace myo_app
