#include "core/solver/masses.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>

#include "core/log/logger.h"
#include "core/log/stream_text.h"
#include "core/tables/enum_tables.h"

namespace myo_core {
namespace {

constexpr float kMinimumMass = 0.000001f;

std::string ToText(float value) {
  std::ostringstream stream;
  stream << value;
  return stream.str();
}

// Labels end in ": " and the value follows one further blank.
void LogValue(const char* label, float value) {
  LogDebug(std::string(label) + " " + ToText(value));
}

const char* MeasureLabel(int32_t mesh_dimension) {
  switch (mesh_dimension) {
    case kMeshPerimeter:
      return "Perimeter (cm): ";
    case kMeshArea:
      return "Area (cm2): ";
    default:
      return "Volume (cm3): ";
  }
}

float Sum(const std::vector<float>& values) {
  float sum = 0.0f;
  for (const float value : values) sum += value;
  return sum;
}

void LogTotalAndAverage(const std::vector<float>& masses) {
  const float total = Sum(masses);
  LogValue("Total mass (g): ", total);
  LogValue("Avg point mass (g): ", total / static_cast<float>(masses.size()));
}

}  // namespace

void EvaluateMasses(int32_t point_mass_mode, int32_t space_scale_mode, int32_t mesh_dimension,
                    float density, float mesh_measure, float global_mass_multiplier,
                    float space_scale, bool warn, bool log,
                    const std::vector<float>& painted_masses, std::vector<float>& masses) {
  const size_t n = painted_masses.size();
  if (n == 0) {
    if (warn) LogWarning("Empty masses list. Bypassing mass evaluation.");
    return;
  }

  bool by_density = point_mass_mode == kPointMassByDensity;
  if (by_density &&
      (std::fabs(density) <= kMinimumMass || std::fabs(mesh_measure) <= kMinimumMass)) {
    if (warn) {
      LogWarning(
          "Very small density, mesh volume or mesh area detected for mass computation. "
          "Evaluating masses by Uniform Value.");
    }
    by_density = false;
  }

  if (!by_density) {
    CombineMasses(painted_masses, global_mass_multiplier, space_scale, space_scale_mode,
                  mesh_dimension, warn, masses);
    if (log) LogTotalAndAverage(masses);
    return;
  }

  if (masses.size() != n) return;

  // Spread the total over the points by their painted share.
  const float total = std::fabs(density * mesh_measure);
  const float per_point = total / static_cast<float>(n);
  float sum = 0.0f;
  for (size_t i = 0; i < n; ++i) {
    masses[i] = per_point * painted_masses[i];
    sum += masses[i];
  }

  // Rounding touch-up only: a sum that already agrees with the total is made
  // to match it; a paint that deviates keeps its own total.
  if (sum >= kMinimumMass && std::fabs(sum - total) < kMinimumMass) {
    const float correction = total / sum;
    for (float& mass : masses) mass *= correction;
  }

  CombineMasses(masses, global_mass_multiplier, space_scale, space_scale_mode, mesh_dimension,
                warn, masses);

  if (log) {
    LogValue(MeasureLabel(mesh_dimension), mesh_measure);
    LogValue("Density (g/cm3): ", density);
    LogTotalAndAverage(masses);
  }
}

void CombineMasses(const std::vector<float>& input, float global_mass_multiplier,
                   float space_scale, int32_t space_scale_mode, int32_t mesh_dimension,
                   bool warn, std::vector<float>& output) {
  // A mass scales with the length, area or volume that it fills.
  float k = std::max(global_mass_multiplier, kMinimumMass);
  if (space_scale_mode == kSpaceScaleMasses || space_scale_mode == kSpaceScaleMassesAndForces) {
    const float s = space_scale;
    switch (mesh_dimension) {
      case kMeshPerimeter:
        k *= s;
        break;
      case kMeshArea:
        k *= s * s;
        break;
      case kMeshVolume:
        k *= s * s * s;
        break;
      default:
        break;
    }
  }

  if (input.size() != output.size()) return;

  bool replaced = false;
  for (size_t i = 0; i < input.size(); ++i) {
    float mass = k * input[i];
    if (mass < kMinimumMass) {
      mass = kMinimumMass;
      replaced = true;
    }
    output[i] = mass;
  }

  if (warn && replaced) {
    const std::string minimum = ToText(kMinimumMass);
    LogDebug("Mass combination values between input masses, global mass multiplier and space "
             "scale lower than " + minimum + " are not supported. Non supported mass values "
             "are replaced with " + minimum + " minimum mass values.");
  }
}

void ReadPaintedMasses(const MapPort& maps, uint32_t map_index, uint32_t count, const std::string& solver_name,
                       std::vector<float>& out) {
  maps.ReadFloats("massList", "mass", map_index, count, 1.0f, out);
  bool replaced = false;
  for (float& value : out)
    if (value < 0.000001f) {
      value = 0.000001f;
      replaced = true;
    }
  if (replaced) {
    const std::string minimum = StreamText(0.000001f);
    LogWarning("Mass values lower than " + minimum + " are not supported by the " + solver_name +
               " solver. Non supported mass values are replaced with " + minimum + " minimum mass values.");
  }
}

}  // namespace myo_core
