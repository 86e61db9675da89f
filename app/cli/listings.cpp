#include "app/cli/listings.h"

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <sstream>
#include <vector>

#include "app/scene/name_suggestion.h"
#include "core/help/attribute_help.h"
#include "io/number_text.h"

namespace myo_app {

namespace {

using myo_core::AttributeInfo;
using myo_core::AttributeType;

// The compact listing fits a terminal of this width; help texts are indented
// by kIndent, an attribute's own line continues indented by kNotesIndent.
constexpr std::size_t kColumns = 80;
constexpr std::size_t kIndent = 4;
constexpr std::size_t kNotesIndent = 8;
// The wide listing: no line is ever broken.
constexpr std::size_t kUnbroken = static_cast<std::size_t>(-1) / 2;

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

// Words joined with single spaces into lines of at most `columns`
// characters, the first starting with `first_indent` spaces and the others
// with `indent`; a word longer than a line stands alone.
void AppendWrapped(const std::vector<std::string>& words, std::size_t first_indent, std::size_t indent,
                   std::size_t columns, std::ostringstream& out) {
  std::string line;
  std::size_t margin = first_indent;
  for (const std::string& word : words) {
    if (!line.empty() && margin + line.size() + 1 + word.size() > columns) {
      out << std::string(margin, ' ') << line << "\n";
      line.clear();
      margin = indent;
    }
    line += (line.empty() ? "" : " ") + word;
  }
  if (!line.empty()) out << std::string(margin, ' ') << line << "\n";
}

void AppendWrapped(const std::vector<std::string>& words, std::size_t indent, std::size_t columns,
                   std::ostringstream& out) {
  AppendWrapped(words, indent, indent, columns, out);
}

// A help text under its attribute: each of its paragraphs wrapped on its own.
void AppendHelp(const std::string& text, std::size_t columns, std::ostringstream& out) {
  std::istringstream paragraphs(text);
  std::string paragraph;
  while (std::getline(paragraphs, paragraph)) {
    std::istringstream stream(paragraph);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    AppendWrapped(words, kIndent, columns, out);
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

// The wide form: one line per attribute in columns, with every note; its
// help text below, a paragraph a line.
void AppendWideEntry(const std::string& type_name, const AttributeInfo& info, std::ostringstream& out) {
  std::string line = Columns(info.long_name, info.short_name, TypeName(info.type), DefaultText(info),
                             Range(info.min, info.max), Range(info.soft_min, info.soft_max));
  for (const std::string& note : Notes(info)) line += " " + note;
  out << line << "\n";
  if (const char* help = myo_core::FindAttributeHelp(type_name, info.long_name)) AppendHelp(help, kUnbroken, out);
}

// The compact form, within kColumns: "name (short): type, default ..., limits
// ..., soft limits ..., notes", broken between items, never inside one
// (an enum field is one item); its help text below.
void AppendCompactEntry(const std::string& type_name, const AttributeInfo& info, std::ostringstream& out) {
  // Groups of items, a comma after each group but the last.
  std::vector<std::vector<std::string>> groups = {{TypeName(info.type)}};
  const std::string default_text = DefaultText(info);
  if (default_text != "-") groups.push_back({"default", default_text});
  if (info.min || info.max) groups.push_back({"limits", Range(info.min, info.max)});
  if (info.soft_min || info.soft_max) groups.push_back({"soft limits", Range(info.soft_min, info.soft_max)});
  if (info.Has(myo_core::kArray)) groups.push_back({"array"});
  if (info.Has(myo_core::kKeyable)) groups.push_back({"keyable"});
  if (info.Has(myo_core::kHidden)) groups.push_back({"hidden"});
  if (!info.children.empty()) {
    groups.push_back({"children:"});
    groups.back().insert(groups.back().end(), info.children.begin(), info.children.end());
  }
  if (!info.fields.empty()) {
    groups.push_back({"fields:"});
    for (const myo_core::EnumField& field : info.fields)
      groups.back().push_back(std::to_string(field.value) + "=\"" + field.name + "\"");
  }
  std::vector<std::string> items = {info.long_name + " (" + info.short_name + "):"};
  for (std::size_t g = 0; g < groups.size(); ++g)
    for (std::size_t k = 0; k < groups[g].size(); ++k)
      items.push_back(groups[g][k] + (k + 1 == groups[g].size() && g + 1 < groups.size() ? "," : ""));
  AppendWrapped(items, 0, kNotesIndent, kColumns, out);
  if (const char* help = myo_core::FindAttributeHelp(type_name, info.long_name)) AppendHelp(help, kColumns, out);
}

void AppendEntry(const std::string& type_name, const AttributeInfo& info, bool wide, std::ostringstream& out) {
  if (wide) AppendWideEntry(type_name, info, out);
  else AppendCompactEntry(type_name, info, out);
}

}  // namespace

std::string NodeListing() {
  std::ostringstream out;
  for (const NodeType& type : NodeTypes()) out << std::left << std::setw(18) << type.name << type.summary << "\n";
  return out.str();
}

std::string AttributeListing(const NodeType& type, bool wide) {
  std::ostringstream out;
  if (wide) out << Columns("attribute", "short", "type", "default", "limits", "soft limits") << "\n";
  for (const AttributeInfo& info : *type.attributes) AppendEntry(type.name, info, wide, out);
  if (type.deformer)
    for (const AttributeInfo& info : DeformerAttributes()) AppendEntry(type.name, info, wide, out);
  return out.str();
}

std::string AttributeEntry(const NodeType& type, const myo_core::AttributeInfo& info, bool wide) {
  std::ostringstream out;
  AppendEntry(type.name, info, wide, out);
  return out.str();
}

const NodeType* FindNodeTypeAnyCase(const std::string& name) {
  const auto same = [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
  };
  for (const NodeType& type : NodeTypes())
    if (type.name.size() == name.size() && std::equal(name.begin(), name.end(), type.name.begin(), same)) return &type;
  return nullptr;
}

std::string UnknownNodeTypeMessage(const std::string& name) {
  std::vector<std::string> names;
  for (const NodeType& type : NodeTypes()) names.push_back(type.name);
  return "unknown node type " + myo_io::Quoted(name) + " (see myoforge nodes)" + DidYouMean(name, names);
}

}  // namespace myo_app
