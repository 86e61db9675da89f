// The shape solver's step against a plain sequential step, collisions
// switched off, and the whole build: the rest and anim poses, the collider
// group that comes and goes, and the masses.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "core/maps/map_store.h"
#include "core/shape/shape_init.h"
#include "core/shape/shape_mass_weights.h"
#include "core/shape/simshape_solver.h"
#include "core/solver/solver_stages.h"
#include "scenes/shape_setup.h"
#include "support/log_capture.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;
using myo_scenes::ShapeFrameSettings;
using myo_scenes::ShapeScene;
using myo_scenes::ShapeSetupOptions;
using myo_test::SameBits;

namespace {

void Assemble(const ShapeSetupOptions& options, ShapeScene& scene) {
  std::string error;
  ASSERT_TRUE(myo_scenes::AssembleShape(options, scene, error)) << error;
}

// The step as it is described, one stage after the other, every group in
// table order and point by point, nothing side by side (the collision search
// has its own comparison with a plain scan). Rows whose points are all fully
// attracted are skipped; shape rows look at no attraction.
void PlainStep(SimshapeSolver& s) {
  ApplyAttenuation(s.positions_, s.previous_positions_, s.attenuation_matrix_, s.previous_attenuation_matrix_,
                   s.attenuation_velocity_factor_);
  ApplyDamping(s.velocities_, s.positions_, s.masses_, s.damping_weights_, s.global_damping_multiplier_,
               s.inertia_damper_);
  PredictPositions(s.positions_, s.velocities_, s.gravity_, s.time_step_);
  ComputeAttraction(s);
  ApplyAttraction(s);
  const bool has_transform = !IsIdentity(s.world_matrix_);
  SlideCollisionConstraints* g = s.slide_collision_constraints_.get();
  const bool collisions = g != nullptr && s.compute_collisions_ && !g->collision_distances_.empty();
  if (collisions) UpdateCollisionSlidingPoints(has_transform, s.positions_, s.world_matrix_, *g);

  float* p = s.positions_.data();
  float* lambdas = s.lambdas_.data();
  const std::vector<float>& attraction = s.attraction_;
  for (uint32_t iteration = 0; iteration < s.iterations_; ++iteration) {
    myo_test::PlainDistanceRows(*s.distance_constraints_, s.compliance_, p, lambdas, [&](uint32_t a, uint32_t b) {
      return !(attraction[a] < 1.0f || attraction[b] < 1.0f);
    });
    myo_test::PlainShapeRows(*s.shape_constraints_, p, lambdas);
    if (!collisions) continue;
    for (uint32_t i = 0; i < s.point_count_; ++i) {
      if (!(attraction[i] < 1.0f)) continue;
      SolveSlideCollisionConstraint(g->lambda_base_ + i, i, g->closest_triangles_[i], g->sliding_inactive_[i],
                                    g->inverse_masses_[i], s.compliance_, g->collision_distances_[i],
                                    g->threshold_multipliers_[i], has_transform, g->keep_orientation_,
                                    g->inside_flags_[i], s.world_matrix_, s.world_matrix_inverse_,
                                    g->closest_points_.data(), g->collider_normals_.data(), p, lambdas);
    }
  }
  UpdateVelocities(s.time_step_, s.positions_, s.previous_positions_, s.velocities_);
  std::fill(s.lambdas_.begin(), s.lambdas_.end(), 0.0f);
  s.previous_positions_ = s.positions_;
  s.previous_attenuation_matrix_ = s.attenuation_matrix_;
}

// A grid falling onto a collider grid that rises, pulled towards a target
// that waves: attraction 1 on the left quarter, 0.3 elsewhere, activation on
// the right, shape rows everywhere, placed in the world by a rotation.
ShapeSetupOptions StepOptions(bool with_collider, int32_t blocks) {
  ShapeSetupOptions options;
  options.cells = 40;
  options.height = 0.3f;
  options.shape_preservation = 0.5f;
  options.collision_weight = 0.8f;
  options.collider_cells = with_collider ? 30 : 0;
  options.max_collision_sliding_distance = 1.0f;
  options.thread_count = blocks;
  options.world_matrix = myo_test::RotationZ(0.1f, {0.2f, 0.1f, -0.3f});
  options.collider_matrix = options.world_matrix;
  return options;
}

void AssemblePainted(const ShapeSetupOptions& options, ShapeScene& scene) {
  Assemble(options, scene);
  SimshapeSolver& s = scene.solver;
  for (uint32_t i = 0; i < s.point_count_; ++i) {
    const float x = scene.mesh.points[3 * i];
    s.attract_forces_[i] = x < -2.5f ? 1.0f : 0.3f;
    s.activations_[i] = x > 2.5f ? 0.2f : 0.0f;
  }
}

// Frame f of the waving target and the rising collider.
void ApplyFrame(const ShapeFrameSettings& settings, const ShapeSetupOptions& options, int f, ShapeScene& scene) {
  std::vector<float> targets = scene.mesh.points;
  for (std::size_t k = 0; k < targets.size(); k += 3)
    targets[k + 1] += 0.2f * std::sin(0.7f * targets[k] + 0.5f * static_cast<float>(f));
  const Matrix collider =
      MultiplyMatrices(TranslationMatrix(0.0f, 0.08f * static_cast<float>(f), 0.0f), options.collider_matrix);
  myo_scenes::ApplyShapeFrame(settings, targets, collider, scene);
}

float LowestY(const std::vector<float>& positions) {
  float y = 1e9f;
  for (std::size_t k = 1; k < positions.size(); k += 3) y = std::min(y, positions[k]);
  return y;
}

}  // namespace

