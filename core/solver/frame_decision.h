#pragma once
// The time line of a simulation deformer: from the times of this evaluation
// and of the last one, whether to rebuild the solver, whether the rebuild
// takes the points from the mesh, whether to step, and the step's length.

#include "core/host/deformer_host.h"
#include "core/solver/frame_values.h"

namespace myo_core {

struct FrameTimes {
  float current = 0.0f;     // seconds
  float start = 0.0f;       // seconds
  float preroll = 0.0f;     // seconds
  float last = 0.0f;        // current time of the last evaluation
  float time_scale = 1.0f;
  float frames_per_second = 24.0f;
  bool playing = false;
  bool solver_empty = true;  // the solver has no positions yet
};

struct FrameDecision {
  bool initialize = false;
  bool reset_positions = false;  // meaningful when initialize is set
  bool simulate = false;
  float dt = 0.0f;               // seconds of simulated time
};

// initialize: at the preroll frame (when it comes before the start), at the
// start frame, or when the solver is empty. Otherwise a frame jump becomes one
// regular step. Nothing is simulated at or before both preroll and start, nor
// for a step that is not positive. A rebuild keeps the simulated points (the
// settled shape becomes rest) only when it comes from the preroll.
FrameDecision DecideFrame(const FrameTimes& times);

// The times of an evaluation from its frame values, the last evaluated time
// and the host's rate and playing state.
FrameTimes FrameTimesOf(const SolverFrameValues& frame, float last_time, const DeformerHost& host,
                        bool solver_empty);

}  // namespace myo_core
