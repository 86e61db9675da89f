#include "core/mesh/polygon_triangulation.h"

#include <algorithm>
#include <cmath>

namespace myo_core {
namespace {

// Twice the signed area of the 2D triangle (a, b, c): positive when it turns left.
double Orientation(const double* a, const double* b, const double* c) {
  return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

bool InsideOrOnTriangle(const double* a, const double* b, const double* c, const double* v) {
  return Orientation(a, b, v) >= 0.0 && Orientation(b, c, v) >= 0.0 &&
         Orientation(c, a, v) >= 0.0;
}

// Projects the loop on the plane of its Newell normal, counter-clockwise.
// Returns false when the plane is undefined or a coordinate is not finite.
bool ProjectLoop(const float* points, const int32_t* loop, int32_t n,
                 std::vector<double>& projected) {
  const float* origin = points + 3 * static_cast<size_t>(loop[0]);
  auto relative = [&](int32_t k, double out[3]) {
    const float* p = points + 3 * static_cast<size_t>(loop[k]);
    for (int axis = 0; axis < 3; ++axis)
      out[axis] = static_cast<double>(p[axis]) - static_cast<double>(origin[axis]);
  };

  // Newell normal: the sum of the cross products of consecutive loop points.
  double normal[3] = {0.0, 0.0, 0.0};
  double a[3];
  double b[3];
  relative(0, a);
  for (int32_t k = 0; k < n; ++k) {
    relative((k + 1) % n, b);
    normal[0] += a[1] * b[2] - a[2] * b[1];
    normal[1] += a[2] * b[0] - a[0] * b[2];
    normal[2] += a[0] * b[1] - a[1] * b[0];
    a[0] = b[0];
    a[1] = b[1];
    a[2] = b[2];
  }
  const double length2 = normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2];
  if (!(length2 > 0.0) || !std::isfinite(length2)) return false;
  const double inverse_length = 1.0 / std::sqrt(length2);
  for (double& c : normal) c *= inverse_length;

  // e1 is perpendicular to the normal and to the axis least aligned with it;
  // e2 = normal x e1, so that e1 x e2 = normal.
  int least = 0;
  for (int axis = 1; axis < 3; ++axis)
    if (std::fabs(normal[axis]) < std::fabs(normal[least])) least = axis;
  double axis_vector[3] = {0.0, 0.0, 0.0};
  axis_vector[least] = 1.0;
  double e1[3] = {axis_vector[1] * normal[2] - axis_vector[2] * normal[1],
                  axis_vector[2] * normal[0] - axis_vector[0] * normal[2],
                  axis_vector[0] * normal[1] - axis_vector[1] * normal[0]};
  const double e1_length = std::sqrt(e1[0] * e1[0] + e1[1] * e1[1] + e1[2] * e1[2]);
  for (double& c : e1) c /= e1_length;
  const double e2[3] = {normal[1] * e1[2] - normal[2] * e1[1],
                        normal[2] * e1[0] - normal[0] * e1[2],
                        normal[0] * e1[1] - normal[1] * e1[0]};

  projected.resize(2 * static_cast<size_t>(n));
  for (int32_t k = 0; k < n; ++k) {
    relative(k, a);
    const double x = a[0] * e1[0] + a[1] * e1[1] + a[2] * e1[2];
    const double y = a[0] * e2[0] + a[1] * e2[1] + a[2] * e2[2];
    if (!std::isfinite(x) || !std::isfinite(y)) return false;
    projected[2 * k] = x;
    projected[2 * k + 1] = y;
  }
  return true;
}

void AppendFan(const int32_t* loop, int32_t n, std::vector<int32_t>& triangle_vertices) {
  for (int32_t k = 1; k + 1 < n; ++k)
    triangle_vertices.insert(triangle_vertices.end(), {loop[0], loop[k], loop[k + 1]});
}

// Ear clipping on the projected loop. Returns false, having appended nothing,
// when a full walk over the remaining corners finds no ear.
bool AppendEarClipped(const int32_t* loop, int32_t n, PolygonTriangulationScratch& scratch,
                      std::vector<int32_t>& triangle_vertices) {
  const double* xy = scratch.projected.data();
  std::vector<int32_t>& next = scratch.next;
  std::vector<int32_t>& previous = scratch.previous;
  std::vector<uint8_t>& convex = scratch.strictly_convex;
  next.resize(n);
  previous.resize(n);
  convex.resize(n);

  auto turns_left = [&](int32_t corner) {
    return Orientation(xy + 2 * previous[corner], xy + 2 * corner, xy + 2 * next[corner]) > 0.0;
  };
  for (int32_t k = 0; k < n; ++k) {
    next[k] = (k + 1) % n;
    previous[k] = (k + n - 1) % n;
  }
  // Only corners that do not turn strictly left can lie inside an ear, so
  // only they are tested; the list is kept compact after each clip.
  std::vector<int32_t>& not_convex = scratch.not_convex;
  not_convex.clear();
  for (int32_t k = 0; k < n; ++k) {
    convex[k] = turns_left(k) ? 1 : 0;
    if (!convex[k]) not_convex.push_back(k);
  }

  auto is_ear = [&](int32_t corner) {
    if (!convex[corner]) return false;
    const int32_t p = previous[corner];
    const int32_t q = next[corner];
    for (int32_t v : not_convex) {
      if (v != p && v != q &&
          InsideOrOnTriangle(xy + 2 * p, xy + 2 * corner, xy + 2 * q, xy + 2 * v))
        return false;
    }
    return true;
  };

  const size_t first_index = triangle_vertices.size();
  int32_t remaining = n;
  int32_t corner = 1;
  int32_t misses = 0;
  while (remaining > 3) {
    if (!is_ear(corner)) {
      corner = next[corner];
      if (++misses >= remaining) {
        triangle_vertices.resize(first_index);
        return false;
      }
      continue;
    }
    const int32_t p = previous[corner];
    const int32_t q = next[corner];
    triangle_vertices.insert(triangle_vertices.end(), {loop[p], loop[corner], loop[q]});
    next[p] = q;
    previous[q] = p;
    --remaining;
    // Only the two neighbours change their turn. A neighbour that stops
    // turning left (possible in degenerate loops) joins the list.
    for (int32_t neighbour : {p, q}) {
      const bool was_convex = convex[neighbour] != 0;
      convex[neighbour] = turns_left(neighbour) ? 1 : 0;
      if (was_convex && !convex[neighbour]) not_convex.push_back(neighbour);
    }
    not_convex.erase(std::remove_if(not_convex.begin(), not_convex.end(),
                                    [&](int32_t v) { return convex[v] != 0; }),
                     not_convex.end());
    corner = q;
    misses = 0;
  }
  triangle_vertices.insert(triangle_vertices.end(),
                           {loop[previous[corner]], loop[corner], loop[next[corner]]});
  return true;
}

}  // namespace

void TriangulatePolygon(const float* points, const int32_t* loop, int32_t n,
                        PolygonTriangulationScratch& scratch,
                        std::vector<int32_t>& triangle_vertices) {
  if (n < 3) return;
  if (n == 3) {
    triangle_vertices.insert(triangle_vertices.end(), {loop[0], loop[1], loop[2]});
    return;
  }
  if (ProjectLoop(points, loop, n, scratch.projected) &&
      AppendEarClipped(loop, n, scratch, triangle_vertices))
    return;
  AppendFan(loop, n, triangle_vertices);
}

}  // namespace myo_core
