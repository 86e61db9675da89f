#include "core/solver/frame_values.h"

#include <algorithm>
#include <cstdlib>

#include "core/solver/compliance.h"
#include "core/solver/masses.h"
#include "core/tables/enum_tables.h"

namespace myo_core {

void ApplyMassScalars(const SolverFrameValues& frame, SolverData& solver) {
  solver.density_ = frame.density * 0.001f;
  solver.point_mass_mode_ = frame.point_mass_mode;
  solver.space_scale_ = frame.space_scale > kEpsilon ? frame.space_scale : kEpsilon;
  solver.space_scale_mode_ = frame.space_scale_mode;
  solver.global_mass_multiplier_ = frame.global_mass_multiplier;
}

void ApplyStepScalars(const SolverFrameValues& frame, float dt, bool warn, const std::vector<float>& painted_masses,
                      SolverData& s, ShapeConstraints& shape) {
  float gravity = frame.gravity;
  if (s.space_scale_mode_ == kSpaceScaleForces || s.space_scale_mode_ == kSpaceScaleMassesAndForces)
    gravity /= s.space_scale_;
  const Vec3 direction =
      NormalizeSafe(Vec3{frame.gravity_direction[0], frame.gravity_direction[1], frame.gravity_direction[2]});
  s.gravity_[0] = direction.x * gravity;
  s.gravity_[1] = direction.y * gravity;
  s.gravity_[2] = direction.z * gravity;

  s.time_step_ = dt;
  s.world_matrix_ = frame.local_to_world;
  s.world_matrix_inverse_ = IsIdentity(s.world_matrix_) ? s.world_matrix_ : InvertMatrix(s.world_matrix_);
  // The magnitude, formed unsigned so that the most negative int has one too.
  const uint32_t bits = static_cast<uint32_t>(frame.iterations);
  s.iterations_ = frame.iterations < 0 ? 0u - bits : bits;
  s.inertia_damper_ = frame.inertia_damper;
  s.global_damping_multiplier_ = frame.global_damping_multiplier;

  EvaluateMasses(s.point_mass_mode_, s.space_scale_mode_, s.mesh_dimension_, s.density_, s.mesh_measure_,
                 s.global_mass_multiplier_, s.space_scale_, warn, false, painted_masses, s.masses_);
  SetStiffnessAndCompliance(
      s, ComputeStiffness(frame.material, frame.stiffness_multiplier, frame.stiffness, frame.use_custom_stiffness), dt);
  SetShapeCompliance(shape, dt * dt, s.compliance_, frame.stiffness_shape_preservation,
                     frame.override_shape_preservation_stiffness);
  s.attenuation_matrix_ = frame.attenuation_matrix;
  s.attenuation_velocity_factor_ = frame.attenuation_velocity_factor;
}

void BlendByEnvelope(const std::vector<float>& simulated, const std::vector<double>& input, float envelope,
                     std::vector<double>& output) {
  output.assign(input.begin(), input.end());
  const std::size_t count = std::min(simulated.size(), input.size());
  const double weight = envelope;
  for (std::size_t k = 0; k < count; ++k) output[k] = (static_cast<double>(simulated[k]) - input[k]) * weight + input[k];
}

}  // namespace myo_core
