#include "core/kernels/length_rows.h"

#include <cmath>

#include "core/math/lanes.h"
#include "core/math/vec3.h"
#include "core/math/vector_clones.h"
#include "core/solver/parallel_levels.h"

namespace myo_core {

namespace {

// Both ends of a row sit on their attraction targets.
inline bool BothAttracted(const float* attraction, uint32_t i, uint32_t j) {
  return attraction != nullptr && !(attraction[i] < 1.0f) && !(attraction[j] < 1.0f);
}

// One packed row with its multiplier, unless both its ends sit on their
// attraction targets.
inline void SolvePackedRow(const LengthRow& row, float compliance, const float* attraction, float* positions,
                           float* lambda) {
  if (BothAttracted(attraction, row.i, row.j)) return;
  SolveLengthRow(0, row.i, row.j, row.w_i, row.w_j, row.target, row.compression, row.stretching, compliance,
                 positions, lambda);
}

// SolveLengthRow over kLanes rows that share no point, written lane by lane
// so that the compiler can keep each operation in vector registers. Every
// lane performs the single row's operations in its order; a skipped lane
// computes but writes nothing.
// lambdas[l] is the multiplier of rows[l].
template <uint32_t kLanes>
MYO_LANE_INLINE void SolveLengthBatch(const LengthRow* rows, float compliance, const float* attraction,
                                      float* positions, float* lambdas) {
  float pix[kLanes], piy[kLanes], piz[kLanes], pjx[kLanes], pjy[kLanes], pjz[kLanes];
  float wi[kLanes], wj[kLanes], target[kLanes], compression[kLanes], stretching[kLanes], lambda[kLanes];
  for (uint32_t l = 0; l < kLanes; ++l) {
    const LengthRow& row = rows[l];
    pix[l] = positions[3 * row.i];
    piy[l] = positions[3 * row.i + 1];
    piz[l] = positions[3 * row.i + 2];
    pjx[l] = positions[3 * row.j];
    pjy[l] = positions[3 * row.j + 1];
    pjz[l] = positions[3 * row.j + 2];
    wi[l] = row.w_i;
    wj[l] = row.w_j;
    target[l] = row.target;
    compression[l] = row.compression;
    stretching[l] = row.stretching;
    lambda[l] = lambdas[l];
  }
  float nx[kLanes], ny[kLanes], nz[kLanes], delta[kLanes];
  for (uint32_t l = 0; l < kLanes; ++l) {
    const float weight = wi[l] + wj[l];
    const float dx = pjx[l] - pix[l], dy = pjy[l] - piy[l], dz = pjz[l] - piz[l];
    const float length = std::sqrt(dx * dx + dy * dy + dz * dz);
    const bool positive = length > 0.0f;
    nx[l] = positive ? dx / length : dx;
    ny[l] = positive ? dy / length : dy;
    nz[l] = positive ? dz / length : dz;
    const float violation = length - target[l];
    const float k = violation < 0.0f ? compression[l] : stretching[l];
    delta[l] = (-(k * violation) - lambda[l] * compliance) /
               (nx[l] * weight * nx[l] + ny[l] * weight * ny[l] + nz[l] * weight * nz[l] + compliance);
  }
  for (uint32_t l = 0; l < kLanes; ++l) {
    const LengthRow& row = rows[l];
    if (wi[l] + wj[l] < kEpsilon || BothAttracted(attraction, row.i, row.j)) continue;
    const Vec3 n{nx[l], ny[l], nz[l]};
    lambdas[l] = lambda[l] + delta[l];
    if (wi[l] >= kEpsilon) Store3(positions, row.i, Vec3{pix[l], piy[l], piz[l]} - n * (delta[l] * wi[l]));
    if (wj[l] >= kEpsilon) Store3(positions, row.j, Load3(positions, row.j) + n * (delta[l] * wj[l]));
  }
}

// The rows [begin, end) of one level: wide batches first, then a narrower
// one, then single rows. Built for the wider vector units too, where the
// processor has them: the same operations in the same order, so the same bits.
MYO_VECTOR_CLONES void SolveLevelChunk(const LengthRow* packed, uint32_t begin, uint32_t end, float compliance,
                                       const float* attraction, float* positions, float* row_lambdas) {
  for (; begin + 16 <= end; begin += 16)
    SolveLengthBatch<16>(packed + begin, compliance, attraction, positions, row_lambdas + begin);
  for (; begin + 8 <= end; begin += 8)
    SolveLengthBatch<8>(packed + begin, compliance, attraction, positions, row_lambdas + begin);
  for (; begin < end; ++begin)
    SolvePackedRow(packed[begin], compliance, attraction, positions, row_lambdas + begin);
}

}  // namespace

void SolveLengthRows(const std::vector<LengthRow>& rows, const std::vector<uint32_t>& level_offsets,
                     float compliance, const float* attraction, float* positions, float* row_lambdas) {
  const LengthRow* packed = rows.data();
  ForEachLevelChunk(level_offsets, [&](uint32_t begin, uint32_t end) {
    SolveLevelChunk(packed, begin, end, compliance, attraction, positions, row_lambdas);
  });
}

}  // namespace myo_core
