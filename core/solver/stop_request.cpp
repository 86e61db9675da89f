#include "core/solver/stop_request.h"

#include <atomic>

namespace myo_core {

namespace {

std::atomic<bool> g_stop_requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets the stop request");

}  // namespace

void RequestStop() { g_stop_requested.store(true, std::memory_order_relaxed); }

bool StopRequested() { return g_stop_requested.load(std::memory_order_relaxed); }

void ClearStopRequest() { g_stop_requested.store(false, std::memory_order_relaxed); }

}  // namespace myo_core