// StepSimshape with its schedules, lanes, bounded search and point blocks
// against the plain step: the same bits with and without a collider, on 1, 2
// and 3 threads, over grids with more rows than one window of the schedules.
TEST(ShapeStepTest, MatchesThePlainStepBitForBitAndTheColliderHoldsThePointsUp) {
  float lowest[2] = {0.0f, 0.0f};
  for (bool with_collider : {false, true}) {
    for (int threads : {1, 2, 3}) {
      SCOPED_TRACE("collider " + std::to_string(with_collider) + ", threads " + std::to_string(threads));
      const ShapeSetupOptions options = StepOptions(with_collider, threads);
      myo_test::ScopedLevelThreads scoped(threads);  // windowed schedules on one thread, levels shared on more
      ShapeScene fast, plain;
      AssemblePainted(options, fast);
      AssemblePainted(options, plain);
      ShapeFrameSettings frame;
      frame.stiffness = 20000.0f;
      frame.iterations = 4;
      for (int f = 1; f <= 3; ++f) {
        ApplyFrame(frame, options, f, fast);
        ApplyFrame(frame, options, f, plain);
        StepSimshape(fast.solver);
        PlainStep(plain.solver);
      }
      const SimshapeSolver& s = fast.solver;
      EXPECT_TRUE(SameBits(s.positions_, plain.solver.positions_));
      EXPECT_TRUE(SameBits(s.velocities_, plain.solver.velocities_));
      // A step ends with its positions kept and every multiplier back at 0.
      EXPECT_TRUE(SameBits(s.previous_positions_, s.positions_));
      EXPECT_EQ(s.lambdas_, std::vector<float>(s.lambdas_.size(), 0.0f));
      lowest[with_collider] = LowestY(s.positions_);
    }
  }
  EXPECT_LT(lowest[0], 0.0f);               // without collider the free points fall through
  EXPECT_GT(lowest[1], lowest[0] + 0.05f);  // with it they are held above
}

TEST(ShapeStepTest, CollisionsSwitchedOffRunNothingOfTheGroup) {
  const ShapeSetupOptions with = StepOptions(true, 2), without = StepOptions(false, 2);
  ShapeScene off, none;
  AssemblePainted(with, off);
  AssemblePainted(without, none);
  SlideCollisionConstraints& group = *off.solver.slide_collision_constraints_;
  off.solver.compute_collisions_ = false;
  EXPECT_FALSE(CollisionsActive(off.solver));
  const std::vector<float> closest = group.closest_points_;
  ShapeFrameSettings frame;
  for (int f = 1; f <= 3; ++f) {
    ApplyFrame(frame, with, f, off);
    ApplyFrame(frame, without, f, none);
    StepSimshape(off.solver);
    StepSimshape(none.solver);
  }
  EXPECT_TRUE(SameBits(off.solver.positions_, none.solver.positions_));
  EXPECT_TRUE(SameBits(group.closest_points_, closest));  // no search either
}

namespace {

// A 6 x 6 grid 0.5 above a 5 x 5 collider grid, and the inputs of its build.
struct ShapeBuild {
  MeshData input = Lifted(myo_test::BuildMesh(myo_scenes::MakeGrid(6, 6, 10.0f, 10.0f)), 0.5f);
  MeshData collider = myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeGrid(5, 5, 10.0f, 10.0f)),
                                       IdentityMatrix());
  MapStore maps;
  ShapeBuildMeshes meshes;
  ShapeBuildSettings settings;
  ShapeAssemblyInputs inputs;
  ShapeNodeState node;
  SimshapeSolver solver;

  ShapeBuild() {
    meshes.input = &input;
    inputs.node_name = "shape1";
    inputs.thread_count = 2;
    settings.max_collision_sliding_distance = 3.0f;
    maps.SetAll("slideCollisionConstraintsList", "slideCollisionConstraints", 0,
                std::vector<float>(input.PointCount(), 1.0f));
  }
  static MeshData Lifted(MeshData mesh, float height) {
    for (std::size_t k = 1; k < mesh.points.size(); k += 3) mesh.points[k] += height;
    return mesh;
  }
  void WithCollider(const MeshData* binding, const MeshData* current) {
    settings.has_collider = true;
    meshes.binding_collider = binding;
    meshes.collider = current;
  }
  void Run() { InitSimshape(meshes, settings, maps, inputs, node, solver); }
};

}  // namespace

