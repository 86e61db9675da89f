// Per-point activations of the shape solver: ring neighbourhoods, the lagging
// recursion over patch fibers, loading the patches file at initialisation,
// the debug fibers, and the activation modes with their messages.

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "core/activation/activation_modes.h"
#include "core/activation/muscle_data_init.h"
#include "core/activation/patch_activations.h"
#include "core/patches/muscle_patches_file.h"
#include "core/tables/enum_tables.h"
#include "scenes/muscle_meshes.h"
#include "support/command_runner.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"

using myo_core::MeshData;
using myo_core::MusclePatchesData;
using myo_core::RampEntries;

namespace {

// A 3 x 3 grid of points 0..8, row by row, with connected lists in an order
// of the host's own, not ascending; point 9 has no neighbours.
MeshData HandGrid() {
  MeshData mesh;
  mesh.points.assign(30, 0.0f);
  const std::vector<std::vector<int32_t>> connected = {{1, 3},    {2, 0, 4}, {5, 1},    {0, 4, 6},    {5, 7, 3, 1},
                                                       {8, 4, 2}, {3, 7},    {8, 6, 4}, {7, 5},       {}};
  mesh.vertex_edge_offsets.push_back(0);
  for (const auto& list : connected) {
    mesh.vertex_connected.insert(mesh.vertex_connected.end(), list.begin(), list.end());
    mesh.vertex_edge_offsets.push_back(static_cast<int32_t>(mesh.vertex_connected.size()));
  }
  return mesh;
}

// The list of point v among the flattened smoothing arrays.
std::vector<int32_t> ListOf(const MusclePatchesData& data, uint32_t v) {
  std::size_t begin = 0;
  for (uint32_t i = 0; i < v; ++i) begin += static_cast<std::size_t>(data.smoothing_counts_[i]);
  return {data.smoothing_patch_ids_.begin() + static_cast<std::ptrdiff_t>(begin),
          data.smoothing_patch_ids_.begin() + static_cast<std::ptrdiff_t>(begin + data.smoothing_counts_[v])};
}

// One point that moved by `displacement`, its list, and its activation.
struct OnePoint {
  std::vector<float> rest{0.0f, 0.0f, 0.0f};
  std::vector<float> deform;
  std::vector<float> fibers;
  std::vector<int32_t> list;
  float activation = 0.0f;
  bool bidirectional = false;

  float Step() {
    std::vector<float> activations{activation};
    EXPECT_TRUE(myo_core::ComputePatchActivations(rest, deform, fibers, {static_cast<int32_t>(list.size())}, list,
                                                  bidirectional, activations));
    return activation = activations[0];
  }
};

std::string Warning(const std::string& message) { return "[MyoForge][Warning] " + message; }
std::string Info(const std::string& message) { return "[MyoForge][Info] " + message; }

const std::string kRefusedFile = Warning(
    "Muscles patches data is invalid, not provided or does not match the number of vertices of the simulated mesh.");

}  // namespace

TEST(PatchActivationTest, SmoothingListsFollowTheHostsOrderRingByRing) {
  MeshData mesh = HandGrid();
  MusclePatchesData data;
  data.patch_ids_ = {10, 11, 12, 13, 14, 15, 16, 17, -1, 19};
  // Breadth-first by hand: the ring of each point in the order its
  // neighbours list them, the next ring from those in the order found.
  ASSERT_TRUE(myo_core::BuildSmoothingArrays(mesh, 1, data));
  EXPECT_EQ(ListOf(data, 0), (std::vector<int32_t>{10, 11, 13}));
  EXPECT_EQ(ListOf(data, 4), (std::vector<int32_t>{14, 15, 17, 13, 11}));
  ASSERT_TRUE(myo_core::BuildSmoothingArrays(mesh, 2, data));
  EXPECT_EQ(ListOf(data, 4), (std::vector<int32_t>{14, 15, 17, 13, 11, -1, 12, 16, 10}));
  // The walk ends at a ring that finds nothing new.
  ASSERT_TRUE(myo_core::BuildSmoothingArrays(mesh, 20, data));
  EXPECT_EQ(data.smoothing_counts_, (std::vector<int32_t>{9, 9, 9, 9, 9, 9, 9, 9, 9, 1}));
  for (int32_t rings : {0, -5}) {
    ASSERT_TRUE(myo_core::BuildSmoothingArrays(mesh, rings, data));
    EXPECT_EQ(data.smoothing_patch_ids_, data.patch_ids_);
  }

  // Entries outside the points are not followed.
  mesh.vertex_connected[0] = 99;
  mesh.vertex_connected[1] = -1;
  ASSERT_TRUE(myo_core::BuildSmoothingArrays(mesh, 1, data));
  EXPECT_EQ(ListOf(data, 0), (std::vector<int32_t>{10}));
  // Ids that are not one per point build nothing.
  data.patch_ids_.pop_back();
  EXPECT_FALSE(myo_core::BuildSmoothingArrays(mesh, 1, data));
  EXPECT_TRUE(data.smoothing_counts_.empty() && data.smoothing_patch_ids_.empty());
}

