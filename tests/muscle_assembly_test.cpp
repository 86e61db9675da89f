// Building the muscle's tables from a mesh and its maps.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "core/kernels/edge_constraints_build.h"
#include "core/mesh/mesh_data.h"
#include "core/muscle/muscle_assembly.h"
#include "scenes/muscle_meshes.h"
#include "scenes/muscle_setup.h"
#include "support/log_capture.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"

using namespace myo_core;
using namespace myo_scenes;

namespace {

MeshData SpindleData(uint32_t rings = 6, uint32_t segments = 8) {
  return myo_test::BuildMesh(MakeSpindle(rings, segments, 10.0f, 2.0f));
}

const std::vector<std::string> kFiberChildren{"fibersX", "fibersY", "fibersZ"};

}  // namespace

TEST(EdgeBuildTest, RowsFollowEdgeIdsWithMeanResistancesAndBadValuesAreRaised) {
  myo_test::LogCapture log;
  MeshData mesh = SpindleData();
  const uint32_t n = mesh.PointCount();
  MapStore maps;
  std::vector<float> compression(n, 0.4f), masses(n, 1.0f);
  compression[mesh.edge_vertices[0]] = 3.0f;  // clamped to 1
  masses[0] = 0.0f;
  masses[3] = -1.0f;
  maps.SetAll("compressionResistanceList", "compressionResistance", 0, compression);
  maps.SetAll("massList", "mass", 0, masses);
  MuscleScene scene;
  MuscleAssemblyInputs inputs;
  inputs.fibers_scale = 0.0f;
  InitializeSolver(mesh, maps, inputs, scene.node, scene.solver);
  const EdgeConstraints& edges = *scene.solver.edge_constraints_;
  ASSERT_EQ(edges.RowCount(), mesh.EdgeCount());
  float shortest = 1e10f;
  for (uint32_t e = 0; e < mesh.EdgeCount(); ++e) {
    const int32_t a = mesh.edge_vertices[2 * e], b = mesh.edge_vertices[2 * e + 1];
    ASSERT_EQ(edges.edge_start_[e], a);
    ASSERT_EQ(edges.edge_end_[e], b);
    EXPECT_EQ(edges.rest_vectors_[3 * e], mesh.points[3 * b] - mesh.points[3 * a]);
    shortest = std::fmin(shortest, edges.rest_lengths_[e]);
  }
  EXPECT_EQ(edges.min_edge_length_, shortest);
  EXPECT_FLOAT_EQ(edges.edge_compression_[0], (1.0f + 0.4f) * 0.5f);

  // Masses below 1e-6 and a fiber scale below its minimum are raised, each with its warning.
  EXPECT_EQ(scene.node.masses_map_[0], 0.000001f);
  EXPECT_EQ(scene.node.masses_map_[3], 0.000001f);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Mass values lower than 1e-06 are not supported by the Muscle solver. "
                      "Non supported mass values are replaced with 1e-06 minimum mass values."),
            1u);
  EXPECT_EQ(edges.fibers_scale_, 0.001f);
  EXPECT_EQ(log.Count("[MyoForge][Warning] Unsupported fiber scale value provided. Minimum supported value will "
                      "be used instead (0.001)."),
            1u);
}

