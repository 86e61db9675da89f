// The shape solver's step against a plain sequential step, the pinning by
// attraction, collisions switched off, and the whole build: its fall-backs,
// the collider group that comes and goes, progress and masses.

#include <gtest/gtest.h>

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "core/kernels/triangle_queries.h"
#include "core/shape/shape_init.h"
#include "core/shape/shape_mass_weights.h"
#include "core/shape/simshape_solver.h"
#include "core/solver/solver_stages.h"
#include "scenes/shape_setup.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"
#include "support/test_host.h"
#include "core/maps/map_store.h"
#include "core/solver/compliance.h"

using namespace myo_core;
using myo_scenes::ShapeFrameSettings;
using myo_scenes::ShapeScene;
using myo_scenes::ShapeSetupOptions;

namespace {

void Assemble(const ShapeSetupOptions& options, ShapeScene& scene) {
  std::string error;
  ASSERT_TRUE(myo_scenes::AssembleShape(options, scene, error)) << error;
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// The collision search written the plain way: every candidate measured in
// list order, the first of the least distance kept.
void PlainCollisionSearch(bool has_transform, const std::vector<float>& positions, const Matrix& world_matrix,
                          SlideCollisionConstraints& group) {
  const std::size_t n = positions.size() / 3;
  group.sliding_inactive_.assign(n, 1);
  group.closest_triangles_.assign(n, 0);
  for (uint32_t i = 0; i < n; ++i) {
    if (group.inverse_masses_[i] < kEpsilon) continue;
    Vec3 p = Load3(positions.data(), i);
    if (has_transform) p = TransformPoint(p, world_matrix);
    bool found = false;
    Vec3 best{};
    float best_distance = 0.0f;
    uint32_t best_triangle = 0;
    for (uint32_t k = 0; k < group.sliding_counts_[i]; ++k) {
      const uint32_t t = group.sliding_triangles_[group.sliding_offsets_[i] + k];
      const uint32_t* abc = &group.collider_triangles_[3 * t];
      const float* v = group.collider_positions_.data();
      const Vec3 c = ClosestPointOnTriangle(p, Load3(v, abc[0]), Load3(v, abc[1]), Load3(v, abc[2]));
      const float distance = Length(c - p);
      if (!found || distance < best_distance) best = c, best_distance = distance, best_triangle = t, found = true;
    }
    if (!found) continue;
    group.sliding_inactive_[i] = 0;
    group.closest_triangles_[i] = best_triangle;
    Store3(group.closest_points_.data(), i, best);
  }
}

// The step as it is described, one stage after the other, every group in
// table order and point by point, nothing side by side.
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
  if (collisions) PlainCollisionSearch(has_transform, s.positions_, s.world_matrix_, *g);

  const DistanceConstraints& distance = *s.distance_constraints_;
  const ShapeConstraints& shape = *s.shape_constraints_;
  float* p = s.positions_.data();
  float* lambdas = s.lambdas_.data();
  const std::vector<float>& attraction = s.attraction_;
  for (uint32_t iteration = 0; iteration < s.iterations_; ++iteration) {
    const float* w = distance.inverse_masses_.data();
    for (uint32_t e = 0; e < distance.RowCount(); ++e) {
      const uint32_t a = distance.edge_vertices_a_[e], b = distance.edge_vertices_b_[e];
      if (!(attraction[a] < 1.0f || attraction[b] < 1.0f)) continue;
      SolveDistanceConstraint(distance.lambda_base_ + e, a, b, w[a], w[b], s.compliance_, distance.rest_lengths_[e],
                              distance.rest_length_multiplier_,
                              std::min(1.0f, distance.compression_weights_[e] * distance.compression_multiplier_),
                              std::min(1.0f, distance.stretching_weights_[e] * distance.stretching_multiplier_), p,
                              lambdas);
    }
    for (uint32_t r = 0; r < shape.RowCount() && !shape.disabled_; ++r) {
      const uint32_t a = shape.first_points_[r], b = shape.centre_points_[r], c = shape.third_points_[r];
      const float* v = shape.inverse_masses_.data();
      SolveShapeConstraint(shape.lambda_base_ + r, a, b, c, v[a], v[b], v[c], shape.group_compliance_,
                           shape.rest_distances_[r], p, lambdas);
    }
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
// that waves: attraction 1 on the left quarter (edges between pinned points
// are skipped), partly painted elsewhere, with some activation, shape rows
// everywhere, placed in the world by a rotation.
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

void PaintAttraction(ShapeScene& scene) {
  SimshapeSolver& s = scene.solver;
  for (uint32_t i = 0; i < s.point_count_; ++i) {
    const float x = scene.mesh.points[3 * i];
    s.attract_forces_[i] = x < -2.5f ? 1.0f : 0.3f;
    s.activations_[i] = x > 2.5f ? 0.2f : 0.0f;
  }
}

std::vector<float> WavingTargets(const MeshData& mesh, int frame) {
  std::vector<float> targets = mesh.points;
  for (std::size_t k = 0; k < targets.size(); k += 3)
    targets[k + 1] += 0.2f * std::sin(0.7f * targets[k] + 0.5f * static_cast<float>(frame));
  return targets;
}

Matrix RisingCollider(const ShapeSetupOptions& options, int frame) {
  return MultiplyMatrices(TranslationMatrix(0.0f, 0.08f * static_cast<float>(frame), 0.0f), options.collider_matrix);
}

// The edges that touch each point.
std::vector<std::set<uint32_t>> Neighbours(const DistanceConstraints& distance, uint32_t n) {
  std::vector<std::set<uint32_t>> out(n);
  for (uint32_t e = 0; e < distance.RowCount(); ++e) {
    out[distance.edge_vertices_a_[e]].insert(distance.edge_vertices_b_[e]);
    out[distance.edge_vertices_b_[e]].insert(distance.edge_vertices_a_[e]);
  }
  return out;
}

// Counts the progress calls of a build.
class ProgressHost : public myo_test::TestHost {
 public:
  ProgressHost() : TestHost(MeshData{}) {}
  void BeginProgress(int count, const std::string& status) override {
    begun_count = count;
    this->status = status;
  }
  void AdvanceProgress() override { ++advances; }
  void EndProgress() override { ++ends; }
  int begun_count = -1, advances = 0, ends = 0;
  std::string status;
};

}  // namespace

// StepSimshape with its schedules, lanes, bounded search and point blocks
// against the plain step: the same bits with and without a collider, on 1, 2
// and 3 threads, over grids with more rows than one window of the schedules.
TEST(ShapeStepTest, MatchesThePlainStepBitForBit) {
  const int saved = omp_get_max_threads();
  for (bool with_collider : {false, true}) {
    for (int threads : {1, 2, 3}) {
      SCOPED_TRACE("collider " + std::to_string(with_collider) + ", threads " + std::to_string(threads));
      const ShapeSetupOptions options = StepOptions(with_collider, threads);
      ShapeScene fast, plain;
      Assemble(options, fast);
      Assemble(options, plain);
      PaintAttraction(fast);
      PaintAttraction(plain);
      omp_set_num_threads(threads);
      ShapeFrameSettings frame;
      frame.stiffness = 20000.0f;
      frame.iterations = 4;
      for (int f = 1; f <= 3; ++f) {
        for (ShapeScene* scene : {&fast, &plain})
          myo_scenes::ApplyShapeFrame(frame, WavingTargets(scene->mesh, f), RisingCollider(options, f), *scene);
        StepSimshape(fast.solver);
        PlainStep(plain.solver);
      }
      omp_set_num_threads(saved);
      const SimshapeSolver& s = fast.solver;
      EXPECT_TRUE(SameBits(s.positions_, plain.solver.positions_));
      EXPECT_TRUE(SameBits(s.velocities_, plain.solver.velocities_));
      EXPECT_TRUE(SameBits(s.attraction_, plain.solver.attraction_));
      // A step ends with its positions kept and every multiplier back at 0.
      EXPECT_TRUE(SameBits(s.previous_positions_, s.positions_));
      EXPECT_EQ(s.lambdas_, std::vector<float>(s.lambdas_.size(), 0.0f));
      EXPECT_NE(s.positions_, fast.mesh.points);
      if (with_collider) {
        const SlideCollisionConstraints& group = *s.slide_collision_constraints_;
        EXPECT_TRUE(SameBits(group.closest_points_, plain.solver.slide_collision_constraints_->closest_points_));
        EXPECT_EQ(group.closest_triangles_, plain.solver.slide_collision_constraints_->closest_triangles_);
        EXPECT_GT(std::count(group.sliding_inactive_.begin(), group.sliding_inactive_.end(), 0), 1000);
      }
    }
  }
  EXPECT_EQ(omp_get_max_threads(), saved);
}

TEST(ShapeStepTest, TheColliderHoldsTheFallingPointsUp) {
  // The same fall as above with and without the collider: the rows act.
  std::vector<float> lowest;
  for (bool with_collider : {false, true}) {
    const ShapeSetupOptions options = StepOptions(with_collider, 2);
    ShapeScene scene;
    Assemble(options, scene);
    PaintAttraction(scene);
    ShapeFrameSettings frame;
    for (int f = 1; f <= 3; ++f) {
      myo_scenes::ApplyShapeFrame(frame, WavingTargets(scene.mesh, f), RisingCollider(options, f), scene);
      StepSimshape(scene.solver);
    }
    float y = 1e9f;
    for (uint32_t i = 0; i < scene.solver.point_count_; ++i) y = std::min(y, scene.solver.positions_[3 * i + 1]);
    lowest.push_back(y);
  }
  EXPECT_LT(lowest[0], 0.0f);                // without collider the free points fall through
  EXPECT_GT(lowest[1], lowest[0] + 0.05f);   // with it they are held above
}

TEST(ShapeStepTest, AFullyAttractedMeshFollowsItsTargetWhateverTheIterations) {
  // The blend p + (t - p) 1 lands on t up to the rounding of t - p; no row
  // moves a fully attracted point after it, so any number of iterations gives
  // the bits of none.
  std::vector<std::vector<float>> results;
  for (uint32_t iterations : {0u, 5u}) {
    ShapeSetupOptions options;
    options.cells = 12;
    options.collider_cells = 8;
    options.max_collision_sliding_distance = 2.0f;
    ShapeScene scene;
    Assemble(options, scene);
    ShapeFrameSettings frame;
    frame.iterations = iterations;
    frame.attraction_remap_mode = 3;  // cube root keeps 1 at 1
    for (int f = 1; f <= 3; ++f) {
      // The target stretched and lowered through the collider: every row would act.
      std::vector<float> targets = scene.mesh.points;
      for (std::size_t k = 0; k < targets.size(); k += 3) {
        targets[k] *= 1.0f + 0.1f * static_cast<float>(f);
        targets[k + 1] -= 0.4f * static_cast<float>(f);
      }
      myo_scenes::ApplyShapeFrame(frame, targets, IdentityMatrix(), scene);
      StepSimshape(scene.solver);
      for (std::size_t k = 0; k < targets.size(); ++k)
        ASSERT_NEAR(scene.solver.positions_[k], targets[k], 1e-6f) << "iterations " << iterations << ", frame " << f;
      results.push_back(scene.solver.positions_);
    }
  }
  for (int f = 0; f < 3; ++f) EXPECT_TRUE(SameBits(results[f], results[f + 3])) << "frame " << f + 1;
}

TEST(ShapeStepTest, PinnedPointsMoveOnlyThroughEdgesToFreePointsAndShapeRows) {
  ShapeSetupOptions options;
  options.cells = 12;
  ShapeScene scene;
  Assemble(options, scene);
  SimshapeSolver& s = scene.solver;
  const uint32_t n = s.point_count_;
  std::vector<bool> pinned(n);
  for (uint32_t i = 0; i < n; ++i) {
    pinned[i] = scene.mesh.points[3 * i] < 0.0f;
    s.attract_forces_[i] = pinned[i] ? 1.0f : 0.0f;
  }
  ShapeFrameSettings frame;
  frame.iterations = 4;
  std::vector<float> targets = scene.mesh.points;
  for (std::size_t k = 1; k < targets.size(); k += 3) targets[k] += 1.0f;
  myo_scenes::ApplyShapeFrame(frame, targets, IdentityMatrix(), scene);
  StepSimshape(s);

  const std::vector<std::set<uint32_t>> neighbours = Neighbours(*s.distance_constraints_, n);
  int border_moved = 0, inner = 0;
  for (uint32_t i = 0; i < n; ++i) {
    const Vec3 p = Load3(s.positions_.data(), i), t = Load3(targets.data(), i);
    if (!pinned[i]) {
      EXPECT_LT(p.y, t.y - 0.1f) << i;  // free points fall
      continue;
    }
    const bool border = std::any_of(neighbours[i].begin(), neighbours[i].end(), [&](uint32_t j) { return !pinned[j]; });
    if (border) {
      border_moved += p.x != t.x || p.y != t.y || p.z != t.z;
    } else {
      ++inner;
      EXPECT_TRUE(p.x == t.x && p.y == t.y && p.z == t.z) << i;
    }
  }
  EXPECT_GT(inner, 20);
  EXPECT_GT(border_moved, 5);

  // Shape rows look at no attraction: on a fully attracted mesh whose target
  // bends, they move the points off it.
  ShapeSetupOptions bent_options = options;
  bent_options.shape_preservation = 1.0f;
  ShapeScene bent;
  Assemble(bent_options, bent);
  ASSERT_GT(bent.solver.shape_constraints_->RowCount(), 0u);
  std::vector<float> bump = bent.mesh.points;
  for (std::size_t k = 0; k < bump.size(); k += 3)
    bump[k + 1] += std::exp(-(bump[k] * bump[k] + bump[k + 2] * bump[k + 2]));
  myo_scenes::ApplyShapeFrame(frame, bump, IdentityMatrix(), bent);
  StepSimshape(bent.solver);
  EXPECT_NE(bent.solver.positions_, bump);
}

TEST(ShapeStepTest, CollisionsSwitchedOffRunNothingOfTheGroup) {
  ShapeSetupOptions with = StepOptions(true, 2), without = StepOptions(false, 2);
  ShapeScene off, none;
  Assemble(with, off);
  Assemble(without, none);
  PaintAttraction(off);
  PaintAttraction(none);
  SlideCollisionConstraints& group = *off.solver.slide_collision_constraints_;
  off.solver.compute_collisions_ = false;
  EXPECT_FALSE(CollisionsActive(off.solver));
  const std::vector<float> closest = group.closest_points_;
  const std::vector<uint16_t> inactive = group.sliding_inactive_;
  ShapeFrameSettings frame;
  for (int f = 1; f <= 3; ++f) {
    myo_scenes::ApplyShapeFrame(frame, WavingTargets(off.mesh, f), RisingCollider(with, f), off);
    myo_scenes::ApplyShapeFrame(frame, WavingTargets(none.mesh, f), IdentityMatrix(), none);
    StepSimshape(off.solver);
    StepSimshape(none.solver);
  }
  EXPECT_TRUE(SameBits(off.solver.positions_, none.solver.positions_));
  EXPECT_TRUE(SameBits(group.closest_points_, closest));  // no search either
  EXPECT_EQ(group.sliding_inactive_, inactive);

  // The masses reach the distance and shape rows but not the group, whatever
  // the size of the collision map.
  const std::vector<float> collision_weights = group.inverse_masses_;
  const uint32_t n = off.solver.point_count_;
  off.solver.masses_.assign(n, 4.0f);
  ApplyMassesToWeights(off.solver, off.node.shape_map_, std::vector<float>(3, 1.0f));
  EXPECT_EQ(off.solver.distance_constraints_->inverse_masses_, std::vector<float>(n, 0.25f));
  EXPECT_EQ(off.solver.shape_constraints_->inverse_masses_, std::vector<float>(n, 0.125f));
  EXPECT_EQ(group.inverse_masses_, collision_weights);
  // Switched on, the group takes its share, and a map of the wrong size stops all.
  off.solver.compute_collisions_ = true;
  EXPECT_TRUE(CollisionsActive(off.solver));
  ApplyMassesToWeights(off.solver, off.node.shape_map_, off.node.collision_map_);
  EXPECT_EQ(group.inverse_masses_, std::vector<float>(n, 0.2f));
  myo_test::LogCapture log;
  off.solver.masses_.assign(n, 1.0f);
  ApplyMassesToWeights(off.solver, off.node.shape_map_, std::vector<float>(3, 1.0f));
  EXPECT_EQ(log.Count("[MyoForge][Debug] Could not apply masses to weights because of incorrect weight sizes."), 1u);
  EXPECT_EQ(off.solver.distance_constraints_->inverse_masses_, std::vector<float>(n, 0.25f));
}

namespace {

// A 6 x 6 grid 0.5 above a 5 x 5 collider grid, and the inputs of its build.
struct ShapeBuild {
  MeshData input = myo_test::BuildMesh(Lifted(myo_scenes::MakeGrid(6, 6, 10.0f, 10.0f), 0.5f));
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
  static myo_core::PolygonMesh Lifted(myo_core::PolygonMesh mesh, float height) {
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

TEST(ShapeInitTest, RestMeshFallsBackToTheInputWithItsWarnings) {
  const MeshData empty;
  const MeshData other = myo_test::BuildMesh(myo_scenes::MakeGrid(5, 6, 10.0f, 10.0f));  // 42 points
  for (const MeshData* rest : {static_cast<const MeshData*>(nullptr), &empty, &other}) {
    myo_test::LogCapture log;
    ShapeBuild b;
    b.meshes.rest = rest;
    b.Run();
    EXPECT_EQ(b.solver.rest_positions_, b.input.points);
    EXPECT_EQ(b.solver.distance_constraints_->RowCount(), b.input.EdgeCount());
    EXPECT_EQ(log.Count("[MyoForge][Warning] Could not retrieve rest mesh data. Input rest mesh will be ignored."),
              rest == &empty ? 1u : 0u);
    EXPECT_EQ(log.Count("[MyoForge][Warning] Number of vertices in the rest mesh does not match with the number of "
                        "vertices of the mesh to deform: expected 49, got 42. Input rest mesh will be ignored."),
              rest == &other ? 1u : 0u);
  }
  // A rest mesh of the input's count sets the rest shape and the edge lengths.
  ShapeBuild b;
  MeshData wide = b.input;
  for (std::size_t k = 0; k < wide.points.size(); k += 3) wide.points[k] *= 2.0f;
  b.meshes.rest = &wide;
  b.Run();
  EXPECT_EQ(b.solver.rest_positions_, wide.points);
  EXPECT_EQ(b.solver.positions_, wide.points);
  const DistanceConstraints& d = *b.solver.distance_constraints_;
  float longest = 0.0f;
  for (float length : d.rest_lengths_) longest = std::max(longest, length);
  EXPECT_NEAR(longest, 2.0f * 10.0f / 6.0f, 1e-5f);
}

TEST(ShapeInitTest, InitializeToAnimJumpsBeforeTheBindingOrAfterItWithACollisionRestMesh) {
  ShapeBuild probe;
  MeshData anim = probe.input;
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
    const SlideCollisionConstraints& group = *b.solver.slide_collision_constraints_;
    for (float distance : group.collision_distances_) ASSERT_NEAR(distance, collision_rest ? 0.5f : 1.5f, 1e-5f);

    // The first step starts from the anim pose: free of attraction and
    // gravity, the translated grid keeps its edge lengths and stays there.
    b.solver.attract_forces_.assign(b.input.PointCount(), 0.0f);
    b.solver.time_step_ = 1.0f / 24.0f;
    b.solver.iterations_ = 3;
    b.solver.attraction_targets_ = b.input.points;
    SetStiffnessAndCompliance(b.solver, 5000.0f, b.solver.time_step_);
    StepSimshape(b.solver);
    for (std::size_t k = 0; k < anim.points.size(); ++k) ASSERT_NEAR(b.solver.positions_[k], anim.points[k], 1e-4f);
  }

  // Anim meshes that cannot be used leave the input's points, with their warnings.
  const MeshData empty;
  const MeshData other = myo_test::BuildMesh(myo_scenes::MakeGrid(5, 6, 10.0f, 10.0f));
  for (const MeshData* bad : {&empty, &other}) {
    myo_test::LogCapture log;
    ShapeBuild b;
    b.meshes.anim = bad;
    b.settings.initialize_to_anim = true;
    b.Run();
    EXPECT_EQ(b.solver.positions_, b.input.points);
    EXPECT_EQ(log.Count("[MyoForge][Warning] Could not retrieve animated mesh data. Input anim mesh will be ignored."),
              bad == &empty ? 1u : 0u);
    EXPECT_EQ(log.Count("[MyoForge][Warning] Inconsistency in the amount of vertices between the animated mesh and "
                        "the simulated mesh. Input anim mesh will be ignored."),
              bad == &other ? 1u : 0u);
  }
}

TEST(ShapeInitTest, TheColliderGroupComesAndGoesWithTheCollider) {
  const std::string use = "[MyoForge][Debug] Use colliders for Simshape.";
  const std::string create = "[MyoForge][Debug] Create collider data structure.";
  const std::string remove = "[MyoForge][Debug] Delete collider data structure";
  const std::string unreadable = "[MyoForge][Warning] Could not retrieve collider mesh data.";
  myo_test::LogCapture log;
  ShapeBuild b;
  const uint32_t n = b.input.PointCount();
  b.WithCollider(&b.collider, &b.collider);
  b.Run();
  ASSERT_NE(b.solver.slide_collision_constraints_, nullptr);
  const SlideCollisionConstraints* first = b.solver.slide_collision_constraints_.get();
  EXPECT_TRUE(first->keep_orientation_);
  const uint32_t rows = b.input.EdgeCount() + b.solver.shape_constraints_->RowCount();
  EXPECT_EQ(first->lambda_base_, rows);
  EXPECT_EQ(b.solver.lambdas_.size(), rows + n);
  EXPECT_EQ(log.Count(use), 1u);
  EXPECT_EQ(log.Count(create), 1u);
  EXPECT_GT(b.node.mesh_diagonal_, 10.0f);

  // A rebuild keeps the group and binds it again.
  b.solver.slide_collision_constraints_->keep_orientation_ = false;
  b.Run();
  EXPECT_EQ(b.solver.slide_collision_constraints_.get(), first);
  EXPECT_EQ(log.Count(use), 2u);
  EXPECT_EQ(log.Count(create), 1u);
  EXPECT_EQ(b.solver.lambdas_.size(), rows + n);

  // No collider: the group goes, and so do its rows.
  b.settings.has_collider = false;
  b.Run();
  EXPECT_EQ(b.solver.slide_collision_constraints_, nullptr);
  EXPECT_FALSE(b.node.has_collider_);
  EXPECT_EQ(log.Count(remove), 1u);
  EXPECT_EQ(b.solver.lambdas_.size(), rows);

  // A collider without vertices, as the binding mesh or as the current one.
  const MeshData empty;
  for (const MeshData* binding : {static_cast<const MeshData*>(&empty), static_cast<const MeshData*>(&b.collider)}) {
    log.Clear();
    b.WithCollider(binding, binding == &empty ? &b.collider : &empty);
    b.Run();
    EXPECT_EQ(b.solver.slide_collision_constraints_, nullptr);
    EXPECT_TRUE(b.node.has_collider_);
    EXPECT_EQ(log.Count(use), 1u);
    EXPECT_EQ(log.Count(create), 1u);
    EXPECT_EQ(log.Count(unreadable), 1u);
    EXPECT_EQ(b.solver.lambdas_.size(), rows);
  }
  // A step without the group runs.
  b.solver.time_step_ = 1.0f / 24.0f;
  b.solver.attraction_targets_ = b.input.points;
  StepSimshape(b.solver);
  for (float v : b.solver.positions_) ASSERT_TRUE(std::isfinite(v));
}

TEST(ShapeInitTest, OnlyAFirstBuildShowsProgress) {
  for (bool to_anim : {false, true}) {
    ProgressHost host;
    ShapeBuild b;
    b.inputs.host = &host;
    b.settings.initialize_to_anim = to_anim;
    b.WithCollider(&b.collider, &b.collider);
    b.Run();
    EXPECT_EQ(host.begun_count, to_anim ? 6 : 7);
    EXPECT_EQ(host.advances, 6);
    EXPECT_EQ(host.ends, 1);
    EXPECT_EQ(host.status, "[MyoForge] Initializing MyoSimshape...");
    // A rebuild over existing positions shows none.
    b.inputs.read_points = false;
    b.Run();
    b.inputs.read_points = true;
    b.Run();
    EXPECT_EQ(host.advances, 6);
    EXPECT_EQ(host.ends, 1);
  }
}

TEST(ShapeInitTest, TheBuildEndsWithTheMassesInTheWeights) {
  ShapeBuild b;
  const uint32_t n = b.input.PointCount();
  std::vector<float> shape(n, 0.5f), collision(n, 0.25f);
  shape[3] = 1e-7f;      // below 1e-6: the map value itself
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
  EXPECT_EQ(b.node.collision_map_, collision);
}
