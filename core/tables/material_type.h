#pragma once
// Materials of the simulation deformers' "material" attribute: display names,
// stiffness in pascals and, for two of them, a density. The keys are the
// values stored in saved scenes: never renumber them.

#include <cstdint>
#include <map>
#include <string>

namespace myo_core {

constexpr int32_t kMaterialMuscle = 1;   // fallback for an unknown key
constexpr int32_t kMaterialLeather = 4;  // default of the skin family

const std::map<int, std::string>& MaterialType();
const std::map<int, float>& MaterialStiffness();  // pascals, 32-bit
const std::map<int, float>& MaterialDensity();    // keys 1 and 4 only

// Default "density" of the muscle deformers: the density of "Muscle", 1060.
float DefaultMuscleDensity();
// Default "density" of the skin and shape deformers: that of "Leather", 1100.
float DefaultSkinDensity();

// `customStiffness` as it is when `useCustomStiffness` is set (the multiplier
// does not apply to it); otherwise `stiffnessMultiplier` times the stiffness
// of `material`, where a key the table does not hold means "Muscle". Throws
// std::out_of_range("invalid map<K, T> key") only on a broken table.
float ComputeStiffness(int32_t material, float stiffnessMultiplier, float customStiffness,
                       bool useCustomStiffness);

}  // namespace myo_core
