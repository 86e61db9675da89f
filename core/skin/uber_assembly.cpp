#include "core/skin/uber_assembly.h"

#include <algorithm>

#include "core/kernels/geometry_constraints.h"
#include "core/kernels/priority_weights.h"
#include "core/kernels/surface_binding.h"
#include "core/log/logger.h"
#include "core/solver/stop_request.h"
#include "core/tables/enum_tables.h"

namespace myo_core {

namespace {

// The three weight maps, normalised by the skin's priority order; the
// repaired paint goes back to the host.
void ReadUberWeights(MapPort& maps, uint32_t map_index, uint32_t point_count, UberConstraints& uber) {
  maps.ReadFloats("softConstraintsList", "softConstraints", map_index, point_count, 0.0f, uber.soft_weights_);
  maps.ReadFloats("hardConstraintsList", "hardConstraints", map_index, point_count, 1.0f, uber.hard_weights_);
  maps.ReadFloats("slideConstraintsList", "slideConstraints", map_index, point_count, 0.0f, uber.slide_weights_);
  const std::array<int32_t, 3>& order = ConstraintPriorityOrderLists().at(kSkinConstraintPriorityOrder);
  if (!NormalizeByPriority(uber.hard_weights_, uber.soft_weights_, uber.slide_weights_, order, point_count)) return;
  LogWarning(
      "Non-normalized Uber Constraint weights detected. Proceeding to normalize weights for solver consistency.");
  // All three children are addressed through element 0 of the hard list, as
  // the node has always written them; the solver's arrays are normalised
  // whatever the host makes of the soft and slide writes.
  maps.WriteFloats("hardConstraintsList", "hardConstraints", 0, uber.hard_weights_);
  maps.WriteFloats("hardConstraintsList", "softConstraints", 0, uber.soft_weights_);
  maps.WriteFloats("hardConstraintsList", "slideConstraints", 0, uber.slide_weights_);
}

// Every per-point array sized for point_count and zeroed, the lists and the
// reference emptied, point_count multipliers appended.
void ResetUberTable(uint32_t point_count, std::vector<float>& lambdas, UberConstraints& uber) {
  const std::size_t n = point_count;
  uber.inverse_masses_.resize(n, 0.0f);
  uber.triangle_vertices_.assign(3 * n, 0);
  uber.polygon_indices_.assign(n, 0);
  uber.reference_triangles_.clear();
  uber.reference_positions_.clear();
  uber.polygon_normals_.clear();
  uber.barycentric_u_.assign(n, 0.0f);
  uber.barycentric_v_.assign(n, 0.0f);
  uber.surface_distances_.assign(n, 0.0f);
  uber.local_offsets_.assign(3 * n, 0.0f);
  uber.sliding_points_.assign(3 * n, 0.0f);
  uber.sliding_triangles_.clear();
  uber.sliding_counts_.assign(n, 0);
  uber.sliding_offsets_.assign(n, 0);
  uber.sliding_inactive_.assign(n, 0);
  uber.sliding_edges_.clear();
  ClearTargetMesh(uber.reference_mesh_);
  uber.sliding_search_ = SlidingSearchScratch();
  uber.lambda_base_ = ReserveLambdaRows(lambdas, n);
}

// The reference's topology, world-space frame data and closest-point query.
// False, with one message, when the mesh cannot be bound to.
bool BuildReference(const MeshData* mesh, const Matrix& matrix, const Matrix& world_matrix, UberConstraints& uber,
                    SurfaceBinder& binder) {
  if (!mesh || mesh->PointCount() == 0) {
    ReportError("Reference mesh is missing or has no vertices: the skin points are not bound.", "");
    return false;
  }
  if (mesh->polygon_triangle_counts.size() != mesh->PolygonCount()) {
    ReportError("Unexpected number of polygons during reference mesh processing", "");
    return false;
  }
  // A build that fails has given its own warning.
  if (!BuildTargetMesh(*mesh, matrix, uber.reference_mesh_)) return false;
  if (!binder.Build(*mesh, uber.reference_mesh_, matrix, world_matrix)) {
    ReportError("Reference mesh has no usable triangles: the skin points are not bound.", "");
    ClearTargetMesh(uber.reference_mesh_);
    return false;
  }
  uber.reference_triangles_.assign(mesh->triangle_vertices.begin(), mesh->triangle_vertices.end());
  return true;
}

}  // namespace

bool InitUberConstraints(const UberBindingInput& input, MapPort& maps, const std::vector<float>& positions,
                         std::vector<float>& lambdas, std::vector<float>& max_sliding_map, UberConstraints& uber) {
  const uint32_t n = static_cast<uint32_t>(positions.size() / 3);
  ReadUberWeights(maps, input.map_index, n, uber);

  maps.ReadFloats("maxSlidingDistanceMultiplierList", "maxSlidingDistanceMultiplier", input.map_index, n, 1.0f,
                  max_sliding_map);
  for (float& value : max_sliding_map) value = value < 0.0f ? 0.0f : (value > 1.0f ? 1.0f : value);

  ResetUberTable(n, lambdas, uber);
  SurfaceBinder binder;  // on the reference in its object space
  if (!BuildReference(input.reference_mesh, input.reference_matrix, input.world_matrix, uber, binder)) return false;
  if (!ReadReferenceMesh(*input.reference_mesh, input.reference_matrix, uber)) return false;

  std::vector<int32_t> found;  // candidates of the current point
  for (uint32_t i = 0; i < n; ++i) {
    if (StopRequested()) return false;  // the host throws the unfinished binding away
    SurfacePoint bound;
    if (!binder.Bind(Load3(positions.data(), i), bound)) {
      // A point that is not finite has no place on the surface.
      uber.sliding_inactive_[i] = 1;
      uber.sliding_offsets_[i] = static_cast<uint32_t>(uber.sliding_triangles_.size());
      if (input.progress) input.progress->AdvanceProgress();
      continue;
    }
    const float reach = max_sliding_map[i] * input.max_sliding_distance;
    const float slide_weight = uber.slide_weights_[i];
    found.clear();
    if (reach >= kEpsilon && slide_weight >= kEpsilon) binder.FindCandidates(bound, reach, found);
    uber.sliding_offsets_[i] = static_cast<uint32_t>(uber.sliding_triangles_.size());
    uber.sliding_counts_[i] = static_cast<uint32_t>(found.size());
    if (found.empty() || slide_weight < kEpsilon) uber.sliding_inactive_[i] = 1;
    uber.sliding_triangles_.insert(uber.sliding_triangles_.end(), found.begin(), found.end());

    uber.barycentric_u_[i] = bound.u;
    uber.barycentric_v_[i] = bound.v;
    uber.surface_distances_[i] = bound.distance;
    uber.polygon_indices_[i] = static_cast<uint32_t>(bound.polygon);
    for (int k = 0; k < 3; ++k) uber.triangle_vertices_[3 * i + k] = bound.corners[k];
    lambdas[uber.lambda_base_ + i] = 0.0f;

    const Matrix frame = TriangleFrame(bound.surface, uber.reference_positions_.data(), uber.polygon_normals_.data(),
                                       static_cast<uint32_t>(bound.polygon), bound.corners[0], bound.corners[1]);
    Store3(uber.local_offsets_.data(), i, TransformColumn(InvertMatrix(frame), bound.point - bound.surface));
    Store3(uber.sliding_points_.data(), i, bound.surface);
    if (input.progress) input.progress->AdvanceProgress();
  }
  BuildSlidingEdges(uber.sliding_triangles_, uber.reference_triangles_, uber.sliding_edges_);
  PrepareSlidingTriangles(uber);
  return true;
}

bool ReadReferenceMesh(const MeshData& mesh, const Matrix& matrix, UberConstraints& uber) {
  TargetMesh& reference = uber.reference_mesh_;
  if (!RefreshTargetMesh(&mesh, matrix, reference)) return false;
  uber.reference_positions_.assign(reference.vertices_.begin(), reference.vertices_.end());
  uber.polygon_normals_.assign(reference.polygon_normals_.begin(), reference.polygon_normals_.end());
  return true;
}

}  // namespace myo_core
