#include "core/ramp/ramp_entries.h"

namespace myo_core {

namespace {

bool InUnitRange(float value) { return value >= 0.0f && value <= 1.0f; }

}  // namespace

bool IsRampNormalized(const RampEntries& ramp) {
  if (ramp.values.size() != ramp.positions.size() || ramp.interpolations.size() != ramp.positions.size())
    return false;
  for (std::size_t k = 0; k < ramp.positions.size(); ++k)
    if (!InUnitRange(ramp.positions[k]) || !InUnitRange(ramp.values[k])) return false;
  return true;
}

}  // namespace myo_core
