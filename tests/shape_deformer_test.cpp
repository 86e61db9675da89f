// The shape deformer on a time line: its fall-backs to the input geometry,
// the collider it binds on, a rest mesh that moves, collisions switched off,
// and the activation outputs.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "core/maps/map_store.h"
#include "core/shape/shape_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"
#include "support/test_host.h"

using namespace myo_core;

namespace {

constexpr float kFrame = 1.0f / 24.0f;

myo_core::PolygonMesh Lifted(myo_core::PolygonMesh mesh, float height) {
  for (std::size_t k = 1; k < mesh.points.size(); k += 3) mesh.points[k] += height;
  return mesh;
}

// Records what the shape deformer hands to the host.
class ShapeHost : public myo_test::TestHost {
 public:
  explicit ShapeHost(const MeshData& mesh) : TestHost(mesh) {}
  void WriteOutActivation(const std::vector<float>& activations) override { written.push_back(activations); }
  bool ReadActivationValues(std::vector<std::optional<float>>& values) override {
    values = plug_values;
    return !plug_values.empty();
  }
  void ShowVertexColors(const std::vector<float>* rgba) override {
    shown.push_back(rgba != nullptr ? *rgba : std::vector<float>());
  }
  std::vector<std::vector<float>> written;  // every "outActivation" write
  std::vector<std::vector<float>> shown;    // every colour display, empty for "off"
  std::vector<std::optional<float>> plug_values;
};

// An 8 x 8 grid 0.5 above the ground, with a 6 x 6 collider grid on the
// ground at hand and another 1 lower for the rest pose of the collider.
struct ShapeOnTimeLine {
  MeshData shape = myo_test::BuildMesh(Lifted(myo_scenes::MakeGrid(8, 8, 10.0f, 10.0f), 0.5f));
  MeshData collider = myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeGrid(6, 6, 10.0f, 10.0f)),
                                       IdentityMatrix());
  MeshData rest_collider = myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeGrid(6, 6, 10.0f, 10.0f)),
                                            myo_test::Affine(0.0f, -1.0f, 0.0f));
  ShapeHost host{shape};
  MapStore maps;
  ShapeDeformer deformer;
  ShapeFrameValues frame;
  std::vector<double> input{shape.points.begin(), shape.points.end()};
  std::vector<double> output;

  ShapeOnTimeLine() {
    frame.preroll_start_time = frame.start_time = kFrame;
    frame.max_collision_sliding_distance = 3.0f;
    frame.collision_rest_mesh_matrix = myo_test::Affine(0.0f, -1.0f, 0.0f);
    maps.SetAll("slideCollisionConstraintsList", "slideCollisionConstraints", 0,
                std::vector<float>(shape.PointCount(), 1.0f));
  }
  ShapeEvaluation At(float f) {
    frame.current_time = f * kFrame;
    return deformer.Evaluate(frame, input, host, maps, output);
  }
  const SimshapeSolver& solver() const { return deformer.solver(); }
  const std::vector<float>& CollisionDistances() const {
    return solver().slide_collision_constraints_->collision_distances_;
  }
};

void ExpectOutputNear(const std::vector<double>& output, const std::vector<float>& expected, double tolerance) {
  ASSERT_EQ(output.size(), expected.size());
  for (std::size_t k = 0; k < output.size(); ++k) ASSERT_NEAR(output[k], expected[k], tolerance) << k;
}

}  // namespace

TEST(ShapeDeformerTest, WithoutConnectionsTheInputIsTheTargetAndForceOneKeepsIt) {
  ShapeOnTimeLine t;
  t.frame.gravity = 980.0f;
  myo_test::LogCapture log;
  EXPECT_TRUE(t.At(1).decision.initialize);
  EXPECT_EQ(log.Count("[MyoForge][Debug] Anim mesh plug has no input connections. The input geometry will be used "
                      "to compute the Simshape attractions."),
            1u);
  for (int f = 2; f <= 4; ++f) {
    EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
    EXPECT_EQ(t.solver().attraction_targets_, t.shape.points);
    ExpectOutputNear(t.output, t.shape.points, 1e-6);
  }
  EXPECT_EQ(t.solver().slide_collision_constraints_, nullptr);
  EXPECT_FALSE(t.deformer.has_collider());

  // Enable off: the input, and no time passes for the node.
  t.frame.enable = false;
  t.input[1] += 1.0;
  t.At(5);
  EXPECT_EQ(t.output, t.input);
  EXPECT_EQ(t.deformer.last_time(), 4 * kFrame);
}

