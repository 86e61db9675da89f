// The skin deformer on a time line over a body mesh.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/skin/skin_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;
using myo_test::kFrame;

namespace {

// A skin 0.5 above a closed body: both spindles along x.
struct SkinOverBody : myo_test::TimeLine<SkinDeformer, SkinFrameValues> {
  MeshData body = myo_test::BuildMesh(myo_scenes::MakeSpindle(12, 12, 10.0f, 2.0f));

  SkinOverBody() : TimeLine(myo_test::BuildMesh(myo_scenes::MakeSpindle(12, 12, 11.0f, 2.5f))) {
    Place(IdentityMatrix());
    host.reference = &body;
    frame.preroll_start_time = 5 * kFrame;
    frame.start_time = 10 * kFrame;
  }
  // The body placed in the world by `matrix`, as its host places it, and the
  // skin told so through "referenceMatrix".
  void Place(const Matrix& matrix) {
    frame.reference_matrix = matrix;
    FillWorldSpace(matrix, body);
  }
};

}  // namespace

TEST(SkinDeformerTest, AMissingUnreadableOrEmptyReferenceMeshStopsTheEvaluation) {
  SkinOverBody t;
  t.At(10);
  const float last = t.deformer.last_time();
  myo_test::LogCapture log;
  t.host.reference = nullptr;
  EXPECT_FALSE(t.At(11).succeeded);
  const std::string null_message =
      "[MyoForge][Error] Input reference mesh is null but it is required for muscle1 to compute. Aborting "
      "simulation.";
  const std::string unreadable_message =
      "[MyoForge][Error] Could not retrieve reference mesh data which is required for muscle1 to compute. Aborting "
      "simulation.";
  EXPECT_EQ(log.Count(null_message), 1u);
  EXPECT_EQ(t.deformer.last_time(), last);
  EXPECT_EQ(t.output, t.input);
  // A mesh that is there but cannot be read is not reported as missing.
  t.host.reference = &t.body;
  t.host.reference_unreadable = true;
  EXPECT_FALSE(t.At(11).succeeded);
  EXPECT_EQ(log.Count(unreadable_message), 1u);
  t.host.reference_unreadable = false;
  const MeshData empty;
  t.host.reference = &empty;
  EXPECT_FALSE(t.At(11).succeeded);
  EXPECT_EQ(log.Count(unreadable_message), 2u);
  EXPECT_EQ(log.Count(null_message), 1u);
  // With the reference back, the simulation goes on.
  t.host.reference = &t.body;
  EXPECT_TRUE(t.At(11).stepped);
}

TEST(SkinDeformerTest, TheReferenceIsReadInTheWorldSpaceOfItsHost) {
  SkinOverBody t;
  t.frame.preroll_start_time = t.frame.start_time = kFrame;
  t.frame.use_custom_stiffness = true;
  t.frame.stiffness = 1e8f;
  ASSERT_TRUE(t.At(1).succeeded);
  // The host moves the body up by 1 while "referenceMatrix" stays: the skin
  // follows the points the host hands over, hard everywhere by default.
  for (uint32_t i = 0; i < t.body.PointCount(); ++i) t.body.world_points[3 * i + 1] += 1.0f;
  for (int f = 2; f <= 4; ++f) ASSERT_TRUE(t.At(static_cast<float>(f)).stepped);
  const std::vector<float>& p = t.solver().positions_;
  for (uint32_t i = 0; i < t.mesh.PointCount(); ++i)
    ASSERT_NEAR(p[3 * i + 1], t.mesh.points[3 * i + 1] + 1.0f, 1e-3f) << i;
}

TEST(SkinDeformerTest, AReferenceThatChangesItsVertexCountIsWarnedOnceAndNotRead) {
  SkinOverBody t;
  t.frame.preroll_start_time = t.frame.start_time = kFrame;
  ASSERT_TRUE(t.At(1).succeeded);
  ASSERT_TRUE(t.At(2).stepped);
  const std::vector<float> reference = t.solver().uber_constraints_->reference_positions_;
  MeshData finer = myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeSpindle(14, 12, 10.0f, 2.0f)),
                                    myo_test::Affine(0.0f, 3.0f, 0.0f));
  const std::string warning = "[MyoForge][Warning] Reference mesh of muscle1 has " +
                              std::to_string(finer.PointCount()) + " vertices instead of the " +
                              std::to_string(t.body.PointCount()) +
                              " it was bound to. The skin keeps the last reference shape until it is initialized "
                              "again.";
  myo_test::LogCapture log;
  t.host.reference = &finer;
  for (int f = 3; f <= 5; ++f) EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
  EXPECT_EQ(log.Count(warning), 1u);
  EXPECT_EQ(t.solver().uber_constraints_->reference_positions_, reference);
  for (float v : t.solver().positions_) ASSERT_TRUE(std::isfinite(v));
  // Read again once it fits; a later change is told again.
  t.host.reference = &t.body;
  EXPECT_TRUE(t.At(6).stepped);
  t.host.reference = &finer;
  EXPECT_TRUE(t.At(7).stepped);
  EXPECT_EQ(log.Count(warning), 2u);
}

TEST(SkinDeformerTest, TheStartRebuildsFromThePrerollPose) {
  SkinOverBody t;
  t.frame.gravity = 980.0f;
  std::vector<float> hard(t.mesh.PointCount(), 0.2f);
  t.maps.SetAll("hardConstraintsList", "hardConstraints", 0, hard);
  EXPECT_TRUE(t.At(5).decision.reset_positions);
  for (int f = 6; f < 10; ++f) EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
  const std::vector<float> settled = t.solver().positions_;
  const SkinEvaluation start = t.At(10);
  EXPECT_TRUE(start.decision.initialize);
  EXPECT_FALSE(start.decision.reset_positions);
  // Rest lengths are those of the settled pose.
  const DistanceConstraints& d = *t.solver().distance_constraints_;
  const uint32_t a = d.edge_vertices_a_[0], b = d.edge_vertices_b_[0];
  EXPECT_EQ(d.rest_lengths_[0], Length(Load3(settled.data(), b) - Load3(settled.data(), a)));
  // Envelope 0: the input, though the solver runs.
  t.frame.envelope = 0.0f;
  EXPECT_TRUE(t.At(11).stepped);
  EXPECT_EQ(t.output, t.input);
  // Enable off: no time passes for the node.
  t.frame.enable = false;
  t.At(12);
  EXPECT_EQ(t.deformer.last_time(), 11 * kFrame);
}
