#pragma once
// Enums shared by nodes, commands and solvers, as ordered maps from the enum's
// value to its display name. The keys are the values stored in saved scenes:
// never renumber them. A node fills an enum attribute by walking a table in
// ascending key order. Every table is built once, on first use, and never
// changes afterwards, so any thread may read it.

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "core/tables/table_lookup.h"

namespace myo_core {

// Attribute "attractionRemapMode".
const std::map<int, std::string>& RemapMode();
// e - 1, computed as exp(1.0) - 1.0, for the logarithmic remap.
double EMinusOne();

// Attribute "activationMode".
const std::map<int, std::string>& ActivationMode();

// Attribute "pointMassMode".
constexpr int32_t kPointMassByDensity = 0;
constexpr int32_t kPointMassByUniformValue = 1;
const std::map<int, std::string>& PointMassMode();

// Attribute "spaceScaleMode": what the space scale multiplies.
constexpr int32_t kSpaceScaleMasses = 0;
constexpr int32_t kSpaceScaleForces = 1;
constexpr int32_t kSpaceScaleMassesAndForces = 2;
const std::map<int, std::string>& SpaceScaleMode();

// Normalisation of several weight maps against each other (no node attribute).
const std::map<int, std::string>& NormalizationMode();

// Orders of the skin's three constraint kinds. A name reads from the highest
// priority to the lowest; its list runs the other way, from the lowest to the
// highest, with 0 for hard, 1 for soft and 2 for slide.
constexpr int32_t kPriorityHard = 0;
constexpr int32_t kPrioritySoft = 1;
constexpr int32_t kPrioritySlide = 2;
constexpr int32_t kSkinConstraintPriorityOrder = 3;  // "Hard - Slide - Soft"
const std::map<int, std::string>& ConstraintPriorityOrder();
const std::map<int, std::array<int32_t, 3>>& ConstraintPriorityOrderLists();

// The paintable maps of the solvers; the names are the texts of the paint
// tool's weight list and of the paint command's "-weight" flag.
const std::map<int, std::string>& WeightsType();

}  // namespace myo_core
