#include "app/run/node_runner.h"

#include <chrono>
#include <cmath>

#include "app/run/scene_attribute_source.h"
#include "core/muscle/muscle_frame_reader.h"
#include "core/shape/shape_frame_reader.h"
#include "core/skin/skin_frame_reader.h"
#include "core/kernels/volume_constraint.h"

namespace myo_app {

namespace {

double MaxSpeed(const std::vector<float>& velocities) {
  double max = 0.0;
  for (std::size_t i = 0; i + 2 < velocities.size(); i += 3) {
    const double x = velocities[i], y = velocities[i + 1], z = velocities[i + 2];
    max = std::max(max, std::sqrt(x * x + y * y + z * z));
  }
  return max;
}

}  // namespace

NodeRunner::NodeRunner(const Scene& scene, const SceneNode& node)
    : scene_(scene), node_(node), host_(scene, node, maps_) {
  output_ = scene.BaseMesh(node)->data;
  for (const SceneMap& map : node.maps) {
    const uint32_t width = map.children.empty() ? 1u : static_cast<uint32_t>(map.children.size());
    maps_.SetAll(map.list, map.element, map.set, map.values, width);
  }
  switch (node.type->kind) {
    case NodeKind::kMuscle: muscle_ = std::make_unique<myo_core::MuscleDeformer>(); break;
    case NodeKind::kRibbonMuscle: ribbon_ = std::make_unique<myo_core::RibbonMuscleDeformer>(); break;
    case NodeKind::kSkin: skin_ = std::make_unique<myo_core::SkinDeformer>(); break;
    case NodeKind::kShape: shape_ = std::make_unique<myo_core::ShapeDeformer>(); break;
  }
}

NodeRunner::~NodeRunner() = default;

myo_core::Matrix NodeRunner::LocalToWorld(double frame) const {
  const SceneMesh* base = scene_.BaseMesh(node_);
  return ToFloatMatrix(scene_.WorldMatrix(base->parent, frame));
}

void NodeRunner::TakeOutput(const myo_core::SolverData& solver) {
  for (std::size_t i = 0; i < output_points_.size() && i < output_.points.size(); ++i)
    output_.points[i] = static_cast<float>(output_points_[i]);
  figures_.iterations = solver.iterations_;
  figures_.max_speed = MaxSpeed(solver.velocities_);
}

template <class Deformer>
bool NodeRunner::EvaluateMuscle(Deformer& deformer, double frame, bool with_volume) {
  const SceneAttributeSource source(scene_, node_, frame);
  myo_core::MuscleFrameValues values;
  myo_core::ReadMuscleFrameValues(source, with_volume, values);
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  const myo_core::MuscleEvaluation result = deformer.Evaluate(values, input_points_, host_, maps_, output_points_);
  figures_.stepped = result.stepped;
  TakeOutput(deformer.solver());
  if constexpr (std::is_same_v<Deformer, myo_core::MuscleDeformer>) {
    const myo_core::VolumeConstraint& volume = *deformer.solver().volume_constraint_;
    if (volume.rest_volume_ != 0.0f && !deformer.solver().positions_.empty())
      figures_.volume_ratio = myo_core::SixTimesVolume(volume.triangles_, deformer.solver().positions_.data()) /
                              static_cast<double>(volume.rest_volume_);
  }
  return true;
}

bool NodeRunner::EvaluateSkin(double frame, std::string& error) {
  const SceneAttributeSource source(scene_, node_, frame);
  myo_core::SkinFrameValues values;
  myo_core::ReadSkinFrameValues(source, values);
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  const myo_core::SkinEvaluation result = skin_->Evaluate(values, input_points_, host_, maps_, output_points_);
  figures_.stepped = result.stepped;
  TakeOutput(skin_->solver());
  if (!result.succeeded) {
    error = node_.name + " at frame " + std::to_string(static_cast<long long>(frame)) +
            ": the skin has no usable reference mesh";
    return false;
  }
  return true;
}

bool NodeRunner::EvaluateShape(double frame) {
  const SceneAttributeSource source(scene_, node_, frame);
  myo_core::ShapeFrameValues values;
  myo_core::ReadShapeFrameValues(source, values);
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  host_.SetGeometryIndex(values.geometry_index);
  const myo_core::ShapeEvaluation result = shape_->Evaluate(values, input_points_, host_, maps_, output_points_);
  figures_.stepped = result.stepped;
  TakeOutput(shape_->solver());
  return true;
}

// The transform that places a mesh of the scene or a node's output, or "".
std::string NodeRunner::PlacingTransform(const std::string& name) const {
  const SceneMesh* mesh = scene_.FindMesh(name);
  if (mesh == nullptr) {
    const SceneNode* node = scene_.FindNode(name);
    mesh = node != nullptr ? scene_.BaseMesh(*node) : nullptr;
  }
  return mesh != nullptr ? mesh->parent : std::string();
}

bool NodeRunner::FiniteMatrices(double frame, std::string& error) const {
  std::vector<std::string> transforms = {PlacingTransform(node_.input)};
  for (const SceneConnection& c : node_.connections)
    transforms.push_back(scene_.FindTransform(c.source) != nullptr ? c.source : PlacingTransform(c.source));
  for (const std::string& name : transforms) {
    if (name.empty()) continue;
    for (float value : ToFloatMatrix(scene_.WorldMatrix(name, frame)))
      if (!std::isfinite(value)) {
        error = node_.name + " at frame " + std::to_string(static_cast<long long>(frame)) + ": the world matrix of " +
                name + " is not finite in 32-bit floats";
        return false;
      }
  }
  return true;
}

bool NodeRunner::Evaluate(double frame, bool playing, SceneMeshes& meshes, std::string& error) {
  if (!FiniteMatrices(frame, error)) return false;
  const myo_core::MeshData* input = meshes.ObjectMesh(node_.input);
  host_.SetFrame(frame, playing, meshes);
  input_points_.assign(input->points.begin(), input->points.end());
  output_points_.clear();
  output_.points = input->points;
  figures_ = NodeFigures{};
  const auto begin = std::chrono::steady_clock::now();
  bool ok = true;
  switch (node_.type->kind) {
    case NodeKind::kMuscle: ok = EvaluateMuscle(*muscle_, frame, true); break;
    case NodeKind::kRibbonMuscle: ok = EvaluateMuscle(*ribbon_, frame, false); break;
    case NodeKind::kSkin: ok = EvaluateSkin(frame, error); break;
    case NodeKind::kShape: ok = EvaluateShape(frame); break;
  }
  figures_.evaluate_ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
  return ok;
}

}  // namespace myo_app
