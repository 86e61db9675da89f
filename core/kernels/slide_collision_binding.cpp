// The binding of the slide collisions: every point with a collision weight
// is tied to the collider triangles around its closest point, with its
// distance and side, once per initialisation.

#include <chrono>
#include <cstdint>
#include <string>

#include "core/kernels/slide_collision_constraints.h"
#include "core/kernels/surface_binding.h"
#include "core/kernels/target_mesh.h"
#include "core/kernels/uber_constraints.h"
#include "core/log/logger.h"
#include "core/log/stream_text.h"
#include "core/mesh/world_space.h"
#include "core/solver/stop_request.h"

namespace myo_core {

namespace {

using Clock = std::chrono::steady_clock;

// Step 1: every per-point array sized for point_count and zeroed, the
// collider's tables and the lists emptied, point_count multipliers appended.
void ResetCollisionTable(uint32_t point_count, uint32_t vertex_count, std::vector<float>& lambdas,
                         std::vector<float>& collision_map, SlideCollisionConstraints& group) {
  const std::size_t n = point_count;
  group.inside_flags_.assign(n, false);
  group.collider_triangles_.clear();
  group.collider_positions_.assign(3 * static_cast<std::size_t>(vertex_count), 0.0f);
  group.collider_normals_.clear();
  group.collision_distances_.assign(n, 0.0f);
  group.closest_points_.assign(3 * n, 0.0f);
  group.sliding_triangles_.clear();
  group.sliding_counts_.assign(n, 0);
  group.sliding_offsets_.assign(n, 0);
  group.sliding_inactive_.assign(n, 0);
  group.sliding_edges_.clear();
  group.closest_triangles_.assign(n, 0);
  group.threshold_multipliers_.assign(n, 1.0f);
  group.inverse_masses_.assign(n, 0.0f);
  group.sliding_search_ = SlidingSearchScratch();
  group.lambda_base_ = ReserveLambdaRows(lambdas, n);
  collision_map.assign(n, 0.0f);
}

// A binding that cannot go on leaves no list and every point inactive: the
// search then finds nothing and every row returns at once.
bool StopBinding(SlideCollisionConstraints& group) {
  group.sliding_triangles_.clear();
  group.sliding_counts_.assign(group.sliding_counts_.size(), 0);
  group.sliding_offsets_.assign(group.sliding_offsets_.size(), 0);
  group.sliding_inactive_.assign(group.sliding_inactive_.size(), 1);
  group.sliding_edges_.clear();
  return false;
}

// Step 4: the binding mesh's polygons around each vertex, its triangles
// numbered polygon by polygon, and the closest-point query on it. False, with
// one message, when it cannot be bound to.
bool BuildColliderTopology(const MeshData& mesh, const Matrix& mesh_matrix, const Matrix& world_matrix,
                           TargetMesh& topology, SurfaceBinder& binder) {
  const uint32_t vertex_count = mesh.PointCount();
  if (mesh.vertex_face_offsets.size() == static_cast<std::size_t>(vertex_count) + 1) {
    for (uint32_t v = 0; v < vertex_count; ++v)
      if (mesh.vertex_face_offsets[v + 1] == mesh.vertex_face_offsets[v])
        LogDebug("No connected faces found for vertex: " + StreamText(v));
  }
  if (mesh.polygon_triangle_counts.size() != mesh.PolygonCount()) {
    ReportError("Unexpected number of polygons during reference mesh processing", "");
    return false;
  }
  if (mesh.world_points.size() != 3 * static_cast<std::size_t>(vertex_count) ||
      mesh.world_polygon_normals.size() != 3 * static_cast<std::size_t>(mesh.PolygonCount())) {
    ReportError("Collider mesh came without world-space points and polygon normals for its " +
                    StreamText(vertex_count) + " vertices and " + StreamText(mesh.PolygonCount()) +
                    " polygons: no point collides until the next initialization.",
                "");
    return false;
  }
  // A build that fails has given its own warning.
  if (!BuildTargetMesh(mesh, mesh_matrix, topology)) return false;
  if (!binder.Build(mesh, topology, mesh_matrix, world_matrix)) {
    LogWarning("Collider mesh has no triangle with finite corners: no point collides until the next initialization.");
    return false;
  }
  return true;
}

std::string PointText(Vec3 p) { return StreamText(p.x) + ", " + StreamText(p.y) + ", " + StreamText(p.z); }

// The debug trace of the binding, built only at logger level 0: a record of
// every bound point and the time spent in each block of the per-point work:
//   1    the closest point and its triangle on the binding mesh
//   2    the candidate triangles
//   3    the point's records, made of
//   3.1  its list stored
//   3.2  its distance and multiplier row
//   3.3  its closest point on the current collider
//   3.4  its side
//   3.5  its trace lines
class BindingTrace {
 public:
  enum Block { kClosest, kCandidates, kRecords, kList, kDistance, kCurrent, kSide, kTraceLines, kBlockCount };

