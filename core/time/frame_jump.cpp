#include "core/time/frame_jump.h"

#include <cmath>

#include "core/log/logger.h"

namespace myo_core {

float ResolveFrameJump(float dt, float time_scale, float frames_per_second, bool warn) {
  const float frame_step =
      frames_per_second > 0.0f ? (1.0f / frames_per_second) * time_scale : 0.0f;

  // A re-evaluation of the same frame moves on by one step.
  if (std::fabs(dt) < 0.000001f) return frame_step;

  if (dt >= 0.0f) {
    if (std::fabs(frame_step - dt) <= 0.001f) return dt;
    if (warn) LogDebug("Frame jump greater than one frame. Defaulting to a single positive time step.");
    return frame_step;
  }

  if (warn) LogDebug("Frame jump is negative. Defaulting to a single positive time step.");
  return frame_step;
}

}  // namespace myo_core
