// The edge evaluator: compression values of shrunk and stretched surfaces,
// the remap curve, meshes of other connectivity, the time of initialization
// and the thread count.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/evaluator/edge_evaluator.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

// A grid of 2 by 2 quads in the xz plane, points row-major:
//   6 7 8
//   3 4 5
//   0 1 2
PolygonMesh SmallGrid() {
  PolygonMesh grid;
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column) grid.points.insert(grid.points.end(), {float(column), 0.0f, float(row)});
  grid.vertex_counts = {4, 4, 4, 4};
  grid.vertices = {0, 3, 4, 1, 1, 4, 5, 2, 3, 6, 7, 4, 4, 7, 8, 5};
  return grid;
}

PolygonMesh Scaled(PolygonMesh mesh, float factor) {
  for (float& value : mesh.points) value *= factor;
  return mesh;
}

// Hands over the meshes it holds, as a host would from its plugs.
class EvaluatorInputs : public EdgeEvaluatorInputs {
 public:
  MeshInput ReadDeformMesh(MeshRead, MeshData& mesh) override { return Hand(deform, mesh); }
  MeshInput ReadRestMesh(MeshRead, MeshData& mesh) override { return Hand(rest, mesh); }

  std::optional<MeshData> rest;
  std::optional<MeshData> deform;

 private:
  static MeshInput Hand(const std::optional<MeshData>& from, MeshData& to) {
    if (!from) return MeshInput::kMissing;
    to = *from;
    return MeshInput::kRead;
  }
};

EdgeEvaluatorFrame FrameAt(float time, float initialization_time = 0.0f) {
  EdgeEvaluatorFrame frame;
  frame.current_time = time;
  frame.initialization_time = initialization_time;
  frame.compression_remap = DefaultCompressionRemap();
  return frame;
}

void ExpectAllNear(const std::vector<float>& values, float expected, float tolerance) {
  ASSERT_FALSE(values.empty());
  for (size_t i = 0; i < values.size(); ++i) EXPECT_NEAR(values[i], expected, tolerance) << "vertex " << i;
}

}  // namespace

TEST(EdgeEvaluatorTest, CompressionOfUniformShapeChangesThroughTheRemapCurve) {
  const PolygonMesh spindle = myo_scenes::MakeSpindle(6, 8, 4.0f, 1.0f);
  EvaluatorInputs inputs;
  inputs.rest = myo_test::BuildMesh(spindle);

  // Unchanged: no compression anywhere.
  inputs.deform = inputs.rest;
  EdgeEvaluator evaluator(2);
  ASSERT_EQ(evaluator.Evaluate(FrameAt(0.0f), inputs), EdgeEvaluation::kEvaluated);
  ExpectAllNear(evaluator.compression(), 0.0f, 1e-6f);

  // Shrunk to half: 0.5 through the default curve.
  inputs.deform = myo_test::BuildMesh(Scaled(spindle, 0.5f));
  ASSERT_EQ(evaluator.Evaluate(FrameAt(1.0f), inputs), EdgeEvaluation::kEvaluated);
  ExpectAllNear(evaluator.compression(), 0.5f, 1e-5f);

  // Stretched: a longer surface reads 0, never a negative value.
  inputs.deform = myo_test::BuildMesh(Scaled(spindle, 3.0f));
  evaluator.Evaluate(FrameAt(2.0f), inputs);
  ExpectAllNear(evaluator.compression(), 0.0f, 0.0f);

  // The remap curve is not clamped: unchanged reads its value at 0.
  EdgeEvaluatorFrame frame = FrameAt(3.0f);
  frame.compression_remap.values = {-1.0f, 3.0f};
  inputs.deform = inputs.rest;
  ASSERT_EQ(evaluator.Evaluate(frame, inputs), EdgeEvaluation::kEvaluated);
  ExpectAllNear(evaluator.compression(), -1.0f, 1e-6f);
}