  BindingTrace() : on_(GetLevel() == 0) {
    if (on_) text_ = "Initialize Slide Collision Constraints:\n";
  }
  bool on() const { return on_; }

  // Starts timing a point; Lap then closes one block after the other.
  void Start() {
    if (on_) last_ = Clock::now();
  }
  int64_t Lap(Block block) {
    if (!on_) return 0;
    const Clock::time_point now = Clock::now();
    const int64_t ns = std::chrono::duration_cast<std::chrono::nanoseconds>(now - last_).count();
    accumulated_[block] += ns;
    last_ = now;
    if (block == kCandidates) records_start_ = now;
    return ns;
  }
  // Closes the point: block 3 is everything after its candidates.
  void Finish() {
    if (!on_) return;
    accumulated_[kRecords] += std::chrono::duration_cast<std::chrono::nanoseconds>(last_ - records_start_).count();
    ++points_;
  }

  void AddPoint(uint32_t i, const SurfacePoint& bound, int64_t candidates_ns, bool inside) {
    text_ += "(Initialize Slide Collision Constraints) Mesh vertex " + StreamText(i) + "\n";
    text_ += "\tSource Point W.S.: " + PointText(bound.point) + "\n";
    text_ += "\tClosest Point W.S.: " + PointText(bound.surface) + "\n";
    text_ += "\tClosest Point Barycentric Coordinates: " + StreamText(bound.u) + ", " + StreamText(bound.v) + "\n";
    text_ += "\tDistance(" + StreamText(bound.distance) + "), Closest Face Id(" + StreamText(bound.polygon) +
             "), Closest Triangle(" + StreamText(bound.triangle) + ")\n";
    text_ += "\tExpand Sliding Triangles time (ns): " + StreamText(candidates_ns) + "\n";
    text_ += std::string("\tInside collider: ") + (inside ? "true\n" : "false\n");
  }

  // Logs the trace with the accumulated and average time of every block,
  // then the time of the whole binding.
  void Log(Clock::time_point binding_start) {
    if (!on_) return;
    static const char* const kNames[kBlockCount] = {"1", "2", "3", "3.1", "3.2", "3.3", "3.4", "3.5"};
    for (int b = 0; b < kBlockCount; ++b) {
      const int64_t average = points_ > 0 ? accumulated_[b] / points_ : 0;
      text_ += std::string("\n\t") + kNames[b] + " block time accum (ns)(" + StreamText(accumulated_[b]) + ")\n\t" +
               kNames[b] + " block time avg (ns)(" + StreamText(average) + ")";
    }
    LogDebug(text_);
    const int64_t total =
        std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - binding_start).count();
    LogDebug("Init Sliding Collision Constraints time (ns): " + StreamText(total));
  }

 private:
  bool on_;
  std::string text_;
  Clock::time_point last_, records_start_;
  int64_t accumulated_[kBlockCount] = {};
  int64_t points_ = 0;
};

}  // namespace

