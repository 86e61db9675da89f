#include "app/scene/remap_value.h"

#include "core/attributes/attribute_builders.h"
#include "core/ramp/ramp_curve.h"

namespace myo_app {

const myo_core::AttributeTable& RemapValueAttributes() {
  using myo_core::AttributeType;
  using myo_core::attribute_builders::Scalar;
  using myo_core::attribute_builders::Typed;
  static const myo_core::AttributeTable table = {
      Scalar("inputValue", "i", AttributeType::kFloat, 0, myo_core::kKeyable),
      Scalar("inputMin", "imn", AttributeType::kFloat, 0, myo_core::kKeyable),
      Scalar("inputMax", "imx", AttributeType::kFloat, 1, myo_core::kKeyable),
      Scalar("outputMin", "omn", AttributeType::kFloat, 0, myo_core::kKeyable),
      Scalar("outputMax", "omx", AttributeType::kFloat, 1, myo_core::kKeyable),
      Typed("value", "vl", AttributeType::kRamp, 0),
      Scalar("outValue", "ov", AttributeType::kFloat, 0, myo_core::kNotWritable),
  };
  return table;
}

double RemapValue(const RemapValueInputs& in) {
  const double span = in.input_max - in.input_min;
  const double position = span != 0.0 ? (in.input - in.input_min) / span : 0.0;
  const myo_core::RampCurve curve(in.curve);
  const double mapped = curve.ValueAt(static_cast<float>(position));
  return in.output_min + (in.output_max - in.output_min) * mapped;
}

}  // namespace myo_app