TEST(ShapeDeformerTest, AnAnimMeshOfAnotherCountLeavesTheInputAsTargetSilently) {
  ShapeOnTimeLine t;
  t.frame.attraction_multiplier = 0.5f;
  MeshData raised = t.shape;
  for (std::size_t k = 1; k < raised.points.size(); k += 3) raised.points[k] += 2.0f;
  const MeshData other = myo_test::BuildMesh(myo_scenes::MakeGrid(4, 4, 10.0f, 10.0f));
  t.host.meshes["animMesh"] = &other;
  t.At(1);
  myo_test::LogCapture log;
  for (int f = 2; f <= 3; ++f) {
    EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
    EXPECT_EQ(t.solver().attraction_targets_, t.shape.points);
  }
  EXPECT_TRUE(log.lines().empty()) << log.lines().front();
  // One of the right count is the target at the next step.
  t.host.meshes["animMesh"] = &raised;
  EXPECT_TRUE(t.At(4).stepped);
  EXPECT_EQ(t.solver().attraction_targets_, raised.points);
  EXPECT_GT(t.output[1], t.input[1] + 0.5);
}

TEST(ShapeDeformerTest, WithoutIterationsFullAttractionGivesTheTarget) {
  ShapeOnTimeLine t;
  t.frame.iterations = 0;
  t.frame.gravity = 980.0f;
  t.host.meshes["collisionMesh"] = &t.collider;
  MeshData anim = t.shape;
  t.host.meshes["animMesh"] = &anim;
  t.At(1);
  for (int f = 2; f <= 4; ++f) {
    // Through the collider and squeezed: the rows would object.
    for (std::size_t k = 0; k < anim.points.size(); k += 3) {
      anim.points[k] = t.shape.points[k] * (1.0f - 0.1f * static_cast<float>(f));
      anim.points[k + 1] = t.shape.points[k + 1] - 0.5f * static_cast<float>(f);
    }
    EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
    EXPECT_EQ(t.solver().iterations_, 0u);
    ExpectOutputNear(t.output, anim.points, 1e-6);
  }
}

TEST(ShapeDeformerTest, TheRestColliderBindsOnlyWithTheRestPoseOfTheShape) {
  // Bound on "collisionRestMesh" (1 lower) the distances are 1.5, on
  // "collisionMesh" 0.5.
  {
    ShapeOnTimeLine t;
    t.host.meshes["collisionMesh"] = &t.collider;
    t.host.meshes["collisionRestMesh"] = &t.rest_collider;
    t.host.meshes["restMesh"] = &t.shape;
    t.At(1);
    EXPECT_TRUE(t.deformer.has_collider());
    for (float d : t.CollisionDistances()) ASSERT_NEAR(d, 1.5f, 1e-5f);
    // The closest points lie on the collider as it is now.
    EXPECT_NEAR(t.solver().slide_collision_constraints_->closest_points_[1], 0.0f, 1e-6f);
  }
  {
    SCOPED_TRACE("no rest mesh");
    ShapeOnTimeLine t;
    t.host.meshes["collisionMesh"] = &t.collider;
    t.host.meshes["collisionRestMesh"] = &t.rest_collider;
    t.At(1);
    for (float d : t.CollisionDistances()) ASSERT_NEAR(d, 0.5f, 1e-5f);
  }
  {
    SCOPED_TRACE("a rebuild that keeps the simulated points");
    ShapeOnTimeLine t;
    t.frame.preroll_start_time = 1 * kFrame;
    t.frame.start_time = 3 * kFrame;
    t.host.meshes["collisionMesh"] = &t.collider;
    t.host.meshes["collisionRestMesh"] = &t.rest_collider;
    t.host.meshes["restMesh"] = &t.shape;
    t.At(1);
    for (float d : t.CollisionDistances()) ASSERT_NEAR(d, 1.5f, 1e-5f);
    t.At(2);
    const ShapeEvaluation start = t.At(3);
    ASSERT_TRUE(start.decision.initialize);
    ASSERT_FALSE(start.decision.reset_positions);
    for (float d : t.CollisionDistances()) ASSERT_NEAR(d, 0.5f, 1e-4f);
  }
  {
    SCOPED_TRACE("no collision mesh");
    ShapeOnTimeLine t;
    t.host.meshes["collisionRestMesh"] = &t.rest_collider;
    t.host.meshes["restMesh"] = &t.shape;
    t.At(1);
    EXPECT_EQ(t.solver().slide_collision_constraints_, nullptr);
    EXPECT_FALSE(t.deformer.has_collider());
  }
}

