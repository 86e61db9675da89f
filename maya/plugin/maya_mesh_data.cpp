#include "maya/plugin/maya_mesh_data.h"

#include <maya/MFloatPointArray.h>
#include <maya/MFnMesh.h>
#include <maya/MIntArray.h>
#include <maya/MItMeshEdge.h>

#include <utility>

#include "core/mesh/mesh_data_from_host.h"

namespace myo_maya {

namespace {

std::vector<int32_t> ToVector(const MIntArray& values) {
  std::vector<int32_t> out(values.length());
  for (unsigned i = 0; i < values.length(); ++i) out[i] = values[i];
  return out;
}

void ReadPoints(MFnMesh& fn, std::vector<float>& out) {
  MFloatPointArray points;
  fn.getPoints(points, MSpace::kObject);
  out.resize(3 * static_cast<size_t>(points.length()));
  for (unsigned i = 0; i < points.length(); ++i) {
    out[3 * i] = points[i].x;
    out[3 * i + 1] = points[i].y;
    out[3 * i + 2] = points[i].z;
  }
}

}  // namespace

bool ReadMayaMesh(const MObject& mesh_object, myo_core::MeshData& mesh, std::string& error) {
  MStatus status;
  MFnMesh fn(mesh_object, &status);
  if (!status) {
    error = "The object is not a mesh.";
    return false;
  }
  myo_core::HostMeshArrays arrays;

  ReadPoints(fn, arrays.points);

  MIntArray counts, vertices;
  fn.getVertices(counts, vertices);
  arrays.polygon_vertex_counts = ToVector(counts);
  arrays.polygon_vertices = ToVector(vertices);

  MIntArray triangle_counts, triangle_vertices;
  fn.getTriangles(triangle_counts, triangle_vertices);
  arrays.polygon_triangle_counts = ToVector(triangle_counts);
  arrays.triangle_vertices = ToVector(triangle_vertices);

  MObject iterated = mesh_object;
  MItMeshEdge edges(iterated, &status);
  if (status) {
    arrays.edge_vertices.reserve(2 * static_cast<size_t>(fn.numEdges()));
    for (; !edges.isDone(); edges.next()) {
      arrays.edge_vertices.push_back(edges.index(0));
      arrays.edge_vertices.push_back(edges.index(1));
    }
  }
  return myo_core::BuildMeshDataFromHost(std::move(arrays), mesh, error);
}

bool ReadMayaMeshPoints(const MObject& mesh_object, myo_core::MeshData& mesh) {
  MStatus status;
  MFnMesh fn(mesh_object, &status);
  if (!status) return false;
  mesh = myo_core::MeshData{};
  ReadPoints(fn, mesh.points);
  return true;
}

bool ReadMayaMeshFor(bool whole, const MObject& mesh_object, myo_core::MeshData& mesh) {
  if (!whole) return ReadMayaMeshPoints(mesh_object, mesh);
  std::string error;
  return ReadMayaMesh(mesh_object, mesh, error);
}

}  // namespace myo_maya
