#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/kernels/shape_constraints.h"

using namespace myo_core;

namespace {

// Neighbour lists in the flat form the builder takes.
struct Neighbours {
  std::vector<int32_t> lists, counts, offsets;
  explicit Neighbours(const std::vector<std::vector<int32_t>>& per_point) {
    for (const auto& list : per_point) {
      offsets.push_back(static_cast<int32_t>(lists.size()));
      counts.push_back(static_cast<int32_t>(list.size()));
      lists.insert(lists.end(), list.begin(), list.end());
    }
  }
};

}  // namespace

TEST(ShapeBuildTest, OneRowPerOppositePairOfPaintedPoints) {
  // A line of three points: 1 is the centre between 0 and 2, bent up by 0.3.
  const std::vector<float> positions{0, 0, 0, 1, 0.3f, 0, 2, 0, 0};
  const Neighbours neighbours({{1}, {0, 2}, {1}});
  ShapeConstraints group;
  std::vector<float> lambdas(5, 0.0f);
  BuildShapeConstraints(group, positions, {1, 1, 1}, neighbours.lists, neighbours.counts, neighbours.offsets,
                        lambdas);
  ASSERT_EQ(group.RowCount(), 1u);  // (0, 2) and (2, 0) are the same pair
  EXPECT_EQ(group.centre_points_[0], 1);
  EXPECT_NEAR(group.rest_distances_[0], 0.2f, 1e-6f);
  EXPECT_EQ(group.lambda_base_, 5u);

  // Unpainted centre or end: no row.
  ShapeConstraints unpainted;
  BuildShapeConstraints(unpainted, positions, {1, 0, 1}, neighbours.lists, neighbours.counts, neighbours.offsets,
                        lambdas);
  EXPECT_EQ(unpainted.RowCount(), 0u);
}

TEST(ShapeBuildTest, OnlyNeighboursMoreThanARightAngleApartCount) {
  // A corner at right angles: cosine 0 does not beat the start value.
  const std::vector<float> corner{0, 0, 0, 1, 0, 0, 0, 1, 0};
  const Neighbours corner_neighbours({{1, 2}, {0}, {0}});
  ShapeConstraints group;
  std::vector<float> lambdas;
  BuildShapeConstraints(group, corner, {1, 1, 1}, corner_neighbours.lists, corner_neighbours.counts,
                        corner_neighbours.offsets, lambdas);
  EXPECT_EQ(group.RowCount(), 0u);

  // A star: from neighbour 1 the most opposite is 3, not 2 or 4.
  const std::vector<float> star{0, 0, 0, 1, 0, 0, -1, 0.9f, 0, -1, 0.1f, 0, -1, -0.9f, 0};
  const Neighbours star_neighbours({{1, 2, 3, 4}, {0}, {0}, {0}, {0}});
  BuildShapeConstraints(group, star, {1, 1, 1, 1, 1}, star_neighbours.lists, star_neighbours.counts,
                        star_neighbours.offsets, lambdas);
  ASSERT_GE(group.RowCount(), 1u);
  EXPECT_EQ(group.first_points_[0], 1);
  EXPECT_EQ(group.third_points_[0], 3);
}

TEST(ShapeKernelTest, PullsTheCentreBackToItsRestHeight) {
  // Rest: centre on the line (rest 0). Pushed up, a rigid solve brings the
  // centre and the ends together again with corrections 4 : -2 : -2.
  std::vector<float> positions{0, 0, 0, 1, 0.3f, 0, 2, 0, 0}, lambdas{0.0f};
  SolveShapeConstraint(0, 0, 1, 2, 1, 1, 1, 0.0f, 0.0f, positions.data(), lambdas.data());
  const float height = positions[4] - (positions[1] + positions[7]) * 0.5f;
  EXPECT_NEAR(height, 0.0f, 1e-6f);
  // The centroid does not move: the corrections balance.
  EXPECT_NEAR(positions[1] + positions[4] + positions[7], 0.3f, 1e-6f);

  // A centre exactly on the line has no direction to be pushed along.
  std::vector<float> flat{0, 0, 0, 1, 0, 0, 2, 0, 0}, flat_lambdas{0.25f};
  SolveShapeConstraint(0, 0, 1, 2, 1, 1, 1, 0.0f, 0.0f, flat.data(), flat_lambdas.data());
  EXPECT_EQ(flat_lambdas[0], 0.25f);
}

TEST(ShapeKernelTest, WeightsGuardEachMoveSeparately) {
  std::vector<float> positions{0, 0, 0, 1, 0.3f, 0, 2, 0, 0}, lambdas{0.0f};
  SolveShapeConstraint(0, 0, 1, 2, 1, 0, 1, 0.0f, 0.0f, positions.data(), lambdas.data());
  EXPECT_EQ(positions[4], 0.3f);  // the centre stays
  EXPECT_GT(positions[1], 0.0f);  // its neighbours move towards it

  std::vector<float> none{0, 0, 0, 1, 0.3f, 0, 2, 0, 0}, none_lambdas{0.0f};
  SolveShapeConstraint(0, 0, 1, 2, 1e-7f, 1e-7f, 1e-7f, 0.0f, 0.0f, none.data(), none_lambdas.data());
  EXPECT_EQ(none[4], 0.3f);
  EXPECT_EQ(none_lambdas[0], 0.0f);
}

TEST(ShapeComplianceTest, AnOverrideStiffnessOfZeroSwitchesTheGroupOff) {
  ShapeConstraints group;
  SetShapeCompliance(group, 0.25f, 3.0f, 0.0f, true);
  EXPECT_TRUE(group.disabled_);

  // A disabled group runs no row.
  group.first_points_ = {0};
  group.centre_points_ = {1};
  group.third_points_ = {2};
  group.rest_distances_ = {0.0f};
  group.inverse_masses_ = {1, 1, 1};
  std::vector<float> positions{0, 0, 0, 1, 0.3f, 0, 2, 0, 0}, lambdas{0.0f};
  PrepareShapeRows(group);
  SolveShapeRows(group, positions.data(), lambdas.data());
  EXPECT_EQ(positions[4], 0.3f);
  group.disabled_ = false;
  SolveShapeRows(group, positions.data(), lambdas.data());
  EXPECT_LT(positions[4], 0.3f);
}
