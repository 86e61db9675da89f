// A muscle between two animated bones, attached at both ends and sliding on
// a third mesh, evaluated frame by frame as the deformer runs in a scene.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/kernels/volume_constraint.h"
#include "core/maps/map_store.h"
#include "core/muscle/muscle_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/test_host.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

constexpr float kFrame = 1.0f / 24.0f;

// The bones sway sideways out of phase, parallel to the floor, and the far
// one pulls along the muscle.
Matrix Bone(int bone, int frame) {
  const double t = frame * 0.08;
  const float sway = static_cast<float>(2.0 * std::sin(t + bone * 1.3));
  const float pull = bone == 1 ? static_cast<float>(1.0 * std::sin(0.5 * t)) : 0.0f;
  return TranslationMatrix((bone == 0 ? -10.0f : 10.0f) + pull, 0.0f, sway);
}

}  // namespace

TEST(MuscleEndToEndTest, AttachedSlidingMuscleFollowsItsBonesAndKeepsItsVolume) {
  const MeshData muscle = myo_test::BuildMesh(myo_scenes::MakeSpindle(16, 12, 20.0f, 3.0f));
  const MeshData floor = myo_test::BuildMesh(myo_scenes::MakeGrid(20, 10, 40.0f, 20.0f));
  const uint32_t n = muscle.PointCount();
  myo_test::TestHost host(muscle);
  MapStore maps;

  // Each end ring is attached to its bone; the lower belly slides on the floor.
  std::vector<float> left(n, 0.0f), right(n, 0.0f), slide(n, 0.0f);
  for (uint32_t i = 0; i < n; ++i) {
    const float x = muscle.points[3 * i], y = muscle.points[3 * i + 1];
    if (x < -7.0f) left[i] = 1.0f;
    if (x > 7.0f) right[i] = 1.0f;
    if (std::fabs(x) < 5.0f && y < -1.0f) slide[i] = 1.0f;
  }
  maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 0, left);
  maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 1, right);
  maps.SetAll("targets", "slideOnGeometryConstraints", 0, slide);

  MuscleFrameValues frame;
  frame.start_time = frame.preroll_start_time = 1 * kFrame;
  frame.gravity = 980.0f;
  frame.hard_attachments = false;
  frame.use_custom_stiffness = true;
  frame.stiffness = 1e6f;
  frame.max_sliding_distance = 10.0f;  // covers the sway of the bones
  host.attachments.indices = {0, 1};
  const Matrix floor_matrix = TranslationMatrix(0.0f, -6.0f, 0.0f);
  const MeshData placed_floor = myo_test::Placed(floor, floor_matrix);
  host.targets = {TargetInput{"floor", 0, &placed_floor, floor_matrix}};

  MuscleDeformer deformer;
  const std::vector<double> input(muscle.points.begin(), muscle.points.end());
  std::vector<double> output;
  float rest_volume = 0.0f;
  float worst_attachment = 0.0f, worst_volume = 0.0f;
  for (int f = 1; f <= 101; ++f) {
    frame.current_time = f * kFrame;
    host.attachments.matrices = {Bone(0, f), Bone(1, f)};
    deformer.Evaluate(frame, input, host, maps, output);
    const MuscleSolver& solver = deformer.solver();
    if (f == 1) {
      rest_volume = solver.volume_constraint_->rest_volume_;
      ASSERT_EQ(solver.attachment_constraints_->SetCount(), 2u);
      ASSERT_EQ(solver.targets_.size(), 1u);
      continue;
    }
    for (double value : output) ASSERT_TRUE(std::isfinite(value)) << "frame " << f;
    // Attached points stay at their place in their bone's frame.
    const AttachmentConstraints& attachments = *solver.attachment_constraints_;
    for (uint32_t set = 0; set < 2; ++set)
      for (uint32_t i = 0; i < n; ++i) {
        const uint32_t row = set * n + i;
        if ((set == 0 ? left[i] : right[i]) < 1.0f) continue;
        const Vec3 target = TransformPoint(Load3(attachments.local_positions_.data(), row), attachments.matrices_[set]);
        worst_attachment = std::fmax(worst_attachment, Length(target - Load3(solver.positions_.data(), i)));
      }
    const float volume = SixTimesVolume(solver.volume_constraint_->triangles_, solver.positions_.data());
    worst_volume = std::fmax(worst_volume, std::fabs(volume / rest_volume - 1.0f));
    // Sliding points stay above the floor they slide on.
    for (uint32_t i = 0; i < n; ++i) {
      if (slide[i] > 0.0f) {
        EXPECT_GT(solver.positions_[3 * i + 1], -6.0f) << "frame " << f;
      }
    }
  }
  EXPECT_LT(worst_attachment, 0.15f);  // cm, on a 20 cm muscle under gravity
  EXPECT_LT(worst_volume, 0.02f);
}
