#include "core/solver/frame_decision.h"

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

FrameTimes FrameTimesOf(const SolverFrameValues& frame, float last_time, const DeformerHost& host,
                        bool solver_empty) {
  FrameTimes times;
  times.current = frame.current_time;
  times.start = frame.start_time;
  times.preroll = frame.preroll_start_time;
  times.last = last_time;
  times.time_scale = frame.time_scale;
  times.frames_per_second = host.FramesPerSecond();
  times.playing = host.IsPlaying();
  times.solver_empty = solver_empty;
  return times;
}

}  // namespace myo_core
