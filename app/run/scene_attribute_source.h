#pragma once
// A node's attribute values at one frame of the scene: the value set or
// keyed in the scene file, else the time line for the three time attributes
// ("currentTime" is the frame, "startTime" and "prerollStartTime" the time
// line's start and preroll), else the attribute table's default. Times in the
// file are frames and come out in seconds. A matrix attribute is the world
// matrix of the transform connected to it.

#include "app/scene/scene.h"
#include "core/attributes/attribute_source.h"

namespace myo_app {

class SceneAttributeSource : public myo_core::AttributeSource {
 public:
  SceneAttributeSource(const Scene& scene, const SceneNode& node, double frame)
      : scene_(scene), node_(node), frame_(frame) {}

  double Number(const std::string& long_name) const override;
  myo_core::Matrix MatrixValue(const std::string& long_name) const override;
  std::string Text(const std::string& long_name) const override;
  // A ramp the scene does not set is the identity ramp: (0, 0) and (1, 1), linear.
  myo_core::RampEntries Ramp(const std::string& long_name) const override;

 private:
  const Scene& scene_;
  const SceneNode& node_;
  double frame_;
};

// A scene matrix in the solver's 32-bit form.
myo_core::Matrix ToFloatMatrix(const Matrix4d& m);

}  // namespace myo_app
