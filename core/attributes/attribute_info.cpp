#include "core/attributes/attribute_info.h"

namespace myo_core {

const AttributeInfo* FindAttribute(const AttributeTable& table, const std::string& name) {
  for (const AttributeInfo& info : table)
    if (info.long_name == name || info.short_name == name) return &info;
  return nullptr;
}

}  // namespace myo_core
