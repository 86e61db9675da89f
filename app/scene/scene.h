#pragma once
// A scene for the standalone host, as read and checked from its file: the
// time line, meshes, animated transforms and deformer nodes with their
// attributes, maps and connections. Names are unique across meshes,
// transforms and nodes, so a connection names its source alone.

#include <map>
#include <string>
#include <vector>

#include "app/scene/keyframe_track.h"
#include "app/scene/node_types.h"
#include "app/scene/transform_track.h"
#include "core/mesh/mesh_data.h"
#include "core/ramp/ramp_entries.h"
#include "io/obj_mesh.h"

namespace myo_app {

struct Timeline {
  double start = 1.0;    // first frame of the results
  double end = 24.0;     // last frame
  double preroll = 1.0;  // first simulated frame, at most start
  double fps = 24.0;     // frames per second
};

struct SceneTransform {
  std::string name;
  std::string parent;  // a transform, or empty
  TransformTrack track;
};

struct SceneMesh {
  std::string name;
  std::string file;    // as written in the scene
  std::string parent;   // the transform that places it, or empty
  std::string follows;  // a transform that carries its points in their own space (a mesh bound to one joint), or empty
  myo_io::ObjMesh obj;
  myo_core::MeshData data;
};

struct SceneMap {
  std::string list;     // long name of the list attribute
  std::string element;  // long name of the per-point attribute
  std::vector<std::string> children;  // components of a vector map, else empty
  uint32_t set = 0;     // logical index of the list element
  std::vector<float> values;  // N, or N times the components
};

// One connection into a plug of the node: "attribute" or
// "list[index].attribute", from a transform (matrices), a mesh or another
// node's output (meshes).
struct SceneConnection {
  std::string plug;        // as written
  std::string attribute;   // long name of the connected attribute
  std::string list;        // long name of its array parent, or empty
  uint32_t index = 0;      // logical index in that array
  std::string source;
  // For a value connection, "node.attribute": the output attribute of the
  // source node (long name); empty for a transform or mesh.
  std::string source_attribute;
  // For a position (a compound of three floats) taken from a mesh's point,
  // "mesh.vtx[i]": the vertex; -1 for a transform's world position.
  int64_t vertex = -1;
};

enum class SourceKind { kTransform, kMesh, kNode };

struct SceneNode {
  std::string name;
  const NodeType* type = nullptr;
  std::string input;                              // mesh or node deformed by this node; empty for other nodes
  std::string base_mesh;                          // the mesh at the root of its chain of inputs
  std::map<std::string, ScalarTrack> attributes;  // by long name, values in the units of the file
  std::map<std::string, std::string> texts;       // string attributes; a file name resolved against the scene's folder
  std::map<std::string, myo_core::RampEntries> ramps;  // ramp attributes
  std::vector<SceneMap> maps;
  std::vector<SceneConnection> connections;
};

struct Scene {
  std::string path;  // the scene file
  // Every file read for the scene, in the order read: the scene file, then
  // its meshes and map files, as opened.
  std::vector<std::string> inputs;
  Timeline timeline;
  std::vector<SceneTransform> transforms;
  std::vector<SceneMesh> meshes;
  std::vector<SceneNode> nodes;         // in the order of evaluation
  std::map<std::string, SourceKind> kinds;  // every name and what it is
  std::map<std::string, std::size_t> index;  // every name to its position in its vector

  const SceneTransform* FindTransform(const std::string& name) const;
  const SceneMesh* FindMesh(const std::string& name) const;
  const SceneNode* FindNode(const std::string& name) const;
  // The mesh a node deforms, following its input through other nodes.
  const SceneMesh* BaseMesh(const SceneNode& node) const;
  // World matrix of a transform at a frame, through its parents.
  Matrix4d WorldMatrix(const std::string& transform, double frame) const;
};

}  // namespace myo_app
