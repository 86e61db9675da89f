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
  if (links_ != nullptr && links_->output_value)
    for (const SceneConnection& c : node_.connections)
      if (c.attribute == long_name && !c.source_attribute.empty()) return links_->output_value(c.source, c.source_attribute);
  const auto it = node_.attributes.find(long_name);
  if (it != node_.attributes.end()) {
    const double value = it->second.At(frame_);
    return is_time ? value / fps : value;
  }
  if (long_name == "currentTime") return frame_ / fps;
  if (long_name == "startTime" || long_name == "initializationTime") return scene_.timeline.start / fps;
  if (long_name == "prerollStartTime") return scene_.timeline.preroll / fps;
  // A colour's components default to the colour's own default, as Maya's do.
  for (const myo_core::AttributeInfo& parent : *node_.type->attributes) {
    if (parent.type != myo_core::AttributeType::kColor) continue;
    for (std::size_t k = 0; k < parent.children.size() && k < parent.defaults.size(); ++k)
      if (parent.children[k] == long_name) return parent.defaults[k];
  }
  return info != nullptr ? info->Default() : 0.0;
}

myo_core::Vec3 SceneAttributeSource::Position(const std::string& long_name) const {
  for (const SceneConnection& c : node_.connections) {
    if (c.attribute != long_name || !c.list.empty()) continue;
    if (c.vertex < 0) {
      const Matrix4d world = scene_.WorldMatrix(c.source, frame_);
      return {static_cast<float>(world[12]), static_cast<float>(world[13]), static_cast<float>(world[14])};
    }
    const myo_core::MeshData* mesh = links_ != nullptr && links_->world_mesh ? links_->world_mesh(c.source) : nullptr;
    const std::size_t at = 3 * static_cast<std::size_t>(c.vertex);
    if (mesh == nullptr || at + 2 >= mesh->world_points.size()) return {0.0f, 0.0f, 0.0f};
    return {mesh->world_points[at], mesh->world_points[at + 1], mesh->world_points[at + 2]};
  }
  const myo_core::AttributeInfo* info = FindNodeAttribute(*node_.type, long_name);
  if (info == nullptr || info->children.size() != 3) return {0.0f, 0.0f, 0.0f};
  return {static_cast<float>(Number(info->children[0])), static_cast<float>(Number(info->children[1])),
          static_cast<float>(Number(info->children[2]))};
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
