#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/kernels/constraint_state_fields.h"
#include "core/kernels/volume_constraint.h"
#include "core/muscle/mesh_volume.h"
#include "scenes/muscle_meshes.h"
#include "support/solver_runs.h"

using namespace myo_core;

namespace {

// A unit tetrahedron with outward-facing triangles.
struct Tetrahedron {
  std::vector<float> positions{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
  std::vector<int32_t> triangles{0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
  std::vector<float> inverse_masses{1, 1, 1, 1};
  std::vector<float> lambdas;
};

}  // namespace

TEST(VolumeTest, SixTimesTheSignedVolume) {
  Tetrahedron t;
  EXPECT_FLOAT_EQ(SixTimesVolume(t.triangles, t.positions.data()), 1.0f);
  EXPECT_NEAR(MeshVolume(t.positions, t.triangles, {5.0f, 5.0f, 5.0f}), 1.0f / 6.0f, 1e-6f);
  // An outside point on the plane of a face: that face counts nothing.
  EXPECT_NEAR(MeshVolume(t.positions, t.triangles, {-3.0f, -3.0f, 0.0f}), 1.0f / 6.0f, 1e-6f);
}

TEST(VolumeTest, ARestMeshIsLeftAloneWithItsMultiplier) {
  Tetrahedron t;
  VolumeConstraint volume;
  std::vector<float> lambdas;
  BuildVolumeConstraint(t.triangles, t.positions, 4, lambdas, volume);
  ASSERT_EQ(lambdas.size(), 1u);
  lambdas[0] = 0.5f;
  const std::vector<float> before = t.positions;
  SolveVolumeConstraint(volume, 0.0f, t.positions, lambdas);
  EXPECT_EQ(t.positions, before);
  EXPECT_EQ(lambdas[0], 0.5f);
}

TEST(VolumeTest, RatioScalesTheGoalAndPreservationTheMove) {
  // A volume row of the tetrahedron asking for twice its rest sum.
  const auto doubling = [](Tetrahedron& t, float preservation) {
    VolumeConstraint volume;
    BuildVolumeConstraint(t.triangles, t.positions, 4, t.lambdas, volume);
    volume.lambda_base_ = 0;
    volume.volume_ratio_ = 2.0f;
    volume.volume_preservation_ = preservation;
    volume.inverse_masses_ = t.inverse_masses;
    return volume;
  };
  // A rigid solve towards twice the rest sum gets close in a few iterations.
  Tetrahedron t;
  VolumeConstraint volume = doubling(t, 1.0f);
  for (int iteration = 0; iteration < 5; ++iteration) SolveVolumeConstraint(volume, 0.0f, t.positions, t.lambdas);
  EXPECT_NEAR(SixTimesVolume(t.triangles, t.positions.data()), 2.0f, 1e-3f);

  // Preservation 0: the multiplier moves, the points do not.
  Tetrahedron still;
  const std::vector<float> before = still.positions;
  VolumeConstraint still_volume = doubling(still, 0.0f);
  SolveVolumeConstraint(still_volume, 0.0f, still.positions, still.lambdas);
  EXPECT_EQ(still.positions, before);
  EXPECT_NE(still.lambdas[0], 0.0f);

  // A point of zero weight does not move.
  Tetrahedron pinned;
  pinned.inverse_masses[3] = 0.0f;
  VolumeConstraint pinned_volume = doubling(pinned, 1.0f);
  SolveVolumeConstraint(pinned_volume, 0.0f, pinned.positions, pinned.lambdas);
  EXPECT_EQ(pinned.positions[11], 1.0f);
}


// Terms formed over the threads, sums added in order: the bits of one pass,
// for any number of threads, on a mesh large enough to be shared out. A
// triangle that names one point twice adds to it in corner order; a point of
// no triangle has no gradient, whatever the threads leave in their scratch.
TEST(VolumeTest, ThreadedRowGivesTheBitsOfOnePass) {
  const myo_core::PolygonMesh sphere = myo_scenes::MakeCubeSphere(40, 3.0f);
  std::vector<int32_t> triangles;
  for (std::size_t q = 0; q < sphere.vertex_counts.size(); ++q) {
    const int32_t* v = sphere.vertices.data() + 4 * q;
    triangles.insert(triangles.end(), {v[0], v[1], v[2], v[0], v[2], v[3]});
  }
  triangles.insert(triangles.end(), {5, 5, 9});
  std::vector<float> rest = sphere.points;
  rest.insert(rest.end(), {0.5f, 0.25f, 0.125f});
  const uint32_t n = static_cast<uint32_t>(rest.size() / 3);
  std::vector<float> start = rest;
  for (std::size_t k = 0; k < start.size(); ++k) start[k] *= 1.0f + 0.05f * std::sin(static_cast<float>(k) * 0.37f);

  std::vector<float> rest_lambdas;
  VolumeConstraint volume;
  BuildVolumeConstraint(triangles, rest, n, rest_lambdas, volume);
  volume.volume_ratio_ = 1.1f;
  volume.volume_preservation_ = 0.8f;
  for (uint32_t i = 0; i < n; ++i) volume.inverse_masses_[i] = i % 11 == 0 ? 0.0f : 1.0f / (1.0f + (i % 5));
  volume.inverse_masses_[n - 1] = 0.5f;

  std::vector<float> plain = start, plain_lambdas = rest_lambdas;
  for (int iteration = 0; iteration < 3; ++iteration) myo_test::PlainVolumeRow(volume, 1e-4f, plain, plain_lambdas);
  ASSERT_NE(plain, start);
  for (int threads = 1; threads <= 4; ++threads) {
    myo_test::ScopedLevelThreads team(threads);  // threads on a row this small too
    std::vector<float> threaded = start, lambdas = rest_lambdas;
    std::fill(volume.gradients_.begin(), volume.gradients_.end(), 1e3f);
    for (int iteration = 0; iteration < 3; ++iteration) SolveVolumeConstraint(volume, 1e-4f, threaded, lambdas);
    EXPECT_TRUE(myo_test::SameBits(threaded, plain)) << threads << " threads";
    EXPECT_TRUE(myo_test::SameBits(lambdas, plain_lambdas)) << threads << " threads";
  }
}

// A row restored from a checkpoint over one built from other triangles of
// the same points: what the threads derive from the triangles is derived
// again, so the row gives the bits of the restored one.
TEST(VolumeTest, ARestoredRowDerivesItsThreadsTablesAgain) {
  const myo_core::PolygonMesh sphere = myo_scenes::MakeCubeSphere(40, 3.0f);
  std::vector<int32_t> forward, backward;
  for (std::size_t q = 0; q < sphere.vertex_counts.size(); ++q) {
    const int32_t* v = sphere.vertices.data() + 4 * q;
    forward.insert(forward.end(), {v[0], v[1], v[2], v[0], v[2], v[3]});
  }
  for (std::size_t t = forward.size() / 3; t-- > 0;)
    backward.insert(backward.end(), {forward[3 * t + 1], forward[3 * t + 2], forward[3 * t]});
  const uint32_t n = static_cast<uint32_t>(sphere.points.size() / 3);
  std::vector<float> start = sphere.points;
  for (std::size_t k = 0; k < start.size(); ++k) start[k] *= 1.0f + 0.05f * std::sin(static_cast<float>(k) * 0.29f);

  myo_test::ScopedLevelThreads team(2);
  std::vector<float> lambdas;
  VolumeConstraint restored, saved;
  BuildVolumeConstraint(forward, sphere.points, n, lambdas, restored);
  std::vector<float> scratch = start;
  SolveVolumeConstraint(restored, 1e-4f, scratch, lambdas);  // derives its tables from `forward`
  std::vector<float> saved_lambdas;
  BuildVolumeConstraint(backward, sphere.points, n, saved_lambdas, saved);
  saved.volume_ratio_ = 1.1f;
  StateWriter writer;
  VolumeConstraintFields(writer, saved);
  StateReader reader(writer.bytes());
  VolumeConstraintFields(reader, restored);
  ASSERT_TRUE(reader.Finish()) << reader.error();

  std::vector<float> plain = start, plain_lambdas(1, 0.0f), threaded = start, threaded_lambdas(1, 0.0f);
  myo_test::PlainVolumeRow(saved, 1e-4f, plain, plain_lambdas);
  SolveVolumeConstraint(restored, 1e-4f, threaded, threaded_lambdas);
  EXPECT_TRUE(myo_test::SameBits(threaded, plain));
}
