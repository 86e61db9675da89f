// Assembly of the attachments to geometry and the slides on geometry.

#include <algorithm>

#include "core/kernels/constraint_weights.h"
#include "core/kernels/geometry_constraints.h"
#include "core/log/logger.h"
#include "core/mesh/closest_point_query.h"
#include "core/muscle/muscle_node_state.h"
#include "core/solver/muscle_solver.h"
#include "core/solver/stop_request.h"

namespace myo_core {

namespace {

// Both tables get `rows` zeroed rows and their multipliers, attachments first.
void ResetGeometryTables(std::size_t rows, std::vector<float>& lambdas, AttachmentToGeoConstraints& attachments,
                         SlideOnGeometryConstraints& slides) {
  attachments.inverse_masses_.assign(rows, 0.0f);
  attachments.faces_.assign(rows, 0);
  attachments.triangle_vertices_.assign(3 * rows, 0);
  attachments.bary_u_.assign(rows, 0.0f);
  attachments.bary_v_.assign(rows, 0.0f);
  attachments.distances_.assign(rows, 0.0f);
  attachments.local_offsets_.assign(3 * rows, 0.0f);
  attachments.anchors_.assign(3 * rows, 0.0f);
  attachments.lambda_base_ = ReserveLambdaRows(lambdas, rows);

  slides.inverse_masses_.assign(rows, 0.0f);
  slides.triangle_vertices_.assign(3 * rows, 0);
  slides.faces_.assign(rows, 0);
  slides.distances_.assign(rows, 0.0f);
  slides.closest_points_.assign(3 * rows, 0.0f);
  slides.candidates_.clear();
  slides.candidate_counts_.assign(rows, 0);
  slides.candidate_offsets_.assign(rows, 0);
  slides.row_flags_.assign(rows, 0);
  slides.candidate_slots_.clear();
  slides.slot_triangles_.clear();
  slides.slot_target_offsets_.clear();
  slides.prepared_triangles_.clear();
  slides.slot_balls_.clear();
  slides.slot_ready_.clear();
  slides.row_winners_.clear();
  slides.lambda_base_ = ReserveLambdaRows(lambdas, rows);
}

// Diagonal of the object-space bounding box with both corners through the matrix.
float WorldBoxDiagonal(const MeshData& mesh, const Matrix& matrix) {
  Vec3 low = Load3(mesh.points.data(), 0), high = low;
  for (uint32_t v = 1; v < mesh.PointCount(); ++v) {
    const Vec3 p = Load3(mesh.points.data(), v);
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  return Length(TransformPoint(high, matrix) - TransformPoint(low, matrix));
}

// Builds one target and the query on its object-space mesh. False when the
// target is unusable: its record is then cleared.
bool BuildTargetAndQuery(const TargetInput& input, const std::string& node_name, TargetMesh& target,
                         ClosestPointQuery& query) {
  if (!input.mesh) {
    LogWarning("Target " + input.name + " in " + node_name + " is null or not recognized. This target will be ignored.");
    return false;
  }
  const MeshData& mesh = *input.mesh;
  if (BuildTargetMesh(mesh, input.world_matrix, target))
    query.Build(mesh.points, mesh.triangle_vertices, mesh.polygon_triangle_counts);
  if (target.vertex_count_ == 0 || query.Empty()) {
    ClearTargetMesh(target);
    LogWarning("Target " + input.name + " mesh data in " + node_name +
               " could not be retrieved. This target will be ignored.");
    return false;
  }
  return true;
}

// The rows of one point against one target, from the closest point q of the
// target to the rest point x, both in world space.
void BuildPointRows(uint32_t row, Vec3 x, Vec3 q, const ClosestPointHit& hit, const TargetMesh& target,
                    float radius, float slide_weight, CandidateSearchScratch& visited, std::vector<int32_t>& found,
                    AttachmentToGeoConstraints& attachments, SlideOnGeometryConstraints& slides) {
  const float distance = Length(x - q);
  const int32_t face = hit.polygon;
  const int32_t triangle = target.polygon_triangle_offsets_[face] + hit.triangle_in_polygon;
  const int32_t* corners = target.triangle_vertices_.data() + 3 * static_cast<std::size_t>(triangle);

  attachments.bary_u_[row] = hit.bary_u;
  attachments.bary_v_[row] = hit.bary_v;
  attachments.distances_[row] = distance;
  attachments.faces_[row] = face;
  std::copy(corners, corners + 3, attachments.triangle_vertices_.begin() + 3 * static_cast<std::size_t>(row));
  const Matrix frame = TriangleFrame(q, target.vertices_.data(), target.polygon_normals_.data(), face, corners[0],
                                     corners[1]);
  Store3(attachments.local_offsets_.data(), row, TransformColumn(InvertMatrix(frame), x - q));
  Store3(attachments.anchors_.data(), row, q);

  found.clear();
  if (!(radius < kEpsilon || slide_weight < kEpsilon))
    SearchCandidateTriangles(triangle, radius, q, target, target.triangle_vertices_, true, visited, found);
  std::copy(corners, corners + 3, slides.triangle_vertices_.begin() + 3 * static_cast<std::size_t>(row));
  slides.faces_[row] = face;
  slides.distances_[row] = distance;
  Store3(slides.closest_points_.data(), row, q);
  slides.candidate_offsets_[row] = static_cast<int32_t>(slides.candidates_.size());
  slides.candidate_counts_[row] = static_cast<int32_t>(found.size());
  slides.candidates_.insert(slides.candidates_.end(), found.begin(), found.end());
  if (found.empty() || slide_weight < kEpsilon) slides.row_flags_[row] = 1;
}

}  // namespace

void BuildGeometryConstraints(const std::vector<TargetInput>& targets, const std::string& node_name,
                              MapPort& maps, uint32_t map_index, float max_sliding_distance,
                              uint32_t point_count, const Matrix& world_matrix, MuscleNodeState& node,
                              MuscleFamilySolver& solver) {
  AttachmentToGeoConstraints& attachments = *solver.attachment_to_geo_constraints_;
  SlideOnGeometryConstraints& slides = *solver.slide_on_geometry_constraints_;
  solver.targets_.clear();
  node.largest_target_size_ = 0.0f;
  const uint32_t target_count = static_cast<uint32_t>(targets.size());
  const uint32_t n = point_count;
  const std::size_t rows = static_cast<std::size_t>(target_count) * n;
  ResetGeometryTables(rows, solver.lambdas_, attachments, slides);
  node.attachment_to_geo_map_.assign(rows, 0.0f);
  node.slide_on_geometry_map_.assign(rows, 0.0f);
  if (target_count == 0 || solver.positions_.size() < 3 * static_cast<std::size_t>(n)) return;

  // Target records and their painted weights.
  solver.targets_.resize(target_count);
  std::vector<ClosestPointQuery> queries(target_count);  // T, on each mesh in its own space
  std::vector<uint32_t> set_indices(target_count);       // T, logical indices in "targets"
  for (uint32_t a = 0; a < target_count; ++a) {
    const TargetInput& input = targets[a];
    set_indices[a] = input.logical_index;
    if (!BuildTargetAndQuery(input, node_name, solver.targets_[a], queries[a])) continue;
    maps.ReadFloatsAt("targets", "attachmentToGeoConstraints", input.logical_index, a * n, n,
                      static_cast<uint32_t>(rows), 0.0f, node.attachment_to_geo_map_);
    maps.ReadFloatsAt("targets", "slideOnGeometryConstraints", input.logical_index, a * n, n,
                      static_cast<uint32_t>(rows), 0.0f, node.slide_on_geometry_map_);
    node.largest_target_size_ =
        std::max(node.largest_target_size_, WorldBoxDiagonal(*input.mesh, input.world_matrix));
  }
  ConsolidateConstraintWeights(
      "Non-normalized Attachment To Geometry weights detected. Proceeding to normalize weights for solver "
      "consistency.",
      set_indices, n, maps, "targets", "attachmentToGeoConstraints", node.attachment_to_geo_map_);
  ConsolidateConstraintWeights(
      "Non-normalized Slide On Geometry weights detected. Proceeding to normalize weights for solver "
      "consistency.",
      set_indices, n, maps, "targets", "slideOnGeometryConstraints", node.slide_on_geometry_map_);

  // Sliding reach of each point.
  maps.ReadFloats("maxSlidingDistanceMultiplierList", "maxSlidingDistanceMultiplier", map_index, n, 1.0f,
                  node.max_sliding_map_);
  for (float& value : node.max_sliding_map_) value = value < 0.0f ? 0.0f : (value > 1.0f ? 1.0f : value);

  // Rows from the closest point of each target to each rest point.
  const bool solver_transform = !IsIdentity(world_matrix);
  CandidateSearchScratch visited;
  std::vector<int32_t> found;  // candidates of the current row
  for (uint32_t a = 0; a < target_count; ++a) {
    const TargetMesh& target = solver.targets_[a];
    if (target.vertex_count_ == 0) continue;
    for (uint32_t i = 0; i < n && !StopRequested(); ++i) {
      const uint32_t row = a * n + i;
      Vec3 x = Load3(solver.positions_.data(), i);
      if (solver_transform) x = TransformPoint(x, world_matrix);
      if (target.has_transform_) x = TransformPoint(x, target.world_matrix_inverse_);
      const float query_point[3] = {x.x, x.y, x.z};
      ClosestPointHit hit;
      if (!queries[a].Closest(query_point, -1.0f, hit)) {
        slides.row_flags_[row] = 1;  // a rest point that is not finite has no place on the target
        continue;
      }
      Vec3 q = {hit.point[0], hit.point[1], hit.point[2]};
      if (target.has_transform_) {
        x = TransformPoint(x, target.world_matrix_);
        q = TransformPoint(q, target.world_matrix_);
      }
      const float radius = max_sliding_distance * node.max_sliding_map_[i];
      BuildPointRows(row, x, q, hit, target, radius, node.slide_on_geometry_map_[row], visited, found,
                     attachments, slides);
    }
  }
  PrepareCandidateSlots(solver.targets_, n, slides);
}

}  // namespace myo_core
