// Attachments to and slides on target meshes: the candidate walk, the
// closest-point update, the two kernels, the build from maps, and muscles
// that follow a moving target.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "core/kernels/geometry_constraints.h"
#include "core/maps/map_store.h"
#include "core/muscle/muscle_assembly.h"
#include "scenes/muscle_meshes.h"
#include "scenes/muscle_setup.h"
#include "scenes/targeted_muscle.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"

using namespace myo_core;
using namespace myo_scenes;

namespace {

TargetMesh TargetOf(const MeshData& mesh, const Matrix& matrix = IdentityMatrix()) {
  TargetMesh target;
  EXPECT_TRUE(BuildTargetMesh(myo_test::Placed(mesh, matrix), matrix, target));
  return target;
}

std::vector<int32_t> Walk(int32_t triangle, float radius, Vec3 centre, const TargetMesh& target,
                          CandidateSearchScratch& visited) {
  std::vector<int32_t> result;
  SearchCandidateTriangles(triangle, radius, centre, target, target.triangle_vertices_, true, visited, result);
  return result;
}

// The closest point of each row as the plain scan of its list gives it: the
// first candidate at the least distance.
bool ScanCandidates(Vec3 p, const TargetMesh& target, const int32_t* list, int32_t count, Vec3& best) {
  float best_distance = 0.0f;
  bool found = false;
  for (int32_t k = 0; k < count; ++k) {
    const int32_t* abc = &target.triangle_vertices_[3 * list[k]];
    const Vec3 c = ClosestPointOnTriangle(p, Load3(target.vertices_.data(), abc[0]),
                                          Load3(target.vertices_.data(), abc[1]), Load3(target.vertices_.data(), abc[2]));
    const float distance = Length(c - p);
    if (!found || distance < best_distance) {
      best = c;
      best_distance = distance;
      found = true;
    }
  }
  return found;
}

// Bit-for-bit equality of two points.
bool SameBits(Vec3 a, Vec3 b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

// A slide table over one target of `points` rows, every row weighted 1.
SlideOnGeometryConstraints SlideTable(uint32_t points, const std::vector<std::vector<int32_t>>& lists) {
  SlideOnGeometryConstraints group;
  group.inverse_masses_.assign(points, 1.0f);
  group.distances_.assign(points, 0.0f);
  group.closest_points_.assign(3 * points, 0.0f);
  for (const auto& list : lists) {
    group.candidate_offsets_.push_back(static_cast<int32_t>(group.candidates_.size()));
    group.candidate_counts_.push_back(static_cast<int32_t>(list.size()));
    group.candidates_.insert(group.candidates_.end(), list.begin(), list.end());
  }
  return group;
}

}  // namespace

TEST(CandidateSearchTest, AReachOverTheWholeMeshListsEveryTriangleOnce) {
  // Deep enough that a walk by recursion would risk the call stack.
  const MeshData grid = myo_test::BuildMesh(MakeGrid(250, 250, 10.0f, 10.0f));
  const TargetMesh target = TargetOf(grid);
  CandidateSearchScratch visited;
  std::vector<int32_t> list = Walk(0, 1000.0f, {0.0f, 0.0f, 0.0f}, target, visited);
  ASSERT_EQ(list.size(), target.TriangleCount());
  std::sort(list.begin(), list.end());
  for (uint32_t g = 0; g < list.size(); ++g) ASSERT_EQ(list[g], static_cast<int32_t>(g));
}

TEST(UpdateClosestPointsTest, RowsWithoutWeightCandidatesOrTargetStayFlagged) {
  const MeshData grid = myo_test::BuildMesh(MakeGrid(4, 4, 4.0f, 4.0f));
  std::vector<TargetMesh> targets = {TargetOf(grid)};
  const std::vector<float> points = {0.1f, 1.0f, 0.2f, 0.5f, 1.0f, 0.5f, -0.5f, 2.0f, 0.3f};
  SlideOnGeometryConstraints group = SlideTable(3, {{10, 11}, {12, 13}, {}});
  group.inverse_masses_[1] = 0.0f;
  group.closest_points_[3] = 42.0f;
  UpdateClosestPoints(points, IdentityMatrix(), targets, group);
  EXPECT_EQ(group.row_flags_, (std::vector<uint16_t>{0, 1, 1}));
  EXPECT_EQ(group.closest_points_[3], 42.0f);  // a skipped row keeps its old point
  EXPECT_EQ(group.closest_points_[1], 0.0f);   // on the grid plane

  // A target missing this frame leaves all its rows inert.
  UpdateTargets(targets, {TargetInput{"grid", 0, nullptr, IdentityMatrix()}}, false);
  UpdateClosestPoints(points, IdentityMatrix(), targets, group);
  EXPECT_EQ(group.row_flags_, (std::vector<uint16_t>{1, 1, 1}));
}

TEST(UpdateClosestPointsTest, RandomListsGiveThePlainScanToTheBit) {
  // Crumpled grids (thin and folded triangles among them) far from the
  // origin and near it, random lists in random order, points on, near and
  // far from the surface, and several rounds as the points move, so that the
  // remembered winners go stale; the last round through a solver matrix.
  std::mt19937 random(5);
  std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
  const Vec3 offsets[] = {{0.0f, 0.0f, 0.0f}, {1000.0f, -300.0f, 40.0f}, {-0.01f, 5000.0f, 2.0f}};
  for (const Vec3 offset : offsets)
    for (float crumple : {0.05f, 0.6f}) {
      PolygonMesh polygons = MakeGrid(10, 10, 10.0f, 10.0f);
      for (std::size_t v = 0; v < polygons.points.size(); v += 3) {
        polygons.points[v] += crumple * unit(random) + offset.x;
        polygons.points[v + 1] += 2.0f * crumple * unit(random) + offset.y;
        polygons.points[v + 2] += crumple * unit(random) + offset.z;
      }
      const MeshData mesh = myo_test::BuildMesh(polygons);
      const std::vector<TargetMesh> targets = {TargetOf(mesh)};
      const TargetMesh& target = targets[0];
      const int32_t triangles = static_cast<int32_t>(target.TriangleCount());
      const uint32_t n = 300;
      std::vector<std::vector<int32_t>> lists(n);
      std::vector<float> positions(3 * n);
      for (uint32_t i = 0; i < n; ++i) {
        const int32_t start = static_cast<int32_t>(random() % triangles);
        const int32_t size = 1 + static_cast<int32_t>(random() % 60);
        for (int32_t k = 0; k < size; ++k) lists[i].push_back((start + static_cast<int32_t>(random() % 40)) % triangles);
        std::sort(lists[i].begin(), lists[i].end());
        lists[i].erase(std::unique(lists[i].begin(), lists[i].end()), lists[i].end());
        std::shuffle(lists[i].begin(), lists[i].end(), random);
        // A point over a corner of the start triangle, on the surface for some rows.
        const Vec3 corner = Load3(target.vertices_.data(), target.triangle_vertices_[3 * start]);
        const float lift = i % 5 == 0 ? 0.0f : (i % 5 == 1 ? 3.0f * unit(random) : 0.3f * unit(random));
        Store3(positions.data(), i, corner + Vec3{0.4f * unit(random), lift, 0.4f * unit(random)});
      }
      SlideOnGeometryConstraints group = SlideTable(n, lists);
      for (int round = 0; round < 3; ++round) {
        const Matrix world = round == 2 ? TranslationMatrix(0.05f, -0.02f, 0.0f) : IdentityMatrix();
        UpdateClosestPoints(positions, world, targets, group);
        for (uint32_t i = 0; i < n; ++i) {
          Vec3 expected{};
          ASSERT_TRUE(ScanCandidates(TransformPoint(Load3(positions.data(), i), world), target, lists[i].data(),
                                     static_cast<int32_t>(lists[i].size()), expected));
          ASSERT_TRUE(SameBits(Load3(group.closest_points_.data(), i), expected)) << "row " << i << " round " << round;
        }
        for (float& x : positions) x += 0.2f * unit(random);
      }
    }
}

TEST(SlideOnGeometryKernelTest, TheStageGivesTheBitsOfOneRowAtATime) {
  // Two targets over 13 points (eight at a time and a rest), with flagged and
  // weightless rows, through a world matrix and without.
  const uint32_t n = 13, targets = 2, rows = targets * n;
  std::mt19937 random(11);
  std::uniform_real_distribution<float> coordinate(-2.0f, 2.0f);
  SlideOnGeometryConstraints group;
  group.lambda_base_ = 3;
  for (uint32_t row = 0; row < rows; ++row) {
    group.inverse_masses_.push_back(row % 5 == 2 ? 0.0f : 0.2f + 0.1f * (row % 4));
    group.row_flags_.push_back(row % 7 == 3 ? 1 : 0);
    group.distances_.push_back(0.1f * (row % 6));
    for (int k = 0; k < 3; ++k) group.closest_points_.push_back(coordinate(random));
  }
  group.candidate_counts_.assign(rows, 0);
  group.candidate_offsets_.assign(rows, 0);
  std::vector<float> start(3 * n);
  for (float& x : start) x = coordinate(random);
  const Matrix world = myo_test::RotationZ(0.3f, {1.0f, -0.5f, 2.0f});
  for (bool has_transform : {false, true}) {
    std::vector<float> staged = start, single = start;
    std::vector<float> staged_lambdas(3 + rows, 0.5f), single_lambdas(3 + rows, 0.5f);
    for (int pass = 0; pass < 3; ++pass) {
      SolveSlideOnGeometryRows(group, targets, n, 0.7f, has_transform, world, InvertMatrix(world), staged.data(),
                               staged_lambdas.data());
      for (uint32_t row = 0; row < rows; ++row)
        SolveSlideOnGeometry(3 + row, row % n, row, group.row_flags_[row], group.inverse_masses_[row], 0.7f,
                             group.distances_[row], has_transform, world, InvertMatrix(world),
                             group.closest_points_.data(), single.data(), single_lambdas.data());
    }
    EXPECT_EQ(staged, single);
    EXPECT_EQ(staged_lambdas, single_lambdas);
    EXPECT_NE(staged, start);
  }
}

TEST(GeometryBuildTest, UnusableTargetsAreWarnedAndLeftInert) {
  myo_test::LogCapture log;
  const MeshData grid = myo_test::BuildMesh(MakeGrid(4, 4, 4.0f, 4.0f));
  MeshData broken = grid;
  broken.polygon_triangle_counts.pop_back();
  MuscleSolver solver;
  solver.point_count_ = 2;
  solver.positions_ = {0.1f, 1.0f, 0.2f, -0.3f, 0.5f, 0.4f};
  solver.lambdas_.assign(5, 0.0f);  // rows of the groups built before
  MapStore maps;
  for (uint32_t index : {2u, 5u, 7u}) {
    maps.SetAll("targets", "attachmentToGeoConstraints", index, {0.3f, 0.3f});
    maps.SetAll("targets", "slideOnGeometryConstraints", index, {0.3f, 0.3f});
  }
  const MeshData floor = myo_test::Placed(grid, TranslationMatrix(0.0f, -1.0f, 0.0f));
  const std::vector<TargetInput> inputs = {{"ghost", 2, nullptr, IdentityMatrix()},
                                           {"broken", 5, &broken, IdentityMatrix()},
                                           {"floor", 7, &floor, TranslationMatrix(0.0f, -1.0f, 0.0f)}};
  MuscleNodeState node;
  BuildGeometryConstraints(inputs, "muscle1", maps, 0, 2.0f, 2, IdentityMatrix(), node, solver);

  EXPECT_EQ(log.Count("[MyoForge][Warning] Target ghost in muscle1 is null or not recognized. This target will "
                      "be ignored."),
            1u);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Target broken mesh data in muscle1 could not be retrieved. This "
                      "target will be ignored."),
            1u);
  // Six rows each, after the rows that were there; only the usable target's are weighted.
  EXPECT_EQ(solver.lambdas_.size(), 17u);
  EXPECT_EQ(node.attachment_to_geo_map_, (std::vector<float>{0, 0, 0, 0, 0.3f, 0.3f}));
  EXPECT_EQ(node.slide_on_geometry_map_, (std::vector<float>{0, 0, 0, 0, 0.3f, 0.3f}));
}