TEST(EdgeBuildTest, FibersFromTendonsRunFromEndToEndAndAreStored) {
  MeshData mesh = SpindleData(12, 8);
  const uint32_t n = mesh.PointCount();
  MapStore maps;
  std::vector<float> tendons(n, 0.0f);
  for (uint32_t i : EndPoints(mesh.points)) tendons[i] = 1.0f;
  maps.SetAll("tendonsList", "tendons", 0, tendons);
  MuscleScene scene;
  InitializeSolver(mesh, maps, MuscleAssemblyInputs{}, scene.node, scene.solver);
  const EdgeConstraints& edges = *scene.solver.edge_constraints_;
  // The derived fibers were written to the list so that the next build finds them.
  EXPECT_EQ(maps.ElementCount("fibersList", "fibers", 0), n);
  // Fibers lie along the muscle and have the display length.
  for (uint32_t i = 0; i < n; ++i) {
    const float* f = &edges.fibers_[3 * i];
    const float length = std::sqrt(f[0] * f[0] + f[1] * f[1] + f[2] * f[2]);
    if (length == 0.0f) continue;
    EXPECT_NEAR(length, edges.fibers_scale_ * edges.min_edge_length_, 1e-4f);
  }
  float along = 0.0f;
  for (uint32_t e = 0; e < edges.RowCount(); ++e) along += std::fabs(edges.edge_fibers_[3 * e]);
  EXPECT_GT(along / edges.RowCount(), 0.7f);
  EXPECT_EQ(edges.edge_tendons_[0], (tendons[edges.edge_start_[0]] + tendons[edges.edge_end_[0]]) * 0.5f);
}

TEST(EdgeBuildTest, ACompleteStoredFiberListIsTakenAsItStands) {
  MeshData mesh = SpindleData();
  const uint32_t n = mesh.PointCount();
  MapStore maps;
  std::vector<float> stored;
  for (uint32_t i = 0; i < n; ++i) stored.insert(stored.end(), {0.0f, 0.0f, 1.0f});
  maps.WriteVectors("fibersList", "fibers", kFiberChildren, 0, stored);
  MuscleScene scene;
  InitializeSolver(mesh, maps, MuscleAssemblyInputs{}, scene.node, scene.solver);
  EXPECT_FALSE(scene.node.consolidate_fibers_);
  // Projected on the surface: point 1, on the first ring at angle 0 where z
  // is tangent, keeps its z direction.
  EXPECT_GT(scene.solver.edge_constraints_->fibers_[3 * 1 + 2], 0.0f);

  // An incomplete list at the first build means: derive from the tendons.
  MapStore partial;
  partial.SetElement("fibersList", "fibers", 0, 0, {1.0f, 0.0f, 0.0f});
  MuscleScene derived;
  InitializeSolver(mesh, partial, MuscleAssemblyInputs{}, derived.node, derived.solver);
  EXPECT_TRUE(derived.node.consolidate_fibers_);
}

TEST(EdgeBuildTest, ATriangulationMissingPolygonsIsReportedAndLeavesEmptyRows) {
  myo_test::LogCapture log;
  MeshData mesh = SpindleData();
  mesh.polygon_triangle_counts.pop_back();
  MapStore maps;
  MuscleScene scene;
  InitializeSolver(mesh, maps, MuscleAssemblyInputs{}, scene.node, scene.solver);
  EXPECT_EQ(log.Count("[MyoForge][Error] Unexpected number of polygons during reference mesh processing"), 1u);
  const EdgeConstraints& edges = *scene.solver.edge_constraints_;
  EXPECT_EQ(edges.RowCount(), mesh.EdgeCount());
  for (float r : edges.rest_vectors_) ASSERT_EQ(r, 0.0f);
  // The rest of the build still ran, and a step does not crash.
  EXPECT_EQ(scene.solver.lambdas_.size(), mesh.EdgeCount() + 1u);
  ApplyFrameSettings(FrameSettings{}, scene.solver);
  Step(scene.solver);
}

TEST(ComputeFibersTest, DiffusionStopsOnMeshesTendonsCannotReach) {
  // Two separate triangles; tendons on the first only. The second never gets
  // a tendon value, and the diffusion must still end.
  EdgeConstraints edges;
  edges.edge_start_ = {0, 1, 2, 3, 4, 5};
  edges.edge_end_ = {1, 2, 0, 4, 5, 3};
  edges.rest_vectors_ = {1, 0, 0, -1, 1, 0, 0, -1, 0, 1, 0, 0, -1, 1, 0, 0, -1, 0};
  edges.tendons_ = {1, 0, 0, 0, 0, 0};
  ComputeFibersFromTendons(edges, 6);
  ASSERT_EQ(edges.fibers_.size(), 18u);
  EXPECT_NE(edges.fibers_[0], 0.0f);
  EXPECT_EQ(std::vector<float>(edges.fibers_.begin() + 9, edges.fibers_.end()), std::vector<float>(9, 0.0f));
}

