#pragma once
// The host's own "remapValue" node, as rigs place it between a sensor and the
// attribute it drives: the input is brought from [inputMin, inputMax] to 0..1,
// mapped through the "value" curve, and stretched to [outputMin, outputMax].

#include "core/attributes/attribute_info.h"
#include "core/ramp/ramp_entries.h"

namespace myo_app {

// inputValue, inputMin (0), inputMax (1), outputMin (0), outputMax (1), the
// curve "value" and the output "outValue".
const myo_core::AttributeTable& RemapValueAttributes();

struct RemapValueInputs {
  double input = 0.0;
  double input_min = 0.0;
  double input_max = 1.0;
  double output_min = 0.0;
  double output_max = 1.0;
  myo_core::RampEntries curve;
};

// outputMin + (outputMax - outputMin) * curve((input - inputMin) /
// (inputMax - inputMin)); with inputMin equal to inputMax the curve is read
// at 0. The curve holds its end values beyond its first and last entries.
double RemapValue(const RemapValueInputs& in);

}  // namespace myo_app
