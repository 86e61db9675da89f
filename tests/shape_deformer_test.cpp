// The shape deformer on a time line: its fall-backs to the input geometry,
// the collider it binds on, its rest mesh, the preroll, and the activation
// plugs read by logical index and written back per point.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/maps/map_store.h"
#include "core/shape/shape_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;
using myo_test::kFrame;

namespace {

// Records what the shape deformer asks of its host and hands to it.
class ShapeHost : public myo_test::TestHost {
 public:
  using TestHost::TestHost;

  void WriteOutActivation(const std::vector<float>& activations) override { written.push_back(activations); }
  bool ReadActivationValues(std::vector<std::optional<float>>& values) override {
    values = plug_values.value_or(std::vector<std::optional<float>>{});
    return plug_values.has_value();
  }

  std::optional<std::vector<std::optional<float>>> plug_values;  // none: the list has no element
  std::vector<std::vector<float>> written;                       // every "outActivation" write
};

MeshData LiftedGrid() {
  MeshData mesh = myo_test::BuildMesh(myo_scenes::MakeGrid(8, 8, 10.0f, 10.0f));
  for (std::size_t k = 1; k < mesh.points.size(); k += 3) mesh.points[k] += 0.5f;
  return mesh;
}

// An 8 x 8 grid 0.5 above the ground, with a 6 x 6 collider grid on the
// ground at hand and another 1 lower for the rest pose of the collider.
struct ShapeOnTimeLine : myo_test::TimeLine<ShapeDeformer, ShapeFrameValues, ShapeHost> {
  MeshData collider = myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeGrid(6, 6, 10.0f, 10.0f)),
                                       IdentityMatrix());
  MeshData rest_collider = myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeGrid(6, 6, 10.0f, 10.0f)),
                                            myo_test::Affine(0.0f, -1.0f, 0.0f));

  ShapeOnTimeLine() : TimeLine(LiftedGrid()) {
    frame.preroll_start_time = frame.start_time = kFrame;
    frame.max_collision_sliding_distance = 3.0f;
    frame.collision_rest_mesh_matrix = myo_test::Affine(0.0f, -1.0f, 0.0f);
    maps.SetAll("slideCollisionConstraintsList", "slideCollisionConstraints", 0,
                std::vector<float>(Points(), 1.0f));
  }
  uint32_t Points() const { return mesh.PointCount(); }
  const std::vector<float>& CollisionDistances() const {
    return solver().slide_collision_constraints_->collision_distances_;
  }
  // Plug values by logical index; the other points have no element.
  void SetPlugValues(const std::vector<std::pair<uint32_t, float>>& elements) {
    std::vector<std::optional<float>> values(Points());
    for (const auto& [index, value] : elements) values[index] = value;
    host.plug_values = values;
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
  for (int f = 2; f <= 4; ++f) EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
  EXPECT_EQ(t.solver().attraction_targets_, t.mesh.points);
  ExpectOutputNear(t.output, t.mesh.points, 1e-6);

  // Envelope 0: the input, though the solver runs; enable off: the input,
  // and no time passes for the node.
  t.frame.envelope = 0.0f;
  t.input[1] += 1.0;
  EXPECT_TRUE(t.At(5).stepped);
  EXPECT_EQ(t.output, t.input);
  t.frame.enable = false;
  t.input[1] += 1.0;
  t.At(6);
  EXPECT_EQ(t.output, t.input);
  EXPECT_EQ(t.deformer.last_time(), 5 * kFrame);
}

TEST(ShapeDeformerTest, TheRestColliderBindsOnlyWithTheRestPoseOfTheShape) {
  // Bound on "collisionRestMesh" (1 lower) the distances are 1.5, on
  // "collisionMesh" 0.5; without a collision mesh there is no collider.
  struct Case {
    const char* what;
    bool collision_mesh, rest_mesh;
    float distance;
  };
  for (const Case& c : {Case{"both", true, true, 1.5f}, Case{"no rest mesh", true, false, 0.5f},
                        Case{"no collision mesh", false, true, 0.0f}}) {
    SCOPED_TRACE(c.what);
    ShapeOnTimeLine t;
    if (c.collision_mesh) t.host.meshes["collisionMesh"] = &t.collider;
    if (c.rest_mesh) t.host.meshes["restMesh"] = &t.mesh;
    t.host.meshes["collisionRestMesh"] = &t.rest_collider;
    t.At(1);
    EXPECT_EQ(t.deformer.has_collider(), c.collision_mesh);
    if (!c.collision_mesh) continue;
    for (float d : t.CollisionDistances()) ASSERT_NEAR(d, c.distance, 1e-5f);
    // The closest points lie on the collider as it is now.
    EXPECT_NEAR(t.solver().slide_collision_constraints_->closest_points_[1], 0.0f, 1e-6f);
  }
}

