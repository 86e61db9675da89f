#include "app/cli/listings.h"

#include <iomanip>
#include <sstream>

namespace myo_app {

namespace {

using myo_core::AttributeInfo;
using myo_core::AttributeType;

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

void AppendTable(const myo_core::AttributeTable& table, std::ostringstream& out) {
  for (const AttributeInfo& info : table) {
    std::string notes;
    if (info.Has(myo_core::kArray)) notes += " array";
    if (info.Has(myo_core::kKeyable)) notes += " keyable";
    if (info.Has(myo_core::kHidden)) notes += " hidden";
    if (!info.children.empty()) {
      notes += " children:";
      for (const std::string& child : info.children) notes += " " + child;
    }
    if (!info.fields.empty()) {
      notes += " fields:";
      for (const myo_core::EnumField& field : info.fields)
        notes += " " + std::to_string(field.value) + "=\"" + field.name + "\"";
    }
    out << std::left << std::setw(36) << info.long_name << std::setw(8) << info.short_name << std::setw(14)
        << TypeName(info.type) << std::setw(22) << DefaultText(info) << std::setw(14) << Range(info.min, info.max)
        << std::setw(14) << Range(info.soft_min, info.soft_max) << notes << "\n";
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
  out << std::left << std::setw(36) << "attribute" << std::setw(8) << "short" << std::setw(14) << "type"
      << std::setw(22) << "default" << std::setw(14) << "limits" << std::setw(14) << "soft limits"
      << "notes\n";
  AppendTable(*type.attributes, out);
  if (type.deformer) AppendTable(DeformerAttributes(), out);
  return out.str();
}

}  // namespace myo_app
