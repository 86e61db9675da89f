#pragma once
// Numbers of a scene file and the limits myoforge adds to those of the
// attribute tables, so that every value becomes the 32-bit float or int the
// deformers read without turning infinite, and every time stays finite.

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "app/scene/scene_field.h"
#include "core/attributes/attribute_info.h"

namespace myo_app {

// Every frame of a scene (time line, keys, time attributes) lies in this
// range, so that frames advance one by one and frame / fps is a finite float.
constexpr double kEarliestFrame = -1000000.0;
constexpr double kLatestFrame = 1000000.0;
// Frames per second: from Maya's slowest unit (one frame an hour) rounded
// down to its fastest.
constexpr double kMinFramesPerSecond = 0.0001;
constexpr double kMaxFramesPerSecond = 48000.0;
// The most solver iterations per step myoforge runs ("iterations" has no
// maximum of its own).
constexpr double kMaxIterations = 10000.0;

// A finite JSON number.
double Number(const nlohmann::json& value, const Field& field);
// A number whose 32-bit float is finite.
double FloatNumber(const nlohmann::json& value, const Field& field);
// A whole number that a 32-bit int holds.
double IntNumber(const nlohmann::json& value, const Field& field);
// A frame in the range above: any number for keys and time attributes,
// a whole one for the time line.
double FrameNumber(const nlohmann::json& value, const Field& field);
double WholeFrameNumber(const nlohmann::json& value, const Field& field);
// Frames per second within the bounds above.
double FramesPerSecond(const nlohmann::json& value, const Field& field);

// Refuses a value outside the attribute's hard limits, or outside a limit
// myoforge adds for it (the iterations).
void CheckAttributeLimits(double value, const myo_core::AttributeInfo& info, const Field& field);

// The limit myoforge adds to an attribute's maximum, if any.
std::optional<double> HostMaximum(const myo_core::AttributeInfo& info);

}  // namespace myo_app