TEST(ShapeDeformerTest, ARestMeshSetsTheEdgeLengthsAtTheBuildOrEveryStepWhenAnimatable) {
  ShapeOnTimeLine t;
  MeshData rest = t.mesh;
  for (std::size_t k = 0; k < rest.points.size(); k += 3) rest.points[k] *= 2.0f;
  t.host.meshes["restMesh"] = &rest;
  const auto expect_lengths_of = [&t](const MeshData& shape) {
    const DistanceConstraints& d = *t.solver().distance_constraints_;
    for (uint32_t e = 0; e < d.RowCount(); ++e) {
      const Vec3 a = Load3(shape.points.data(), d.edge_vertices_a_[e]);
      const Vec3 b = Load3(shape.points.data(), d.edge_vertices_b_[e]);
      ASSERT_NEAR(d.rest_lengths_[e], Length(b - a), 1e-5f) << e;
    }
  };
  t.At(1);
  EXPECT_EQ(t.solver().rest_positions_, rest.points);
  expect_lengths_of(rest);
  const MeshData built = rest;
  for (std::size_t k = 2; k < rest.points.size(); k += 3) rest.points[k] *= 1.5f;

  // Off: the lengths of the build stay.
  EXPECT_TRUE(t.At(2).stepped);
  expect_lengths_of(built);
  // On: every edge takes its length on the rest mesh of this frame.
  t.frame.animatable_rest_mesh = true;
  EXPECT_TRUE(t.At(3).stepped);
  expect_lengths_of(rest);
}

TEST(ShapeDeformerTest, ThePrerollPoseBecomesRestAtTheStart) {
  ShapeOnTimeLine t;
  t.frame.preroll_start_time = 5 * kFrame;
  t.frame.start_time = 10 * kFrame;
  t.frame.gravity = 980.0f;
  t.maps.SetAll("attractForceList", "attractForce", 0, std::vector<float>(t.Points(), 0.2f));

  EXPECT_FALSE(t.At(2).stepped);  // before the preroll
  EXPECT_TRUE(t.At(5).decision.reset_positions);
  for (int f = 6; f < 10; ++f) EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
  const std::vector<float> settled = t.solver().positions_;
  ASSERT_NE(settled, t.mesh.points);
  // At the start the settled pose is kept, gives the edge lengths, and steps on.
  const ShapeEvaluation start = t.At(10);
  EXPECT_FALSE(start.decision.reset_positions);
  EXPECT_TRUE(start.stepped);
  const DistanceConstraints& d = *t.solver().distance_constraints_;
  EXPECT_EQ(d.rest_lengths_[0], Length(Load3(settled.data(), d.edge_vertices_b_[0]) -
                                       Load3(settled.data(), d.edge_vertices_a_[0])));
}

// What the activation code makes of the plugs is tested with it; here, what
// the deformer reads and hands back, and when.
TEST(ShapeHostPortsTest, PlugActivationsAreReadByLogicalIndexAndWrittenBack) {
  ShapeOnTimeLine t;
  t.frame.activation_mode = kActivationPlugValues;
  t.frame.write_out_activation = true;
  t.SetPlugValues({{0, 0.25f}, {2, 0.75f}});
  t.At(1);  // the build writes zeros first, then what it read of the plugs
  ASSERT_EQ(t.host.written.size(), 2u);
  EXPECT_EQ(std::vector<float>(t.host.written[1].begin(), t.host.written[1].begin() + 3),
            (std::vector<float>{0.25f, 0.0f, 0.75f}));
  // A step reads the plugs again.
  t.SetPlugValues({{1, 0.5f}});
  ASSERT_TRUE(t.At(2).stepped);
  EXPECT_EQ(std::vector<float>(t.host.written[2].begin(), t.host.written[2].begin() + 3),
            (std::vector<float>{0.25f, 0.5f, 0.75f}));
}