namespace {

// A spindle along x resting 1 above a grid (world y = -3 at rest), sliding on
// it or attached to it.
std::unique_ptr<TargetedMuscle> SpindleOnGrid(float slide, float attach, int32_t mode) {
  auto scene = std::make_unique<TargetedMuscle>();
  TargetedMuscleOptions options;
  options.slide_weight = slide;
  options.attachment_weight = attach;
  options.max_sliding_distance = 2.0f;
  options.target_matrix = TranslationMatrix(0.0f, -3.0f, 0.0f);
  std::string error;
  EXPECT_TRUE(AssembleTargetedMuscle(MakeSpindle(8, 10, 10.0f, 2.0f), MakeGrid(24, 24, 24.0f, 24.0f), options,
                                     *scene, error));
  FrameSettings frame;
  frame.gravity_y = 0.0f;
  ApplyFrameSettings(frame, scene->solver);
  scene->solver.sliding_constraints_mode_ = mode;
  return scene;
}

float HeightAbove(const MuscleSolver& solver, uint32_t i) {
  return solver.positions_[3 * i + 1] - solver.targets_[0].vertices_[1];
}

}  // namespace

TEST(GeometryStepTest, FastAndQualityAgreeWithOneIterationAndDifferWithMore) {
  for (uint32_t iterations : {1u, 6u}) {
    const auto fast = SpindleOnGrid(1.0f, 0.0f, kSlidingFast);
    const auto quality = SpindleOnGrid(1.0f, 0.0f, kSlidingQuality);
    for (TargetedMuscle* scene : {fast.get(), quality.get()}) {
      scene->solver.iterations_ = iterations;
      scene->MoveTarget(myo_test::RotationZ(0.15f, {0.0f, -2.4f, 0.0f}));
      Step(scene->solver);
    }
    if (iterations == 1)
      EXPECT_EQ(fast->solver.positions_, quality->solver.positions_);
    else
      EXPECT_NE(fast->solver.positions_, quality->solver.positions_);
  }
}

