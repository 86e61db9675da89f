#pragma once
// A node's attribute values at one frame of the scene: the value set or
// keyed in the scene file, else the time line for the three time attributes
// ("currentTime" is the frame, "startTime" and "initializationTime" the time
// line's start, "prerollStartTime" its preroll), else the attribute table's default. Times in the
// file are frames and come out in seconds. A matrix attribute is the world
// matrix of the transform connected to it. A value attribute connected to
// another node's output takes that output of this frame; a position
// connected to a transform or a mesh's point takes its world position.

#include <functional>

#include "app/scene/scene.h"
#include "core/attributes/attribute_source.h"
#include "core/math/vec3.h"
#include "core/mesh/mesh_data.h"

namespace myo_app {

// What connections read of the rest of the scene at the current frame: a
// node's single value output, and a mesh (or a deformer's output) with its
// world space.
struct SceneLinks {
  std::function<double(const std::string& node, const std::string& attribute)> output_value;
  std::function<const myo_core::MeshData*(const std::string& name)> world_mesh;
};

class SceneAttributeSource : public myo_core::AttributeSource {
 public:
  SceneAttributeSource(const Scene& scene, const SceneNode& node, double frame, const SceneLinks* links = nullptr)
      : scene_(scene), node_(node), frame_(frame), links_(links) {}

  double Number(const std::string& long_name) const override;
  myo_core::Matrix MatrixValue(const std::string& long_name) const override;
  std::string Text(const std::string& long_name) const override;
  // A ramp the scene does not set is the identity ramp: (0, 0) and (1, 1), linear.
  myo_core::RampEntries Ramp(const std::string& long_name) const override;
  // A compound of three floats: the world position connected to it, else
  // its three children.
  myo_core::Vec3 Position(const std::string& long_name) const;

 private:
  const Scene& scene_;
  const SceneNode& node_;
  double frame_;
  const SceneLinks* links_;
};

// A scene matrix in the solver's 32-bit form.
myo_core::Matrix ToFloatMatrix(const Matrix4d& m);

}  // namespace myo_app
