// Binding of skin points to a reference mesh and the per-step reference read.

#include <gtest/gtest.h>

#include <vector>

#include "core/maps/map_store.h"
#include "core/skin/uber_assembly.h"
#include "scenes/muscle_meshes.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_geometry.h"

namespace {

using myo_core::Matrix;
using myo_core::UberConstraints;
using myo_core::Vec3;
using myo_test::ExpectVec;

// The reference: a 4 by 4 grid of unit quads in the plane y = 0, x and z in
// [-2, 2]. Four skin points hang half a unit above it; below each lies its
// bound surface point (x, 0, z).
const std::vector<Vec3> kSurfacePoints = {{-0.5f, 0.0f, 0.25f}, {0.3f, 0.0f, -0.7f}, {1.2f, 0.0f, 0.6f},
                                          {-1.4f, 0.0f, -1.1f}};

struct Binding {
  myo_core::MeshData reference =
      myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeGrid(4, 4, 4.0f, 4.0f)), myo_core::IdentityMatrix());
  myo_core::MapStore maps;
  myo_core::UberBindingInput input;
  std::vector<float> positions;
  std::vector<float> lambdas = {9.0f, 9.0f};  // rows of groups built before
  std::vector<float> max_sliding_map;
  UberConstraints uber;

  Binding() {
    input.reference_mesh = &reference;
    for (Vec3 q : kSurfacePoints) positions.insert(positions.end(), {q.x, 0.5f, q.z});
  }
  bool Bind() { return myo_core::InitUberConstraints(input, maps, positions, lambdas, max_sliding_map, uber); }
  // The reference placed in the world by `matrix`, as its host places it.
  void Place(const Matrix& matrix) {
    input.reference_matrix = matrix;
    myo_core::FillWorldSpace(matrix, reference);
  }
  uint32_t Count() const { return static_cast<uint32_t>(positions.size() / 3); }
  void SetMaps(const std::vector<float>& hard, const std::vector<float>& soft, const std::vector<float>& slide) {
    maps.SetAll("hardConstraintsList", "hardConstraints", 0, hard);
    maps.SetAll("softConstraintsList", "softConstraints", 0, soft);
    maps.SetAll("slideConstraintsList", "slideConstraints", 0, slide);
  }
  // Every row once, unit weights, nearly rigid.
  void Solve() {
    uber.inverse_masses_.assign(Count(), 1.0f);
    const Matrix& world = input.world_matrix;
    myo_core::SolveUberRows(uber, 0, Count(), 1e-6f, !myo_core::IsIdentity(world), world,
                            myo_core::InvertMatrix(world), positions.data(), lambdas.data());
  }
};

std::vector<float> ReadMap(const myo_core::MapStore& maps, const std::string& list, const std::string& element,
                           uint32_t count, float fallback) {
  std::vector<float> values;
  maps.ReadFloats(list, element, 0, count, fallback, values);
  return values;
}

TEST(UberAssembly, BindingWorksInTheReferenceSpaceAndKeepsTheWorld) {
  // The reference turned and moved; the skin's points placed in world space
  // over the turned grid and handed over in the skin's own object space.
  Binding b;
  b.Place(myo_test::RotationZ(0.4f, {1.0f, 2.0f, -3.0f}));
  b.input.world_matrix = myo_test::Affine(0.0f, 1.0f, 0.0f);
  const Matrix skin_inverse = myo_core::InvertMatrix(b.input.world_matrix);
  for (uint32_t i = 0; i < b.Count(); ++i) {
    const Vec3 world = myo_core::TransformPoint(myo_core::Load3(b.positions.data(), i), b.input.reference_matrix);
    myo_core::Store3(b.positions.data(), i, myo_core::TransformPoint(world, skin_inverse));
  }
  ASSERT_TRUE(b.Bind());
  // One row per point after the rows of groups built before.
  EXPECT_EQ(b.uber.lambda_base_, 2u);
  EXPECT_EQ(b.lambdas, (std::vector<float>{9, 9, 0, 0, 0, 0}));
  for (uint32_t i = 0; i < b.Count(); ++i) {
    EXPECT_NEAR(b.uber.surface_distances_[i], 0.5f, 1e-5f);
    ExpectVec(myo_core::Load3(b.uber.sliding_points_.data(), i),
              myo_core::TransformPoint(kSurfacePoints[i], b.input.reference_matrix), 1e-5f);
  }
  ExpectVec(myo_core::Load3(b.uber.reference_positions_.data(), 0),
            myo_core::TransformPoint(myo_core::Load3(b.reference.points.data(), 0), b.input.reference_matrix), 0.0f);
  // The rows hold the bound points where they are.
  const std::vector<float> rest = b.positions;
  b.Solve();
  for (uint32_t k = 0; k < rest.size(); ++k) EXPECT_NEAR(b.positions[k], rest[k], 1e-5f);
}

TEST(UberAssembly, NonNormalizedWeightsAreMendedAndWrittenBackOnce) {
  myo_test::LogCapture log;
  const std::string warning =
      "[MyoForge][Warning] Non-normalized Uber Constraint weights detected. Proceeding to normalize weights for "
      "solver consistency.";
  Binding b;
  b.SetMaps({0.8f, 1.0f, 0.0f, 0.5f}, {0.6f, 0.0f, 1.0f, 0.2f}, {0.4f, 0.0f, 0.0f, 0.3f});
  ASSERT_TRUE(b.Bind());
  EXPECT_EQ(log.Count(warning), 1u);
  // Hard keeps 0.8; soft and slide share 0.2 in proportion 0.6 : 0.4.
  EXPECT_NEAR(b.uber.hard_weights_[0], 0.8f, 1e-6f);
  EXPECT_NEAR(b.uber.soft_weights_[0], 0.12f, 1e-6f);
  EXPECT_NEAR(b.uber.slide_weights_[0], 0.08f, 1e-6f);
  EXPECT_EQ(b.uber.soft_weights_[2], 1.0f);

  // All three go to element 0 of the hard list; the soft list keeps its paint.
  EXPECT_EQ(ReadMap(b.maps, "hardConstraintsList", "hardConstraints", 4, -1.0f), b.uber.hard_weights_);
  EXPECT_EQ(ReadMap(b.maps, "hardConstraintsList", "softConstraints", 4, -1.0f), b.uber.soft_weights_);
  EXPECT_EQ(ReadMap(b.maps, "hardConstraintsList", "slideConstraints", 4, -1.0f), b.uber.slide_weights_);
  EXPECT_EQ(ReadMap(b.maps, "softConstraintsList", "softConstraints", 4, -1.0f)[0], 0.6f);
}

}  // namespace
