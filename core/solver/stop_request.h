#pragma once
// A request from outside an evaluation to stop long work as soon as it can:
// the standalone host sets it from its signal handler. A step that sees it
// stops between two iterations, and a long build between two points; what
// they leave is unfinished, and the host that asked throws it away. A Maya
// session never sets it.

namespace myo_core {

// Safe to call from a signal handler.
void RequestStop();
bool StopRequested();
void ClearStopRequest();

}  // namespace myo_core