TEST(ShapeDeformerTest, AnAnimatableRestMeshSetsTheEdgeLengthsOfEachStep) {
  ShapeOnTimeLine t;
  MeshData rest = t.shape;
  t.host.meshes["restMesh"] = &rest;
  t.At(1);
  const std::vector<float> built = t.solver().distance_constraints_->rest_lengths_;
  for (std::size_t k = 0; k < rest.points.size(); k += 3) rest.points[k] *= 2.0f;

  // Off: the lengths of the build stay.
  EXPECT_TRUE(t.At(2).stepped);
  EXPECT_EQ(t.solver().distance_constraints_->rest_lengths_, built);
  // On: every edge takes its length on the rest mesh of this frame.
  t.frame.animatable_rest_mesh = true;
  EXPECT_TRUE(t.At(3).stepped);
  const DistanceConstraints& d = *t.solver().distance_constraints_;
  for (uint32_t e = 0; e < d.RowCount(); ++e) {
    const Vec3 a = Load3(rest.points.data(), d.edge_vertices_a_[e]);
    const Vec3 b = Load3(rest.points.data(), d.edge_vertices_b_[e]);
    ASSERT_NEAR(d.rest_lengths_[e], Length(b - a), 1e-6f) << e;
  }
  const std::vector<float> moved = d.rest_lengths_;
  EXPECT_NE(moved, built);
  // A rest mesh of another count is passed over without a word.
  const MeshData other = myo_test::BuildMesh(myo_scenes::MakeGrid(4, 4, 1.0f, 1.0f));
  t.host.meshes["restMesh"] = &other;
  myo_test::LogCapture log;
  EXPECT_TRUE(t.At(4).stepped);
  EXPECT_EQ(d.rest_lengths_, moved);
  for (const std::string& line : log.lines()) EXPECT_EQ(line.find("[Warning]"), std::string::npos) << line;
}

TEST(ShapeDeformerTest, CollisionsSwitchedOffKeepTheGroupWithItsOldCollider) {
  ShapeOnTimeLine t;
  t.host.meshes["collisionMesh"] = &t.collider;
  t.At(1);
  ASSERT_NE(t.solver().slide_collision_constraints_, nullptr);
  const SlideCollisionConstraints* group = t.solver().slide_collision_constraints_.get();
  const std::vector<float> bound = group->collider_positions_;

  t.frame.compute_collisions = false;
  t.frame.keep_collision_orientation = false;
  FillWorldSpace(myo_test::Affine(0.0f, 0.2f, 0.0f), t.collider);
  for (int f = 2; f <= 3; ++f) EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
  EXPECT_EQ(t.solver().slide_collision_constraints_.get(), group);
  EXPECT_FALSE(t.solver().compute_collisions_);
  EXPECT_EQ(group->collider_positions_, bound);
  EXPECT_TRUE(group->keep_orientation_);

  // On again: the collider of this frame and its orientation flag are read.
  t.frame.compute_collisions = true;
  EXPECT_TRUE(t.At(4).stepped);
  EXPECT_EQ(group->collider_positions_, t.collider.world_points);
  EXPECT_FALSE(group->keep_orientation_);
}

TEST(ShapeDeformerTest, OutActivationIsWrittenOnlyWhenAskedAndActivationIsOn) {
  struct Case {
    int32_t mode;
    bool write;
    std::size_t writes_after_build;
  };
  for (const Case& c : {Case{2, true, 0}, Case{1, false, 0}, Case{1, true, 3}}) {
    SCOPED_TRACE("mode " + std::to_string(c.mode) + ", write " + std::to_string(c.write));
    ShapeOnTimeLine t;
    t.frame.activation_mode = c.mode;
    t.frame.write_out_activation = c.write;
    t.host.plug_values.assign(t.shape.PointCount(), 0.25f);
    t.At(1);
    // The build writes its zeros once, whatever the switch.
    ASSERT_GE(t.host.written.size(), 1u);
    EXPECT_EQ(t.host.written.front(), std::vector<float>(t.shape.PointCount(), 0.0f));
    const std::size_t after_build = t.host.written.size();
    for (int f = 2; f <= 4; ++f) t.At(static_cast<float>(f));
    EXPECT_EQ(t.host.written.size() - after_build, c.writes_after_build);
    if (c.writes_after_build > 0) {
      EXPECT_EQ(t.host.written.back(), std::vector<float>(t.shape.PointCount(), 0.25f));
    }
  }
}

