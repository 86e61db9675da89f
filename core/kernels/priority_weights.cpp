#include "core/kernels/priority_weights.h"

#include "core/math/vec3.h"

namespace myo_core {

namespace {

// Below this many points a parallel region costs more than it saves.
constexpr uint32_t kParallelMinimum = 2048;

float Clamp01(float x) { return x < 0.0f ? 0.0f : (x > 1.0f ? 1.0f : x); }

}  // namespace

bool ApplyPriorityWeight(uint32_t i, float* primary, const float* primary_values, float* other_a,
                         float* other_b) {
  const float x = primary_values[i];
  primary[i] = x;
  const float y = other_a[i], z = other_b[i];
  if (x + y + z - 1.0f <= kEpsilon) return false;
  const float kept = Clamp01(x);
  primary[i] = kept;
  const float left = 1.0f - kept;
  if (left < kEpsilon) {
    other_a[i] = 0.0f;
    other_b[i] = 0.0f;
    return true;
  }
  const float sum = y + z;
  if (sum < kEpsilon) return true;
  if (y > kEpsilon) other_a[i] = Clamp01(y / sum * left);
  if (z > kEpsilon) other_b[i] = Clamp01(z / sum * left);
  return true;
}

bool NormalizeByPriority(std::vector<float>& hard, std::vector<float>& soft, std::vector<float>& slide,
                         const std::array<int32_t, 3>& order, uint32_t count) {
  if (count == 0 || hard.size() != count || soft.size() != count || slide.size() != count) return false;
  const std::vector<float> painted[3] = {hard, soft, slide};
  std::vector<float>* current[3] = {&hard, &soft, &slide};
  for (std::vector<float>* weights : current) weights->assign(count, 0.0f);
  bool changed = false;
  for (int32_t kind : order) {
    if (kind < 0 || kind > 2) continue;
    float* primary = current[kind]->data();
    const float* values = painted[kind].data();
    float* other_a = current[kind == 0 ? 1 : 0]->data();
    float* other_b = current[kind == 2 ? 1 : 2]->data();
    bool pass_changed = false;
#pragma omp parallel for schedule(static) reduction(|| : pass_changed) if (count >= kParallelMinimum)
    for (int64_t i = 0; i < static_cast<int64_t>(count); ++i)
      pass_changed = ApplyPriorityWeight(static_cast<uint32_t>(i), primary, values, other_a, other_b) || pass_changed;
    changed = changed || pass_changed;
  }
  return changed;
}

}  // namespace myo_core
