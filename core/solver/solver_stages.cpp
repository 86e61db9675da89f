#include "core/solver/solver_stages.h"

#include <omp.h>

#include <algorithm>
#include <cmath>

#include "core/math/vec3.h"
#include "core/solver/parallel_levels.h"

namespace myo_core {

namespace {

// Per-point passes over at least this many points are shared out over the
// threads; each point's result is its own, so the bits do not change.
constexpr int64_t kParallelPointPass = kParallelPrepareRows;

bool IsNearIdentity(const Matrix& m) {
  for (int row = 0; row < 4; ++row)
    for (int col = 0; col < 4; ++col) {
      const double target = row == col ? 1.0 : 0.0;
      if (std::fabs(static_cast<double>(m[4 * row + col]) - target) > kEpsilonDouble) return false;
    }
  return true;
}

}  // namespace

void ApplyAttenuation(std::vector<float>& positions, std::vector<float>& previous_positions,
                      const Matrix& matrix, const Matrix& previous_matrix, float factor) {
  if (kEpsilon >= factor) return;
  if (positions.size() != previous_positions.size()) return;
  const Matrix inverse = InvertMatrix(previous_matrix);
  if (IsNearIdentity(MultiplyMatrices(matrix, inverse))) return;
  const int64_t count = static_cast<int64_t>(positions.size() / 3);
#pragma omp parallel for schedule(static) if (count >= kParallelPointPass)
  for (int64_t k = 0; k < count; ++k) {
    const uint32_t i = static_cast<uint32_t>(k);
    const Vec3 q = Load3(previous_positions.data(), i);
    const Vec3 b = TransformPoint(TransformPoint(q, inverse), matrix);
    const Vec3 d = (b - q) * factor;
    Store3(positions.data(), i, q + d);
    Store3(previous_positions.data(), i, q + d);
  }
}

void ApplyDamping(std::vector<float>& velocities, const std::vector<float>& positions,
                  const std::vector<float>& masses, const std::vector<float>& weights,
                  float rigid, float inertia) {
  const uint32_t count = static_cast<uint32_t>(masses.size());
  const bool shared = count >= kParallelPointPass;
  const int pair = std::min(2, omp_get_max_threads());
  // The sums are each added in point order; independent sums run side by
  // side on two threads of large bodies.
  float total = 0.0f;
  Vec3 sum_momentum{0.0f, 0.0f, 0.0f};
  Vec3 sum_position{0.0f, 0.0f, 0.0f};
#pragma omp parallel sections num_threads(pair) if (shared)
  {
#pragma omp section
    for (uint32_t i = 0; i < count; ++i) total += masses[i];
#pragma omp section
    // The momenta m v are recomputed below rather than stored; the products
    // are the same.
    for (uint32_t i = 0; i < count; ++i) {
      const float m = masses[i];
      sum_momentum += Load3(velocities.data(), i) * m;
      sum_position += Load3(positions.data(), i) * m;
    }
  }
  if (!(total > 0.0f)) return;
  const float inv = static_cast<float>(1.0 / static_cast<double>(total));
  const Vec3 centre_velocity = sum_momentum * inv;
  const Vec3 centre = sum_position * inv;

  // Inertia tensor around the centre, starting from the identity, which
  // keeps a single point or a flat body invertible; angular momentum L.
  Matrix inertia_tensor = IdentityMatrix();
  Vec3 angular{0.0f, 0.0f, 0.0f};
#pragma omp parallel sections num_threads(pair) if (shared)
  {
#pragma omp section
    for (uint32_t i = 0; i < count; ++i) {
      const Vec3 r = Load3(positions.data(), i) - centre;
      angular += Cross(r, Load3(velocities.data(), i) * masses[i]);
    }
#pragma omp section
    for (uint32_t i = 0; i < count; ++i) {
      const float m = masses[i];
      const Vec3 r = Load3(positions.data(), i) - centre;
      inertia_tensor[0] += (r.y * r.y + r.z * r.z) * m;
      inertia_tensor[5] += (r.z * r.z + r.x * r.x) * m;
      inertia_tensor[10] += (r.x * r.x + r.y * r.y) * m;
      const float xy = r.x * r.y * m, xz = r.x * r.z * m, yz = r.y * r.z * m;
      inertia_tensor[1] -= xy;
      inertia_tensor[4] -= xy;
      inertia_tensor[2] -= xz;
      inertia_tensor[8] -= xz;
      inertia_tensor[6] -= yz;
      inertia_tensor[9] -= yz;
    }
  }
  const Vec3 omega = TransformColumn(InvertMatrix(inertia_tensor), angular);

  // A point without a weight entry keeps its velocity.
  const int64_t weighted = weights.size() < count ? static_cast<int64_t>(weights.size()) : count;
#pragma omp parallel for schedule(static) if (shared)
  for (int64_t k = 0; k < weighted; ++k) {
    const uint32_t i = static_cast<uint32_t>(k);
    const float c = rigid * weights[i];
    const Vec3 r = Load3(positions.data(), i) - centre;
    const Vec3 v = Load3(velocities.data(), i);
    const Vec3 g = centre_velocity + Cross(omega, r);
    Store3(velocities.data(), i, v + (g - v) * c);
  }

  if (inertia > kEpsilon) {
    const float s = static_cast<float>(1.0 - static_cast<double>(inertia));
    const int64_t values = static_cast<int64_t>(velocities.size());
    float* v = velocities.data();
#pragma omp parallel for schedule(static) if (shared)
    for (int64_t k = 0; k < values; ++k) v[k] *= s;
  }
}

void PredictPositions(std::vector<float>& positions, std::vector<float>& velocities,
                      const float gravity[3], float dt) {
  const Vec3 g{dt * gravity[0], dt * gravity[1], dt * gravity[2]};
  const int64_t count = static_cast<int64_t>(positions.size() / 3);
#pragma omp parallel for schedule(static) if (count >= kParallelPointPass)
  for (int64_t k = 0; k < count; ++k) {
    const uint32_t i = static_cast<uint32_t>(k);
    const Vec3 v = Load3(velocities.data(), i) + g;
    Store3(velocities.data(), i, v);
    Store3(positions.data(), i, Load3(positions.data(), i) + v * dt);
  }
}

void UpdateVelocities(float dt, const std::vector<float>& positions,
                      const std::vector<float>& previous_positions, std::vector<float>& velocities) {
  const float k = static_cast<float>(1.0 / static_cast<double>(dt));
  const int64_t count = static_cast<int64_t>(positions.size() / 3);
#pragma omp parallel for schedule(static) if (count >= kParallelPointPass)
  for (int64_t n = 0; n < count; ++n) {
    const uint32_t i = static_cast<uint32_t>(n);
    Store3(velocities.data(), i, (Load3(positions.data(), i) - Load3(previous_positions.data(), i)) * k);
  }
}

void BeginStep(SolverData& solver) {
  ApplyAttenuation(solver.positions_, solver.previous_positions_, solver.attenuation_matrix_,
                   solver.previous_attenuation_matrix_, solver.attenuation_velocity_factor_);
  ApplyDamping(solver.velocities_, solver.positions_, solver.masses_, solver.damping_weights_,
               solver.global_damping_multiplier_, solver.inertia_damper_);
  PredictPositions(solver.positions_, solver.velocities_, solver.gravity_, solver.time_step_);
}

void EndStep(SolverData& solver) {
  UpdateVelocities(solver.time_step_, solver.positions_, solver.previous_positions_, solver.velocities_);
  std::fill(solver.lambdas_.begin(), solver.lambdas_.end(), 0.0f);
  solver.previous_positions_ = solver.positions_;
  solver.previous_attenuation_matrix_ = solver.attenuation_matrix_;
}

}  // namespace myo_core
