#pragma once
// What the solver and deformer tests share: the edge, distance, shape and
// volume rows solved the plain way, a thread count held for a scope, a host that counts
// the progress of a build, and a deformer evaluated on a time line.

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "core/kernels/distance_constraints.h"
#include "core/kernels/edge_constraints.h"
#include "core/kernels/shape_constraints.h"
#include "core/kernels/volume_constraint.h"
#include "core/maps/map_store.h"
#include "core/solver/parallel_levels.h"
#include "support/test_host.h"

namespace myo_test {

constexpr float kFrame = 1.0f / 24.0f;

inline bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// OpenMP's thread count set for the life of the object.
class ScopedThreads {
 public:
  explicit ScopedThreads(int threads) : saved_(omp_get_max_threads()) { omp_set_num_threads(threads); }
  ~ScopedThreads() { omp_set_num_threads(saved_); }
  ScopedThreads(const ScopedThreads&) = delete;
  ScopedThreads& operator=(const ScopedThreads&) = delete;

 private:
  int saved_;
};

// OpenMP's thread count set for the life of the object, with every level
// pass of a row schedule threaded however few rows its levels hold, so that
// small tables take the threaded path too.
class ScopedLevelThreads {
 public:
  explicit ScopedLevelThreads(int threads) : threads_(threads), saved_(myo_core::LevelThreadingMinimum()) {
    myo_core::SetLevelThreadingMinimum(0);
  }
  ~ScopedLevelThreads() { myo_core::SetLevelThreadingMinimum(saved_); }
  ScopedLevelThreads(const ScopedLevelThreads&) = delete;
  ScopedLevelThreads& operator=(const ScopedLevelThreads&) = delete;

 private:
  ScopedThreads threads_;
  uint32_t saved_;
};

// lambdas with the rows of one group, which a step keeps in solving order,
// put back in table order: row schedule[k] is at base + k.
inline std::vector<float> InTableOrder(std::vector<float> lambdas, uint32_t base,
                                       const std::vector<uint32_t>& schedule) {
  const std::vector<float> solved(lambdas.begin() + base, lambdas.begin() + base + schedule.size());
  for (std::size_t k = 0; k < schedule.size(); ++k) lambdas[base + schedule[k]] = solved[k];
  return lambdas;
}

// Every edge row in table order, its target formed on the call.
inline void PlainEdgeRows(const myo_core::EdgeConstraints& edges, float compliance, float rest_activation, float* p,
                          float* lambdas) {
  for (uint32_t e = 0; e < edges.RowCount(); ++e) {
    const uint32_t i = edges.edge_start_[e], j = edges.edge_end_[e];
    myo_core::SolveEdgeConstraint(edges.lambda_base_ + e, e, i, j, edges.inverse_masses_[i], edges.inverse_masses_[j],
                                  compliance, edges.activation_, rest_activation, edges.rest_length_multiplier_,
                                  std::min(1.0f, edges.edge_compression_[e] * edges.compression_multiplier_),
                                  std::min(1.0f, edges.edge_stretching_[e] * edges.stretching_multiplier_),
                                  edges.rest_vectors_.data(), edges.edge_fibers_.data(), p, lambdas);
  }
}

// The volume row as one pass over the triangles and one over the points.
inline void PlainVolumeRow(const myo_core::VolumeConstraint& v, float compliance, std::vector<float>& positions,
                    std::vector<float>& lambdas) {
  using namespace myo_core;
  float* p = positions.data();
  std::vector<float> g(positions.size(), 0.0f);
  float volume = 0.0f;
  for (std::size_t t = 0; t < v.triangles_.size() / 3; ++t) {
    const int32_t ia = v.triangles_[3 * t], ib = v.triangles_[3 * t + 1], ic = v.triangles_[3 * t + 2];
    const Vec3 a = Load3(p, ia), b = Load3(p, ib), c = Load3(p, ic);
    volume += Dot(Cross(a, b), c);
    Store3(g.data(), ia, Load3(g.data(), ia) + Cross(b, c));
    Store3(g.data(), ib, Load3(g.data(), ib) + Cross(c, a));
    Store3(g.data(), ic, Load3(g.data(), ic) + Cross(a, b));
  }
  const float violation = volume - v.rest_volume_ * v.volume_ratio_;
  if (std::fabs(violation) < kEpsilon) return;
  float sum = 0.0f;
  for (uint32_t i = 0; i < v.inverse_masses_.size(); ++i) sum += v.inverse_masses_[i] * Dot(Load3(g.data(), i), Load3(g.data(), i));
  sum += compliance;
  float& lambda = lambdas[v.lambda_base_];
  const float delta = (-violation - lambda * compliance) / sum;
  lambda += delta;
  for (uint32_t i = 0; i < v.inverse_masses_.size(); ++i)
    Store3(p, i, Load3(p, i) + Load3(g.data(), i) * (delta * v.inverse_masses_[i] * v.volume_preservation_));
}

// Every distance row in table order, one after the other; rows for which
// `skip(a, b)` holds are passed over.
template <class Skip>
void PlainDistanceRows(const myo_core::DistanceConstraints& d, float compliance, float* p, float* lambdas,
                       Skip skip) {
  const float* w = d.inverse_masses_.data();
  for (uint32_t e = 0; e < d.RowCount(); ++e) {
    const uint32_t a = d.edge_vertices_a_[e], b = d.edge_vertices_b_[e];
    if (skip(a, b)) continue;
    myo_core::SolveDistanceConstraint(d.lambda_base_ + e, a, b, w[a], w[b], compliance, d.rest_lengths_[e],
                                      d.rest_length_multiplier_,
                                      std::min(1.0f, d.compression_weights_[e] * d.compression_multiplier_),
                                      std::min(1.0f, d.stretching_weights_[e] * d.stretching_multiplier_), p,
                                      lambdas);
  }
}

inline void PlainShapeRows(const myo_core::ShapeConstraints& shape, float* p, float* lambdas) {
  const float* w = shape.inverse_masses_.data();
  for (uint32_t r = 0; r < shape.RowCount() && !shape.disabled_; ++r) {
    const uint32_t a = shape.first_points_[r], b = shape.centre_points_[r], c = shape.third_points_[r];
    myo_core::SolveShapeConstraint(shape.lambda_base_ + r, a, b, c, w[a], w[b], w[c], shape.group_compliance_,
                                   shape.rest_distances_[r], p, lambdas);
  }
}

// A deformer fed `mesh` as its input, evaluated at whole frames of 24 fps.
template <class Deformer, class FrameValues, class Host = TestHost>
struct TimeLine {
  explicit TimeLine(myo_core::MeshData input_mesh)
      : mesh(std::move(input_mesh)), host(mesh), input(mesh.points.begin(), mesh.points.end()) {}
  auto At(float frame_number) {
    frame.current_time = frame_number * kFrame;
    return deformer.Evaluate(frame, input, host, maps, output);
  }
  const auto& solver() const { return deformer.solver(); }

  myo_core::MeshData mesh;
  Host host;
  myo_core::MapStore maps;
  Deformer deformer;
  FrameValues frame;
  std::vector<double> input;
  std::vector<double> output;
};

}  // namespace myo_test
