// Per-frame cost of the point masses, per point.
#include <benchmark/benchmark.h>

#include <vector>

#include "core/solver/masses.h"
#include "core/tables/enum_tables.h"

namespace {

void BM_EvaluateMassesByDensity(benchmark::State& state) {
  const size_t n = static_cast<size_t>(state.range(0));
  const std::vector<float> painted(n, 1.0f);  // N
  std::vector<float> masses(n, 1.0f);         // N
  for (auto _ : state) {
    myo_core::EvaluateMasses(myo_core::kPointMassByDensity, myo_core::kSpaceScaleMasses,
                             myo_core::kMeshVolume, 1.06f, 100.0f, 1.0f, 1.0f, false, false,
                             painted, masses);
    benchmark::DoNotOptimize(masses.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_EvaluateMassesByDensity)->RangeMultiplier(10)->Range(1000, 1000000);

void BM_CombineMassesInPlace(benchmark::State& state) {
  const size_t n = static_cast<size_t>(state.range(0));
  std::vector<float> masses(n, 1.0f);  // N
  for (auto _ : state) {
    myo_core::CombineMasses(masses, 1.0f, 1.0f, myo_core::kSpaceScaleMasses,
                            myo_core::kMeshVolume, false, masses);
    benchmark::DoNotOptimize(masses.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_CombineMassesInPlace)->RangeMultiplier(10)->Range(1000, 1000000);

}  // namespace
