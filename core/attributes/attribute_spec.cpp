#include "core/attributes/attribute_spec.h"

namespace myo_core {

const AttributeSpec* FindAttribute(const AttributeTable& table, const std::string& name) {
  for (const AttributeSpec& spec : table)
    if (spec.long_name == name || spec.short_name == name) return &spec;
  return nullptr;
}

}  // namespace myo_core
