#pragma once
// The runs of attributes that every simulation deformer declares alike, so
// that each node's table lists only what is its own.

#include <cstdint>

#include "core/attributes/attribute_info.h"

namespace myo_core {

// "enable", "iterations", "material", "stiffnessMultiplier", "pointMassMode",
// "density", with the node's defaults.
void AppendSolverHeader(AttributeTable& table, int32_t iterations, int32_t material, float density);

// "timeScale" through "stretchingMultiplier": scales, gravity, stiffness,
// mass and damping multipliers and the edge multipliers.
void AppendScalesAndStiffness(AttributeTable& table, int32_t space_scale_mode);

}  // namespace myo_core
