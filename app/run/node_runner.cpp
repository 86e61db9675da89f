#include "app/run/node_runner.h"

#include <chrono>
#include <cmath>

#include "app/run/scene_attribute_source.h"
#include "app/scene/remap_value.h"
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

NodeRunner::NodeRunner(const Scene& scene, const SceneNode& node, OutputValues output_values)
    : scene_(scene), node_(node), host_(scene, node, maps_), output_values_(std::move(output_values)) {
  if (const SceneMesh* base = scene.BaseMesh(node)) output_ = base->data;
  for (const SceneMap& map : node.maps) {
    const uint32_t width = map.children.empty() ? 1u : static_cast<uint32_t>(map.children.size());
    maps_.SetAll(map.list, map.element, map.set, map.values, width);
  }
  switch (node.type->kind) {
    case NodeKind::kMuscle: muscle_ = std::make_unique<myo_core::MuscleDeformer>(); break;
    case NodeKind::kRibbonMuscle: ribbon_ = std::make_unique<myo_core::RibbonMuscleDeformer>(); break;
    case NodeKind::kSkin: skin_ = std::make_unique<myo_core::SkinDeformer>(); break;
    case NodeKind::kShape: shape_ = std::make_unique<myo_core::ShapeDeformer>(); break;
    case NodeKind::kSensorDistance:
    case NodeKind::kSensorPosition:
    case NodeKind::kSensorRotation:
    case NodeKind::kRemapValue:
    case NodeKind::kDataNode:
    case NodeKind::kDebugLocator: break;
    case NodeKind::kEdgeEvaluator: edges_ = std::make_unique<myo_core::EdgeEvaluator>(); break;
    case NodeKind::kSkinMerge:
      merge_ = std::make_unique<myo_core::SkinMerge>();
      merge_host_ = std::make_unique<SceneMergeHost>(scene, node);
      break;
  }
}

NodeRunner::~NodeRunner() = default;

myo_core::Matrix NodeRunner::LocalToWorld(double frame) const {
  const SceneMesh* base = scene_.BaseMesh(node_);
  return ToFloatMatrix(scene_.WorldMatrix(base != nullptr ? base->parent : std::string(), frame));
}

void NodeRunner::TakeOutput(const myo_core::SolverData& solver) {
  for (std::size_t i = 0; i < output_points_.size() && i < output_.points.size(); ++i)
    output_.points[i] = static_cast<float>(output_points_[i]);
  figures_.iterations = solver.iterations_;
  figures_.max_speed = MaxSpeed(solver.velocities_);
}

template <class Deformer>
bool NodeRunner::EvaluateMuscle(Deformer& deformer, double frame, bool with_volume) {
  const SceneAttributeSource source(scene_, node_, frame, &links_);
  myo_core::MuscleFrameValues values;
  myo_core::ReadMuscleFrameValues(source, with_volume, values);
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  const myo_core::MuscleEvaluation result = deformer.Evaluate(values, input_points_, host_, maps_, output_points_);
  figures_.stepped = result.stepped;
  TakeOutput(deformer.solver());
  debug_on_ = values.debug;
  if constexpr (std::is_same_v<Deformer, myo_core::MuscleDeformer>) {
    const myo_core::VolumeConstraint& volume = *deformer.solver().volume_constraint_;
    if (volume.rest_volume_ != 0.0f && !deformer.solver().positions_.empty())
      figures_.volume_ratio = myo_core::SixTimesVolume(volume.triangles_, deformer.solver().positions_.data()) /
                              static_cast<double>(volume.rest_volume_);
  }
  return true;
}

bool NodeRunner::EvaluateSkin(double frame, std::string& error) {
  const SceneAttributeSource source(scene_, node_, frame, &links_);
  myo_core::SkinFrameValues values;
  myo_core::ReadSkinFrameValues(source, values);
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  const myo_core::SkinEvaluation result = skin_->Evaluate(values, input_points_, host_, maps_, output_points_);
  figures_.stepped = result.stepped;
  TakeOutput(skin_->solver());
  debug_on_ = values.debug;
  if (!result.succeeded) {
    error = node_.name + " at frame " + std::to_string(static_cast<long long>(frame)) +
            ": the skin has no usable reference mesh";
    return false;
  }
  return true;
}

bool NodeRunner::EvaluateShape(double frame) {
  const SceneAttributeSource source(scene_, node_, frame, &links_);
  myo_core::ShapeFrameValues values;
  myo_core::ReadShapeFrameValues(source, values);
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  host_.SetGeometryIndex(values.geometry_index);
  const myo_core::ShapeEvaluation result = shape_->Evaluate(values, input_points_, host_, maps_, output_points_);
  figures_.stepped = result.stepped;
  TakeOutput(shape_->solver());
  debug_on_ = values.debug;
  return true;
}

void NodeRunner::EvaluateSensor(double frame) {
  const SceneAttributeSource source(scene_, node_, frame, &links_);
  myo_core::SensorClock clock;
  clock.start_time = static_cast<float>(source.Number("startTime"));
  clock.current_time = static_cast<float>(source.Number("currentTime"));
  clock.time_scale = static_cast<float>(source.Number("timeScale"));
  myo_core::SensorOutputs result;
  switch (node_.type->kind) {
    case NodeKind::kSensorDistance:
      result = myo_core::EvaluateDistanceSensor(scalar_sensor_, clock, static_cast<float>(source.Number("spaceScale")),
                                                source.Position("startPosition"), source.Position("endPosition"));
      break;
    case NodeKind::kSensorPosition:
      result = myo_core::EvaluatePositionSensor(position_sensor_, clock,
                                                static_cast<float>(source.Number("spaceScale")),
                                                source.Position("position"));
      break;
    default:
      result = myo_core::EvaluateRotationSensor(scalar_sensor_, clock, source.Position("startPosition"),
                                                source.Position("midPosition"), source.Position("endPosition"));
      break;
  }
  myo_core::ApplySensorOutputs(result, sensor_outputs_);
  if (node_.type->kind == NodeKind::kSensorDistance) outputs_["outDistance"] = sensor_outputs_.value;
  if (node_.type->kind == NodeKind::kSensorRotation) outputs_["outAngle"] = sensor_outputs_.value;
  outputs_["outVelocity"] = sensor_outputs_.velocity;
  outputs_["outAcceleration"] = sensor_outputs_.acceleration;
  figures_.stepped = result.rates_written;
}