TEST(GeometryStepTest, ASlidingSpindleKeepsItsDistanceWhileTheGridMoves) {
  const auto scene = SpindleOnGrid(1.0f, 0.0f, kSlidingFast);
  MuscleSolver& solver = scene->solver;
  const uint32_t n = solver.point_count_;
  std::vector<float> rest_heights(n);
  for (uint32_t i = 0; i < n; ++i) rest_heights[i] = HeightAbove(solver, i);
  const std::vector<float> rest = solver.positions_;

  // The grid rises by 1 and slides sideways by 1 (within the sliding reach)
  // over 24 frames, then holds.
  for (int frame = 1; frame <= 40; ++frame) {
    const float t = std::min(frame, 24) / 24.0f;
    scene->MoveTarget(TranslationMatrix(t, -3.0f + t, 0.0f));
    Step(solver);
  }
  float worst_height = 0.0f, worst_sideways = 0.0f;
  for (uint32_t i = 0; i < n; ++i) {
    worst_height = std::max(worst_height, std::fabs(HeightAbove(solver, i) - rest_heights[i]));
    worst_sideways = std::max(worst_sideways, std::fabs(solver.positions_[3 * i] - rest[3 * i]));
  }
  // The muscle rose with the surface, and did not follow it sideways.
  EXPECT_LT(worst_height, 0.02f);
  EXPECT_LT(worst_sideways, 0.02f);
}

TEST(GeometryStepTest, AHardAttachedSpindleFollowsTheGridAllTheWay) {
  const auto scene = SpindleOnGrid(0.0f, 1.0f, kSlidingFast);
  MuscleSolver& solver = scene->solver;
  const std::vector<float> rest = solver.positions_;
  const Matrix moved = TranslationMatrix(3.0f, -2.0f, 0.5f);
  for (int frame = 1; frame <= 3; ++frame) {
    scene->MoveTarget(moved);
    Step(solver);
  }
  for (uint32_t i = 0; i < solver.point_count_; ++i)
    myo_test::ExpectVec(Load3(solver.positions_.data(), i), Load3(rest.data(), i) + Vec3{3.0f, 1.0f, 0.5f}, 1e-4f);
}
