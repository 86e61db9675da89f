#pragma once
// A value over the time line: one key for a constant, several for an
// animated value. Keys are in strictly increasing frames. Before the first
// key the first value holds, after the last the last; between keys a linear
// track interpolates and a stepped one holds the earlier key.

#include <cstddef>
#include <vector>

namespace myo_app {

// Index of the key at or before `frame` and the weight of the next key, for
// frames in increasing order. Weight 0 before the first key and after the
// last.
struct KeySpan {
  std::size_t key = 0;
  double weight = 0.0;
};
KeySpan FindKeySpan(const std::vector<double>& frames, double frame);

struct ScalarTrack {
  std::vector<double> frames;  // K, increasing
  std::vector<double> values;  // K
  bool stepped = false;

  static ScalarTrack Constant(double value) { return {{0.0}, {value}, true}; }
  double At(double frame) const;
};

}  // namespace myo_app
