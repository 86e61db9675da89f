// The debug line builders over hand-made constraint tables, the dispatch of
// each solver family on "debugFeature". (The OBJ text of the lines is
// checked through the debug view's files.)

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/debug/constraint_lines.h"
#include "core/debug/debug_features.h"
#include "core/debug/muscle_debug.h"
#include "core/debug/shape_debug.h"
#include "core/debug/skin_debug.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

const char kTooShort[] = "[MyoForge][Debug] Debugger is skipping connections because the line length is too small.";
const char kWeightsTooSmall[] =
    "[MyoForge][Debug] Debugger is skipping connections because the weights are too small.";
const char kNothingToSlideOn[] =
    "[MyoForge][Debug] Debugger is skipping connections because the weights are too small or the max sliding "
    "distance has not found any triangles to slide on.";

// Three vertices on the x axis at 0, 1 and 2.
struct Points {
  std::vector<float> positions = {0, 0, 0, 1, 0, 0, 2, 0, 0};
  DebugLineFrame Frame() const {
    DebugLineFrame frame;
    frame.positions = positions.data();
    frame.point_count = 3;
    return frame;
  }
};

Vec3 LineEnd(const DebugData& data, std::size_t line, uint32_t end) {
  return Load3(data.lines_.data() + 6 * line, end);
}

void ExpectNear(Vec3 a, Vec3 b) { myo_test::ExpectVec(a, b, 1e-5f); }

// One attachment matrix at `anchor`, weights per vertex.
AttachmentConstraints Attachment(Vec3 anchor, std::vector<float> weights) {
  AttachmentConstraints group;
  group.matrices_.push_back(TranslationMatrix(anchor.x, anchor.y, anchor.z));
  group.inverse_masses_ = weights;
  group.row_flags_.assign(weights.size(), 0);
  return group;
}

// A skin table over a reference triangle (0,1,0) (1,1,0) (0,1,1) bound at
// its corner A for every vertex, sliding points 2 above each vertex.
UberConstraints Uber(const Points& p) {
  UberConstraints uber;
  uber.inverse_masses_.assign(3, 1.0f);
  uber.hard_weights_.assign(3, 1.0f);
  uber.soft_weights_.assign(3, 0.0f);
  uber.slide_weights_.assign(3, 0.0f);
  uber.triangle_vertices_ = {0, 1, 2, 0, 1, 2, 0, 1, 2};
  uber.reference_positions_ = {0, 1, 0, 1, 1, 0, 0, 1, 1};
  uber.barycentric_u_.assign(3, 1.0f);
  uber.barycentric_v_.assign(3, 0.0f);
  uber.sliding_inactive_.assign(3, 0);
  for (uint32_t i = 0; i < 3; ++i) {
    const Vec3 v = Load3(p.positions.data(), i);
    uber.sliding_points_.insert(uber.sliding_points_.end(), {v.x, v.y + 2.0f, v.z});
  }
  return uber;
}

}  // namespace

TEST(ConstraintLinesTest, LinesTooShortOrWeightsTooSmallAreLeftOutAndSaidSo) {
  Points p;
  myo_test::LogCapture log;
  DebugData data;
  DebugAttachmentLines(Attachment({0, 0.003f, 0}, {1, 0, 0}), p.Frame(), data);
  EXPECT_TRUE(data.lines_.empty());
  EXPECT_EQ(log.Count(kTooShort), 1u);
  log.Clear();
  DebugAttachmentLines(Attachment({0, 0.0031f, 0}, {1, 0, 0}), p.Frame(), data);
  EXPECT_EQ(data.lines_.size(), 6u);
  EXPECT_EQ(log.Count(kTooShort), 0u);

  data = DebugData{};
  DebugAttachmentLines(Attachment({0, 5, 0}, {0, 5e-7f, 0}), p.Frame(), data);
  EXPECT_TRUE(data.lines_.empty());
  EXPECT_EQ(log.Count(kWeightsTooSmall), 1u);

  // A table that does not fit the points draws nothing and says nothing.
  log.Clear();
  DebugAttachmentLines(Attachment({0, 5, 0}, {1, 1}), p.Frame(), data);
  EXPECT_TRUE(data.lines_.empty());
  EXPECT_TRUE(log.lines().empty());
}

TEST(ConstraintLinesTest, SlideOnGeometryAndCollisionSkipInertRowsAndCollisionLinesCarryValues) {
  Points p;
  SlideOnGeometryConstraints slide;
  slide.inverse_masses_ = {1, 1, 1};
  slide.row_flags_ = {0, 1, 0};
  slide.closest_points_ = {0, 1, 0, 1, 1, 0, 2, 1, 0};
  DebugData data;
  DebugSlideGeoLines(slide, 1, p.Frame(), data);
  ASSERT_EQ(data.lines_.size(), 12u);
  ExpectNear(LineEnd(data, 1, 1), {2, 1, 0});

  myo_test::LogCapture log;
  slide.row_flags_ = {1, 1, 1};
  data = DebugData{};  // builders append to what the record holds
  DebugSlideGeoLines(slide, 1, p.Frame(), data);
  EXPECT_TRUE(data.lines_.empty());
  EXPECT_EQ(log.Count(kNothingToSlideOn), 1u);

  SlideCollisionConstraints collision;
  collision.inverse_masses_ = {1, 1, 1};
  collision.sliding_inactive_ = {0, 0, 1};
  collision.closest_points_ = {0, 1, 0, 1, 4, 0, 2, 1, 0};
  collision.collision_distances_ = {2, 2, 2};
  collision.threshold_multipliers_ = {1, 1, 1};
  data = DebugData{};
  DebugSlideCollisionLines(collision, p.Frame(), data);
  ASSERT_EQ(data.lines_.size(), 12u);
  ASSERT_EQ(data.line_values_.size(), 2u);
  EXPECT_FLOAT_EQ(data.line_values_[0], 0.5f);  // 1 of the 2 it keeps
  EXPECT_FLOAT_EQ(data.line_values_[1], 1.0f);  // beyond: clamped
}