TEST(ShapeInitTest, InitializeToAnimJumpsBeforeTheBindingOrAfterItWithACollisionRestMesh) {
  MeshData anim = ShapeBuild().input;
  for (std::size_t k = 1; k < anim.points.size(); k += 3) anim.points[k] += 1.0f;  // 1.5 over the collider
  for (bool collision_rest : {false, true}) {
    SCOPED_TRACE(collision_rest ? "with a collision rest mesh" : "without a collision rest mesh");
    ShapeBuild b;
    b.WithCollider(&b.collider, &b.collider);
    b.meshes.collision_rest_connected = collision_rest;
    b.meshes.anim = &anim;
    b.settings.initialize_to_anim = true;
    b.Run();
    EXPECT_EQ(b.solver.positions_, anim.points);
    EXPECT_EQ(b.solver.previous_positions_, anim.points);
    EXPECT_EQ(b.solver.rest_positions_, b.input.points);
    for (float distance : b.solver.slide_collision_constraints_->collision_distances_)
      ASSERT_NEAR(distance, collision_rest ? 0.5f : 1.5f, 1e-5f);
  }
}

TEST(ShapeInitTest, TheColliderGroupComesAndGoesWithTheCollider) {
  ShapeBuild b;
  const uint32_t n = b.input.PointCount();
  b.WithCollider(&b.collider, &b.collider);
  b.Run();
  ASSERT_NE(b.solver.slide_collision_constraints_, nullptr);
  const SlideCollisionConstraints* first = b.solver.slide_collision_constraints_.get();
  const uint32_t rows = b.input.EdgeCount() + b.solver.shape_constraints_->RowCount();
  EXPECT_EQ(first->lambda_base_, rows);
  EXPECT_EQ(b.solver.lambdas_.size(), rows + n);

  // A rebuild keeps the group and binds it again.
  b.Run();
  EXPECT_EQ(b.solver.slide_collision_constraints_.get(), first);
  EXPECT_EQ(b.solver.lambdas_.size(), rows + n);

  // No collider, or one without vertices: no group, and none of its rows.
  const MeshData empty;
  for (const MeshData* binding : {static_cast<const MeshData*>(nullptr), &empty}) {
    b.settings.has_collider = binding != nullptr;
    b.meshes.binding_collider = binding;
    b.Run();
    EXPECT_EQ(b.solver.slide_collision_constraints_, nullptr);
    EXPECT_EQ(b.solver.lambdas_.size(), rows);
  }
  // A step without the group runs.
  b.solver.time_step_ = 1.0f / 24.0f;
  b.solver.attraction_targets_ = b.input.points;
  StepSimshape(b.solver);
  for (float v : b.solver.positions_) ASSERT_TRUE(std::isfinite(v));
}

TEST(ShapeInitTest, TheBuildEndsWithTheMassesInTheWeights) {
  ShapeBuild b;
  const uint32_t n = b.input.PointCount();
  std::vector<float> shape(n, 0.5f), collision(n, 0.25f);
  shape[3] = 1e-7f;  // below 1e-6: the map value itself
  collision[4] = 0.0f;
  b.maps.SetAll("shapePreservationList", "shapePreservation", 0, shape);
  b.maps.SetAll("slideCollisionConstraintsList", "slideCollisionConstraints", 0, collision);
  b.maps.SetAll("massList", "mass", 0, std::vector<float>(n, 3.0f));
  b.WithCollider(&b.collider, &b.collider);
  b.Run();
  const SimshapeSolver& s = b.solver;
  ASSERT_EQ(s.masses_.size(), n);
  for (uint32_t i = 0; i < n; ++i) {
    const float k = 1.0f / s.masses_[i];
    EXPECT_EQ(s.distance_constraints_->inverse_masses_[i], k) << i;
    EXPECT_EQ(s.shape_constraints_->inverse_masses_[i], i == 3 ? 1e-7f : 0.5f * k) << i;
    EXPECT_EQ(s.slide_collision_constraints_->inverse_masses_[i], i == 4 ? 0.0f : 0.25f * k) << i;
  }
  EXPECT_NE(s.masses_[0], 1.0f);  // the painted masses and the area made them
}
