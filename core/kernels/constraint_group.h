#pragma once
// The head that every constraint table starts with.

#include <cstdint>
#include <vector>

namespace myo_core {

struct ConstraintGroup {
  // Per-row weight: an inverse mass for edges and volume, the painted value
  // over the mass for the other groups. N, or sets times N.
  std::vector<float> inverse_masses_;
  // First row of the group in the solver's lambdas_.
  uint32_t lambda_base_ = 0;
};

// Appends `rows` zeroed multipliers to lambdas and returns the first new row.
inline uint32_t ReserveLambdaRows(std::vector<float>& lambdas, std::size_t rows) {
  const uint32_t base = static_cast<uint32_t>(lambdas.size());
  lambdas.resize(lambdas.size() + rows, 0.0f);
  return base;
}

}  // namespace myo_core
