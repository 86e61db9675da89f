#pragma once
// Generated closed meshes for tests, benchmarks and examples, so that the
// same shapes appear everywhere.

#include <cstdint>

#include "core/mesh/polygon_mesh.h"

namespace myo_scenes {

using myo_core::PolygonMesh;

// A closed spindle along x: `rings` rings of `segments` points between two
// pole points, quads between rings and triangle fans at the poles, facing
// outward. Radius follows a sine profile, so the ends taper like a muscle
// belly. Point count is rings * segments + 2.
PolygonMesh MakeSpindle(uint32_t rings, uint32_t segments, float length, float radius);

// A spindle with about `target_points` points and a ring spacing close to the
// segment spacing.
PolygonMesh MakeSpindleWithPoints(uint32_t target_points, float length, float radius);

// A closed sphere of quads: the surface lattice of a cube cut `n` times along
// each edge, pushed out to `radius`, face after face. Points are numbered as
// the faces first use them. 6 n^2 + 2 points, 6 n^2 quads facing outward.
PolygonMesh MakeCubeSphere(uint32_t n, float radius);

// A cube-sphere with about `target_points` points.
PolygonMesh MakeCubeSphereWithPoints(uint32_t target_points, float radius);

// A flat grid in the xz plane, (nx+1) by (nz+1) points, quads facing +y.
PolygonMesh MakeGrid(uint32_t nx, uint32_t nz, float size_x, float size_z);

}  // namespace myo_scenes
