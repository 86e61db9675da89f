#pragma once
// The line builders of the debug features: plain functions over a solver's
// constraint tables that append world-space lines to a DebugData. Each pair
// of a vertex and what holds it goes through one rule: a weight below 1e-6
// or an inert row skips the pair, a line of at most kShortestDebugLine is not
// drawn, and when nothing or something short was left out a debug-level log
// line says why. Tables whose arrays do not fit the point count draw nothing.

#include <cstdint>
#include <vector>

#include "core/debug/debug_data.h"
#include "core/kernels/attachment_constraints.h"
#include "core/kernels/geometry_constraints.h"
#include "core/kernels/shape_constraints.h"
#include "core/kernels/slide_collision_constraints.h"
#include "core/kernels/slide_on_segment_constraints.h"
#include "core/kernels/target_mesh.h"
#include "core/kernels/uber_constraints.h"

namespace myo_core {

// Where the solver's vertices stand and how they reach world space.
struct DebugLineFrame {
  const float* positions = nullptr;  // 3N, the solver's object space
  uint32_t point_count = 0;
  bool has_transform = false;        // not IsIdentity(world)
  Matrix world = IdentityMatrix();
};

// Each vertex to the translation of each attachment matrix.
void DebugAttachmentLines(const AttachmentConstraints& group, const DebugLineFrame& frame, DebugData& data);

// Each vertex to its barycentric point on its triangle of each target.
void DebugAttachmentToGeoLines(const AttachmentToGeoConstraints& group, const std::vector<TargetMesh>& targets,
                               const DebugLineFrame& frame, DebugData& data);

// The two edges of each shape triangle from its centre vertex: centre to
// first, centre to third. A triangle is skipped only when all three of its
// weights are below 1e-6.
void DebugShapeLines(const ShapeConstraints& group, const DebugLineFrame& frame, DebugData& data);

// Each vertex to its current slide point on each target.
void DebugSlideGeoLines(const SlideOnGeometryConstraints& group, uint32_t target_count, const DebugLineFrame& frame,
                        DebugData& data);

// Each vertex to its closest point on each segment; nothing at all, not
// even a log line, when the solver has no segment.
void DebugSlideSegmentLines(const SlideOnSegmentConstraints& group, const DebugLineFrame& frame, DebugData& data);

// Each vertex to its current point on the collider. line_values_ holds per
// line the distance over the distance the row keeps (collision distance
// times its threshold multiplier), clamped to 0 to 1: 1 where the point is
// as far as it should be, lower the deeper it reaches towards the collider.
void DebugSlideCollisionLines(const SlideCollisionConstraints& group, const DebugLineFrame& frame, DebugData& data);

// Each vertex to its reference point for the map `feature` selects (hard 3,
// slide 7, soft 11), with the three weights cut in the order hard, slide,
// soft when their sum is above 1. Slide lines end at the sliding point,
// hard and soft ones at the bound point on the reference mesh. Any other
// feature draws nothing.
void DebugUberLines(const UberConstraints& group, int32_t feature, const DebugLineFrame& frame, DebugData& data);

// The sliding surface: three floats per index of `edge_vertices` (pairs of
// vertices), taken from `points` (3V, world space), so that consecutive
// points form the lines. Nothing when an index is out of range.
void DebugSurfaceLines(const std::vector<uint32_t>& edge_vertices, const std::vector<float>& points,
                       DebugData& data);

}  // namespace myo_core
