#pragma once
// The attributes of the three sensor nodes, in the order the nodes create
// them, with which input affects which output and the one output whose
// evaluation writes all of them.

#include <string>
#include <utility>
#include <vector>

#include "core/attributes/attribute_info.h"

namespace myo_core {

enum class SensorKind { kDistance, kPosition, kRotation };

// The node type that remaps a sensor's outputs in a scene; a sensor's
// deletion takes along those that only it feeds.
inline constexpr char kRemapValueTypeName[] = "remapValue";

const AttributeTable& SensorDistanceAttributes();
const AttributeTable& SensorPositionAttributes();
const AttributeTable& SensorRotationAttributes();
const AttributeTable& SensorAttributes(SensorKind kind);

// Pairs of (input, output) long names: a change of the input dirties the
// output.
const std::vector<std::pair<std::string, std::string>>& SensorAffects(SensorKind kind);

// The output whose evaluation computes and writes all outputs: "outDistance",
// "outVelocity" or "outAngle".
const std::string& SensorPrimaryOutput(SensorKind kind);

// The sensor's node type name.
const char* SensorTypeName(SensorKind kind);

}  // namespace myo_core
