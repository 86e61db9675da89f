#include "core/muscle/frame_decision.h"

#include "core/time/frame_jump.h"

namespace myo_core {

FrameDecision DecideFrame(const FrameTimes& t) {
  FrameDecision decision;
  decision.dt = (t.current - t.last) * t.time_scale;
  decision.initialize = (t.current == t.preroll && t.preroll < t.start) || t.current == t.start || t.solver_empty;
  if (!decision.initialize) decision.dt = ResolveFrameJump(decision.dt, t.time_scale, t.frames_per_second, !t.playing);
  decision.simulate = !((t.current <= t.preroll && t.current <= t.start) || decision.dt <= 0.0f);
  decision.reset_positions =
      t.current < t.start || t.start == t.preroll || t.current < t.preroll || t.solver_empty;
  return decision;
}

}  // namespace myo_core
