#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/kernels/volume_constraint.h"
#include "core/muscle/mesh_volume.h"

using namespace myo_core;

namespace {

// A unit tetrahedron with outward-facing triangles.
struct Tetrahedron {
  std::vector<float> positions{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
  std::vector<int32_t> triangles{0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
  std::vector<float> inverse_masses{1, 1, 1, 1};
  std::vector<float> lambdas{0.0f};
  std::vector<float> gradients;
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
  SolveVolumeConstraint(0, volume.rest_volume_, 1.0f, 1.0f, 0.0f, volume.inverse_masses_, volume.triangles_,
                        t.positions, lambdas, volume.gradients_);
  EXPECT_EQ(t.positions, before);
  EXPECT_EQ(lambdas[0], 0.5f);
}

TEST(VolumeTest, RatioScalesTheGoalAndPreservationTheMove) {
  Tetrahedron t;
  const float rest = SixTimesVolume(t.triangles, t.positions.data());
  // A rigid solve towards twice the rest sum gets close in a few iterations.
  for (int iteration = 0; iteration < 5; ++iteration)
    SolveVolumeConstraint(0, rest, 1.0f, 2.0f, 0.0f, t.inverse_masses, t.triangles, t.positions, t.lambdas,
                          t.gradients);
  EXPECT_NEAR(SixTimesVolume(t.triangles, t.positions.data()), 2.0f, 1e-3f);

  // Preservation 0: the multiplier moves, the points do not.
  Tetrahedron still;
  const std::vector<float> before = still.positions;
  SolveVolumeConstraint(0, rest, 0.0f, 2.0f, 0.0f, still.inverse_masses, still.triangles, still.positions,
                        still.lambdas, still.gradients);
  EXPECT_EQ(still.positions, before);
  EXPECT_NE(still.lambdas[0], 0.0f);

  // A point of zero weight does not move.
  Tetrahedron pinned;
  pinned.inverse_masses[3] = 0.0f;
  SolveVolumeConstraint(0, rest, 1.0f, 2.0f, 0.0f, pinned.inverse_masses, pinned.triangles, pinned.positions,
                        pinned.lambdas, pinned.gradients);
  EXPECT_EQ(pinned.positions[11], 1.0f);
}