TEST(ConstraintLinesTest, UberLinesFollowTheSelectedMapAfterTheWeightsAreCut) {
  Points p;
  UberConstraints uber = Uber(p);
  // Vertex 0: hard only. Vertex 1: hard 0.7, slide 0.6, soft 0.5 -> slide
  // cut to 0.3, soft to 0. Vertex 2: slide only, but without a sliding point.
  uber.hard_weights_ = {1, 0.7f, 0};
  uber.slide_weights_ = {0, 0.6f, 1};
  uber.soft_weights_ = {0, 0.5f, 0};
  uber.sliding_inactive_ = {0, 0, 1};
  DebugData data;
  DebugUberLines(uber, kDebugHardConstraints, p.Frame(), data);
  ASSERT_EQ(data.lines_.size(), 12u);
  ExpectNear(LineEnd(data, 0, 1), {0, 1, 0});  // corner A of the reference triangle

  data = DebugData{};
  DebugUberLines(uber, kDebugSlideConstraints, p.Frame(), data);
  ASSERT_EQ(data.lines_.size(), 6u);
  ExpectNear(LineEnd(data, 0, 1), {1, 2, 0});

  myo_test::LogCapture log;
  data = DebugData{};
  DebugUberLines(uber, kDebugSoftConstraints, p.Frame(), data);  // nothing left of soft
  EXPECT_TRUE(data.lines_.empty());
  EXPECT_EQ(log.Count(kNothingToSlideOn), 1u);

  DebugUberLines(uber, kDebugShapePreservation, p.Frame(), data);
  EXPECT_TRUE(data.lines_.empty());
}

TEST(ConstraintLinesTest, SurfaceLinesCopyThePointsOfTheEdgeListAndRefuseAnIndexOutOfRange) {
  const std::vector<float> points = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  DebugData data;
  DebugSurfaceLines({0, 1, 1, 2}, points, data);
  ASSERT_EQ(data.lines_.size(), 12u);
  ExpectNear(LineEnd(data, 1, 0), {1, 0, 0});
  ExpectNear(LineEnd(data, 1, 1), {0, 1, 0});

  data = DebugData{};
  DebugSurfaceLines({0, 3}, points, data);
  EXPECT_TRUE(data.lines_.empty());
}

TEST(DebugDispatchTest, EachFamilyDrawsOnlyTheFeaturesItOffers) {
  Points p;
  const float color[3] = {0.2f, 0.4f, 0.6f};

  SkinSolver skin;
  skin.point_count_ = 3;
  *skin.uber_constraints_ = Uber(p);
  skin.uber_constraints_->sliding_edges_ = {0, 1};
  UpdateSkinDebugData(skin, p.positions, kDebugHardConstraints, color, 5.0f);
  EXPECT_EQ(skin.debug_data_.lines_.size(), 18u);
  UpdateSkinDebugData(skin, p.positions, kDebugSlidingSurface, color, 5.0f);
  EXPECT_EQ(skin.debug_data_.lines_.size(), 6u);
  for (int32_t feature : std::vector<int32_t>{0, kDebugAttachmentsToTransform, kDebugFibers, kDebugSlideCollision, 12}) {
    UpdateSkinDebugData(skin, p.positions, feature, color, 5.0f);
    EXPECT_TRUE(skin.debug_data_.lines_.empty()) << feature;
  }

  MuscleSolver muscle;
  muscle.point_count_ = 3;
  *muscle.attachment_constraints_ = Attachment({0, 5, 0}, {1, 1, 1});
  UpdateMuscleDebugData(muscle, p.positions, kDebugAttachmentsToTransform, color, 2.0f, 1.0f);
  EXPECT_EQ(muscle.debug_data_.lines_.size(), 18u);
  // Points that do not match the solver draw nothing.
  UpdateMuscleDebugData(muscle, {0, 0, 0}, kDebugAttachmentsToTransform, color, 2.0f, 1.0f);
  EXPECT_TRUE(muscle.debug_data_.lines_.empty());

  SimshapeSolver shape;
  shape.point_count_ = 3;
  shape.shape_constraints_->first_points_ = {0};
  shape.shape_constraints_->centre_points_ = {1};
  shape.shape_constraints_->third_points_ = {2};
  shape.shape_constraints_->inverse_masses_ = {1, 1, 1};
  UpdateShapeDebugData(shape, p.positions, kDebugShapePreservation, color, 2.0f, 1.0f);
  EXPECT_EQ(shape.debug_data_.lines_.size(), 12u);
  UpdateShapeDebugData(shape, p.positions, kDebugHardConstraints, color, 2.0f, 1.0f);
  EXPECT_TRUE(shape.debug_data_.lines_.empty());
}
