#pragma once
// The values of a per-point map against the hard limits of its attribute,
// or of each component's attribute for a vector map ("fibers"), as Maya
// would clamp a painted value: a mass of 0, a resistance of 5 or an
// infinite weight is refused, naming the point and the value.

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/scene/node_types.h"
#include "app/scene/scene.h"
#include "app/scene/scene_field.h"

namespace myo_app {

// The attribute of each component of the map: the element itself, or its
// children in order.
std::vector<const myo_core::AttributeInfo*> MapComponents(const NodeType& type, const SceneMap& map);

// One value written in the scene for `component`: a number whose float is
// finite and within the limits.
float MapNumber(const nlohmann::json& value, const myo_core::AttributeInfo& component, const Field& field);

// The values read from a map file (point-major, one per component): every
// one finite and within its component's limits. Refusals name the file, the
// point and the value.
void CheckMapFileValues(const std::vector<float>& values, const std::vector<const myo_core::AttributeInfo*>& components,
                        const std::string& file, const Field& field);

}  // namespace myo_app
