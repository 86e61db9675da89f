#pragma once
// Short constructors for attribute tables, so that a table reads like the
// list of a node's attributes.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/attributes/attribute_info.h"

namespace myo_core {
namespace attribute_builders {

inline AttributeInfo Scalar(const char* long_name, const char* short_name, AttributeType type, double value, uint32_t flags,
                     std::optional<double> min = {}, std::optional<double> max = {},
                     std::optional<double> soft_min = {}, std::optional<double> soft_max = {}) {
  AttributeInfo info;
  info.long_name = long_name;
  info.short_name = short_name;
  info.type = type;
  info.defaults = {value};
  info.flags = flags;
  info.min = min;
  info.max = max;
  info.soft_min = soft_min;
  info.soft_max = soft_max;
  return info;
}

inline AttributeInfo Enum(const char* long_name, const char* short_name, std::vector<EnumField> fields, double value,
                   uint32_t flags) {
  AttributeInfo info = Scalar(long_name, short_name, AttributeType::kEnum, value, flags);
  info.fields = std::move(fields);
  return info;
}

inline AttributeInfo Compound(const char* long_name, const char* short_name, std::vector<std::string> children,
                       uint32_t flags) {
  AttributeInfo info;
  info.long_name = long_name;
  info.short_name = short_name;
  info.type = AttributeType::kCompound;
  info.children = std::move(children);
  info.flags = flags;
  return info;
}

// A per-vertex map list: a compound array whose one child is the map.
inline AttributeInfo List(const char* long_name, const char* short_name, const char* element, uint32_t flags) {
  AttributeInfo info = Compound(long_name, short_name, {element}, kArray | flags);
  info.array_of = element;
  return info;
}

inline AttributeInfo Typed(const char* long_name, const char* short_name, AttributeType type, uint32_t flags) {
  AttributeInfo info;
  info.long_name = long_name;
  info.short_name = short_name;
  info.type = type;
  info.flags = flags;
  return info;
}

// A colour: a compound of three floats used as a colour, with its default.
inline AttributeInfo Color(const char* long_name, const char* short_name, std::vector<std::string> children,
                           std::vector<double> defaults, uint32_t flags) {
  AttributeInfo info = Compound(long_name, short_name, std::move(children), kUsedAsColor | flags);
  info.type = AttributeType::kColor;
  info.defaults = std::move(defaults);
  return info;
}

// A position: three float children named long name plus X, Y and Z (short
// name plus `suffixes`), with their defaults, then their compound, which a
// host reads as one vector of three floats.
inline void AppendFloat3(AttributeTable& table, const std::string& long_name, const std::string& short_name,
                         const char* const (&suffixes)[3], const double (&defaults)[3], uint32_t flags = 0) {
  static const char* const kAxes[3] = {"X", "Y", "Z"};
  std::vector<std::string> children;
  for (int axis = 0; axis < 3; ++axis) {
    children.push_back(long_name + kAxes[axis]);
    const std::string child_short = short_name + suffixes[axis];
    table.push_back(Scalar(children.back().c_str(), child_short.c_str(), AttributeType::kFloat, defaults[axis], flags));
  }
  table.push_back(Compound(long_name.c_str(), short_name.c_str(), children, flags));
}

// An attribute whose value returns to its default when its connection is
// broken.
inline AttributeInfo ResetOnDisconnect(AttributeInfo info) {
  info.disconnect_behavior = 1;
  return info;
}

}  // namespace attribute_builders
}  // namespace myo_core
