// The binding of the slide collisions to a collider mesh, its failures and
// messages, and points that fall onto a collider.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "core/kernels/distance_constraints.h"
#include "core/kernels/slide_collision_constraints.h"
#include "core/maps/map_store.h"
#include "core/solver/mass_weights.h"
#include "scenes/muscle_meshes.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_geometry.h"

namespace {

using myo_core::Matrix;
using myo_core::MeshData;
using myo_core::SlideCollisionConstraints;
using myo_core::Vec3;

// The closest point of all of a mesh's world-space triangles, measured one by one.
float NearestDistance(Vec3 p, const MeshData& mesh) {
  float best = INFINITY;
  const float* v = mesh.world_points.data();
  for (uint32_t t = 0; t < mesh.TriangleCount(); ++t) {
    const int32_t* abc = &mesh.triangle_vertices[3 * t];
    const Vec3 c = myo_core::ClosestPointOnTriangle(p, myo_core::Load3(v, abc[0]), myo_core::Load3(v, abc[1]),
                                                    myo_core::Load3(v, abc[2]));
    best = std::min(best, myo_core::Length(c - p));
  }
  return best;
}

// A spindle collider along x (length 6, radius up to 1.2, normals outward)
// and points around it: at each of a few places along its axis and around
// it, one point at half the local radius (inside) and one at one and a half
// times it (outside).
struct CollisionBinding {
  MeshData collider =
      myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeSpindle(12, 16, 6.0f, 1.2f)), myo_core::IdentityMatrix());
  MeshData current = collider;
  myo_core::MapStore maps;
  myo_core::SlideCollisionBindingInput input;
  std::vector<float> positions;  // world space while the solver's matrix is the identity
  std::vector<bool> inside;
  std::vector<float> lambdas = {9.0f, 9.0f};  // rows of groups built before
  std::vector<float> collision_map;
  float diagonal = -1.0f;
  SlideCollisionConstraints group;

  CollisionBinding() {
    input.binding_mesh = &collider;
    input.current_mesh = &current;
    input.max_distance = 0.8f;
    for (float x : {-2.1f, -0.7f, 0.4f, 1.9f})
      for (float angle : {0.3f, 2.0f, 4.1f}) {
        const float radius = 1.2f * std::sin(3.14159265f * (x / 6.0f + 0.5f));
        for (float scale : {0.5f, 1.5f}) {
          positions.insert(positions.end(),
                           {x, scale * radius * std::cos(angle), scale * radius * std::sin(angle)});
          inside.push_back(scale < 1.0f);
        }
      }
    maps.SetAll("slideCollisionConstraintsList", "slideCollisionConstraints", 0, std::vector<float>(Count(), 1.0f));
  }
  uint32_t Count() const { return static_cast<uint32_t>(positions.size() / 3); }
  bool Bind() {
    return myo_core::InitSlideCollisionConstraints(input, maps, positions, lambdas, collision_map, diagonal, group);
  }
};

// Whether point i's closest point lies on the collider triangle it records.
bool OnRecordedTriangle(const CollisionBinding& b, uint32_t i) {
  const Vec3 q = myo_core::Load3(b.group.closest_points_.data(), i);
  const int32_t* abc = &b.collider.triangle_vertices[3 * b.group.closest_triangles_[i]];
  const float* v = b.collider.world_points.data();
  const Vec3 on = myo_core::ClosestPointOnTriangle(q, myo_core::Load3(v, abc[0]), myo_core::Load3(v, abc[1]),
                                                   myo_core::Load3(v, abc[2]));
  return myo_core::Length(on - q) < 1e-5f;
}

void ExpectEveryPointInactiveWithoutList(const SlideCollisionConstraints& group, uint32_t n) {
  EXPECT_EQ(group.sliding_inactive_, std::vector<uint16_t>(n, 1));
  EXPECT_EQ(group.sliding_counts_, std::vector<uint32_t>(n, 0));
  EXPECT_TRUE(group.sliding_triangles_.empty());
  EXPECT_TRUE(group.sliding_edges_.empty());
}

TEST(SlideCollisionBinding, BindsEachPointToItsClosestColliderPointAndSide) {
  CollisionBinding b;
  ASSERT_TRUE(b.Bind());
  const uint32_t n = b.Count();
  EXPECT_EQ(b.group.lambda_base_, 2u);
  EXPECT_EQ(b.lambdas.size(), 2u + n);
  EXPECT_EQ(b.group.inside_flags_, b.inside);
  for (uint32_t i = 0; i < n; ++i) {
    const Vec3 p = myo_core::Load3(b.positions.data(), i);
    EXPECT_NEAR(b.group.collision_distances_[i], NearestDistance(p, b.collider), 1e-5f) << "point " << i;
    // The closest point lies on the recorded triangle, at the bound distance.
    const Vec3 q = myo_core::Load3(b.group.closest_points_.data(), i);
    const uint32_t t = b.group.closest_triangles_[i];
    EXPECT_TRUE(OnRecordedTriangle(b, i)) << "point " << i;
    EXPECT_NEAR(myo_core::Length(p - q), b.group.collision_distances_[i], 1e-5f);
    // The list holds that triangle and its neighbours within reach.
    const auto list = b.group.sliding_triangles_.begin() + b.group.sliding_offsets_[i];
    EXPECT_GT(b.group.sliding_counts_[i], 1u);
    EXPECT_NE(std::find(list, list + b.group.sliding_counts_[i], t), list + b.group.sliding_counts_[i]);
    EXPECT_EQ(b.group.sliding_inactive_[i], 0);
  }
}

