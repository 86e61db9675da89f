// The shape solver's attraction and the fall-backs of its assembly.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/shape/shape_assembly.h"
#include "core/shape/simshape_solver.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

// One point with the given force and activation, attraction computed in `mode`.
float AttractionOf(float force, float activation, int32_t mode, float multiplier = 1.0f) {
  SimshapeSolver solver;
  solver.point_count_ = 1;
  solver.attract_forces_ = {force};
  solver.activations_ = {activation};
  solver.attraction_multiplier_ = multiplier;
  solver.attraction_remap_mode_ = mode;
  ComputeAttraction(solver);
  return solver.attraction_[0];
}

}  // namespace

TEST(ShapeAttractionTest, ForceActivationAndRemapGiveTheAttraction) {
  // Force 0.5 and activation 0.5 blend to 0.75 before the remap.
  // Modes beyond 3 are linear; every remap keeps 0 at 0 and 1 at 1.
  const float remapped[] = {0.75f, 0.8279890f, 0.8660254f, 0.9085603f, 0.75f};
  for (int32_t mode = 0; mode < 5; ++mode) {
    EXPECT_FLOAT_EQ(AttractionOf(0.5f, 0.5f, mode), remapped[mode]) << mode;
    EXPECT_EQ(AttractionOf(0.0f, 0.0f, mode), 0.0f) << mode;
    EXPECT_FLOAT_EQ(AttractionOf(1.0f, 0.0f, mode), 1.0f) << mode;
  }
  // A multiplier of 0 frees the mesh unless the activation takes it back.
  EXPECT_EQ(AttractionOf(1.0f, 0.0f, 3, 0.0f), 0.0f);
  EXPECT_EQ(AttractionOf(1.0f, 1.0f, 3, 0.0f), 1.0f);
  // A negative force counts as 0 before the activation enters; a force
  // beyond 1 as 1.
  EXPECT_EQ(AttractionOf(-2.0f, 0.25f, 0), 0.25f);
  EXPECT_EQ(AttractionOf(3.0f, 0.0f, 0, 2.0f), 1.0f);
}

// Steps keep the remap of points whose value did not change; whatever
// changes between them (activations, forces, the multiplier, the mode, the
// point count), every point's attraction is that of a solver computing it
// for the first time.
TEST(ShapeAttractionTest, ReusedRemapsMatchAFreshComputationAfterEveryChange) {
  SimshapeSolver solver;
  solver.point_count_ = 40;
  for (uint32_t i = 0; i < 40; ++i) {
    solver.attract_forces_.push_back(0.025f * static_cast<float>(i));
    solver.activations_.push_back(i % 3 == 0 ? 0.0f : 0.5f);
  }
  const auto step_matches = [&solver](const std::string& what) {
    ComputeAttraction(solver);
    std::vector<float> fresh;
    for (uint32_t i = 0; i < solver.point_count_; ++i)
      fresh.push_back(AttractionOf(solver.attract_forces_[i], solver.activations_[i], solver.attraction_remap_mode_,
                                   solver.attraction_multiplier_));
    EXPECT_EQ(solver.attraction_, fresh) << what;
  };
  step_matches("first step");
  step_matches("nothing changed");
  for (uint32_t i = 0; i < 40; i += 4) solver.activations_[i] = 0.9f;
  step_matches("some activations");
  solver.attract_forces_[7] = 0.0f;
  solver.attract_forces_[8] = -0.0f;
  step_matches("two forces, one to -0");
  solver.attraction_multiplier_ = 0.5f;
  step_matches("multiplier");
  // Square root, linear, the cube root again, logarithm.
  for (int32_t mode : {2, 0, 3, 1}) {
    solver.attraction_remap_mode_ = mode;
    step_matches("mode " + std::to_string(mode));
  }
  solver.point_count_ = 20;
  solver.attract_forces_.resize(20);
  solver.activations_.resize(20);
  step_matches("fewer points");
}

TEST(ShapeAttractionTest, ApplyAttractionBlendsTowardsTheTargetsInObjectSpace) {
  SimshapeSolver solver;
  solver.point_count_ = 3;
  solver.positions_ = {0, 0, 0, 1, 1, 1, 2, 2, 2};
  solver.attraction_targets_ = {4, 0, 0, 1, 3, 1, 0, 0, 0};
  solver.attraction_ = {1.0f, 0.5f, 0.0f};
  solver.world_matrix_ = TranslationMatrix(100.0f, 0.0f, 0.0f);  // plays no part
  ApplyAttraction(solver);
  EXPECT_EQ(solver.positions_, (std::vector<float>{4, 0, 0, 1, 2, 1, 2, 2, 2}));
}

TEST(ShapeAssemblyTest, RestAndAnimMeshesFallBackToTheInputWithTheirWarnings) {
  myo_test::LogCapture log;
  const MeshData input = myo_test::BuildMesh(myo_scenes::MakeGrid(2, 2, 2.0f, 2.0f));  // 9 points
  const MeshData other = myo_test::BuildMesh(myo_scenes::MakeGrid(3, 2, 2.0f, 2.0f));  // 12 points
  const MeshData empty;
  EXPECT_EQ(&ChooseRestMesh(nullptr, input), &input);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(&ChooseRestMesh(&empty, input), &input);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Could not retrieve rest mesh data. Input rest mesh will be ignored."), 1u);
  EXPECT_EQ(&ChooseRestMesh(&other, input), &input);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Number of vertices in the rest mesh does not match with the number of "
                      "vertices of the mesh to deform: expected 9, got 12. Input rest mesh will be ignored."),
            1u);
  MeshData moved = input;
  moved.points[0] = 5.0f;
  EXPECT_EQ(&ChooseRestMesh(&moved, input), &moved);

  SimshapeSolver solver;
  solver.point_count_ = 9;
  SetPositionsFromAnim(&moved, input, solver);
  EXPECT_EQ(solver.positions_, moved.points);
  EXPECT_EQ(solver.previous_positions_, moved.points);
  for (const MeshData* anim : {static_cast<const MeshData*>(nullptr), &empty, &other}) {
    SetPositionsFromAnim(anim, input, solver);
    EXPECT_EQ(solver.positions_, input.points);
  }
  EXPECT_EQ(log.Count("[MyoForge][Warning] Could not retrieve animated mesh data. Input anim mesh will be ignored."),
            1u);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Inconsistency in the amount of vertices between the animated mesh and "
                      "the simulated mesh. Input anim mesh will be ignored."),
            1u);
}
