#pragma once
// A node's attributes declared once, as data: the Maya layer creates its
// attributes from these tables, the standalone host validates scene files
// against them and fills frame values from them.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace myo_core {

enum class AttributeType {
  kBool,
  kInt,
  kFloat,
  kEnum,      // a short with named fields
  kTime,      // seconds
  kMatrix,       // 4x4, created as a double matrix
  kFloatMatrix,  // 4x4, created as a float matrix
  kMesh,      // mesh data
  kCompound,  // children named in `children`
  kColor,     // compound of three floats used as a colour
  kString,    // text
  kRamp,      // a curve ramp: entries of position, value and interpolation
  kMessage,   // a message: carries a connection, no value
};

// Attribute flags beyond Maya's defaults.
enum AttributeFlag : uint32_t {
  kKeyable = 1u << 0,
  kArray = 1u << 1,          // setArray with setUsesArrayDataBuilder
  kReadable = 1u << 2,       // set readable explicitly
  kStorable = 1u << 3,       // set storable explicitly
  kHidden = 1u << 4,
  kUsedAsColor = 1u << 5,
  kAffectsOutput = 1u << 6,  // a change forces an evaluation of the output geometry
  kUsedAsFilename = 1u << 7,  // a string that names a file
  kNotWritable = 1u << 8,     // an output the node writes and a user cannot set
  kArrayDataBuilder = 1u << 9,  // setUsesArrayDataBuilder without being an array
};

struct EnumField {
  std::string name;
  int32_t value;
};

struct AttributeInfo {
  std::string long_name;
  std::string short_name;
  AttributeType type = AttributeType::kFloat;
  std::vector<double> defaults;              // one value, or one per child of a colour
  std::optional<double> min, max, soft_min, soft_max;
  uint32_t flags = 0;
  std::vector<EnumField> fields;             // enum fields in ascending value order
  std::vector<std::string> children;         // long names of the children of a compound
  int32_t disconnect_behavior = -1;          // -1: Maya's default
  std::string array_of;                      // for a list: the long name of its element

  bool Has(AttributeFlag flag) const { return (flags & flag) != 0; }
  bool IsMatrix() const { return type == AttributeType::kMatrix || type == AttributeType::kFloatMatrix; }
  double Default() const { return defaults.empty() ? 0.0 : defaults.front(); }
};

using AttributeTable = std::vector<AttributeInfo>;

// The attribute of a table by long or short name, or null.
const AttributeInfo* FindAttribute(const AttributeTable& table, const std::string& name);

// Enum fields of a table of names, in ascending key order.
template <typename Map>
std::vector<EnumField> EnumFieldsOf(const Map& table) {
  std::vector<EnumField> fields;
  for (const auto& [value, name] : table) fields.push_back({name, static_cast<int32_t>(value)});
  return fields;
}

}  // namespace myo_core