TEST(SlideCollisionBinding, PointsWithoutWeightOrReachHaveNoList) {
  CollisionBinding b;
  std::vector<float> map(b.Count(), 1.0f);
  map[0] = 0.0f;
  map[5] = 0.0000009f;
  b.maps.SetAll("slideCollisionConstraintsList", "slideCollisionConstraints", 0, map);
  ASSERT_TRUE(b.Bind());
  for (uint32_t i : {0u, 5u}) {
    EXPECT_EQ(b.group.sliding_inactive_[i], 1);
    EXPECT_EQ(b.group.sliding_counts_[i], 0u);
  }
  EXPECT_EQ(b.group.sliding_inactive_[1], 0);

  // No reach, or no map: nobody collides, and the step's stages do nothing.
  for (bool no_map : {false, true}) {
    b.input.max_distance = no_map ? 0.8f : 0.0f;
    if (no_map) b.maps.Clear();
    const uint32_t rows_before = static_cast<uint32_t>(b.lambdas.size());
    ASSERT_TRUE(b.Bind());
    EXPECT_EQ(b.lambdas.size(), rows_before + b.Count());
    ExpectEveryPointInactiveWithoutList(b.group, b.Count());
    myo_core::UpdateCollisionSlidingPoints(false, b.positions, myo_core::IdentityMatrix(), b.group);
    std::vector<float> positions = b.positions;
    myo_core::SolveSlideCollisionRows(b.group, 0, b.Count(), std::vector<float>(b.Count(), 0.0f), 0.0f, false,
                                      myo_core::IdentityMatrix(), myo_core::IdentityMatrix(), positions.data(),
                                      b.lambdas.data());
    EXPECT_EQ(positions, b.positions);
  }
}

TEST(SlideCollisionBinding, AnUnmatchedPolygonTableStopsTheBindingWithOneError) {
  CollisionBinding b;
  ASSERT_TRUE(b.Bind());  // lists of an earlier binding must not survive
  myo_test::LogCapture log;
  b.collider.polygon_triangle_counts.pop_back();
  EXPECT_FALSE(b.Bind());
  const uint32_t n = b.Count();
  EXPECT_EQ(log.Count("[MyoForge][Error] Unexpected number of polygons during reference mesh processing"), 1u);
  for (const std::string& line : log.lines())
    EXPECT_EQ(line.find("[MyoForge][Warning]"), std::string::npos) << line;
  // The rows are laid out, every point is inactive, and stays so.
  EXPECT_EQ(b.lambdas.size(), 2u + 2u * n);
  ExpectEveryPointInactiveWithoutList(b.group, n);
  b.group.inverse_masses_.assign(n, 1.0f);
  myo_core::UpdateCollisionSlidingPoints(false, b.positions, myo_core::IdentityMatrix(), b.group);
  EXPECT_EQ(b.group.sliding_inactive_, std::vector<uint16_t>(n, 1));
}

TEST(SlideCollisionBinding, AMissingOrDifferentColliderIsNamedOnce) {
  struct Case {
    const char* line;
    void (*spoil)(CollisionBinding&);
  };
  const Case cases[] = {
      {"[MyoForge][Warning] Could not retrieve collider mesh data.",
       [](CollisionBinding& b) { b.input.binding_mesh = nullptr; }},
      {"[MyoForge][Warning] Collision mesh has 42 vertices instead of the 194 of the mesh its points are bound on: "
       "no point collides until the next initialization.",
       [](CollisionBinding& b) {
         b.current = myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeGrid(5, 6, 1.0f, 1.0f)),
                                      myo_core::IdentityMatrix());
       }},
      {"[MyoForge][Error] Collision mesh came without world-space points for its 194 vertices: no point collides "
       "until the next initialization.",
       [](CollisionBinding& b) { b.current.world_points.clear(); }},
      {"[MyoForge][Error] Collider mesh came without world-space points and polygon normals for its 194 vertices "
       "and 208 polygons: no point collides until the next initialization.",
       [](CollisionBinding& b) { b.collider.world_polygon_normals.clear(); }},
  };
  for (const Case& c : cases) {
    CollisionBinding b;
    c.spoil(b);
    myo_test::LogCapture log;
    EXPECT_FALSE(b.Bind()) << c.line;
    EXPECT_EQ(log.Count(c.line), 1u) << c.line;
    uint32_t complaints = 0;
    for (const std::string& line : log.lines())
      complaints += line.rfind("[MyoForge][Debug]", 0) == 0 ? 0 : 1;
    EXPECT_EQ(complaints, 1u) << c.line;
    ExpectEveryPointInactiveWithoutList(b.group, b.Count());
  }
}

