#pragma once
// Point masses, in grams with lengths read as centimetres: given per point, or
// derived from a density and the measure of the mesh, then rescaled by the
// global multiplier and the space scale. Runs on every frame; allocates
// nothing but the text of its log lines.

#include <cstdint>
#include <string>
#include <vector>

#include "core/maps/map_port.h"

namespace myo_core {

// What `mesh_measure` holds: a perimeter (cm), an area (cm2) or a volume (cm3).
constexpr int32_t kMeshPerimeter = 0;
constexpr int32_t kMeshArea = 1;
constexpr int32_t kMeshVolume = 2;

// Fills `masses` (N) from `painted_masses` (N, each at least 0.000001).
// point_mass_mode: PointMassMode (0 By Density, 1 By Uniform Value).
// space_scale_mode: SpaceScaleMode (0 Masses, 1 Forces, 2 Masses + Forces).
// By Density spreads |density * mesh_measure| over the points in proportion to
// the painted values; a density or measure of at most 0.000001 falls back to
// By Uniform Value, which takes the painted values as they are. `warn` (the
// animation is not playing) enables the warnings, `log` (assembly) the debug
// lines with measure, density, total and average mass. Empty painted masses
// leave `masses` untouched, and so does a `masses` not sized like them.
void EvaluateMasses(int32_t point_mass_mode, int32_t space_scale_mode, int32_t mesh_dimension,
                    float density, float mesh_measure, float global_mass_multiplier,
                    float space_scale, bool warn, bool log,
                    const std::vector<float>& painted_masses, std::vector<float>& masses);

// output[i] = k input[i], at least 0.000001, with k = max(global multiplier,
// 0.000001), times the space scale to the power of the mesh dimension when the
// space scale applies to masses (modes 0 and 2). `input` and `output` (both N)
// may be the same vector; when their sizes differ nothing changes. With `warn`,
// one debug line tells that values were raised to the minimum.
void CombineMasses(const std::vector<float>& input, float global_mass_multiplier,
                   float space_scale, int32_t space_scale_mode, int32_t mesh_dimension,
                   bool warn, std::vector<float>& output);

// Reads the map "massList" / "mass" (default 1) of list element map_index,
// raising every value below 1e-6 to 1e-6 with one warning that names the
// solver ("Muscle", "Ribbon Muscle", "Simshape").
void ReadPaintedMasses(const MapPort& maps, uint32_t map_index, uint32_t count, const std::string& solver_name,
                       std::vector<float>& out);

}  // namespace myo_core
