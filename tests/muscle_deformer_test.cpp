// The muscle deformer's evaluation on a time line, driven from plain data.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/muscle/muscle_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;
using myo_test::kFrame;

namespace {

// A muscle with gravity, preroll at frame 5 and start at frame 10.
struct Timeline : myo_test::TimeLine<MuscleDeformer, MuscleFrameValues> {
  Timeline() : TimeLine(myo_test::BuildMesh(myo_scenes::MakeSpindle(6, 8, 10.0f, 2.0f))) {
    frame.preroll_start_time = 5 * kFrame;
    frame.start_time = 10 * kFrame;
    frame.gravity = 980.0f;
  }
  const std::vector<float>& Positions() const { return solver().positions_; }
};

bool Near(const std::vector<float>& a, const std::vector<double>& b, double tolerance) {
  if (a.size() != b.size()) return false;
  for (std::size_t k = 0; k < a.size(); ++k)
    if (std::fabs(a[k] - b[k]) > tolerance) return false;
  return true;
}

}  // namespace

TEST(MuscleDeformerTest, PrerollSettlesAShapeThatBecomesRestAtStart) {
  Timeline t;
  // First evaluation before the preroll: built, nothing stepped.
  MuscleEvaluation e = t.At(1);
  EXPECT_TRUE(e.decision.initialize);
  EXPECT_FALSE(e.stepped);
  EXPECT_EQ(t.output, t.input);

  // Between preroll and start the muscle sags under gravity.
  EXPECT_TRUE(t.At(5).decision.reset_positions);
  for (int f = 6; f < 10; ++f) EXPECT_TRUE(t.At(static_cast<float>(f)).stepped);
  const std::vector<float> settled = t.Positions();
  EXPECT_FALSE(Near(settled, t.input, 1e-3));

  // Start, coming from the preroll: the settled shape becomes the rest shape.
  e = t.At(10);
  EXPECT_TRUE(e.decision.initialize);
  EXPECT_FALSE(e.decision.reset_positions);
  EXPECT_TRUE(e.stepped);
  const EdgeConstraints& edges = *t.solver().edge_constraints_;
  const int32_t a = edges.edge_start_[0], b = edges.edge_end_[0];
  EXPECT_EQ(edges.rest_vectors_[0], settled[3 * b] - settled[3 * a]);
}

TEST(MuscleDeformerTest, DisabledFramesEnvelopeAndIterations) {
  Timeline t;
  t.frame.preroll_start_time = t.frame.start_time;  // no preroll
  for (int f = 10; f <= 12; ++f) t.At(static_cast<float>(f));
  // Enable off: the input passes, the solver and the last time stay.
  t.frame.enable = false;
  const std::vector<float> before = t.Positions();
  EXPECT_FALSE(t.At(13).stepped);
  EXPECT_EQ(t.output, t.input);
  EXPECT_EQ(t.Positions(), before);
  EXPECT_EQ(t.deformer.last_time(), 12 * kFrame);
  // On again two frames later: the jump becomes one regular step.
  t.frame.enable = true;
  const MuscleEvaluation on = t.At(15);
  EXPECT_TRUE(on.stepped);
  EXPECT_FLOAT_EQ(on.decision.dt, kFrame);

  // Envelope 0: the output is the input, but the solver still runs, with
  // the magnitude of a negative iteration count.
  t.frame.envelope = 0.0f;
  t.frame.iterations = -5;
  EXPECT_TRUE(t.At(16).stepped);
  EXPECT_EQ(t.output, t.input);
  EXPECT_EQ(t.solver().iterations_, 5u);
  // Half an envelope: half way between the input and the simulation.
  t.frame.envelope = 0.5f;
  t.At(17);
  const std::vector<float>& sim = t.Positions();
  for (std::size_t k = 0; k < sim.size(); ++k)
    ASSERT_DOUBLE_EQ(t.output[k], (static_cast<double>(sim[k]) - t.input[k]) * 0.5 + t.input[k]);
}

TEST(MuscleDeformerTest, AnAttachmentCountThatChangesMidwayWarnsAndKeepsTheOldMatrices) {
  Timeline t;
  t.frame.preroll_start_time = t.frame.start_time;
  t.host.attachments.indices = {0};
  t.host.attachments.matrices = {IdentityMatrix()};
  t.At(10);
  myo_test::LogCapture log;
  t.host.attachments.indices = {0, 1};
  t.host.attachments.matrices = {TranslationMatrix(1, 0, 0), TranslationMatrix(2, 0, 0)};
  t.At(11);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Inconsistency between the solver data and the number of the attachments "
                      "connected. Please, stop the simulation and go to the start frame to reinitialize the system."),
            1u);
  const auto& kept = t.solver().attachment_constraints_->matrices_;
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_TRUE(IsIdentity(kept[0]));
  // The same number again: the new matrix is taken.
  t.host.attachments.indices = {0};
  t.host.attachments.matrices = {TranslationMatrix(3, 0, 0)};
  t.At(12);
  EXPECT_EQ(t.solver().attachment_constraints_->matrices_[0][12], 3.0f);
}

TEST(MuscleDeformerTest, CurrentInfluenceFallsBackWhenItsSetIsGone) {
  struct Case {
    int32_t map, current, attachments, targets, expected;
  };
  const Case cases[] = {
      {3, 1, 2, 0, 1},   // two attachments, the second shown
      {3, 2, 2, 0, 0},   // beyond the last one
      {3, 2, 0, 0, -1},  // none left
      {3, 0, 0, 0, 0},   // already 0 stays
      {5, 7, 0, 0, 7},   // a map without sets: untouched
      {13, 4, 0, 1, 0},  // slide on geometry counts the targets
  };
  for (const Case& c : cases) {
    InfluenceCounts counts;
    counts.attachments = c.attachments;
    counts.targets = c.targets;
    EXPECT_EQ(ClampCurrentInfluence(c.map, c.current, counts), c.expected) << c.map << " " << c.current;
  }
}
