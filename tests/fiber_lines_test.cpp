// The muscle's fiber lines for debug drawing, and the redraw of one vertex's
// line when its fiber is painted.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "core/debug/muscle_debug.h"
#include "core/kernels/edge_constraints_build.h"
#include "scenes/muscle_meshes.h"
#include "scenes/muscle_setup.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

// A spindle whose fibers come from tendons at its two ends.
struct FiberScene {
  myo_scenes::MuscleScene scene;
  FiberScene() {
    myo_scenes::MuscleSetupOptions options;
    options.tendon_ends = 1.0f;
    options.fibers_scale = 2.0f;
    std::string error;
    EXPECT_TRUE(myo_scenes::AssembleMuscle(myo_scenes::MakeSpindle(8, 8, 10.0f, 2.0f), options, scene, error));
  }
  MuscleSolver& solver() { return scene.solver; }
  const float kColor[3] = {0.0f, 1.0f, 0.5f};
  void Update(float debug_scale, int32_t feature = kDebugMuscleFibers) {
    UpdateMuscleDebugData(solver(), solver().positions_, feature, kColor, 2.0f, debug_scale);
  }
  Vec3 Start(uint32_t i) const { return Line(i, 0); }
  Vec3 End(uint32_t i) const { return Line(i, 1); }
  Vec3 Line(uint32_t i, uint32_t end) const {
    return Load3(scene.solver.debug_data_.lines_.data() + scene.solver.fiber_line_offsets_[i], end);
  }
  // The point of the vertex's fiber triangle at its barycentric coordinates.
  Vec3 OnTriangle(uint32_t i) const {
    const EdgeConstraints& e = *scene.solver.edge_constraints_;
    const float* p = scene.solver.positions_.data();
    const int32_t* t = &e.fiber_triangles_[3 * i];
    return Load3(p, t[0]) * e.fiber_bary_u_[i] + Load3(p, t[1]) * e.fiber_bary_v_[i] +
           Load3(p, t[2]) * (1.0f - e.fiber_bary_u_[i] - e.fiber_bary_v_[i]);
  }
};

bool HasTriangle(const EdgeConstraints& e, uint32_t i) {
  return e.fiber_triangles_[3 * i] != 0 || e.fiber_triangles_[3 * i + 1] != 0 || e.fiber_triangles_[3 * i + 2] != 0;
}

}  // namespace

TEST(FiberLinesTest, OneWorldSpaceLinePerVertexTowardsItsFiberTipScaledTwice) {
  FiberScene f;
  const Vec3 offset{0.0f, 10.0f, 0.0f};
  f.solver().world_matrix_ = TranslationMatrix(offset.x, offset.y, offset.z);
  f.Update(1.5f);
  const MuscleSolver& s = f.solver();
  EXPECT_EQ(s.debug_data_.color_[1], 1.0f);
  EXPECT_EQ(s.debug_data_.color_[3], 1.0f);
  EXPECT_EQ(s.debug_data_.width_, 2.0f);
  ASSERT_EQ(s.fiber_line_offsets_.size(), s.point_count_);
  uint32_t lines = 0;
  for (uint32_t i = 0; i < s.point_count_; ++i) {
    if (!HasTriangle(*s.edge_constraints_, i)) {
      EXPECT_EQ(s.fiber_line_offsets_[i], -1) << i;
      continue;
    }
    ++lines;
    const Vec3 vertex = Load3(s.positions_.data(), i);
    myo_test::ExpectVec(f.Start(i), vertex + offset, 0.0f);
    // Length: the solver's fiber scale times the scale of the update.
    EXPECT_NEAR(Length(f.End(i) - f.Start(i)), 2.0f * 1.5f, 1e-5f) << i;
    myo_test::ExpectVec(NormalizeSafe(f.End(i) - f.Start(i)), NormalizeSafe(f.OnTriangle(i) - vertex), 1e-5f);
  }
  EXPECT_GT(lines, s.point_count_ / 2);
  EXPECT_EQ(s.debug_data_.lines_.size(), 6u * lines);
}

TEST(FiberLinesTest, LinesAtMostTheShortestLengthAreLeftOutAndSaidSo) {
  FiberScene f;
  myo_test::LogCapture log;
  f.Update(0.0014f);  // 2 x 0.0014 = 0.0028: too short
  EXPECT_TRUE(f.solver().debug_data_.lines_.empty());
  EXPECT_EQ(log.Count("[MyoForge][Debug] Debugger is skipping connections because the line length is too small."),
            1u);
  f.Update(0.0016f);  // 0.0032
  EXPECT_FALSE(f.solver().debug_data_.lines_.empty());
  // The scale in force never goes below 0.001.
  f.Update(0.0f);
  EXPECT_EQ(f.solver().debug_fibers_scale_, 0.001f);
}

TEST(FiberLinesTest, APaintedFiberRedrawsOnlyItsOwnLine) {
  FiberScene f;
  f.Update(1.0f);
  MuscleSolver& s = f.solver();
  uint32_t vertex = 0;
  while (s.fiber_line_offsets_[vertex] < 0) ++vertex;
  const std::vector<float> before = s.debug_data_.lines_;
  const Vec3 old_end = f.End(vertex);
  float direction[3] = {0.0f, 0.0f, 1.0f};  // across the muscle
  ProjectVertexFiber(vertex, direction, f.scene.node, s, *s.edge_constraints_);
  UpdateMuscleVertexFiber(s, vertex);
  const Vec3 vertex_point = Load3(s.positions_.data(), vertex);
  EXPECT_GT(Length(f.End(vertex) - old_end), 0.1f);
  myo_test::ExpectVec(NormalizeSafe(f.End(vertex) - vertex_point),
                      NormalizeSafe(f.OnTriangle(vertex) - vertex_point), 1e-5f);
  for (std::size_t k = 0; k < before.size(); ++k) {
    if (k / 6 == static_cast<std::size_t>(s.fiber_line_offsets_[vertex]) / 6) continue;
    ASSERT_EQ(s.debug_data_.lines_[k], before[k]) << k;
  }

  // Another feature on display: no fiber lines to redraw, nothing written.
  f.Update(1.0f, 5);
  EXPECT_TRUE(s.fiber_line_offsets_.empty());
  s.debug_data_.lines_ = {1, 2, 3, 4, 5, 6};
  UpdateMuscleVertexFiber(s, vertex);
  EXPECT_EQ(s.debug_data_.lines_, (std::vector<float>{1, 2, 3, 4, 5, 6}));
}
