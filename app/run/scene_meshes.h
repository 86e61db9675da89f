#pragma once
// The meshes of a running scene by name: the scene's own meshes and the
// nodes' outputs of the frame, in object space, and on request with the
// world space of the frame, as a deformer reads its targets and its
// reference mesh. A mesh's world space is that of the transform that places
// it; a node's output lies in the space of the mesh it deforms. A mesh that
// follows a transform has its points carried by it in object space, frame
// by frame.

#include <functional>
#include <map>
#include <string>

#include "app/run/scene_host.h"
#include "app/scene/scene.h"

namespace myo_app {

class RunMeshes : public SceneMeshes {
 public:
  // `output` gives a node's output mesh by node name, null for other names.
  using NodeOutput = std::function<const myo_core::MeshData*(const std::string&)>;
  RunMeshes(const Scene& scene, NodeOutput output);

  // The frame whose world space the next requests take; world space of
  // another frame is computed again.
  void SetFrame(double frame);

  const myo_core::MeshData* ObjectMesh(const std::string& name) override;
  const myo_core::MeshData* WorldMesh(const std::string& name) override;

 private:
  // A mesh of one frame: the source's topology with the points of `frame`.
  struct FramedMesh {
    myo_core::MeshData mesh;
    double frame = 0.0;
    bool filled = false;
  };

  const Scene& scene_;
  NodeOutput output_;
  double frame_ = 0.0;
  std::map<std::string, FramedMesh> world_;     // with the world space of the frame
  std::map<std::string, FramedMesh> followed_;  // meshes that follow a transform, their points of the frame
};

}  // namespace myo_app