// The diffusion runs over the levels of the edge schedule: the fibers of
// table order for any number of threads.
TEST(ComputeFibersTest, DiffusionOverLevelsGivesTheFibersOfTableOrder) {
  MeshData mesh = SpindleData(12, 10);
  MapStore maps;
  std::vector<float> tendons(mesh.PointCount(), 0.0f);
  for (uint32_t i : EndPoints(mesh.points)) tendons[i] = 1.0f;
  maps.SetAll("tendonsList", "tendons", 0, tendons);
  MuscleScene scene;
  InitializeSolver(mesh, maps, MuscleAssemblyInputs{}, scene.node, scene.solver);
  EdgeConstraints scheduled = *scene.solver.edge_constraints_;
  EdgeConstraints table = scheduled;
  table.schedule_.clear();
  ComputeFibersFromTendons(table, mesh.PointCount());
  ASSERT_NE(table.fibers_, std::vector<float>(table.fibers_.size(), 0.0f));
  for (int threads = 1; threads <= 4; ++threads) {
    myo_test::ScopedLevelThreads team(threads);
    ComputeFibersFromTendons(scheduled, mesh.PointCount());
    EXPECT_TRUE(myo_test::SameBits(scheduled.fibers_, table.fibers_)) << threads << " threads";
  }
}

// A rebuild keeps the tendons' diffusion and the closest-point query of the
// last build while their inputs stay the same, and gives the tables of a
// first build from the same points; a changed map or mesh is taken anew.
TEST(MuscleAssemblyTest, ARebuildReusesOnlyWhatItsInputsLeaveUnchanged) {
  const MeshData mesh = SpindleData(10, 12);
  const uint32_t n = mesh.PointCount();
  MapStore maps;
  std::vector<float> tendons(n, 0.0f);
  for (uint32_t i : EndPoints(mesh.points)) tendons[i] = 1.0f;
  maps.SetAll("tendonsList", "tendons", 0, tendons);
  MuscleAssemblyInputs later;
  later.reset_positions = false;

  MuscleScene muscle;
  MapStore muscle_maps = maps;
  InitializeSolver(mesh, muscle_maps, MuscleAssemblyInputs{}, muscle.node, muscle.solver);
  std::vector<float> settled = muscle.solver.positions_;  // as a preroll might leave them
  for (std::size_t k = 0; k < settled.size(); ++k) settled[k] += 0.05f * std::sin(static_cast<float>(k));

  // A first build on the settled points, the host's mesh and the given maps.
  const auto first_build = [&](const MeshData& host_mesh, const MapStore& first_maps) {
    auto scene = std::make_unique<MuscleScene>();
    MapStore copy = first_maps;
    scene->solver.positions_ = settled;
    scene->solver.previous_positions_ = settled;
    InitializeSolver(host_mesh, copy, later, scene->node, scene->solver);
    return scene;
  };
  const auto expect_same_tables = [](const MuscleScene& a, const MuscleScene& b, const char* what) {
    const EdgeConstraints &x = *a.solver.edge_constraints_, &y = *b.solver.edge_constraints_;
    EXPECT_TRUE(myo_test::SameBits(x.fibers_, y.fibers_)) << what;
    EXPECT_TRUE(myo_test::SameBits(x.edge_fibers_, y.edge_fibers_)) << what;
    EXPECT_TRUE(myo_test::SameBits(x.fiber_bary_u_, y.fiber_bary_u_)) << what;
    EXPECT_EQ(x.fiber_triangles_, y.fiber_triangles_) << what;
  };

  muscle.solver.positions_ = muscle.solver.previous_positions_ = settled;
  InitializeSolver(mesh, muscle_maps, later, muscle.node, muscle.solver);
  expect_same_tables(muscle, *first_build(mesh, maps), "same inputs");

  tendons.assign(n, 0.0f);
  tendons[n / 2] = 1.0f;
  maps.SetAll("tendonsList", "tendons", 0, tendons);
  muscle_maps.SetAll("tendonsList", "tendons", 0, tendons);
  muscle.solver.positions_ = muscle.solver.previous_positions_ = settled;
  InitializeSolver(mesh, muscle_maps, later, muscle.node, muscle.solver);
  expect_same_tables(muscle, *first_build(mesh, maps), "a new tendon map");

  MeshData moved = mesh;
  for (float& coordinate : moved.points) coordinate *= 1.2f;
  muscle.solver.positions_ = muscle.solver.previous_positions_ = settled;
  InitializeSolver(moved, muscle_maps, later, muscle.node, muscle.solver);
  expect_same_tables(muscle, *first_build(moved, maps), "a moved mesh");
}

