#pragma once
// One node of a scene on the time line: its deformer, its maps and its host,
// and the mesh it outputs (the topology of its base mesh with the points of
// the last evaluation). Each evaluation fills the frame values exactly as the
// Maya node does from its plugs.

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/run/scene_attribute_source.h"
#include "app/run/scene_host.h"
#include "app/run/scene_merge_host.h"
#include "app/scene/scene.h"
#include "core/maps/map_store.h"
#include "core/muscle/muscle_deformer.h"
#include "core/shape/shape_deformer.h"
#include "core/sensors/sensor_evaluation.h"
#include "core/skin/skin_deformer.h"

namespace myo_core {
class StateReader;
class StateWriter;
}  // namespace myo_core

namespace myo_app {

// Figures of one evaluation, for the per-frame table.
struct NodeFigures {
  bool stepped = false;
  double evaluate_ms = 0.0;    // the whole evaluation, a rebuild included
  uint32_t iterations = 0;
  std::optional<double> volume_ratio;  // signed volume over rest volume, muscles only
  double max_speed = 0.0;      // largest point speed, scene units per second
};

// The single value outputs of a type that is no deformer, in table order:
// what a run writes per frame into values.csv. Empty for a deformer.
std::vector<std::string> ValueOutputsOf(const NodeType& type);

class NodeRunner {
 public:
  // `output_values` answers another node's single value output of the
  // current frame, for the value attributes connected to one.
  using OutputValues = std::function<double(const std::string& node, const std::string& attribute)>;
  NodeRunner(const Scene& scene, const SceneNode& node, OutputValues output_values = {});
  ~NodeRunner();

  // Evaluates the node at `frame`, its input and connected meshes taken from
  // `meshes`. False with a message when the deformer fails; the output then
  // keeps its input points.
  bool Evaluate(double frame, bool playing, SceneMeshes& meshes, std::string& error);

  const SceneNode& node() const { return node_; }
  const myo_core::MeshData& output() const { return output_; }
  const NodeFigures& figures() const { return figures_; }
  // A single value output of a node that is no deformer ("outDistance",
  // "outValue", ...) after its last evaluation; 0 before.
  double OutputValue(const std::string& attribute) const;
  // The single value outputs of the node's type, in table order: what the
  // run writes per frame for a node that is no deformer.
  std::vector<std::string> ValueOutputs() const;
  // An edge evaluator's "compression" after its last evaluation (empty
  // before one), and the deform mesh it was computed on (null before).
  const std::vector<float>& compression() const { return compression_; }
  const myo_core::MeshData* compressed_mesh() const { return compressed_mesh_; }
  // A shape node's "outActivation" after the last evaluation; empty for
  // other nodes and before a shape's first build.
  const std::vector<float>& out_activation() const { return host_.out_activation(); }
  // The debug record of a simulation deformer's solver when its "debug" was
  // on at the last evaluation; null otherwise and for other nodes.
  const myo_core::DebugData* debug_data() const;

  // Everything the node carries from one frame to the next (its maps, its
  // output, the held values of a sensor or remap, its deformer or
  // evaluator), for a checkpoint. A load that does not fit the node names
  // the fault in the reader.
  void SaveState(myo_core::StateWriter& writer) const;
  void LoadState(myo_core::StateReader& reader);

 private:
  template <class Archive, class Self>
  static void StateFields(Archive& archive, Self& self);
  template <class Deformer>
  bool EvaluateMuscle(Deformer& deformer, double frame, bool with_volume);
  bool EvaluateSkin(double frame, std::string& error);
  bool EvaluateShape(double frame);
  void EvaluateSensor(double frame);
  void EvaluateRemapValue(double frame);
  void EvaluateEdges(double frame, SceneMeshes& meshes);
  void EvaluateMerge(double frame, bool playing, SceneMeshes& meshes);
  myo_core::Matrix LocalToWorld(double frame) const;
  std::string PlacingTransform(const std::string& name) const;
  // False, naming the transform, when a matrix the node reads at `frame` is
  // not finite as floats.
  bool FiniteMatrices(double frame, std::string& error) const;
  void TakeOutput(const myo_core::SolverData& solver);

  const Scene& scene_;
  const SceneNode& node_;
  myo_core::MapStore maps_;
  SceneHost host_;
  myo_core::MeshData output_;
  std::vector<double> input_points_;   // 3N, the input of this evaluation
  std::vector<double> output_points_;  // 3N
  NodeFigures figures_;
  bool debug_on_ = false;  // "debug" of the last evaluation
  std::unique_ptr<myo_core::MuscleDeformer> muscle_;
  std::unique_ptr<myo_core::RibbonMuscleDeformer> ribbon_;
  std::unique_ptr<myo_core::SkinDeformer> skin_;
  std::unique_ptr<myo_core::ShapeDeformer> shape_;
  // Nodes that are no deformers.
  OutputValues output_values_;
  SceneLinks links_;  // what connections read at the frame being evaluated
  std::map<std::string, double> outputs_;  // by output attribute
  myo_core::ScalarSensorState scalar_sensor_;
  myo_core::PositionSensorState position_sensor_;
  myo_core::SensorOutputValues sensor_outputs_;
  std::unique_ptr<myo_core::EdgeEvaluator> edges_;
  std::vector<float> compression_;
  const myo_core::MeshData* compressed_mesh_ = nullptr;
  std::unique_ptr<myo_core::SkinMerge> merge_;
  std::unique_ptr<SceneMergeHost> merge_host_;
};

}  // namespace myo_app