void NodeRunner::EvaluateRemapValue(double frame) {
  const SceneAttributeSource source(scene_, node_, frame, &links_);
  RemapValueInputs in;
  in.input = source.Number("inputValue");
  in.input_min = source.Number("inputMin");
  in.input_max = source.Number("inputMax");
  in.output_min = source.Number("outputMin");
  in.output_max = source.Number("outputMax");
  in.curve = source.Ramp("value");
  // A float attribute of the host's node holds 32 bits.
  outputs_["outValue"] = static_cast<float>(RemapValue(in));
}

void NodeRunner::EvaluateEdges(double frame, SceneMeshes& meshes) {
  const SceneAttributeSource source(scene_, node_, frame, &links_);
  myo_core::EdgeEvaluatorFrame values;
  values.initialization_time = static_cast<float>(source.Number("initializationTime"));
  values.current_time = static_cast<float>(source.Number("currentTime"));
  values.compression_remap = source.Ramp("compressionRemap");
  SceneEdgeInputs inputs(node_, meshes);
  const myo_core::EdgeEvaluation result = edges_->Evaluate(values, inputs);
  // The output keeps its last values unless this evaluation computed new ones.
  if (result == myo_core::EdgeEvaluation::kEvaluated) compression_ = edges_->compression();
  const std::string deform = ConnectedSource(node_, "deformMesh");
  compressed_mesh_ = deform.empty() ? nullptr : meshes.ObjectMesh(deform);
  figures_.stepped = result == myo_core::EdgeEvaluation::kEvaluated;
}

void NodeRunner::EvaluateMerge(double frame, bool playing, SceneMeshes& meshes) {
  const SceneAttributeSource source(scene_, node_, frame, &links_);
  myo_core::SkinMergeFrame values;
  values.initialization_time = static_cast<float>(source.Number("initializationTime"));
  values.current_time = static_cast<float>(source.Number("currentTime"));
  values.envelope = static_cast<float>(source.Number("envelope"));
  values.local_to_world = LocalToWorld(frame);
  merge_host_->SetFrame(frame, playing, meshes);
  merge_->Evaluate(values, input_points_, *merge_host_, maps_, output_points_);
  for (std::size_t i = 0; i < output_points_.size() && i < output_.points.size(); ++i)
    output_.points[i] = static_cast<float>(output_points_[i]);
  figures_.stepped = merge_->bound();
}

const myo_core::DebugData* NodeRunner::debug_data() const {
  if (debug_on_ && muscle_) return &muscle_->solver().debug_data_;
  if (debug_on_ && ribbon_) return &ribbon_->solver().debug_data_;
  if (debug_on_ && skin_) return &skin_->solver().debug_data_;
  if (debug_on_ && shape_) return &shape_->solver().debug_data_;
  return nullptr;
}

double NodeRunner::OutputValue(const std::string& attribute) const {
  const auto it = outputs_.find(attribute);
  return it != outputs_.end() ? it->second : 0.0;
}

std::vector<std::string> NodeRunner::ValueOutputs() const { return ValueOutputsOf(*node_.type); }

std::vector<std::string> ValueOutputsOf(const NodeType& type) {
  std::vector<std::string> names;
  if (type.deformer) return names;
  for (const myo_core::AttributeInfo& info : *type.attributes)
    if (info.Has(myo_core::kNotWritable) && info.type == myo_core::AttributeType::kFloat && !info.Has(myo_core::kArray))
      names.push_back(info.long_name);
  return names;
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
  host_.SetFrame(frame, playing, meshes);
  if (const myo_core::MeshData* input = meshes.ObjectMesh(node_.input)) {
    input_points_.assign(input->points.begin(), input->points.end());
    output_.points = input->points;
  }
  output_points_.clear();
  figures_ = NodeFigures{};
  debug_on_ = false;
  links_.output_value = output_values_;
  links_.world_mesh = [&meshes](const std::string& name) { return meshes.WorldMesh(name); };
  const auto begin = std::chrono::steady_clock::now();
  bool ok = true;
  switch (node_.type->kind) {
    case NodeKind::kMuscle: ok = EvaluateMuscle(*muscle_, frame, true); break;
    case NodeKind::kRibbonMuscle: ok = EvaluateMuscle(*ribbon_, frame, false); break;
    case NodeKind::kSkin: ok = EvaluateSkin(frame, error); break;
    case NodeKind::kShape: ok = EvaluateShape(frame); break;
    case NodeKind::kSensorDistance:
    case NodeKind::kSensorPosition:
    case NodeKind::kSensorRotation: EvaluateSensor(frame); break;
    case NodeKind::kRemapValue: EvaluateRemapValue(frame); break;
    case NodeKind::kEdgeEvaluator: EvaluateEdges(frame, meshes); break;
    case NodeKind::kSkinMerge: EvaluateMerge(frame, playing, meshes); break;
    // They only carry connections: the run writes what a debug locator shows.
    case NodeKind::kDataNode:
    case NodeKind::kDebugLocator: break;
  }
  figures_.evaluate_ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
  return ok;
}

}  // namespace myo_app
