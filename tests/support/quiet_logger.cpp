// Tests run with the logger at info level, as the plug-in does once loaded,
// so that debug lines do not flood the test output. Tests that look at
// debug lines capture them with LogCapture, which lowers the level itself.

#include "core/log/logger.h"

namespace {

const bool kQuietLogger = [] {
  myo_core::SetLevel(myo_core::kLogLevelInfo);
  return true;
}();

}  // namespace
