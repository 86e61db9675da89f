#include "core/paint/weights_display_colors.h"

namespace myo_core {

bool SetsColors(WeightsDisplayOutcome outcome) {
  return outcome == WeightsDisplayOutcome::kGrey || outcome == WeightsDisplayOutcome::kFibers;
}

bool IsDisplayError(WeightsDisplayOutcome outcome) {
  return outcome == WeightsDisplayOutcome::kNoVertices || outcome == WeightsDisplayOutcome::kOutOfRange;
}

std::string WeightsDisplayMessage(WeightsDisplayOutcome outcome) {
  switch (outcome) {
    case WeightsDisplayOutcome::kNoVertices:
      return "The number of vertices to display colors has to be greater than 0.";
    case WeightsDisplayOutcome::kOutOfRange:
      return "The offset computed in the display node caused an out of range exception for the displayed weights.";
    case WeightsDisplayOutcome::kGrey:
    case WeightsDisplayOutcome::kFibers:
    case WeightsDisplayOutcome::kNoColors:
      break;
  }
  return "";
}

WeightsDisplayOutcome WeightsDisplayColors(const std::vector<float>& weights, uint32_t vertex_count,
                                           int32_t current_influence, bool show_fibers, std::vector<float>& rgba) {
  if (vertex_count == 0) return WeightsDisplayOutcome::kNoVertices;
  const uint64_t vertices = vertex_count;
  if (show_fibers) {
    rgba.assign(4 * vertices, 0.0f);
    for (uint64_t v = 0; v < vertices; ++v) rgba[4 * v + 3] = 1.0f;
    return WeightsDisplayOutcome::kFibers;
  }
  const uint64_t weight_count = weights.size();
  // The state of a node that no paint run has filled.
  if (weight_count == 0 || weight_count % vertices != 0 || current_influence < 0)
    return WeightsDisplayOutcome::kNoColors;
  const uint64_t offset = vertices * static_cast<uint64_t>(current_influence);
  if (offset + vertices > weight_count) return WeightsDisplayOutcome::kOutOfRange;
  rgba.resize(4 * vertices);
  for (uint64_t v = 0; v < vertices; ++v) {
    const float w = weights[offset + v];
    rgba[4 * v] = w;
    rgba[4 * v + 1] = w;
    rgba[4 * v + 2] = w;
    rgba[4 * v + 3] = 1.0f;
  }
  return WeightsDisplayOutcome::kGrey;
}

}  // namespace myo_core
