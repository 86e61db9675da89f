#include "core/kernels/edge_constraints_build.h"

#include <algorithm>

#include "core/log/logger.h"
#include "core/log/stream_text.h"
#include "core/solver/parallel_levels.h"

namespace myo_core {

namespace {

const std::vector<std::string>& FiberChildren() {
  static const std::vector<std::string> children{"fibersX", "fibersY", "fibersZ"};
  return children;
}

void ReadClampedMap(const MapPort& maps, const char* list, const char* element, uint32_t index,
                    uint32_t count, std::vector<float>& out) {
  maps.ReadFloats(list, element, index, count, 1.0f, out);
  for (float& value : out) value = std::clamp(value, 0.0f, 1.0f);
}

}  // namespace

void BuildEdgeConstraints(const MeshData& mesh, MapPort& maps, uint32_t map_index,
                          float fibers_scale, MuscleNodeState& node, SolverData& solver,
                          EdgeConstraints& edges) {
  const uint32_t n = solver.point_count_;
  const uint32_t edge_count = mesh.EdgeCount();
  const bool first_initialisation = edges.fibers_.empty();

  edges.rest_lengths_.assign(edge_count, 0.0f);
  edges.rest_vectors_.assign(3 * edge_count, 0.0f);
  edges.edge_fibers_.assign(3 * edge_count, 0.0f);
  edges.edge_tendons_.assign(edge_count, 0.0f);
  edges.edge_compression_.assign(edge_count, 0.0f);
  edges.edge_stretching_.assign(edge_count, 0.0f);
  edges.edge_start_.assign(edge_count, 0);
  edges.edge_end_.assign(edge_count, 0);
  edges.tendons_.assign(n, 0.0f);
  edges.fibers_.assign(3 * n, 0.0f);
  edges.fiber_bary_u_.assign(n, 0.0f);
  edges.fiber_bary_v_.assign(n, 0.0f);
  edges.fiber_triangles_.assign(3 * n, 0);
  edges.lambda_base_ = ReserveLambdaRows(solver.lambdas_, edge_count);

  edges.fibers_scale_ = fibers_scale;
  if (edges.fibers_scale_ < 0.001f) {
    edges.fibers_scale_ = 0.001f;
    LogWarning("Unsupported fiber scale value provided. Minimum supported value will be used instead (" +
               StreamText(edges.fibers_scale_) + ").");
  }
  edges.inverse_masses_.assign(n, 1.0f);
  ReadClampedMap(maps, "compressionResistanceList", "compressionResistance", map_index, n, node.compression_map_);
  ReadClampedMap(maps, "stretchingResistanceList", "stretchingResistance", map_index, n, node.stretching_map_);

  if (node.polygon_triangle_counts_.size() != mesh.PolygonCount()) {
    ReportError("Unexpected number of polygons during reference mesh processing", "");
    ScheduleEdgeRows(edges, n);
    return;
  }
  node.polygon_first_triangles_.resize(node.polygon_triangle_counts_.size());
  int32_t first = 0;
  for (std::size_t p = 0; p < node.polygon_triangle_counts_.size(); ++p) {
    node.polygon_first_triangles_[p] = first;
    first += node.polygon_triangle_counts_[p];
  }

  // Rest vectors and lengths, ends in the order the mesh gives them.
  const float* p = solver.positions_.data();
  edges.min_edge_length_ = 1e10f;
  for (uint32_t e = 0; e < edge_count; ++e) {
    const int32_t a = mesh.edge_vertices[2 * e];
    const int32_t b = mesh.edge_vertices[2 * e + 1];
    const Vec3 rest = Load3(p, b) - Load3(p, a);
    const float length = Length(rest);
    Store3(edges.rest_vectors_.data(), e, rest);
    edges.rest_lengths_[e] = length;
    edges.edge_start_[e] = a;
    edges.edge_end_[e] = b;
    edges.edge_compression_[e] = (node.compression_map_[a] + node.compression_map_[b]) * 0.5f;
    edges.edge_stretching_[e] = (node.stretching_map_[a] + node.stretching_map_[b]) * 0.5f;
    edges.min_edge_length_ = std::min(edges.min_edge_length_, length);
  }
  ScheduleEdgeRows(edges, n);

  maps.ReadFloats("tendonsList", "tendons", map_index, n, 0.0f, edges.tendons_);
  for (uint32_t e = 0; e < edge_count; ++e)
    edges.edge_tendons_[e] = (edges.tendons_[edges.edge_start_[e]] + edges.tendons_[edges.edge_end_[e]]) * 0.5f;

  // A complete stored fiber list is taken as it stands at the first build;
  // otherwise the fibers follow from the tendons and are stored for the next.
  if (first_initialisation) node.consolidate_fibers_ = maps.ElementCount("fibersList", "fibers", 0) != n;
  if (node.consolidate_fibers_) {
    ComputeFibersFromTendons(edges, n, &node.diffused_tendons_);
    maps.WriteVectors("fibersList", "fibers", FiberChildren(), 0, edges.fibers_);
  } else {
    maps.ReadVectors("fibersList", "fibers", FiberChildren(), 0, n, 0.0f, edges.fibers_);
  }

  // Each point's projection reads the shared query and writes its own
  // entries only.
#pragma omp parallel for schedule(static) if (n >= kParallelPrepareRows)
  for (int64_t i = 0; i < static_cast<int64_t>(n); ++i) {
    const uint32_t point = static_cast<uint32_t>(i);
    float fiber[3] = {edges.fibers_[3 * i], edges.fibers_[3 * i + 1], edges.fibers_[3 * i + 2]};
    ProjectVertexFiber(point, fiber, node, solver, edges);
  }
  for (uint32_t e = 0; e < edge_count; ++e) {
    const Vec3 mean = (Load3(edges.fibers_.data(), edges.edge_start_[e]) +
                       Load3(edges.fibers_.data(), edges.edge_end_[e])) * 0.5f;
    Store3(edges.edge_fibers_.data(), e, NormalizeSafe(mean));
  }
}

namespace {

// One diffusion pass: for every edge in table order, in place, each end takes
// a quarter of the other's value (the start first, then the end with the
// start's new value). Rows of one level of the schedule share no point, so
// the levels run over the threads with the result of table order.
void DiffusionPass(const EdgeConstraints& edges, std::vector<float>& t) {
  float* values = t.data();
  const int32_t* starts = edges.edge_start_.data();
  const int32_t* ends = edges.edge_end_.data();
  const auto diffuse = [&](uint32_t e) {
    float& ta = values[starts[e]];
    float& tb = values[ends[e]];
    ta = tb * 0.25f + ta * 0.75f;
    tb = ta * 0.25f + tb * 0.75f;
  };
  if (edges.schedule_.size() != edges.RowCount()) {
    for (uint32_t e = 0; e < edges.RowCount(); ++e) diffuse(e);
    return;
  }
  const uint32_t* order = edges.schedule_.data();
  ForEachLevelChunk(edges.schedule_levels_, [&](uint32_t begin, uint32_t end) {
    for (uint32_t k = begin; k < end; ++k) diffuse(order[k]);
  });
}

// The tendon map diffused until every point carries some tendon value, or
// none does. A pass that changes nothing is a fixed point: the count can no
// longer change, so the loop ends there too (a part of the mesh that no
// tendon reaches).
std::vector<float> DiffuseTendons(const EdgeConstraints& edges, uint32_t point_count) {
  std::vector<float> t = edges.tendons_;  // N
  t.resize(point_count, 0.0f);
  std::vector<float> before;
  for (;;) {
    before = t;
    DiffusionPass(edges, t);
    uint32_t below = 0;
    for (float value : t) below += value < 0.001f ? 1u : 0u;
    if (below == 0 || below == point_count) break;
    if (t == before) break;
  }
  return t;
}

}  // namespace

void ComputeFibersFromTendons(EdgeConstraints& edges, uint32_t point_count, DiffusedTendons* cache) {
  edges.fibers_.assign(3 * point_count, 0.0f);
  const uint32_t edge_count = edges.RowCount();
  std::vector<float> t;
  if (cache != nullptr && cache->values.size() == point_count && cache->tendons == edges.tendons_ &&
      cache->starts == edges.edge_start_ && cache->ends == edges.edge_end_) {
    t = cache->values;
  } else {
    t = DiffuseTendons(edges, point_count);
    if (cache != nullptr) *cache = DiffusedTendons{edges.tendons_, edges.edge_start_, edges.edge_end_, t};
  }

  for (uint32_t e = 0; e < edge_count; ++e) {
    const int32_t a = edges.edge_start_[e];
    const int32_t b = edges.edge_end_[e];
    const float g = t[b] - t[a];
    const Vec3 u = NormalizeSafe(Load3(edges.rest_vectors_.data(), e));
    Store3(edges.fibers_.data(), a, Load3(edges.fibers_.data(), a) + u * g);
    Store3(edges.fibers_.data(), b, Load3(edges.fibers_.data(), b) + u * g);
  }
}

void ProjectVertexFiber(uint32_t i, float fiber[3], const MuscleNodeState& node,
                        const SolverData& solver, EdgeConstraints& edges) {
  const Vec3 p = Load3(solver.positions_.data(), i);
  const Vec3 u = NormalizeSafe(Vec3{fiber[0], fiber[1], fiber[2]});
  const Vec3 tip = p + u * edges.min_edge_length_;

  ClosestPointHit hit;
  const float query[3] = {tip.x, tip.y, tip.z};
  const bool found = node.reference_mesh_query_.Closest(query, -1.0f, hit);
  Vec3 v{0.0f, 0.0f, 0.0f};
  if (found) v = Vec3{hit.point[0], hit.point[1], hit.point[2]} - p;
  const bool degenerate = !found || static_cast<double>(Length(v)) < kEpsilonDouble;
  v = NormalizeSafe(v) * (edges.fibers_scale_ * edges.min_edge_length_);

  fiber[0] = v.x;
  fiber[1] = v.y;
  fiber[2] = v.z;
  Store3(edges.fibers_.data(), i, v);
  edges.fiber_bary_u_[i] = hit.bary_u;
  edges.fiber_bary_v_[i] = hit.bary_v;
  int32_t* corners = &edges.fiber_triangles_[3 * i];
  const bool polygon_known =
      found && hit.polygon >= 0 && static_cast<std::size_t>(hit.polygon) < node.polygon_first_triangles_.size();
  const int32_t triangle = polygon_known ? node.polygon_first_triangles_[hit.polygon] + hit.triangle_in_polygon : -1;
  const bool known = triangle >= 0 && 3 * static_cast<std::size_t>(triangle) + 2 < node.triangle_vertices_.size();
  for (int k = 0; k < 3; ++k)
    corners[k] = degenerate || !known ? 0 : node.triangle_vertices_[3 * triangle + k];
}

}  // namespace myo_core