TEST(PatchActivationTest, ContributionIsTheMotionAlongTheFiberUpToItsLength) {
  // Ids 3 and 7 below name no fiber triple (a patch left empty by the
  // learning, and a partial triple after): they add 0 but count.
  const float c1 = 0.5f / std::sqrt(4.25f), c2 = 2.0f / 4.0f;
  const std::vector<float> along_x = {2.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  struct Case {
    const char* what;
    std::vector<float> fibers, deform;
    std::vector<int32_t> list;
    float before;
    bool bidirectional;
    float expected;
  };
  const std::vector<Case> cases = {
      {"half the fiber's length along it", along_x, {1, 0, 0}, {1}, 0.0f, false, 0.5f},
      {"longer than the fiber: the cosine", along_x, {3, 3, 0}, {1}, 0.0f, false, std::sqrt(0.5f)},
      {"against the fiber", along_x, {-1, 0, 0}, {1}, 0.0f, false, 0.0f},
      {"against the fiber, both directions", along_x, {-1, 0, 0}, {1}, 0.0f, true, 0.5f},
      {"a fiber of length 0", along_x, {1, 0, 0}, {2, 2}, 0.0f, false, 0.0f},
      {"id -1 alone: the old value over the count", along_x, {1, 0, 0}, {-1, -1}, 0.6f, false, 0.3f},
      {"ids beyond the triples", {1, 0, 0, 0, 4, 0, 5}, {0.5f, 2, 0}, {1, 2, 3, 7}, 0.0f, false, (c1 + c2) / 4.0f},
      // The previous value stays in the sum: a = (a + 1) / 3 from 0, then 1/3.
      {"still pose, first frame", {1, 0, 0, 0, 1, 0}, {1, 0, 0}, {1, 2, -1}, 0.0f, false, 1.0f / 3.0f},
  };
  for (const Case& c : cases) {
    OnePoint point;
    point.fibers = c.fibers;
    point.deform = c.deform;
    point.list = c.list;
    point.activation = c.before;
    point.bidirectional = c.bidirectional;
    EXPECT_FLOAT_EQ(point.Step(), c.expected) << c.what;
  }
  // The still pose settles at the sum over the count minus one.
  OnePoint still{{0, 0, 0}, {1, 0, 0}, {1, 0, 0, 0, 1, 0}, {1, 2, -1}};
  for (int frame = 0; frame < 40; ++frame) still.Step();
  EXPECT_FLOAT_EQ(still.activation, 0.5f);
}

TEST(PatchActivationTest, EachPointComputesItsOwnContributionsOnce) {
  // Both points list patch 1 twice; only point 0 moves. A contribution kept
  // from point 0 would leak into point 1.
  const std::vector<float> rest(6, 0.0f);
  const std::vector<float> deform = {1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  std::vector<float> activations = {0.0f, 0.0f};
  ASSERT_TRUE(myo_core::ComputePatchActivations(rest, deform, {1.0f, 0.0f, 0.0f}, {2, 2}, {1, 1, 1, 1}, false,
                                                activations));
  EXPECT_EQ(activations, (std::vector<float>{1.0f, 0.0f}));
}

TEST(PatchActivationTest, InitLoadsTheFileAndWarnsOfARefusedOneEachTime) {
  myo_test::LogCapture log;
  myo_test::TemporaryDirectory dir;
  const MeshData grid = myo_test::BuildMesh(myo_scenes::MakeGrid(2, 2, 2.0f, 2.0f));  // 3 x 3 points, edges 1
  const std::string path = dir.File("grid.mmp");
  ASSERT_TRUE(myo_core::WriteMusclePatchesFile(path, 9, {1, 1, 1, 1, 1, 1, 1, 1, -1}, {{3.0, 0.0, 0.0}}));

  MusclePatchesData data;
  myo_core::InitMuscleData(path, 1, grid, 0.5f, data);
  ASSERT_TRUE(data.patches_loaded_);
  ASSERT_EQ(data.smoothing_counts_.size(), 9u);
  EXPECT_EQ(data.shortest_edge_, 1.0f);

  // A refused file (another vertex count) leaves nothing loaded, and is not
  // read again either: its warning comes at each initialisation.
  const std::string wrong = dir.File("wrong.mmp");
  ASSERT_TRUE(myo_core::WriteMusclePatchesFile(wrong, 8, std::vector<int32_t>(8, 1), {{1.0, 0.0, 0.0}}));
  myo_core::ActivationSetup setup{myo_core::kActivationMusclePatches, wrong, 2, 1.0f};
  log.Clear();
  myo_core::InitActivations(setup, {}, grid, data);
  EXPECT_FALSE(data.patches_loaded_);
  EXPECT_TRUE(data.patch_ids_.empty() && data.vertex_fibers_.empty());
  ASSERT_TRUE(myo_core::WriteMusclePatchesFile(wrong, 9, std::vector<int32_t>(9, 1), {{1.0, 0.0, 0.0}}));
  myo_core::InitActivations(setup, {}, grid, data);
  EXPECT_FALSE(data.patches_loaded_);
  EXPECT_EQ(log.Count(kRefusedFile), 2u);
}

TEST(PatchActivationTest, PatchModeRemapsAndWarnsOnlyWhenVerbose) {
  myo_test::LogCapture log;
  myo_test::TemporaryDirectory dir;
  const MeshData grid = myo_test::BuildMesh(myo_scenes::MakeGrid(2, 2, 2.0f, 2.0f));
  ASSERT_TRUE(myo_core::WriteMusclePatchesFile(dir.File("g.mmp"), 9, std::vector<int32_t>(9, 1), {{0.0, 2.0, 0.0}}));
  MusclePatchesData data;
  data.rest_positions_ = grid.points;
  data.activations_.assign(9, 0.0f);

  // The whole mesh lifted by half the fiber: 0.5 everywhere, then halved by
  // the remap.
  MeshData lifted = grid;
  for (std::size_t k = 1; k < lifted.points.size(); k += 3) lifted.points[k] += 1.0f;
  myo_core::ActivationFrame frame;
  frame.remap = RampEntries{{0.0f, 1.0f}, {0.0f, 0.5f}, {1, 1}};
  frame.deform_mesh = &lifted;
  const myo_core::ActivationSetup setup{myo_core::kActivationMusclePatches, dir.File("g.mmp"), 1, 1.0f};
  myo_core::InitActivations(setup, frame, grid, data);
  EXPECT_EQ(data.activations_, std::vector<float>(9, 0.25f));
  EXPECT_EQ(log.lines().back(), Info("Using point activations driven by muscle patches file and deformed mesh."));

  // Each deform mesh that cannot serve, with its warning at initialisation;
  // before a step, silently, and the activations drop to 0.
  const MeshData empty;
  MeshData fewer = grid;
  fewer.points.resize(24);
  const std::vector<std::pair<const MeshData*, std::string>> unusable = {
      {nullptr, "Could not compute activations from Muscle Patches file: deform mesh is null or not provided."},
      {&empty, "Could not compute activations from Muscle Patches file: deform mesh data could not be retrieved."},
      {&fewer, "Inconsistency in the amount of vertices between the deform mesh and the mesh used for computing "
               "muscle activations."}};
  for (const auto& [mesh, message] : unusable) {
    frame.deform_mesh = mesh;
    log.Clear();
    myo_core::InitActivations(setup, frame, grid, data);
    EXPECT_EQ(log.Count(Warning(message)), 1u) << message;
    EXPECT_EQ(data.activations_, std::vector<float>(9, 0.25f));
    log.Clear();
    myo_core::UpdateActivations(myo_core::kActivationMusclePatches, frame, data);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(data.activations_, std::vector<float>(9, 0.0f));
    data.activations_.assign(9, 0.25f);
  }
}

TEST(PatchActivationTest, PlugModeReadsTheElementsThereAre) {
  myo_test::LogCapture log;
  MusclePatchesData data;
  data.activations_ = {0.1f, 0.2f, 0.3f, 0.4f};
  data.vertex_fibers_ = {1.0f, 0.0f, 0.0f};
  // Fewer elements than points, one missing, one beyond the ramp's range.
  const myo_core::PlugActivationValues values = {0.5f, std::nullopt, 3.0f};
  myo_core::ActivationFrame frame;
  frame.remap = RampEntries{{0.0f, 1.0f}, {0.0f, 2.0f}, {1, 1}};
  frame.plug_values = &values;
  const myo_core::ActivationSetup setup{myo_core::kActivationPlugValues, "", 1, 1.0f};
  myo_core::InitActivations(setup, frame, MeshData(), data);
  EXPECT_EQ(data.activations_, (std::vector<float>{1.0f, 0.2f, 1.0f, 0.4f}));
  EXPECT_TRUE(data.vertex_fibers_.empty());
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             Info("Using point activations driven by input array plug."),
                             Warning("Activation remap contains non-normalized inputs. The output will be clamped "
                                     "between 0 and 1.")}));

  // No element for the geometry: a warning at initialisation, 0 in a step.
  frame.plug_values = nullptr;
  frame.remap = RampEntries{{0.0f, 1.0f}, {0.0f, 1.0f}, {1, 1}};
  log.Clear();
  myo_core::InitActivations(setup, frame, MeshData(), data);
  EXPECT_EQ(log.lines(), std::vector<std::string>{Warning("Input array data is invalid or not provided.")});
  myo_core::UpdateActivations(myo_core::kActivationPlugValues, frame, data);
  EXPECT_EQ(data.activations_, std::vector<float>(4, 0.0f));
}
