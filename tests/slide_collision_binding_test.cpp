// The binding of the slide collisions to a collider mesh, its failures and
// messages.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "core/kernels/slide_collision_constraints.h"
#include "core/maps/map_store.h"
#include "scenes/muscle_meshes.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_geometry.h"

namespace {

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

  // No reach, or no map: nobody collides.
  for (bool no_map : {false, true}) {
    b.input.max_distance = no_map ? 0.8f : 0.0f;
    if (no_map) b.maps.Clear();
    ASSERT_TRUE(b.Bind());
    ExpectEveryPointInactiveWithoutList(b.group, b.Count());
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

}  // namespace
