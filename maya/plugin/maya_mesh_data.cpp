#include "maya/plugin/maya_mesh_data.h"

#include <maya/MFloatPointArray.h>
#include <maya/MFnMesh.h>
#include <maya/MIntArray.h>
#include <maya/MItMeshEdge.h>
#include <maya/MItMeshVertex.h>
#include <maya/MPointArray.h>
#include <maya/MVector.h>

#include <utility>

#include "core/mesh/mesh_data_from_host.h"

namespace myo_maya {

namespace {

std::vector<int32_t> ToVector(const MIntArray& values) {
  std::vector<int32_t> out(values.length());
  for (unsigned i = 0; i < values.length(); ++i) out[i] = values[i];
  return out;
}

void Append(const MIntArray& values, std::vector<int32_t>& out) {
  for (unsigned i = 0; i < values.length(); ++i) out.push_back(values[i]);
}

void ReadObjectPoints(MFnMesh& fn, std::vector<float>& out) {
  MFloatPointArray points;
  fn.getPoints(points, MSpace::kObject);
  out.resize(3 * static_cast<size_t>(points.length()));
  for (unsigned i = 0; i < points.length(); ++i) {
    out[3 * i] = points[i].x;
    out[3 * i + 1] = points[i].y;
    out[3 * i + 2] = points[i].z;
  }
}

// World-space points and polygon normals as Maya computes them, in double,
// narrowed to float.
void ReadWorldSpace(MFnMesh& fn, std::vector<float>& points, std::vector<float>& normals) {
  MPointArray world;
  fn.getPoints(world, MSpace::kWorld);
  points.resize(3 * static_cast<size_t>(world.length()));
  for (unsigned i = 0; i < world.length(); ++i) {
    points[3 * i] = static_cast<float>(world[i].x);
    points[3 * i + 1] = static_cast<float>(world[i].y);
    points[3 * i + 2] = static_cast<float>(world[i].z);
  }
  const int polygons = fn.numPolygons();
  normals.resize(3 * static_cast<size_t>(polygons));
  MVector normal;
  for (int f = 0; f < polygons; ++f) {
    fn.getPolygonNormal(f, normal, MSpace::kWorld);
    normals[3 * f] = static_cast<float>(normal.x);
    normals[3 * f + 1] = static_cast<float>(normal.y);
    normals[3 * f + 2] = static_cast<float>(normal.z);
  }
}

// Per vertex, in MItMeshVertex's orders: connected edges, vertices, faces.
void ReadVertexOrders(const MObject& mesh_object, myo_core::HostMeshArrays& arrays) {
  MObject iterated = mesh_object;
  MStatus status;
  MItMeshVertex vertices(iterated, &status);
  if (!status) return;
  MIntArray edges, connected, faces;
  for (; !vertices.isDone(); vertices.next()) {
    vertices.getConnectedEdges(edges);
    vertices.getConnectedVertices(connected);
    vertices.getConnectedFaces(faces);
    arrays.vertex_edge_counts.push_back(static_cast<int32_t>(edges.length()));
    Append(edges, arrays.vertex_edges);
    Append(connected, arrays.vertex_connected);
    arrays.vertex_face_counts.push_back(static_cast<int32_t>(faces.length()));
    Append(faces, arrays.vertex_faces);
  }
}

}  // namespace

bool ReadMayaMesh(const MObject& mesh_object, bool world, myo_core::MeshData& mesh, std::string& error) {
  MStatus status;
  MFnMesh fn(mesh_object, &status);
  if (!status) {
    error = "The object is not a mesh.";
    return false;
  }
  myo_core::HostMeshArrays arrays;
  ReadObjectPoints(fn, arrays.points);

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
  ReadVertexOrders(mesh_object, arrays);
  if (world) ReadWorldSpace(fn, arrays.world_points, arrays.world_polygon_normals);
  return myo_core::BuildMeshDataFromHost(std::move(arrays), mesh, error);
}

bool ReadMayaMeshPoints(const MObject& mesh_object, myo_core::MeshData& mesh) {
  MStatus status;
  MFnMesh fn(mesh_object, &status);
  if (!status) return false;
  mesh = myo_core::MeshData{};
  ReadObjectPoints(fn, mesh.points);
  return true;
}

bool ReadMayaMeshWorldSpace(const MObject& mesh_object, myo_core::MeshData& mesh) {
  MStatus status;
  MFnMesh fn(mesh_object, &status);
  if (!status) return false;
  mesh = myo_core::MeshData{};
  ReadObjectPoints(fn, mesh.points);
  ReadWorldSpace(fn, mesh.world_points, mesh.world_polygon_normals);
  return true;
}

}  // namespace myo_maya