TEST(MuscleAssemblyTest, MassesByDensityUseTheMeshVolume) {
  MeshData mesh = SpindleData(10, 12);
  MapStore maps;
  MuscleScene scene;
  scene.solver.point_mass_mode_ = 0;
  scene.solver.density_ = 1.06f;
  InitializeSolver(mesh, maps, MuscleAssemblyInputs{}, scene.node, scene.solver);
  const float measure = scene.solver.mesh_measure_;
  // The measure is the enclosed volume: six times it is the volume row's sum.
  EXPECT_NEAR(measure * 6.0f, scene.solver.volume_constraint_->rest_volume_, 1e-3f * measure * 6.0f);
  float total = 0.0f;
  for (float m : scene.solver.masses_) total += m;
  EXPECT_NEAR(total, 1.06f * measure, 1e-3f * total);
}

// The shape rows take each point's connected points in the order the host's
// vertex iterator gives them, which need not be the order of its connected
// edges; the neighbour lists kept for smoothing follow the edges.
TEST(ShapeBuildTest, RowsFollowTheHostsOrderOfConnectedPoints) {
  MeshData mesh = SpindleData(6, 8);
  MeshData host = mesh;  // a host that starts each point's list one further on
  for (uint32_t v = 0; v < host.PointCount(); ++v) {
    const int32_t begin = host.vertex_edge_offsets[v], end = host.vertex_edge_offsets[v + 1];
    if (end - begin > 1)
      std::rotate(host.vertex_connected.begin() + begin, host.vertex_connected.begin() + begin + 1,
                  host.vertex_connected.begin() + end);
  }
  MapStore maps;
  maps.SetAll("shapePreservationList", "shapePreservation", 0, std::vector<float>(mesh.PointCount(), 1.0f));
  MuscleAssemblyInputs inputs;
  MuscleScene ascending, hosted;
  InitializeSolver(mesh, maps, inputs, ascending.node, ascending.solver);
  InitializeSolver(host, maps, inputs, hosted.node, hosted.solver);
  const ShapeConstraints& a = *ascending.solver.shape_constraints_;
  const ShapeConstraints& b = *hosted.solver.shape_constraints_;
  ASSERT_GT(b.RowCount(), 0u);
  ASSERT_NE(b.first_points_, a.first_points_);  // the host's order makes a difference

  ShapeConstraints expected;
  std::vector<float> lambdas;
  BuildShapeConstraints(expected, host.points, hosted.node.shape_map_, host.vertex_connected,
                        hosted.node.vertex_neighbor_counts_, hosted.node.vertex_neighbor_offsets_, lambdas);
  EXPECT_EQ(b.first_points_, expected.first_points_);
  EXPECT_EQ(b.centre_points_, expected.centre_points_);
  EXPECT_EQ(b.third_points_, expected.third_points_);
  EXPECT_EQ(hosted.node.vertex_neighbors_, host.vertex_neighbors);
}
