#pragma once
// The search of sliding points: for every point, the closest point of the
// triangles of its own candidate list, the least distance winning and, among
// equals, the candidate that stands first in the list (what a stable sort by
// distance puts first). The skin's slide and the shape solver's collisions
// both search this way, each over its own lists and mesh, through the
// input and output below and a scratch that the table keeps.
//
// The candidate triangles are prepared once per search into the scratch and
// kept while the mesh stays the same; a candidate whose bound shows it to be
// farther than one already measured, by more than rounding could ever account
// for, is not measured. Neither changes the winner: every result is the one
// of measuring each candidate in list order.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/kernels/triangle_queries.h"
#include "core/math/matrix.h"

namespace myo_core {

// What the search needs to pass over a candidate triangle without measuring
// it: rows (centre, in-plane reach) and (unit normal or 0, reach along the
// normal). Every point of the triangle lies within the in-plane reach of the
// centre across the normal and within the normal reach along it, both
// widened for rounding; an in-plane reach of infinity means that only the
// normal reach may be used, and a NaN normal reach that the triangle may not
// be passed over at all.
struct alignas(16) SlidingTriangleBound {
  float rows[2][4];
};

// What a search reads. N points, V mesh vertices, G mesh triangles.
struct SlidingSearchInput {
  const std::vector<float>& weights;            // N, a point searches when its weight is at least 1e-6
  const std::vector<uint32_t>& counts;          // N, length of each point's list
  const std::vector<uint32_t>& offsets;         // N, start of each point's list
  const std::vector<uint32_t>& lists;           // candidate triangles of all points, list after list
  const std::vector<float>& mesh_positions;     // 3V, the mesh in the space the points are searched in
  const std::vector<uint32_t>& mesh_triangles;  // 3G, vertex indices of each triangle
};

// Where a search writes; the vectors are the table's own.
struct SlidingSearchOutput {
  std::vector<float>& nearest_points;          // 3N, the winner of each point that found one
  std::vector<uint16_t>& inactive;             // N, 0 for a point that found a winner, else 1
  std::vector<uint32_t>* nearest_triangles;    // N when given: the winner's triangle, else 0
};

// Kept with a table from one search to the next.
struct SlidingSearchScratch {
  std::vector<uint32_t> used_triangles_;               // ascending ids named in the lists
  std::vector<PackedTriangle> prepared_triangles_;     // G, valid at the ids of used_triangles_
  std::vector<SlidingTriangleBound> triangle_bounds_;  // G, valid at the ids of used_triangles_
  // What the prepared triangles were made from: while the mesh's positions
  // and triangles are bit for bit the same (a step within one frame, every
  // iteration of the skin in Quality), they are not prepared again.
  std::vector<float> prepared_from_positions_;     // 3V, empty when nothing is prepared
  std::vector<uint32_t> prepared_from_triangles_;  // 3G
};

// Derives used_triangles_ from the lists and sizes the prepared triangles and
// their bounds to triangle_count, dropping whatever was prepared. A table runs
// it when its lists are built; PrepareSlidingSearch runs it itself when the
// scratch is not of size G, so a caller that edits the lists in place must run
// it.
void PrepareSearchTriangles(const std::vector<uint32_t>& lists, std::size_t triangle_count,
                            SlidingSearchScratch& scratch);

// The single-threaded start of a search: inactive becomes point_count ones
// (and nearest_triangles, when given, point_count zeros); the candidate
// triangles are prepared from the current mesh. Returns the length of the
// longest list of a point that searches, 0 when there is nothing to search:
// tables that do not hold point_count points, lists that run past their
// array, or a triangle that names a vertex without a position.
uint32_t PrepareSlidingSearch(std::size_t point_count, const SlidingSearchInput& input,
                              const SlidingSearchOutput& output, SlidingSearchScratch& scratch);

// The search itself, with the length PrepareSlidingSearch returned (the
// scratch of each thread is sized by it): a loop shared out over the threads
// of the enclosing parallel region, every one of which must call it (outside a
// region, one thread runs it all); it ends with the threads' barrier. Each
// point with a weight and a list takes its position (3N, through world_matrix
// when has_transform) to the nearest candidate. Entries of a list that name no
// triangle of the mesh are passed over; a list of only such entries finds
// nothing. Each point writes only its own entries.
void SearchSlidingPoints(const SlidingSearchInput& input, const SlidingSearchOutput& output, bool has_transform,
                         const float* positions, const Matrix& world_matrix, uint32_t longest,
                         const SlidingSearchScratch& scratch);

// Both parts, the search in a parallel region of its own.
void RunSlidingSearch(const SlidingSearchInput& input, const SlidingSearchOutput& output, bool has_transform,
                      const std::vector<float>& positions, const Matrix& world_matrix,
                      SlidingSearchScratch& scratch);

}  // namespace myo_core
