#pragma once
// The muscle family's masses folded into its weights: edges and volume take
// 1 / mass, shape rows and soft attachments and slides the map over the
// mass, hard attachments the map itself.

#include <vector>

#include "core/solver/mass_weights.h"
#include "core/solver/muscle_solver.h"

namespace myo_core {

// Runs after assembly and before every step. Leaves all weights unchanged,
// with a debug message, when any table does not fit its map. `volume` is the
// muscle's volume row, null for the ribbon.
void ApplyMassesToWeights(MuscleFamilySolver& solver, VolumeConstraint* volume, const std::vector<float>& shape_map,
                          const std::vector<float>& attachment_map,
                          const std::vector<float>& attachment_to_geo_map,
                          const std::vector<float>& slide_on_segment_map,
                          const std::vector<float>& slide_on_geometry_map);

inline void ApplyMassesToWeights(MuscleSolver& solver, const std::vector<float>& shape_map,
                                 const std::vector<float>& attachment_map,
                                 const std::vector<float>& attachment_to_geo_map,
                                 const std::vector<float>& slide_on_segment_map,
                                 const std::vector<float>& slide_on_geometry_map) {
  ApplyMassesToWeights(solver, solver.volume_constraint_.get(), shape_map, attachment_map, attachment_to_geo_map,
                       slide_on_segment_map, slide_on_geometry_map);
}

inline void ApplyMassesToWeights(RibbonMuscleSolver& solver, const std::vector<float>& shape_map,
                                 const std::vector<float>& attachment_map,
                                 const std::vector<float>& attachment_to_geo_map,
                                 const std::vector<float>& slide_on_segment_map,
                                 const std::vector<float>& slide_on_geometry_map) {
  ApplyMassesToWeights(solver, nullptr, shape_map, attachment_map, attachment_to_geo_map, slide_on_segment_map,
                       slide_on_geometry_map);
}

}  // namespace myo_core
