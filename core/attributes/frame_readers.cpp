#include "core/attributes/frame_readers.h"

#include <cstdint>

namespace myo_core {

namespace {

float F(const AttributeSource& s, const char* name) { return FloatAttribute(s, name); }
int32_t I(const AttributeSource& s, const char* name) { return IntAttribute(s, name); }
bool B(const AttributeSource& s, const char* name) { return BoolAttribute(s, name); }

}  // namespace

void ReadSolverFrameValues(const AttributeSource& s, SolverFrameValues& frame) {
  frame.preroll_start_time = F(s, "prerollStartTime");
  frame.start_time = F(s, "startTime");
  frame.current_time = F(s, "currentTime");
  frame.enable = B(s, "enable");
  frame.iterations = I(s, "iterations");
  frame.material = I(s, "material");
  frame.stiffness_multiplier = F(s, "stiffnessMultiplier");
  frame.point_mass_mode = I(s, "pointMassMode");
  frame.density = F(s, "density");
  frame.time_scale = F(s, "timeScale");
  frame.space_scale = F(s, "spaceScale");
  frame.space_scale_mode = I(s, "spaceScaleMode");
  frame.gravity = F(s, "gravity");
  frame.gravity_direction[0] = F(s, "gravityDirectionX");
  frame.gravity_direction[1] = F(s, "gravityDirectionY");
  frame.gravity_direction[2] = F(s, "gravityDirectionZ");
  frame.use_custom_stiffness = B(s, "useCustomStiffness");
  frame.stiffness = F(s, "stiffness");
  frame.override_shape_preservation_stiffness = B(s, "overrideShapePreservationStiffness");
  frame.stiffness_shape_preservation = F(s, "stiffnessShapePreservation");
  frame.global_mass_multiplier = F(s, "globalMassMultiplier");
  frame.global_damping_multiplier = F(s, "globalDampingMultiplier");
  frame.inertia_damper = F(s, "inertiaDamper");
  frame.rest_length_multiplier = F(s, "restLengthMultiplier");
  frame.compression_multiplier = F(s, "compressionMultiplier");
  frame.stretching_multiplier = F(s, "stretchingMultiplier");
  frame.attenuation_velocity_factor = F(s, "attenuationVelocityFactor");
  frame.attenuation_matrix = s.MatrixValue("attenuationMatrix");
  frame.debug = B(s, "debug");
  frame.debug_feature = I(s, "debugFeature");
  frame.debug_color[0] = F(s, "debugColorRed");
  frame.debug_color[1] = F(s, "debugColorGreen");
  frame.debug_color[2] = F(s, "debugColorBlue");
  frame.debug_width = F(s, "debugWidth");
}

void ReadSlidingFrameValues(const AttributeSource& s, SolverFrameValues& frame) {
  frame.max_sliding_distance = F(s, "maxSlidingDistance");
  frame.sliding_constraints_mode = I(s, "slidingConstraintsMode");
}

}  // namespace myo_core
