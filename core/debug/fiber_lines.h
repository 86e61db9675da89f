#pragma once
// The "Muscle Fibers" debug feature of the muscle family: one line per
// vertex along its fiber, and the rewrite of one vertex's line when its
// fiber is painted.

#include <cstdint>
#include <vector>

#include "core/debug/debug_data.h"
#include "core/activation/muscle_patches_data.h"
#include "core/kernels/edge_constraints.h"

namespace myo_core {

// The frame of the fiber lines: where the vertices stand and how the lines
// reach world space.
struct FiberLineFrame {
  const float* positions = nullptr;  // 3N, the solver's object space
  uint32_t point_count = 0;
  float scale = 1.0f;                // the solver's fiber scale times "debugFibersScale" in force
  bool has_transform = false;        // not IsIdentity(world)
  Matrix world = IdentityMatrix();
};

// For each vertex whose fiber tip lies on a triangle (not the degenerate
// 0, 0, 0): the direction from the vertex to the point (u, v, 1 - u - v) of
// that triangle, normalised when its length is above 0, times the scale; a
// line from the vertex to that tip, both ends in world space, unless it is at
// most kShortestDebugLine long. Appends to data.lines_ (cut to what was
// written) and sets line_offsets (N) to the first float of each vertex's
// line, -1 without one. Logs "Debugger is skipping connections because the
// line length is too small." at debug level when a line was too short.
void DebugFiberLines(const EdgeConstraints& edges, const FiberLineFrame& frame, DebugData& data,
                     std::vector<int32_t>& line_offsets);
// The same lines from the fibers a shape solver projected from its muscle
// patches.
void DebugFiberLines(const MusclePatchesData& patches, const FiberLineFrame& frame, DebugData& data,
                     std::vector<int32_t>& line_offsets);

// Rewrites the line of `vertex` after its fiber changed, by the rule of
// DebugFiberLines. Acts only while line_offsets holds one entry per point and
// the vertex has a line; a fiber that is now degenerate or too short leaves
// the line collapsed on its vertex. Touches that vertex's six floats only.
void UpdateVertexFiber(uint32_t vertex, const EdgeConstraints& edges, const FiberLineFrame& frame,
                       const std::vector<int32_t>& line_offsets, DebugData& data);

}  // namespace myo_core
