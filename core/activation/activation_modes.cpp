#include "core/activation/activation_modes.h"

#include <algorithm>

#include "core/activation/muscle_data_init.h"
#include "core/activation/patch_activations.h"
#include "core/log/logger.h"
#include "core/ramp/ramp_curve.h"

namespace myo_core {

namespace {

// Fewer points than this are remapped on one thread.
constexpr std::size_t kParallelMinimum = 4096;

}  // namespace

bool ActivationsFromPatches(const MeshData* deform_mesh, bool bidirectional, bool verbose, const RampEntries& remap,
                            MusclePatchesData& data) {
  if (deform_mesh == nullptr) {
    if (verbose)
      LogWarning("Could not compute activations from Muscle Patches file: deform mesh is null or not provided.");
    return false;
  }
  if (deform_mesh->PointCount() == 0) {
    if (verbose)
      LogWarning("Could not compute activations from Muscle Patches file: deform mesh data could not be retrieved.");
    return false;
  }
  if (deform_mesh->PointCount() != data.activations_.size()) {
    if (verbose)
      LogWarning("Inconsistency in the amount of vertices between the deform mesh and the mesh used for computing "
                 "muscle activations.");
    return false;
  }
  data.deform_positions_.assign(deform_mesh->points.begin(),
                                deform_mesh->points.begin() + 3 * static_cast<std::size_t>(deform_mesh->PointCount()));
  if (!ComputePatchActivations(data.rest_positions_, data.deform_positions_, data.patch_fibers_,
                               data.smoothing_counts_, data.smoothing_patch_ids_, bidirectional, data.activations_))
    return false;
  const RampCurve curve(remap);
  for (float& activation : data.activations_) activation = RemapClamped(curve, activation);
  return true;
}

bool ActivationsFromPlugValues(const PlugActivationValues* values, const RampEntries& remap,
                               std::vector<float>& activations) {
  if (values == nullptr) return false;
  const RampCurve curve(remap);
  const std::size_t count = std::min(values->size(), activations.size());
  const int64_t signed_count = static_cast<int64_t>(count);
  // Each point has one writer, so the result is that of one thread.
#pragma omp parallel for schedule(static) if (count >= kParallelMinimum)
  for (int64_t i = 0; i < signed_count; ++i) {
    const std::optional<float>& value = (*values)[static_cast<std::size_t>(i)];
    if (value) activations[static_cast<std::size_t>(i)] = RemapClamped(curve, *value);
  }
  return true;
}

void InitActivations(const ActivationSetup& setup, const ActivationFrame& frame, const MeshData& rest_mesh,
                     MusclePatchesData& data) {
  if (setup.mode == kActivationMusclePatches) {
    InitMuscleData(setup.muscles_file, setup.smoothing, rest_mesh, setup.fibers_scale, data, setup.fiber_surface);
    if (!data.patches_loaded_)
      LogWarning("Muscles patches data is invalid, not provided or does not match the number of vertices of the "
                 "simulated mesh.");
    else if (ActivationsFromPatches(frame.deform_mesh, frame.bidirectional, true, frame.remap, data))
      LogInfo("Using point activations driven by muscle patches file and deformed mesh.");
  } else if (setup.mode == kActivationPlugValues) {
    if (ActivationsFromPlugValues(frame.plug_values, frame.remap, data.activations_))
      LogInfo("Using point activations driven by input array plug.");
    else
      LogWarning("Input array data is invalid or not provided.");
  }
  if (setup.mode != kActivationMusclePatches || !data.patches_loaded_) ClearFiberDebugData(data);
  WarnIfRemapNotNormalized(frame.remap);
}

void UpdateActivations(int32_t mode, const ActivationFrame& frame, MusclePatchesData& data) {
  bool computed = true;
  if (mode == kActivationMusclePatches) {
    if (!data.patches_loaded_) return;
    computed = ActivationsFromPatches(frame.deform_mesh, frame.bidirectional, false, frame.remap, data);
  } else if (mode == kActivationPlugValues) {
    computed = ActivationsFromPlugValues(frame.plug_values, frame.remap, data.activations_);
  }
  if (!computed) std::fill(data.activations_.begin(), data.activations_.end(), 0.0f);
}

void WarnIfRemapNotNormalized(const RampEntries& remap) {
  if (!IsRampNormalized(remap))
    LogWarning("Activation remap contains non-normalized inputs. The output will be clamped between 0 and 1.");
}

void ActivationColors(const std::vector<float>& activations, std::vector<float>& rgba) {
  rgba.resize(4 * activations.size());
  for (std::size_t i = 0; i < activations.size(); ++i) {
    rgba[4 * i] = activations[i];
    rgba[4 * i + 1] = 0.0f;
    rgba[4 * i + 2] = 0.0f;
    rgba[4 * i + 3] = 1.0f;
  }
}

ActivationDisplay NextActivationDisplay(bool draw_activation, bool& colors_showing) {
  if (draw_activation) {
    colors_showing = true;
    return ActivationDisplay::kShowColors;
  }
  if (!colors_showing) return ActivationDisplay::kLeave;
  colors_showing = false;
  return ActivationDisplay::kHideColors;
}

}  // namespace myo_core
