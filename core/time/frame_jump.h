#pragma once
// The length of a simulation step: the time that passed, unless it is not one
// frame, in which case one regular frame step is taken instead. So the
// simulation never runs backwards and scrubbing gives regular steps.

namespace myo_core {

// `dt`: seconds since the last evaluation, already times `time_scale`.
// `frames_per_second`: one second expressed in the host's current time unit.
// Returns dt when it lies within 0.001 of the frame step (1 / frames_per_second
// times time_scale, or 0 for a rate that is not above 0); otherwise, and for a
// dt below 0.000001 in magnitude, the frame step. With `warn` (the animation
// is not playing) a replaced jump is logged at debug level.
float ResolveFrameJump(float dt, float time_scale, float frames_per_second, bool warn);

}  // namespace myo_core