// ---- Points falling onto a collider ------------------------------------------

// A square cloth of 9 by 9 points held together by distance rows, dropped from
// 0.8 above the top of the spindle, 24 steps of 1/24 s under gravity with six
// iterations each. With collision rows at a threshold of a twentieth of each
// point's start distance, no point gets nearer to the collider than that,
// nor passes it; without them the cloth falls through. (Left longer, the
// cloth slides off the round top, since nothing holds it there.)
struct FallingCloth {
  MeshData collider =
      myo_test::Placed(myo_test::BuildMesh(myo_scenes::MakeSpindle(12, 16, 6.0f, 1.2f)), myo_core::IdentityMatrix());
  MeshData cloth = myo_test::BuildMesh(myo_scenes::MakeGrid(8, 8, 3.0f, 3.0f));
  std::vector<float> positions, lambdas;
  myo_core::DistanceConstraints distances;
  SlideCollisionConstraints collisions;

  FallingCloth() {
    positions = cloth.points;
    for (uint32_t i = 0; i < cloth.PointCount(); ++i) positions[3 * i + 1] += 2.0f;
    const std::vector<float> ones(cloth.PointCount(), 1.0f);
    myo_core::BuildDistanceConstraints(distances, cloth.edge_vertices, positions, ones, ones, lambdas);
    myo_core::MapStore maps;
    maps.SetAll("slideCollisionConstraintsList", "slideCollisionConstraints", 0, ones);
    maps.SetAll("collisionThresholdMultiplierList", "collisionThresholdMultiplier", 0,
                std::vector<float>(cloth.PointCount(), 0.05f));
    myo_core::SlideCollisionBindingInput input;
    input.binding_mesh = &collider;
    input.current_mesh = &collider;
    input.max_distance = 4.0f;
    std::vector<float> collision_map;
    float diagonal = 0.0f;
    EXPECT_TRUE(myo_core::InitSlideCollisionConstraints(input, maps, positions, lambdas, collision_map, diagonal,
                                                         collisions));
    for (uint32_t i = 0; i < cloth.PointCount(); ++i)
      myo_core::ScaleWeightsByInverseMass(i, cloth.PointCount(), 1, 1.0f, collision_map, collisions);
  }

  void Run(bool collide) {
    const uint32_t n = cloth.PointCount();
    const float dt = 1.0f / 24.0f, compliance = 1e-7f;
    const std::vector<float> attraction(n, 0.0f);
    const Matrix identity = myo_core::IdentityMatrix();
    std::vector<float> velocities(3 * n, 0.0f);
    myo_core::PrepareDistanceRows(distances);
    for (int step = 0; step < 24; ++step) {
      const std::vector<float> previous = positions;
      for (uint32_t i = 0; i < n; ++i) {
        velocities[3 * i + 1] -= 9.8f * dt;
        for (int k = 0; k < 3; ++k) positions[3 * i + k] += velocities[3 * i + k] * dt;
      }
      if (collide) myo_core::UpdateCollisionSlidingPoints(false, positions, identity, collisions);
      for (int iteration = 0; iteration < 6; ++iteration) {
        myo_core::SolveDistanceRows(distances, compliance, positions.data(), lambdas.data());
        if (collide)
          myo_core::SolveSlideCollisionRows(collisions, 0, n, attraction, compliance, false, identity, identity,
                                            positions.data(), lambdas.data());
      }
      for (std::size_t k = 0; k < positions.size(); ++k) velocities[k] = (positions[k] - previous[k]) / dt;
      std::fill(lambdas.begin(), lambdas.end(), 0.0f);
    }
  }
};

TEST(SlideCollisionFall, ClothFallingOntoAColliderStaysOffIt) {
  FallingCloth with;
  ASSERT_EQ(with.collisions.inside_flags_, std::vector<bool>(with.cloth.PointCount(), false));
  const float centre_start = with.positions[3 * 40 + 1];
  with.Run(true);
  for (uint32_t i = 0; i < with.cloth.PointCount(); ++i) {
    const Vec3 p = myo_core::Load3(with.positions.data(), i);
    ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z)) << "point " << i;
    const float threshold = 0.05f * with.collisions.collision_distances_[i];
    EXPECT_GE(NearestDistance(p, with.collider), 0.9f * threshold) << "point " << i;
  }
  // The middle of the cloth came down and rests on the top of the spindle.
  const float centre_end = with.positions[3 * 40 + 1];
  EXPECT_LT(centre_end, centre_start - 0.5f);
  EXPECT_GT(centre_end, 1.0f);

  FallingCloth without;
  without.Run(false);
  EXPECT_LT(without.positions[3 * 40 + 1], -2.0f);
}

}  // namespace
