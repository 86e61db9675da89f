#include "core/tables/material_type.h"

#include "core/tables/table_lookup.h"

namespace myo_core {
namespace {

float DensityOr(int32_t material, float fallback) {
  const auto& densities = MaterialDensity();
  const auto found = densities.find(material);
  return found == densities.end() ? fallback : found->second;
}

}  // namespace

const std::map<int, std::string>& MaterialType() {
  static const std::map<int, std::string> table = {
      {0, "Fat"},     {1, "Muscle"}, {2, "Rubber"},   {3, "Tendon"},
      {4, "Leather"}, {5, "Wood"},   {6, "Concrete"}};
  return table;
}

const std::map<int, float>& MaterialStiffness() {
  // The last is the float nearest to 2.5e10, that is 24999999488.
  static const std::map<int, float> table = {
      {0, 1000.0f},      {1, 5000.0f},       {2, 1000000.0f}, {3, 50000000.0f},
      {4, 100000000.0f}, {5, 6000000000.0f}, {6, 25000000000.0f}};
  return table;
}

const std::map<int, float>& MaterialDensity() {
  static const std::map<int, float> table = {{kMaterialMuscle, 1060.0f},
                                             {kMaterialLeather, 1100.0f}};
  return table;
}

float DefaultMuscleDensity() { return DensityOr(kMaterialMuscle, 1060.0f); }

float DefaultSkinDensity() { return DensityOr(kMaterialLeather, 1100.0f); }

float ComputeStiffness(int32_t material, float stiffnessMultiplier, float customStiffness,
                       bool useCustomStiffness) {
  if (useCustomStiffness) return customStiffness;
  const auto& stiffness = MaterialStiffness();
  const int32_t key = stiffness.count(material) != 0 ? material : kMaterialMuscle;
  return stiffnessMultiplier * CheckedLookup(stiffness, key);
}

}  // namespace myo_core
