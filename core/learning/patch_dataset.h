#pragma once
// The arrays around the clustering of the learning: the rows built from the
// displacements of the target shapes, the fiber of each patch, the ids of
// the patches file and the colours that show the patches.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/learning/kmeans.h"

namespace myo_core {

// Checks that the mask holds vertex indices of a mesh of `vertex_count`
// vertices, each at most once. The order is not checked: a mask that is not
// ascending is used as given. False with one message naming the first bad
// entry.
bool CheckVerticesMask(const std::vector<int32_t>& mask, int32_t vertex_count, std::string& error);

// The displacement of every masked vertex in one target: target point minus
// neutral point in 64-bit floats, three per vertex, in ascending vertex order
// whatever the order of the mask. `neutral` and `target` hold three floats
// per vertex, the same count; the mask must pass CheckVerticesMask.
std::vector<double> MaskedDisplacements(const std::vector<float>& neutral, const std::vector<float>& target,
                                        const std::vector<int32_t>& mask);

// One row per mask entry: row i has id i and the features of the i-th
// displacement of every target in target order (x, y, z of target 0, then
// target 1, ...). Every array of `displacements` holds three values per mask
// entry.
std::vector<KMeansPoint> BuildKMeansRows(const std::vector<std::vector<double>>& displacements, size_t row_count);

// One fiber per cluster id that holds a row, in ascending id order: the mean
// displacement of the cluster's rows in the target where that mean is
// longest (the first target wins a tie; a patch that does not move gets the
// zero vector). Not normalised.
std::vector<std::array<double, 3>> PatchFibers(const std::vector<std::vector<double>>& displacements,
                                               const std::vector<int32_t>& cluster_ids);

// The ids of the patches file: -1 for every vertex, then entry mask[i] takes
// the cluster id of row i.
std::vector<int32_t> PatchFileIds(int32_t vertex_count, const std::vector<int32_t>& mask,
                                  const std::vector<int32_t>& cluster_ids);

// Vertex colours (RGBA, four floats per vertex) that show the patches: white
// outside the mask; each of `cluster_count` clusters draws red, green and
// blue from rand() in that order, each rand() % 32768 / 65534 + 0.5, so the
// channels lie from 0.5 to 1, pale on purpose, on every C library (the
// formula was made for a generator of 15 bits); entry mask[i] takes the
// colour of row i's cluster.
std::vector<float> PatchColors(int32_t vertex_count, const std::vector<int32_t>& mask,
                               const std::vector<int32_t>& cluster_ids, size_t cluster_count);

}  // namespace myo_core