TEST(EdgeEvaluatorTest, MeshesThatDoNotMatchAreRefusedAtTheFirstDifference) {
  myo_test::LogCapture log;
  const PolygonMesh grid = SmallGrid();
  // The upper right quad split into two triangles: vertices 4 and 8 gain an edge.
  PolygonMesh split = grid;
  split.vertex_counts = {4, 4, 4, 3, 3};
  split.vertices = {0, 3, 4, 1, 1, 4, 5, 2, 3, 6, 7, 4, 4, 7, 8, 4, 8, 5};
  // Points 7 and 8 swapped in the loops: the same edge counts everywhere,
  // but the centre now meets 8 where it met 7.
  PolygonMesh swapped = grid;
  for (int32_t& v : swapped.vertices) v = v == 7 ? 8 : v == 8 ? 7 : v;
  PolygonMesh larger = grid;
  larger.points.insert(larger.points.end(), {9.0f, 0.0f, 9.0f});
  const std::vector<std::pair<PolygonMesh, std::string>> cases = {
      {split, "Number of connected edges do not match between the deformed mesh (5) and the rest mesh (4) for the "
              "vertex (4)"},
      {swapped, "Connected vertices indices do not match between meshes at vertex (4)"},
      {larger, "Number of vertices between deform mesh (10) and rest mesh (9) do not match."}};
  for (const auto& [deform, message] : cases) {
    EvaluatorInputs inputs;
    inputs.rest = myo_test::BuildMesh(grid);
    inputs.deform = myo_test::BuildMesh(deform);
    EdgeEvaluator evaluator(1);
    log.Clear();
    EXPECT_EQ(evaluator.Evaluate(FrameAt(0.0f), inputs), EdgeEvaluation::kFailed);
    EXPECT_EQ(log.Count("[MyoForge][Error] " + message), 1u);
    // Away from the initialization time the half-built cache is not used.
    EXPECT_NE(evaluator.Evaluate(FrameAt(1.0f), inputs), EdgeEvaluation::kEvaluated) << message;
  }

  // Initialized on matching meshes, then the deform mesh changes its count.
  EvaluatorInputs inputs;
  inputs.rest = myo_test::BuildMesh(grid);
  inputs.deform = inputs.rest;
  EdgeEvaluator evaluator(1);
  ASSERT_EQ(evaluator.Evaluate(FrameAt(0.0f), inputs), EdgeEvaluation::kEvaluated);
  inputs.deform = myo_test::BuildMesh(larger);
  const std::vector<float> before = evaluator.compression();
  EXPECT_EQ(evaluator.Evaluate(FrameAt(1.0f), inputs), EdgeEvaluation::kFailed);
  EXPECT_EQ(evaluator.error(), "Number of vertices at deform mesh (10) has changed since initialization (9).");
  EXPECT_EQ(evaluator.compression(), before);
}

TEST(EdgeEvaluatorTest, TopologyIsCachedUntilTheInitializationTimeComesRound) {
  const PolygonMesh grid = SmallGrid();
  EvaluatorInputs inputs;

  // No deform mesh: nothing initialized.
  EdgeEvaluator evaluator(1);
  EXPECT_EQ(evaluator.Evaluate(FrameAt(3.0f, 1.0f), inputs), EdgeEvaluation::kNoDeformMesh);

  // Nothing cached yet: any time initializes. Without a rest mesh the
  // evaluator is invalid.
  inputs.deform = myo_test::BuildMesh(grid);
  EXPECT_EQ(evaluator.Evaluate(FrameAt(3.0f, 1.0f), inputs), EdgeEvaluation::kNoRestMesh);
  inputs.rest = myo_test::BuildMesh(grid);
  ASSERT_EQ(evaluator.Evaluate(FrameAt(3.0f, 1.0f), inputs), EdgeEvaluation::kEvaluated);

  // A new rest mesh is not seen away from the initialization time.
  inputs.rest = myo_test::BuildMesh(Scaled(grid, 2.0f));
  ASSERT_EQ(evaluator.Evaluate(FrameAt(4.0f, 1.0f), inputs), EdgeEvaluation::kEvaluated);
  ExpectAllNear(evaluator.compression(), 0.0f, 1e-6f);

  // At the initialization time it is.
  ASSERT_EQ(evaluator.Evaluate(FrameAt(1.0f, 1.0f), inputs), EdgeEvaluation::kEvaluated);
  ExpectAllNear(evaluator.compression(), 0.5f, 1e-5f);
}

TEST(EdgeEvaluatorTest, ResultsDoNotDependOnTheThreadCount) {
  const PolygonMesh spindle = myo_scenes::MakeSpindle(9, 11, 4.0f, 1.0f);  // 101 points
  PolygonMesh deformed = spindle;
  std::srand(7);
  for (float& value : deformed.points) value += 0.2f * (float(std::rand()) / float(RAND_MAX) - 0.5f);
  EvaluatorInputs inputs;
  inputs.rest = myo_test::BuildMesh(spindle);
  inputs.deform = myo_test::BuildMesh(deformed);

  std::vector<std::vector<float>> results;
  for (int32_t threads : {1, 2, 3}) {
    EdgeEvaluator evaluator(threads);
    ASSERT_EQ(evaluator.Evaluate(FrameAt(0.0f), inputs), EdgeEvaluation::kEvaluated);
    results.push_back(evaluator.compression());
  }
  EXPECT_EQ(results[0], results[1]);
  EXPECT_EQ(results[0], results[2]);
  EXPECT_GT(std::count_if(results[0].begin(), results[0].end(), [](float v) { return v > 0.0f; }), 0);
}
