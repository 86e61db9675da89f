#pragma once
// The arithmetic of one stamp and of a flood on a map's arrays. A stamp
// reads the live (source) array and writes the display copy (target), so the
// stamps of one stroke never compound.

#include <cstdint>
#include <vector>

#include "core/paint/paint_context.h"
#include "core/paint/paintable_deformer.h"

namespace myo_core {

// One stamp of strength `strength` on a float map at `index` (vertex plus
// the influence's offset). Replace, add and scale in double precision, smooth
// as the mean of the vertex and its neighbours in the same influence; the
// result is clamped to [0, 1]. False, with nothing written, for an index
// outside either array or an unknown mode.
bool StampFloatMap(const PaintContext& context, const std::vector<float>& source, std::vector<float>& target,
                   uint32_t vertex, double strength, const VertexNeighborsView& neighbors);

// The direction a fiber stamp paints: the brush's direction normalised, or in
// smooth mode the normalised mean of the neighbours' unit fibers. False when
// it is shorter than 1e-6.
bool FiberStampDirection(int32_t mode, const double raw[3], const std::vector<float>& source, uint32_t vertex,
                         const VertexNeighborsView& neighbors, float direction[3]);

// The flood of a float map over the influence's block with the tool's mode,
// value and opacity, in single precision, clamped to [0, 1]. False for an
// unknown mode or a block outside the arrays.
bool FloodFloatMap(const PaintContext& context, const std::vector<float>& source, std::vector<float>& target,
                   const VertexNeighborsView& neighbors);

}  // namespace myo_core
