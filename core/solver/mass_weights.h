#pragma once
// Folds the point masses into the per-row weights of every constraint group:
// a heavy point gets a small weight in every soft constraint, while a hard
// constraint blends by the painted value alone.

#include <cstdint>
#include <vector>

#include "core/solver/muscle_solver.h"

namespace myo_core {

struct SkinSolver;

// weight[s N + point] = map[s N + point] * inverse_mass for every set s; a map
// value below 1e-6 is copied unscaled.
void ScaleWeightsByInverseMass(uint32_t point, uint32_t point_count, uint32_t set_count,
                               float inverse_mass, const std::vector<float>& map,
                               ConstraintGroup& group);

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

// The skin: distance and Uber rows take 1 / mass, shape rows the map over
// the mass (a map value below 1e-6 unscaled). Leaves all weights unchanged,
// with a debug message, when a table does not fit.
void ApplyMassesToWeights(SkinSolver& solver, const std::vector<float>& shape_map);

}  // namespace myo_core
