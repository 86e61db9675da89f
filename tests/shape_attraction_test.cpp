// The shape solver's attraction and the fall-backs of its assembly.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/attributes/attribute_info.h"
#include "core/shape/shape_assembly.h"
#include "core/shape/shape_attributes.h"
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
  EXPECT_EQ(AttractionOf(0.5f, 0.5f, 0), 0.75f);
  EXPECT_FLOAT_EQ(AttractionOf(0.5f, 0.5f, 2), 0.8660254f);
  EXPECT_FLOAT_EQ(AttractionOf(0.5f, 0.5f, 3), 0.9085603f);
  EXPECT_FLOAT_EQ(AttractionOf(0.5f, 0.5f, 1), 0.8279890f);
  EXPECT_EQ(AttractionOf(0.5f, 0.5f, 7), 0.75f);  // modes beyond 3 are linear
  // Every remap keeps 0 at 0 and 1 at 1.
  for (int32_t mode = 0; mode < 4; ++mode) {
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

TEST(ShapeAttributesTest, TheTableKeepsItsOwnDefaultsOrderAndPaintableMaps) {
  const AttributeTable& table = ShapeAttributes();
  EXPECT_EQ(FindAttribute(table, "it")->Default(), 3.0);
  EXPECT_EQ(FindAttribute(table, "arm")->Default(), 3.0);  // "Cube Root"
  EXPECT_EQ(FindAttribute(table, "cr")->Default(), 0.0);   // against 1 on the skin
  EXPECT_EQ(FindAttribute(table, "gdm")->max, 1.0);        // a hard maximum here
  EXPECT_EQ(FindAttribute(table, "dbg")->long_name, "debug");
  EXPECT_EQ(FindAttribute(table, "dbgf")->Default(), 6.0);
  EXPECT_EQ(FindAttribute(table, "actrmp")->type, AttributeType::kRamp);
  EXPECT_TRUE(FindAttribute(table, "mf")->Has(kUsedAsFilename));
  EXPECT_TRUE(FindAttribute(table, "oact")->Has(kNotWritable));
  int affecting = 0;
  for (const AttributeInfo& info : table) affecting += info.Has(kAffectsOutput) ? 1 : 0;
  EXPECT_EQ(affecting, 13);
  // The activation attributes stand right after "globalDampingList", and the
  // two switches of the activation right after "computeCollisions".
  auto position = [&](const char* name) { return FindAttribute(table, name) - table.data(); };
  EXPECT_EQ(position("musclesFile"), position("globalDampingList") + 1);
  EXPECT_EQ(position("outActivationList"), position("musclesFile") + 8);
  EXPECT_EQ(position("bidirectionalActivation"), position("computeCollisions") + 1);
  EXPECT_EQ(position("drawActivation"), position("computeCollisions") + 2);
  EXPECT_EQ(MakePaintableScript("MyoSimshape", {"attractForce", "mass"}),
            "makePaintable -attrType multiFloat -sm deformer MyoSimshape attractForce;\n"
            "makePaintable -attrType multiFloat -sm deformer MyoSimshape mass;\n");
  EXPECT_EQ(ShapePaintableMaps().size(), 8u);
}
