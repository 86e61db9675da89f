#include "core/mesh/closest_point_query.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/mesh/point_triangle_closest.h"

namespace myo_core {
namespace {

constexpr int32_t kLeafSize = 4;    // a node of at most this many triangles is a leaf
constexpr int32_t kBinCount = 16;   // centroid bins per axis for the surface area split
constexpr int32_t kSahDepth = 40;   // from this depth on, splits are median splits
// The traversal stack holds at most one entry per level plus one; median
// splits from kSahDepth on halve the count, so no path is longer than kSahDepth + 31.
constexpr int32_t kStackSize = 96;

// Pruning slack: a box is skipped only when it is farther than the best
// distance by more than rounding could explain.
constexpr double kPruneSlack = 1.0 + 1e-12;

struct Bounds {
  float min[3] = {std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                  std::numeric_limits<float>::max()};
  float max[3] = {-std::numeric_limits<float>::max(), -std::numeric_limits<float>::max(),
                  -std::numeric_limits<float>::max()};

  void Grow(const Bounds& other) {
    for (int k = 0; k < 3; ++k) {
      min[k] = std::min(min[k], other.min[k]);
      max[k] = std::max(max[k], other.max[k]);
    }
  }

  // Half the surface area, in double: the split cost weight.
  double HalfArea() const {
    const double dx = static_cast<double>(max[0]) - min[0];
    const double dy = static_cast<double>(max[1]) - min[1];
    const double dz = static_cast<double>(max[2]) - min[2];
    return dx * dy + dy * dz + dz * dx;
  }
};

bool AllFinite(const float* values, int count) {
  for (int k = 0; k < count; ++k)
    if (!std::isfinite(values[k])) return false;
  return true;
}

// One triangle during the build. Items are permuted in place, so each level
// of the build reads them sequentially.
struct BuildItem {
  Bounds box;
  float centroid[3];  // centre of the box
  int32_t triangle;   // global triangle index
};

}  // namespace

struct ClosestPointQuery::BuildInput {
  std::vector<BuildItem> items;  // usable triangles, permuted into leaf order by the build
};

void ClosestPointQuery::Clear() {
  root_ = Child();
  nodes_.clear();
  slot_corners_.clear();
  slot_triangles_.clear();
  triangle_polygons_.clear();
  polygon_first_triangles_.clear();
}

bool ClosestPointQuery::Empty() const { return slot_triangles_.empty(); }

void ClosestPointQuery::Build(const std::vector<float>& points,
                              const std::vector<int32_t>& triangle_vertices,
                              const std::vector<int32_t>& polygon_triangle_counts) {
  Clear();

  // Reject an inconsistent triangulation as a whole.
  if (triangle_vertices.size() % 3 != 0) return;
  const size_t point_count = points.size() / 3;
  const size_t max_count = static_cast<size_t>(std::numeric_limits<int32_t>::max());
  if (triangle_vertices.size() / 3 > max_count) return;
  const int32_t triangle_count = static_cast<int32_t>(triangle_vertices.size() / 3);
  for (int32_t v : triangle_vertices)
    if (v < 0 || static_cast<size_t>(v) >= point_count) return;
  int64_t counted = 0;
  for (int32_t count : polygon_triangle_counts) {
    if (count < 0) return;
    counted += count;
  }
  if (counted != triangle_count) return;

  // Polygon bookkeeping.
  polygon_first_triangles_.resize(polygon_triangle_counts.size());
  triangle_polygons_.resize(triangle_count);
  int32_t first = 0;
  for (size_t p = 0; p < polygon_triangle_counts.size(); ++p) {
    polygon_first_triangles_[p] = first;
    std::fill_n(triangle_polygons_.begin() + first, polygon_triangle_counts[p],
                static_cast<int32_t>(p));
    first += polygon_triangle_counts[p];
  }

  // Boxes and centroids of the triangles whose corners are all finite.
  BuildInput input;
  input.items.reserve(triangle_count);
  for (int32_t t = 0; t < triangle_count; ++t) {
    BuildItem item;
    bool finite = true;
    for (int corner = 0; corner < 3; ++corner) {
      const float* p = points.data() + 3 * static_cast<size_t>(triangle_vertices[3 * t + corner]);
      finite = finite && AllFinite(p, 3);
      for (int k = 0; k < 3; ++k) {
        item.box.min[k] = std::min(item.box.min[k], p[k]);
        item.box.max[k] = std::max(item.box.max[k], p[k]);
      }
    }
    if (!finite) continue;
    for (int k = 0; k < 3; ++k) item.centroid[k] = 0.5f * item.box.min[k] + 0.5f * item.box.max[k];
    item.triangle = t;
    input.items.push_back(item);
  }
  if (input.items.empty()) {
    Clear();
    return;
  }

  nodes_.reserve(input.items.size() / 2);
  float root_min[3];
  float root_max[3];
  root_ = BuildSubtree(input, 0, static_cast<int32_t>(input.items.size()), 0, root_min, root_max);
  nodes_.shrink_to_fit();

  // Triangle corners in leaf order, so that a leaf reads one contiguous block.
  slot_triangles_.resize(input.items.size());
  slot_corners_.resize(9 * input.items.size());
  for (size_t slot = 0; slot < input.items.size(); ++slot) {
    const int32_t t = input.items[slot].triangle;
    slot_triangles_[slot] = t;
    for (int corner = 0; corner < 3; ++corner) {
      const float* p = points.data() + 3 * static_cast<size_t>(triangle_vertices[3 * t + corner]);
      std::copy(p, p + 3, slot_corners_.begin() + 9 * slot + 3 * corner);
    }
  }
}

ClosestPointQuery::Child ClosestPointQuery::BuildSubtree(BuildInput& input, int32_t begin,
                                                        int32_t end, int32_t depth,
                                                        float box_min[3], float box_max[3]) {
  BuildItem* items = input.items.data();

  // Box of the triangles and box of their centroids.
  Bounds box;
  float centroid_min[3] = {std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                           std::numeric_limits<float>::max()};
  float centroid_max[3] = {-centroid_min[0], -centroid_min[1], -centroid_min[2]};
  for (int32_t i = begin; i < end; ++i) {
    box.Grow(items[i].box);
    for (int k = 0; k < 3; ++k) {
      centroid_min[k] = std::min(centroid_min[k], items[i].centroid[k]);
      centroid_max[k] = std::max(centroid_max[k], items[i].centroid[k]);
    }
  }

  // Widen the box by 2^-20 of its largest coordinate magnitude, rounded outward.
  double magnitude = 0.0;
  for (int k = 0; k < 3; ++k)
    magnitude = std::max({magnitude, std::fabs(static_cast<double>(box.min[k])),
                          std::fabs(static_cast<double>(box.max[k]))});
  const double widen = magnitude * (1.0 / 1048576.0);
  for (int k = 0; k < 3; ++k) {
    const double low = box.min[k] - widen;
    const double high = box.max[k] + widen;
    float low_f = static_cast<float>(low);
    float high_f = static_cast<float>(high);
    if (low_f > low) low_f = std::nextafter(low_f, -std::numeric_limits<float>::infinity());
    if (high_f < high) high_f = std::nextafter(high_f, std::numeric_limits<float>::infinity());
    box_min[k] = low_f;
    box_max[k] = high_f;
  }

  const int32_t count = end - begin;
  if (count <= kLeafSize) {
    Child leaf;
    leaf.first = begin;
    leaf.count = count;
    return leaf;
  }

  // Centroid bin along each axis; the extents are formed in double so that
  // huge coordinates cannot overflow.
  double scale[3];
  for (int k = 0; k < 3; ++k) {
    const double extent = static_cast<double>(centroid_max[k]) - centroid_min[k];
    scale[k] = extent > 0.0 ? kBinCount / extent : 0.0;
  }
  auto bin_of = [&](const BuildItem& item, int axis) {
    const double offset = static_cast<double>(item.centroid[axis]) - centroid_min[axis];
    return std::min(kBinCount - 1, static_cast<int>(offset * scale[axis]));
  };

  // Binned surface area split over the three axes at once.
  int32_t middle = -1;
  if (depth < kSahDepth) {
    Bounds bin_bounds[3][kBinCount];
    int32_t bin_counts[3][kBinCount] = {};
    for (int32_t i = begin; i < end; ++i)
      for (int axis = 0; axis < 3; ++axis) {
        const int bin = bin_of(items[i], axis);
        ++bin_counts[axis][bin];
        bin_bounds[axis][bin].Grow(items[i].box);
      }
    double best_cost = std::numeric_limits<double>::infinity();
    int best_axis = -1;
    int best_bin = -1;
    for (int axis = 0; axis < 3; ++axis) {
      if (scale[axis] == 0.0) continue;
      // right_area[b], right_count[b]: bins b .. kBinCount-1.
      double right_area[kBinCount];
      int32_t right_count[kBinCount];
      Bounds accumulated;
      int32_t accumulated_count = 0;
      for (int bin = kBinCount - 1; bin > 0; --bin) {
        accumulated.Grow(bin_bounds[axis][bin]);
        accumulated_count += bin_counts[axis][bin];
        right_area[bin] = accumulated.HalfArea();
        right_count[bin] = accumulated_count;
      }
      accumulated = Bounds();
      accumulated_count = 0;
      for (int bin = 0; bin + 1 < kBinCount; ++bin) {
        accumulated.Grow(bin_bounds[axis][bin]);
        accumulated_count += bin_counts[axis][bin];
        if (accumulated_count == 0 || right_count[bin + 1] == 0) continue;
        const double cost = accumulated_count * accumulated.HalfArea() +
                            right_count[bin + 1] * right_area[bin + 1];
        if (cost < best_cost) {
          best_cost = cost;
          best_axis = axis;
          best_bin = bin;
        }
      }
    }
    if (best_axis >= 0) {
      BuildItem* split = std::partition(items + begin, items + end, [&](const BuildItem& item) {
        return bin_of(item, best_axis) <= best_bin;
      });
      middle = static_cast<int32_t>(split - items);
    }
  }

  // Median split along the widest centroid axis (order of triangle ids when
  // all centroids coincide): balanced, so the depth stays bounded.
  if (middle <= begin || middle >= end) {
    int axis = 0;
    for (int k = 1; k < 3; ++k)
      if (static_cast<double>(centroid_max[k]) - centroid_min[k] >
          static_cast<double>(centroid_max[axis]) - centroid_min[axis])
        axis = k;
    middle = begin + count / 2;
    std::nth_element(items + begin, items + middle, items + end,
                     [&](const BuildItem& a, const BuildItem& b) {
                       return a.centroid[axis] < b.centroid[axis] ||
                              (a.centroid[axis] == b.centroid[axis] && a.triangle < b.triangle);
                     });
  }

  // Parent before children: the left subtree follows its parent in memory.
  const int32_t index = static_cast<int32_t>(nodes_.size());
  nodes_.emplace_back();
  Node node;
  node.child[0] = BuildSubtree(input, begin, middle, depth + 1, node.child_min[0], node.child_max[0]);
  node.child[1] = BuildSubtree(input, middle, end, depth + 1, node.child_min[1], node.child_max[1]);
  nodes_[index] = node;
  Child internal;
  internal.first = index;
  internal.count = 0;
  return internal;
}

namespace {

double BoxDistance2(const float* box_min, const float* box_max, const double* p) {
  double sum = 0.0;
  for (int k = 0; k < 3; ++k) {
    const double d = std::max({0.0, box_min[k] - p[k], p[k] - box_max[k]});
    sum += d * d;
  }
  return sum;
}

}  // namespace

bool ClosestPointQuery::Closest(const float p[3], float max_distance, ClosestPointHit& hit) const {
  if (slot_triangles_.empty() || !AllFinite(p, 3)) return false;
  const double query[3] = {p[0], p[1], p[2]};
  // max_distance * max_distance is exact in double, so d2 <= it means the
  // float distance reported is <= max_distance.
  const double reach = static_cast<double>(max_distance);
  double best_distance2 = reach >= 0.0 ? reach * reach : std::numeric_limits<double>::infinity();
  int32_t best_triangle = std::numeric_limits<int32_t>::max();
  TriangleClosestPoint best;

  struct Pending {
    Child subtree;
    double distance2;  // from the query point to the subtree's box
  };
  Pending stack[kStackSize];
  int32_t size = 0;
  stack[size++] = {root_, 0.0};

  while (size > 0) {
    const Pending pending = stack[--size];
    if (pending.distance2 > best_distance2 * kPruneSlack) continue;
    if (pending.subtree.count > 0) {
      const int32_t end = pending.subtree.first + pending.subtree.count;
      for (int32_t slot = pending.subtree.first; slot < end; ++slot) {
        const float* corners = slot_corners_.data() + 9 * static_cast<size_t>(slot);
        const TriangleClosestPoint candidate =
            ExactClosestPointOnTriangle(query, corners, corners + 3, corners + 6);
        const int32_t triangle = slot_triangles_[slot];
        if (candidate.distance2 < best_distance2 ||
            (candidate.distance2 == best_distance2 && triangle < best_triangle)) {
          best_distance2 = candidate.distance2;
          best_triangle = triangle;
          best = candidate;
        }
      }
      continue;
    }
    // Visit the nearer child first: push it last.
    const Node& node = nodes_[pending.subtree.first];
    Pending near{node.child[0], BoxDistance2(node.child_min[0], node.child_max[0], query)};
    Pending far{node.child[1], BoxDistance2(node.child_min[1], node.child_max[1], query)};
    if (far.distance2 < near.distance2) std::swap(near, far);
    const double limit = best_distance2 * kPruneSlack;
    if (far.distance2 <= limit) stack[size++] = far;
    if (near.distance2 <= limit) stack[size++] = near;
  }

  if (best_triangle == std::numeric_limits<int32_t>::max()) return false;
  for (int k = 0; k < 3; ++k) hit.point[k] = static_cast<float>(best.point[k]);
  hit.distance = static_cast<float>(std::sqrt(best_distance2));
  hit.triangle = best_triangle;
  hit.polygon = triangle_polygons_[best_triangle];
  hit.triangle_in_polygon = best_triangle - polygon_first_triangles_[hit.polygon];
  hit.bary_u = static_cast<float>(best.u);
  hit.bary_v = static_cast<float>(best.v);
  return true;
}

}  // namespace myo_core
