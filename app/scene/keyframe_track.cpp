#include "app/scene/keyframe_track.h"

#include <algorithm>

namespace myo_app {

KeySpan FindKeySpan(const std::vector<double>& frames, double frame) {
  if (frames.empty() || frame <= frames.front()) return {0, 0.0};
  if (frame >= frames.back()) return {frames.size() - 1, 0.0};
  const auto next = std::upper_bound(frames.begin(), frames.end(), frame);
  const std::size_t key = static_cast<std::size_t>(next - frames.begin()) - 1;
  return {key, (frame - frames[key]) / (frames[key + 1] - frames[key])};
}

double ScalarTrack::At(double frame) const {
  if (values.empty()) return 0.0;
  const KeySpan span = FindKeySpan(frames, frame);
  const double a = values[span.key];
  if (stepped || span.weight == 0.0) return a;
  return a + (values[span.key + 1] - a) * span.weight;
}

}  // namespace myo_app
