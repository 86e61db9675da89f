// The skin's blended hard / soft / slide row and the sliding point search.

#include <gtest/gtest.h>
#include <omp.h>

#include <cstring>
#include <limits>
#include <vector>

#include "core/kernels/uber_constraints.h"
#include "scenes/muscle_meshes.h"
#include "tests/support/ordered_sliding_scan.h"
#include "tests/support/test_geometry.h"

namespace {

using myo_core::Matrix;
using myo_core::UberConstraints;
using myo_core::Vec3;
using myo_test::ExpectVec;

// One reference triangle in the plane y = 0, A = (0,0,0), B = (0,0,2),
// C = (2,0,0), polygon normal +y, and one skin point bound at q = (0.5, 0,
// 0.5) (u = 0.5, v = 0.25, so 0.25 of C) at distance 1 straight above q. In
// the frame at q (e towards A, n = +y) the offset p - q = (0, 1, 0) reads
// (0, 1, 0), the middle column being n.
struct OnePointScene {
  UberConstraints uber;
  std::vector<float> positions = {0.5f, 1.0f, 0.5f};
  std::vector<float> lambdas = {0.0f};

  OnePointScene() {
    uber.inverse_masses_ = {1.0f};
    uber.triangle_vertices_ = {0, 1, 2};
    uber.polygon_indices_ = {0};
    uber.reference_triangles_ = {0, 1, 2};
    uber.reference_positions_ = {0, 0, 0, 0, 0, 2, 2, 0, 0};
    uber.polygon_normals_ = {0, 1, 0};
    uber.barycentric_u_ = {0.5f};
    uber.barycentric_v_ = {0.25f};
    uber.surface_distances_ = {1.0f};
    uber.local_offsets_ = {0.0f, 1.0f, 0.0f};
    uber.sliding_points_ = {0.5f, 0.0f, 0.5f};
    uber.hard_weights_ = {1.0f};
    uber.soft_weights_ = {0.0f};
    uber.slide_weights_ = {0.0f};
    uber.sliding_inactive_ = {1};
  }
  void Weights(float hard, float soft, float slide) {
    uber.hard_weights_ = {hard};
    uber.soft_weights_ = {soft};
    uber.slide_weights_ = {slide};
  }
  void Solve(float compliance, const Matrix& world = myo_core::IdentityMatrix()) {
    myo_core::SolveUberRows(uber, 0, 1, compliance, !myo_core::IsIdentity(world), world,
                            myo_core::InvertMatrix(world), positions.data(), lambdas.data());
  }
  Vec3 Point() const { return myo_core::Load3(positions.data(), 0); }
};

// The reference turned a quarter about z: A, B, C and the normal rotate,
// +y becoming -x.
void TurnReference(OnePointScene& scene) {
  scene.uber.reference_positions_ = {0, 0, 0, 0, 0, 2, 0, 2, 0};
  scene.uber.polygon_normals_ = {-1, 0, 0};
}

// A state in which all three terms are present and different: the turned
// reference (hard), the point off its distance (soft), a sliding point aside
// (slide), a prior multiplier and a soft compliance.
OnePointScene MixedScene() {
  OnePointScene scene;
  TurnReference(scene);
  scene.positions = {0.3f, 1.7f, 0.9f};
  scene.uber.sliding_points_ = {1.0f, 0.2f, -0.4f};
  scene.uber.sliding_inactive_ = {0};
  scene.uber.inverse_masses_ = {0.5f};
  scene.lambdas = {0.25f};
  return scene;
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

TEST(UberConstraintsKernel, WeightsAboveOneAreClampedHardThenSlideThenSoft) {
  auto run = [](float hard, float soft, float slide) {
    OnePointScene scene = MixedScene();
    scene.Weights(hard, soft, slide);
    scene.Solve(0.01f);
    return scene;
  };
  const OnePointScene all_one = run(1.0f, 1.0f, 1.0f), hard_only = run(1.0f, 0.0f, 0.0f);
  EXPECT_TRUE(SameBits(all_one.positions, hard_only.positions));
  EXPECT_TRUE(SameBits(all_one.lambdas, hard_only.lambdas));

  // Soft gets what hard and slide leave: 1 - (0.4 + 0.5) = 0.1.
  const OnePointScene partial = run(0.5f, 0.6f, 0.4f), by_hand = run(0.5f, 0.1f, 0.4f);
  ExpectVec(partial.Point(), by_hand.Point(), 1e-6f);
  EXPECT_NEAR(partial.lambdas[0], by_hand.lambdas[0], 1e-6f);
}

// Each term alone, and the cases that must leave the point where it is.
TEST(UberConstraintsKernel, EachTermMovesThePointToItsTarget) {
  struct Case {
    const char* name;
    float hard, soft, slide, compliance;
    void (*set_up)(OnePointScene&);
    Matrix world;
    Vec3 expected;
  };
  const Matrix identity = myo_core::IdentityMatrix();
  const Case cases[] = {
      // The surface point turns to (0, 0.5, 0.5) and its normal to -x.
      {"hard turned", 1, 0, 0, 0.0f, TurnReference, identity, {-1.0f, 0.5f, 0.5f}},
      {"hard turned, skin moved by (5, 0, 0)", 1, 0, 0, 0.0f,
       [](OnePointScene& s) {
         TurnReference(s);
         s.positions = {-4.5f, 1.0f, 0.5f};
       },
       myo_test::Affine(5.0f, 0.0f, 0.0f), {-6.0f, 0.5f, 0.5f}},
      {"soft", 0, 1, 0, 0.0f, [](OnePointScene& s) { s.positions = {0.5f, 3.0f, 0.5f}; }, identity,
       {0.5f, 1.0f, 0.5f}},
      {"slide inactive", 0, 0, 1, 1e-4f,
       [](OnePointScene& s) {
         s.uber.sliding_points_ = {1.0f, 0.0f, 0.2f};
         s.positions = {1.0f, 0.0f, 2.2f};
       },
       identity, {1.0f, 0.0f, 2.2f}},
      {"slide active", 0, 0, 1, 0.0f,
       [](OnePointScene& s) {
         s.uber.sliding_points_ = {1.0f, 0.0f, 0.2f};
         s.uber.sliding_inactive_ = {0};
         s.positions = {1.0f, 0.0f, 2.2f};
       },
       identity, {1.0f, 0.0f, 1.2f}},
      {"no weight", 0, 0, 0, 0.0f, [](OnePointScene& s) { s = MixedScene(); }, identity, {0.3f, 1.7f, 0.9f}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    OnePointScene scene;
    c.set_up(scene);
    const std::vector<float> before = scene.positions, lambdas_before = scene.lambdas;
    const bool stays = c.expected.x == before[0] && c.expected.y == before[1] && c.expected.z == before[2];
    scene.Weights(c.hard, c.soft, c.slide);
    scene.Solve(c.compliance, c.world);
    ExpectVec(scene.Point(), c.expected, 1e-5f);
    // A point left in place keeps its bits and its multiplier.
    if (stays) {
      EXPECT_TRUE(SameBits(scene.positions, before) && SameBits(scene.lambdas, lambdas_before));
    }
  }
}

// ---- Sliding points -------------------------------------------------------

// A reference of loose triangles: triangle k uses vertices 3k to 3k + 2.
struct LooseTriangles {
  std::vector<float> positions;
  std::vector<uint32_t> triangles;
  uint32_t Add(Vec3 a, Vec3 b, Vec3 c) {
    const uint32_t first = static_cast<uint32_t>(positions.size() / 3);
    for (Vec3 v : {a, b, c}) positions.insert(positions.end(), {v.x, v.y, v.z});
    triangles.insert(triangles.end(), {first, first + 1, first + 2});
    return first / 3;
  }
};

// The search passes over candidates that it can show to be farther than one
// it measured; whatever it passes over, the winner must be that of measuring
// them all, on one thread or two. Points over a folded reference grid at
// heights from on the surface to far above, with lists holding every kind of
// entry: repeats, ids past the end, triangles without area (answered by their
// edges), triangles far out; the same again far from the origin, and points
// whose coordinates are too large to bound. Some points have no weight or no
// list (they stay inactive with their old point), and the second placement
// is searched through the skin's world matrix.
TEST(UberSlidingPoints, PassingOverCandidatesKeepsTheWinnerOfAFullScan) {
  for (const float offset : {0.0f, 900.0f}) {
    LooseTriangles mesh;
    const int cells = 6;
    const float h = 0.25f;
    // The grid is flat up to x = 3 cells, then rises: a fold.
    auto y_of = [](int x) { return x < 3 ? 0.0f : 0.15f * static_cast<float>(x - 2); };
    for (int x = 0; x < cells; ++x)
      for (int z = 0; z < cells; ++z) {
        const Vec3 a{offset + x * h, y_of(x), z * h}, b{offset + (x + 1) * h, y_of(x + 1), z * h};
        const Vec3 c{offset + x * h, y_of(x), (z + 1) * h}, d{offset + (x + 1) * h, y_of(x + 1), (z + 1) * h};
        mesh.Add(a, b, c);
        mesh.Add(c, b, d);
      }
    const uint32_t flat = mesh.Add({offset, 0, 0}, {offset + 1, 0, 0}, {offset + 0.5f, 0, 0});  // no area
    const uint32_t speck = mesh.Add({offset + 0.6f, 0.1f, 0.6f}, {offset + 0.6f, 0.1f, 0.6f},
                                    {offset + 0.6f, 0.1f, 0.6f});
    const uint32_t grid_triangles = 2 * cells * cells;

    UberConstraints uber;
    uber.reference_positions_ = mesh.positions;
    uber.reference_triangles_ = mesh.triangles;
    std::vector<float> positions;
    const float heights[] = {0.0f, 0.001f, 0.03f, 0.25f, 0.6f, -0.2f, 3.0f};
    uint32_t i = 0;
    for (float height : heights)
      for (int x = 0; x <= 2 * cells; ++x)
        for (int z = 0; z <= 2 * cells; z += 3, ++i) {
          const float px = 0.5f * h * x, pz = 0.5f * h * z + 0.01f * (x % 2);
          positions.insert(positions.end(), {offset + px, y_of(x / 2) + height, pz});
          uber.sliding_offsets_.push_back(static_cast<uint32_t>(uber.sliding_triangles_.size()));
          const uint32_t count = i % 13 == 6 ? 0 : 3 + (i * 7) % 40;
          for (uint32_t k = 0; k < count; ++k) uber.sliding_triangles_.push_back((i * 5 + k * 3) % grid_triangles);
          if (i % 3 == 0) uber.sliding_triangles_.push_back(uber.sliding_triangles_.back());  // a repeat
          if (i % 4 == 0) uber.sliding_triangles_.push_back(1000000);                         // past the end
          if (i % 5 == 0) uber.sliding_triangles_.insert(uber.sliding_triangles_.end(), {flat, speck});
          uber.sliding_counts_.push_back(static_cast<uint32_t>(uber.sliding_triangles_.size()) -
                                         uber.sliding_offsets_.back());
        }
    // Points far beyond any bound's reach.
    for (float far : {3e9f, std::numeric_limits<float>::infinity()}) {
      positions.insert(positions.end(), {far, 0.0f, 0.0f});
      uber.sliding_offsets_.push_back(0);
      uber.sliding_counts_.push_back(10);
      ++i;
    }
    const uint32_t n = i;
    uber.slide_weights_.assign(n, 1.0f);
    for (uint32_t k = 4; k < n; k += 11) uber.slide_weights_[k] = 0.0000009f;
    uber.sliding_points_.assign(3 * n, 7.0f);
    const bool has_transform = offset != 0.0f;
    const Matrix world = has_transform ? myo_test::Affine(1.0f, 0.0f, 1.0f) : myo_core::IdentityMatrix();

    UberConstraints scanned = uber;
    myo_test::OrderedSlidingScan(has_transform, positions, world, scanned);
    for (int threads : {1, 2}) {
      UberConstraints searched = uber;
      const int previous = omp_get_max_threads();
      omp_set_num_threads(threads);
      myo_core::UpdateSlidingPoints(has_transform, positions, world, searched);
      omp_set_num_threads(previous);
      EXPECT_EQ(scanned.sliding_inactive_, searched.sliding_inactive_);
      for (uint32_t k = 0; k < n; ++k) {
        const Vec3 expected = myo_core::Load3(scanned.sliding_points_.data(), k);
        const Vec3 found = myo_core::Load3(searched.sliding_points_.data(), k);
        EXPECT_TRUE(std::memcmp(&expected, &found, sizeof(Vec3)) == 0)
            << "point " << k << " offset " << offset << " threads " << threads;
      }
    }
  }
}

}  // namespace