bool InitSlideCollisionConstraints(const SlideCollisionBindingInput& input, const MapPort& maps,
                                   const std::vector<float>& positions, std::vector<float>& lambdas,
                                   std::vector<float>& collision_map, float& mesh_diagonal,
                                   SlideCollisionConstraints& group) {
  const Clock::time_point binding_start = Clock::now();
  const uint32_t n = static_cast<uint32_t>(positions.size() / 3);
  const MeshData* binding = input.binding_mesh;
  const MeshData* current = input.current_mesh;
  const uint32_t vertex_count = binding ? binding->PointCount() : 0;
  ResetCollisionTable(n, vertex_count, lambdas, collision_map, group);
  if (vertex_count == 0 || current == nullptr || current->PointCount() == 0) {
    LogWarning("Could not retrieve collider mesh data.");
    return StopBinding(group);
  }

  maps.ReadFloats("slideCollisionConstraintsList", "slideCollisionConstraints", input.map_index, n, 0.0f,
                  collision_map);
  LogDebug("Reading slide collision weights: " + StreamText(collision_map.size()));
  maps.ReadFloats("collisionThresholdMultiplierList", "collisionThresholdMultiplier", input.map_index, n, 1.0f,
                  group.threshold_multipliers_);
  LogDebug("Reading slide collision threshold multiplier weights: " +
           StreamText(group.threshold_multipliers_.size()));
  mesh_diagonal = MeshDiagonal(binding->points, input.binding_matrix);

  TargetMesh topology;   // the binding mesh's connectivity, world-space vertices
  SurfaceBinder binder;  // on the binding mesh in its object space
  if (!BuildColliderTopology(*binding, input.binding_matrix, input.world_matrix, topology, binder))
    return StopBinding(group);
  if (current->PointCount() != vertex_count) {
    LogWarning("Collision mesh has " + StreamText(current->PointCount()) + " vertices instead of the " +
               StreamText(vertex_count) +
               " of the mesh its points are bound on: no point collides until the next initialization.");
    return StopBinding(group);
  }
  if (current->world_points.size() != 3 * static_cast<std::size_t>(vertex_count)) {
    ReportError("Collision mesh came without world-space points for its " + StreamText(vertex_count) +
                    " vertices: no point collides until the next initialization.",
                "");
    return StopBinding(group);
  }
  group.collider_triangles_.assign(binding->triangle_vertices.begin(), binding->triangle_vertices.end());
  group.collider_positions_ = topology.vertices_;
  ReadTriangleNormals(*binding, true, group.collider_normals_);
  const float* current_points = current->world_points.data();
  LogDebug("Number of collision mesh polygons: " + StreamText(binding->PolygonCount()));
  LogDebug("Number of collision mesh triangles: " + StreamText(binding->TriangleCount()));
  LogDebug("Number of collision mesh points: " + StreamText(vertex_count));

  BindingTrace trace;
  std::vector<int32_t> found;  // candidates of the current point
  for (uint32_t i = 0; i < n; ++i) {
    if (StopRequested()) return StopBinding(group);  // the host throws the unfinished binding away
    if (collision_map[i] < kEpsilon || input.max_distance < kEpsilon) {
      group.sliding_inactive_[i] = 1;
      continue;
    }
    trace.Start();
    SurfacePoint bound;
    if (!binder.Bind(Load3(positions.data(), i), bound)) {
      // A point that is not finite has no place on the collider.
      group.sliding_inactive_[i] = 1;
      group.sliding_offsets_[i] = static_cast<uint32_t>(group.sliding_triangles_.size());
      continue;
    }
    trace.Lap(BindingTrace::kClosest);
    binder.FindCandidates(bound, input.max_distance, found);
    const int64_t candidates_ns = trace.Lap(BindingTrace::kCandidates);

    group.sliding_offsets_[i] = static_cast<uint32_t>(group.sliding_triangles_.size());
    group.sliding_counts_[i] = static_cast<uint32_t>(found.size());
    if (found.empty()) group.sliding_inactive_[i] = 1;
    group.sliding_triangles_.insert(group.sliding_triangles_.end(), found.begin(), found.end());
    trace.Lap(BindingTrace::kList);

    group.collision_distances_[i] = bound.distance;
    lambdas[group.lambda_base_ + i] = 0.0f;
    trace.Lap(BindingTrace::kDistance);

    // The same surface point on the collider as it is now: the binding may
    // have been made on a rest pose.
    const float w = 1.0f - bound.u - bound.v;
    const Vec3 closest = Load3(current_points, bound.corners[0]) * bound.u +
                         Load3(current_points, bound.corners[1]) * bound.v +
                         Load3(current_points, bound.corners[2]) * w;
    Store3(group.closest_points_.data(), i, closest);
    group.closest_triangles_[i] = static_cast<uint32_t>(bound.triangle);
    trace.Lap(BindingTrace::kCurrent);

    // A point on the surface (p - q zero) is not inside.
    const Vec3 direction = NormalizeSafe(bound.point - bound.surface);
    const Vec3 normal = NormalizeSafe(Load3(group.collider_normals_.data(), static_cast<uint32_t>(bound.triangle)));
    const bool inside = Dot(direction, normal) < 0.0f;
    group.inside_flags_[i] = inside;
    trace.Lap(BindingTrace::kSide);

    if (trace.on()) {
      trace.AddPoint(i, bound, candidates_ns, inside);
      trace.Lap(BindingTrace::kTraceLines);
    }
    trace.Finish();
  }
  trace.Log(binding_start);

  BuildSlidingEdges(group.sliding_triangles_, group.collider_triangles_, group.sliding_edges_);
  PrepareSearchTriangles(group.sliding_triangles_, group.collider_triangles_.size() / 3, group.sliding_search_);
  return true;
}

}  // namespace myo_core
