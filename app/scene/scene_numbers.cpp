#include "app/scene/scene_numbers.h"

#include <cmath>
#include <cstdint>

namespace myo_app {

using nlohmann::json;

double Number(const json& value, const Field& field) {
  if (!value.is_number()) field.Fail("expected a number, not " + Shown(value));
  const double number = value.get<double>();
  if (!std::isfinite(number)) field.Fail("expected a finite number");
  return number;
}

double FloatNumber(const json& value, const Field& field) {
  const double number = Number(value, field);
  if (!std::isfinite(static_cast<float>(number)))
    field.Fail(FormatNumber(number) + " is outside the range of a 32-bit float");
  return number;
}

double IntNumber(const json& value, const Field& field) {
  const double number = Number(value, field);
  if (number != std::floor(number)) field.Fail("expected a whole number, not " + FormatNumber(number));
  if (number < static_cast<double>(INT32_MIN) || number > static_cast<double>(INT32_MAX))
    field.Fail(FormatNumber(number) + " is outside the range of a 32-bit integer");
  return number;
}

double FrameNumber(const json& value, const Field& field) {
  const double frame = Number(value, field);
  if (frame < kEarliestFrame || frame > kLatestFrame)
    field.Fail("frame " + FormatNumber(frame) + " is outside the frames myoforge plays (" +
               FormatNumber(kEarliestFrame) + " to " + FormatNumber(kLatestFrame) + ")");
  return frame;
}

double WholeFrameNumber(const json& value, const Field& field) {
  const double frame = Number(value, field);
  if (frame != std::floor(frame)) field.Fail("expected a whole frame number, not " + FormatNumber(frame));
  return FrameNumber(value, field);
}

double FramesPerSecond(const json& value, const Field& field) {
  const double fps = Number(value, field);
  if (!(fps > 0.0)) field.Fail("frames per second must be above 0, not " + FormatNumber(fps));
  if (fps < kMinFramesPerSecond || fps > kMaxFramesPerSecond)
    field.Fail(FormatNumber(fps) + " frames per second is outside the range myoforge plays (" +
               FormatNumber(kMinFramesPerSecond) + " to " + FormatNumber(kMaxFramesPerSecond) + ")");
  return fps;
}

std::optional<double> HostMaximum(const myo_core::AttributeInfo& info) {
  if (info.long_name == "iterations") return kMaxIterations;
  return std::nullopt;
}

void CheckAttributeLimits(double value, const myo_core::AttributeInfo& info, const Field& field) {
  if (info.min && value < *info.min)
    field.Fail(FormatNumber(value) + " is below the minimum " + FormatNumber(*info.min));
  if (info.max && value > *info.max)
    field.Fail(FormatNumber(value) + " is above the maximum " + FormatNumber(*info.max));
  if (const std::optional<double> most = HostMaximum(info); most && value > *most)
    field.Fail(FormatNumber(value) + " is above " + FormatNumber(*most) + ", the most " + info.long_name +
               " myoforge runs");
}

}  // namespace myo_app
