#include "scenes/muscle_meshes.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace myo_scenes {

PolygonMesh MakeSpindle(uint32_t rings, uint32_t segments, float length, float radius) {
  PolygonMesh mesh;
  rings = std::max(rings, 1u);
  segments = std::max(segments, 3u);
  const double pi = 3.14159265358979323846;
  auto add_point = [&](double x, double y, double z) {
    mesh.points.push_back(static_cast<float>(x));
    mesh.points.push_back(static_cast<float>(y));
    mesh.points.push_back(static_cast<float>(z));
  };
  add_point(-0.5 * length, 0.0, 0.0);  // pole 0
  for (uint32_t r = 0; r < rings; ++r) {
    const double t = (r + 1.0) / (rings + 1.0);
    const double x = (t - 0.5) * length;
    const double rr = radius * std::sin(pi * t);
    for (uint32_t s = 0; s < segments; ++s) {
      const double a = 2.0 * pi * s / segments;
      add_point(x, rr * std::cos(a), rr * std::sin(a));
    }
  }
  add_point(0.5 * length, 0.0, 0.0);  // pole 1
  const int32_t last = static_cast<int32_t>(rings * segments + 1);
  auto ring_point = [&](uint32_t r, uint32_t s) {
    return static_cast<int32_t>(1 + r * segments + (s % segments));
  };
  auto add_polygon = [&](std::initializer_list<int32_t> loop) {
    mesh.vertex_counts.push_back(static_cast<int32_t>(loop.size()));
    mesh.vertices.insert(mesh.vertices.end(), loop.begin(), loop.end());
  };
  // Winding chosen so that normals point away from the x axis.
  for (uint32_t s = 0; s < segments; ++s) add_polygon({0, ring_point(0, s + 1), ring_point(0, s)});
  for (uint32_t r = 0; r + 1 < rings; ++r)
    for (uint32_t s = 0; s < segments; ++s)
      add_polygon({ring_point(r, s), ring_point(r, s + 1), ring_point(r + 1, s + 1), ring_point(r + 1, s)});
  for (uint32_t s = 0; s < segments; ++s)
    add_polygon({last, ring_point(rings - 1, s), ring_point(rings - 1, s + 1)});
  return mesh;
}

PolygonMesh MakeSpindleWithPoints(uint32_t target_points, float length, float radius) {
  // Aim for square-ish quads on the belly: ring spacing length/(rings+1)
  // against segment spacing 2 pi radius / segments.
  const double ratio = length / (2.0 * 3.14159265358979323846 * radius);
  const double n = std::max(8.0, static_cast<double>(target_points));
  uint32_t segments = static_cast<uint32_t>(std::max(3.0, std::round(std::sqrt(n / ratio))));
  uint32_t rings = static_cast<uint32_t>(std::max(1.0, std::round((n - 2.0) / segments)));
  return MakeSpindle(rings, segments, length, radius);
}

PolygonMesh MakeCubeSphere(uint32_t n, float radius) {
  PolygonMesh mesh;
  n = std::max(n, 1u);
  const uint32_t side = n + 1;
  // Points are numbered as the faces first use them, so that the points of a
  // face lie together in memory, as in a mesh modelled face by face.
  std::vector<int32_t> index(static_cast<std::size_t>(side) * side * side, -1);
  auto point = [&](const uint32_t c[3]) {
    int32_t& id = index[(c[2] * side + c[1]) * side + c[0]];
    if (id < 0) {
      id = static_cast<int32_t>(mesh.points.size() / 3);
      const double v[3] = {2.0 * c[0] / n - 1.0, 2.0 * c[1] / n - 1.0, 2.0 * c[2] / n - 1.0};
      const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
      for (double x : v) mesh.points.push_back(static_cast<float>(radius * x / length));
    }
    return id;
  };
  // Each face: the axis it faces along, its side, and the two axes that span
  // it in the order that makes the quads face outward.
  for (uint32_t axis = 0; axis < 3; ++axis)
    for (uint32_t high = 0; high < 2; ++high) {
      uint32_t u_axis = (axis + 1) % 3, v_axis = (axis + 2) % 3;
      if (high == 0) std::swap(u_axis, v_axis);
      for (uint32_t v = 0; v < n; ++v)
        for (uint32_t u = 0; u < n; ++u) {
          auto corner = [&](uint32_t du, uint32_t dv) {
            uint32_t c[3];
            c[axis] = high ? n : 0;
            c[u_axis] = u + du;
            c[v_axis] = v + dv;
            return point(c);
          };
          mesh.vertex_counts.push_back(4);
          for (const auto& [du, dv] : {std::pair{0u, 0u}, {1u, 0u}, {1u, 1u}, {0u, 1u}})
            mesh.vertices.push_back(corner(du, dv));
        }
    }
  return mesh;
}

PolygonMesh MakeCubeSphereWithPoints(uint32_t target_points, float radius) {
  const double n = std::sqrt(std::max(8.0, static_cast<double>(target_points) - 2.0) / 6.0);
  return MakeCubeSphere(static_cast<uint32_t>(std::max(1.0, std::round(n))), radius);
}

PolygonMesh MakeGrid(uint32_t nx, uint32_t nz, float size_x, float size_z) {
  PolygonMesh mesh;
  nx = std::max(nx, 1u);
  nz = std::max(nz, 1u);
  for (uint32_t j = 0; j <= nz; ++j)
    for (uint32_t i = 0; i <= nx; ++i) {
      mesh.points.push_back(size_x * (static_cast<float>(i) / nx - 0.5f));
      mesh.points.push_back(0.0f);
      mesh.points.push_back(size_z * (static_cast<float>(j) / nz - 0.5f));
    }
  auto id = [&](uint32_t i, uint32_t j) { return static_cast<int32_t>(j * (nx + 1) + i); };
  for (uint32_t j = 0; j < nz; ++j)
    for (uint32_t i = 0; i < nx; ++i) {
      mesh.vertex_counts.push_back(4);
      mesh.vertices.insert(mesh.vertices.end(), {id(i, j), id(i, j + 1), id(i + 1, j + 1), id(i + 1, j)});
    }
  return mesh;
}

}  // namespace myo_scenes
