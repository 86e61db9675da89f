#include "app/scene/map_limits.h"

#include <cmath>

#include "app/scene/scene_numbers.h"

namespace myo_app {

namespace {

// Maps hold floats: a value is compared with the float of each limit, so
// that a value read as the float of the minimum passes.
std::string OutsideLimits(float value, const myo_core::AttributeInfo& info) {
  if (info.min && value < static_cast<float>(*info.min))
    return FormatNumber(value) + " is below the minimum " + FormatNumber(*info.min);
  if (info.max && value > static_cast<float>(*info.max))
    return FormatNumber(value) + " is above the maximum " + FormatNumber(*info.max);
  return "";
}

}  // namespace

std::vector<const myo_core::AttributeInfo*> MapComponents(const NodeType& type, const SceneMap& map) {
  std::vector<const myo_core::AttributeInfo*> components;
  if (map.children.empty()) {
    components.push_back(FindNodeAttribute(type, map.element));
  } else {
    for (const std::string& child : map.children) components.push_back(FindNodeAttribute(type, child));
  }
  return components;
}

float MapNumber(const nlohmann::json& value, const myo_core::AttributeInfo& component, const Field& field) {
  const float number = static_cast<float>(FloatNumber(value, field));
  const std::string outside = OutsideLimits(number, component);
  if (!outside.empty()) field.Fail(outside);
  return number;
}

void CheckMapFileValues(const std::vector<float>& values, const std::vector<const myo_core::AttributeInfo*>& components,
                        const std::string& file, const Field& field) {
  const std::size_t width = components.size();
  for (std::size_t k = 0; k < values.size(); ++k) {
    const myo_core::AttributeInfo& component = *components[k % width];
    const std::string where =
        file + ": point " + std::to_string(k / width) + (width > 1 ? ", " + component.long_name : std::string()) + ": ";
    const float value = values[k];
    if (!std::isfinite(value)) field.Fail(where + FormatNumber(value) + " is not a finite 32-bit float");
    const std::string outside = OutsideLimits(value, component);
    if (!outside.empty()) field.Fail(where + outside);
  }
}

}  // namespace myo_app
