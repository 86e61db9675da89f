#pragma once
// Small geometric helpers shared by tests: matrices, meshes and vector checks.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "core/math/matrix.h"
#include "core/mesh/mesh_data.h"
#include "core/mesh/polygon_mesh.h"
#include "core/mesh/world_space.h"

namespace myo_test {

// Mesh data of valid polygons; a failure to build fails the test.
inline myo_core::MeshData BuildMesh(const myo_core::PolygonMesh& polygons) {
  myo_core::MeshData mesh;
  std::string error;
  EXPECT_TRUE(myo_core::BuildMeshData(polygons.points, polygons.vertex_counts, polygons.vertices, mesh, error))
      << error;
  return mesh;
}

// The mesh with the world space of a host that places it by `matrix`.
inline myo_core::MeshData Placed(myo_core::MeshData mesh, const myo_core::Matrix& matrix) {
  myo_core::FillWorldSpace(matrix, mesh);
  return mesh;
}

// Uniform scale s, then translation (row vectors).
inline myo_core::Matrix Affine(float x, float y, float z, float s = 1.0f) {
  myo_core::Matrix m = myo_core::TranslationMatrix(x, y, z);
  m[0] = m[5] = m[10] = s;
  return m;
}

// Rotation about z by angle, then translation t (row vectors).
inline myo_core::Matrix RotationZ(float angle, myo_core::Vec3 t) {
  myo_core::Matrix m = myo_core::TranslationMatrix(t.x, t.y, t.z);
  m[0] = std::cos(angle);
  m[1] = std::sin(angle);
  m[4] = -std::sin(angle);
  m[5] = std::cos(angle);
  return m;
}

inline void ExpectVec(myo_core::Vec3 actual, myo_core::Vec3 expected, float tolerance) {
  EXPECT_NEAR(actual.x, expected.x, tolerance);
  EXPECT_NEAR(actual.y, expected.y, tolerance);
  EXPECT_NEAR(actual.z, expected.z, tolerance);
}

}  // namespace myo_test