TEST(ShapeDeformerTest, DrawActivationShowsTheColoursThenHidesThemOnce) {
  ShapeOnTimeLine t;
  t.frame.draw_activation = true;
  t.frame.activation_mode = 1;
  std::vector<std::optional<float>> values(t.shape.PointCount(), 0.0f);
  values[5] = 0.75f;
  t.host.plug_values = values;
  t.At(1);
  t.At(2);
  ASSERT_EQ(t.host.shown.size(), 2u);
  const std::vector<float>& colours = t.host.shown.back();
  ASSERT_EQ(colours.size(), 4 * t.shape.PointCount());
  EXPECT_EQ(std::vector<float>(colours.begin() + 20, colours.begin() + 24), (std::vector<float>{0.75f, 0, 0, 1}));
  EXPECT_EQ(std::vector<float>(colours.begin(), colours.begin() + 4), (std::vector<float>{0, 0, 0, 1}));

  // The switch is read by a build only.
  t.frame.draw_activation = false;
  t.At(3);
  EXPECT_EQ(t.host.shown.size(), 3u);
  EXPECT_FALSE(t.host.shown.back().empty());
  t.At(1);  // the start again: a rebuild
  ASSERT_EQ(t.host.shown.size(), 4u);
  EXPECT_TRUE(t.host.shown.back().empty());
  t.At(2);
  t.At(3);
  EXPECT_EQ(t.host.shown.size(), 4u);
}

TEST(ShapeDeformerTest, TheTimeLineIsThatOfTheSkin) {
  ShapeOnTimeLine t;
  t.frame.preroll_start_time = 5 * kFrame;
  t.frame.start_time = 10 * kFrame;
  t.frame.gravity = 980.0f;
  t.maps.SetAll("attractForceList", "attractForce", 0, std::vector<float>(t.shape.PointCount(), 0.2f));

  // Before the preroll, a first evaluation builds from the mesh; nothing steps.
  const ShapeEvaluation early = t.At(2);
  EXPECT_TRUE(early.decision.initialize);
  EXPECT_FALSE(early.stepped);
  EXPECT_TRUE(t.At(5).decision.reset_positions);
  for (int f = 6; f < 10; ++f) EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
  const std::vector<float> settled = t.solver().positions_;
  ASSERT_NE(settled, t.shape.points);
  // At the start the settled pose is kept, becomes rest, and steps on.
  const ShapeEvaluation start = t.At(10);
  EXPECT_TRUE(start.decision.initialize);
  EXPECT_FALSE(start.decision.reset_positions);
  EXPECT_TRUE(start.stepped);
  EXPECT_EQ(t.solver().rest_positions_, t.shape.points);
  const DistanceConstraints& d = *t.solver().distance_constraints_;
  EXPECT_EQ(d.rest_lengths_[0], Length(Load3(settled.data(), d.edge_vertices_b_[0]) -
                                       Load3(settled.data(), d.edge_vertices_a_[0])));
  // A jump ahead is one regular step.
  const ShapeEvaluation jump = t.At(20);
  EXPECT_TRUE(jump.stepped);
  EXPECT_FLOAT_EQ(jump.decision.dt, kFrame);
  // Back before the start frames: no step, the last state stays in the output.
  const std::vector<double> last = t.output;
  const ShapeEvaluation back = t.At(3);
  EXPECT_FALSE(back.stepped);
  EXPECT_FALSE(back.decision.initialize);
  EXPECT_EQ(t.output, last);
  // Envelope 0: the input, though the solver runs.
  t.frame.envelope = 0.0f;
  t.At(5);
  EXPECT_TRUE(t.At(6).stepped);
  EXPECT_EQ(t.output, t.input);
}
