#include "app/run/scene_attribute_source.h"

namespace myo_app {

myo_core::Matrix ToFloatMatrix(const Matrix4d& m) {
  myo_core::Matrix out;
  for (std::size_t i = 0; i < 16; ++i) out[i] = static_cast<float>(m[i]);
  return out;
}

double SceneAttributeSource::Number(const std::string& long_name) const {
  const myo_core::AttributeInfo* info = FindNodeAttribute(*node_.type, long_name);
  const bool is_time = info != nullptr && info->type == myo_core::AttributeType::kTime;
  const double fps = scene_.timeline.fps;
  const auto it = node_.attributes.find(long_name);
  if (it != node_.attributes.end()) {
    const double value = it->second.At(frame_);
    return is_time ? value / fps : value;
  }
  if (long_name == "currentTime") return frame_ / fps;
  if (long_name == "startTime") return scene_.timeline.start / fps;
  if (long_name == "prerollStartTime") return scene_.timeline.preroll / fps;
  // A colour's components default to the colour's own default, as Maya's do.
  for (const myo_core::AttributeInfo& parent : *node_.type->attributes) {
    if (parent.type != myo_core::AttributeType::kColor) continue;
    for (std::size_t k = 0; k < parent.children.size() && k < parent.defaults.size(); ++k)
      if (parent.children[k] == long_name) return parent.defaults[k];
  }
  return info != nullptr ? info->Default() : 0.0;
}

myo_core::Matrix SceneAttributeSource::MatrixValue(const std::string& long_name) const {
  for (const SceneConnection& c : node_.connections)
    if (c.list.empty() && c.attribute == long_name) return ToFloatMatrix(scene_.WorldMatrix(c.source, frame_));
  return myo_core::IdentityMatrix();
}

std::string SceneAttributeSource::Text(const std::string& long_name) const {
  const auto it = node_.texts.find(long_name);
  return it != node_.texts.end() ? it->second : std::string();
}

myo_core::RampEntries SceneAttributeSource::Ramp(const std::string& long_name) const {
  const auto it = node_.ramps.find(long_name);
  if (it != node_.ramps.end()) return it->second;
  return myo_core::RampEntries{{0.0f, 1.0f}, {0.0f, 1.0f}, {1, 1}};
}

}  // namespace myo_app
