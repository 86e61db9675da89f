#include "app/run/node_runner.h"

#include <chrono>
#include <cmath>

#include "app/run/scene_attribute_source.h"
#include "core/attributes/frame_readers.h"
#include "core/kernels/volume_constraint.h"
#include "core/paint/weight_maps.h"

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
    : scene_(scene), node_(node), host_(node.name, static_cast<float>(scene.timeline.fps)) {
  output_ = scene.BaseMesh(node)->data;
  for (const SceneMap& map : node.maps) {
    const uint32_t width = map.children.empty() ? 1u : static_cast<uint32_t>(map.children.size());
    maps_.SetAll(map.list, map.element, map.set, map.values, width);
  }
  switch (node.type->kind) {
    case NodeKind::kMuscle: muscle_ = std::make_unique<myo_core::MuscleDeformer>(); break;
    case NodeKind::kRibbonMuscle: ribbon_ = std::make_unique<myo_core::RibbonMuscleDeformer>(); break;
    case NodeKind::kSkin: skin_ = std::make_unique<myo_core::SkinDeformer>(); break;
  }
}

NodeRunner::~NodeRunner() = default;

myo_core::Matrix NodeRunner::LocalToWorld(double frame) const {
  const SceneMesh* base = scene_.BaseMesh(node_);
  return ToFloatMatrix(scene_.WorldMatrix(base->parent, frame));
}

myo_core::ConnectedMatrices NodeRunner::Connected(const std::string& list, const std::vector<std::string>& children,
                                                  double frame) const {
  // Logical indices with every child connected, ascending.
  std::map<uint32_t, std::vector<const SceneConnection*>> by_index;
  for (const SceneConnection& c : node_.connections)
    if (c.list == list) by_index[c.index].push_back(&c);
  myo_core::ConnectedMatrices out;
  for (const auto& [index, connections] : by_index) {
    std::vector<myo_core::Matrix> matrices;
    for (const std::string& child : children)
      for (const SceneConnection* c : connections)
        if (c->attribute == child) matrices.push_back(ToFloatMatrix(scene_.WorldMatrix(c->source, frame)));
    if (matrices.size() != children.size()) continue;
    out.indices.push_back(index);
    out.matrices.insert(out.matrices.end(), matrices.begin(), matrices.end());
  }
  return out;
}

std::vector<myo_core::TargetInput> NodeRunner::Targets(double frame, const MeshLookup& meshes) const {
  std::map<uint32_t, myo_core::TargetInput> by_index;
  std::map<uint32_t, int> parts;
  for (const SceneConnection& c : node_.connections) {
    if (c.list != "targets") continue;
    myo_core::TargetInput& target = by_index[c.index];
    target.logical_index = c.index;
    if (c.attribute == "targetWorldMesh") {
      target.mesh = meshes(c.source);
      target.name = c.source;
      ++parts[c.index];
    } else if (c.attribute == "targetWorldMatrix") {
      target.world_matrix = ToFloatMatrix(scene_.WorldMatrix(c.source, frame));
      ++parts[c.index];
    }
  }
  std::vector<myo_core::TargetInput> out;
  for (auto& [index, target] : by_index)
    if (parts[index] == 2) out.push_back(std::move(target));
  return out;
}

void NodeRunner::TakeOutput(const myo_core::SolverData& solver) {
  for (std::size_t i = 0; i < output_points_.size() && i < output_.points.size(); ++i)
    output_.points[i] = static_cast<float>(output_points_[i]);
  figures_.iterations = solver.iterations_;
  figures_.max_speed = MaxSpeed(solver.velocities_);
}

template <class Deformer>
bool NodeRunner::EvaluateMuscle(Deformer& deformer, double frame, const MeshLookup& meshes, bool with_volume) {
  const SceneAttributeSource source(scene_, node_, frame);
  myo_core::MuscleFrameValues values;
  myo_core::ReadMuscleFrameValues(source, with_volume, values);
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  values.attachments = Connected("attachmentConstraintsList",
                                 myo_core::InfluenceConnectionChildren(myo_core::InfluenceKind::kAttachments), frame);
  values.segments = Connected("slideOnSegmentConstraintsList",
                              myo_core::InfluenceConnectionChildren(myo_core::InfluenceKind::kSegments), frame);
  values.targets = Targets(frame, meshes);
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

bool NodeRunner::EvaluateSkin(double frame, const MeshLookup& meshes, std::string& error) {
  const SceneAttributeSource source(scene_, node_, frame);
  myo_core::SkinFrameValues values;
  myo_core::ReadSkinFrameValues(source, values);
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  for (const SceneConnection& c : node_.connections)
    if (c.attribute == "referenceMesh") values.reference_mesh = meshes(c.source);
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

bool NodeRunner::Evaluate(double frame, bool playing, const MeshLookup& meshes, std::string& error) {
  const myo_core::MeshData* input = meshes(node_.input);
  host_.SetFrame(playing, input);
  input_points_.assign(input->points.begin(), input->points.end());
  output_points_.clear();
  output_.points = input->points;
  figures_ = NodeFigures{};
  const auto begin = std::chrono::steady_clock::now();
  bool ok = true;
  switch (node_.type->kind) {
    case NodeKind::kMuscle: ok = EvaluateMuscle(*muscle_, frame, meshes, true); break;
    case NodeKind::kRibbonMuscle: ok = EvaluateMuscle(*ribbon_, frame, meshes, false); break;
    case NodeKind::kSkin: ok = EvaluateSkin(frame, meshes, error); break;
  }
  figures_.evaluate_ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
  return ok;
}

}  // namespace myo_app
