#pragma once
// Stiffness of the frame turned into the compliance that the kernels read.

#include "core/solver/solver_data.h"

namespace myo_core {

// stiffness_ = max(stiffness, 0.0001); compliance_ = (1 / stiffness_) / (dt dt),
// two float divisions in that order. stiffness comes from ComputeStiffness.
inline void SetStiffnessAndCompliance(SolverData& solver, float stiffness, float dt) {
  solver.stiffness_ = stiffness > 0.0001f ? stiffness : 0.0001f;
  solver.compliance_ = (1.0f / solver.stiffness_) / (dt * dt);
}

}  // namespace myo_core
