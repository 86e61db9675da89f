#pragma once
// The colours a weights display node puts on the mesh it passes through:
// the block of the map on display, one grey per vertex, or black on every
// vertex while fibers are painted. Host-neutral: the node hands in its copy
// of the map and the mesh's vertex count and sets the colours it gets back.

#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

enum class WeightsDisplayOutcome {
  kGrey,        // one grey per vertex from the influence's block
  kFibers,      // every vertex black
  kNoColors,    // the map does not fit the mesh or no influence is chosen: colours stay as they were
  kNoVertices,  // error: a mesh without vertices
  kOutOfRange,  // error: the influence's block lies past the end of the map
};

// Whether the node sets colours after this outcome (and marks success).
bool SetsColors(WeightsDisplayOutcome outcome);
// Whether the node's compute fails with this outcome.
bool IsDisplayError(WeightsDisplayOutcome outcome);
// The error message of an outcome; empty when there is none.
std::string WeightsDisplayMessage(WeightsDisplayOutcome outcome);

// Decides the colours of `vertex_count` vertices, in this order: no
// vertices is an error; fibers make every vertex black (0, 0, 0, 1); a map
// whose size is 0 or not a multiple of the vertex count, or a negative
// `current_influence`, sets nothing; the block of `current_influence`
// (offset vertices times influence) must lie inside the map, and vertex v
// then gets (w, w, w, 1) with w its weight. `rgba` receives 4 floats per
// vertex when colours are set and is left alone otherwise.
WeightsDisplayOutcome WeightsDisplayColors(const std::vector<float>& weights, uint32_t vertex_count,
                                           int32_t current_influence, bool show_fibers, std::vector<float>& rgba);

}  // namespace myo_core
