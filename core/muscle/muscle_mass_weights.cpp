#include "core/muscle/muscle_mass_weights.h"

#include "core/log/logger.h"

namespace myo_core {

void ApplyMassesToWeights(MuscleFamilySolver& solver, VolumeConstraint* volume, const std::vector<float>& shape_map,
                          const std::vector<float>& attachment_map,
                          const std::vector<float>& attachment_to_geo_map,
                          const std::vector<float>& slide_on_segment_map,
                          const std::vector<float>& slide_on_geometry_map) {
  const uint32_t n = solver.point_count_;
  if (n == 0) return;
  EdgeConstraints& edges = *solver.edge_constraints_;
  ShapeConstraints& shape = *solver.shape_constraints_;
  AttachmentConstraints& attachments = *solver.attachment_constraints_;
  AttachmentToGeoConstraints& attachments_to_geo = *solver.attachment_to_geo_constraints_;
  SlideOnSegmentConstraints& segments = *solver.slide_on_segment_constraints_;
  SlideOnGeometryConstraints& slides = *solver.slide_on_geometry_constraints_;

  const bool fits = solver.masses_.size() == n && edges.inverse_masses_.size() == n &&
                    (volume == nullptr || volume->inverse_masses_.size() == n) &&
                    shape.inverse_masses_.size() == shape_map.size() &&
                    attachments.inverse_masses_.size() == attachment_map.size() &&
                    attachments_to_geo.inverse_masses_.size() == attachment_to_geo_map.size() &&
                    segments.inverse_masses_.size() == slide_on_segment_map.size() &&
                    slides.inverse_masses_.size() == slide_on_geometry_map.size() &&
                    shape_map.size() >= n;
  if (!fits) {
    LogDebug("Could not apply masses to weights because of incorrect weight sizes.");
    return;
  }
  if (attachments.hard_) attachments.inverse_masses_ = attachment_map;
  if (attachments_to_geo.hard_) attachments_to_geo.inverse_masses_ = attachment_to_geo_map;

  const uint32_t attachment_sets = static_cast<uint32_t>(attachment_map.size() / n);
  const uint32_t geo_sets = static_cast<uint32_t>(attachment_to_geo_map.size() / n);
  const uint32_t segment_sets = static_cast<uint32_t>(slide_on_segment_map.size() / n);
  const uint32_t slide_sets = static_cast<uint32_t>(slide_on_geometry_map.size() / n);
  for (uint32_t i = 0; i < n; ++i) {
    const float inv = 1.0f / solver.masses_[i];
    edges.inverse_masses_[i] = inv;
    shape.inverse_masses_[i] = MapOverMass(shape_map[i], inv);
    if (!attachments.hard_) ScaleWeightsByInverseMass(i, n, attachment_sets, inv, attachment_map, attachments);
    if (!attachments_to_geo.hard_)
      ScaleWeightsByInverseMass(i, n, geo_sets, inv, attachment_to_geo_map, attachments_to_geo);
    ScaleWeightsByInverseMass(i, n, segment_sets, inv, slide_on_segment_map, segments);
    ScaleWeightsByInverseMass(i, n, slide_sets, inv, slide_on_geometry_map, slides);
    if (volume != nullptr) volume->inverse_masses_[i] = inv;
  }
}

}  // namespace myo_core
