// What a node of a running scene carries from one frame to the next, for a
// checkpoint: its maps (a build may write repaired ones back), the points
// of its output (what the next frame starts from when its input is missing),
// the output values a sensor or remap holds, an edge evaluator's last
// compression, a shape's last "outActivation", and the state of its
// deformer, evaluator or merge. Figures and debug flags are set anew by
// every evaluation and are not kept.

#include "app/run/node_runner.h"

#include <algorithm>

#include "core/sensors/sensor_state_fields.h"
#include "core/state/state_archive.h"

namespace myo_app {

template <class Archive, class Self>
void NodeRunner::StateFields(Archive& a, Self& self) {
  a.Section("node " + self.node_.name + " (" + self.node_.type->name + ")");
  myo_core::ObjectState(a, self.maps_);
  a.Array(self.output_.points);
  myo_core::ScalarSensorStateFields(a, self.scalar_sensor_);
  myo_core::PositionSensorStateFields(a, self.position_sensor_);
  myo_core::SensorOutputValuesFields(a, self.sensor_outputs_);
  a.Array(self.compression_);
  if (self.muscle_) myo_core::ObjectState(a, *self.muscle_);
  if (self.ribbon_) myo_core::ObjectState(a, *self.ribbon_);
  if (self.skin_) myo_core::ObjectState(a, *self.skin_);
  if (self.shape_) myo_core::ObjectState(a, *self.shape_);
  if (self.edges_) myo_core::ObjectState(a, *self.edges_);
  if (self.merge_) myo_core::ObjectState(a, *self.merge_);
}

void NodeRunner::SaveState(myo_core::StateWriter& writer) const {
  StateFields(writer, *this);
  writer.Array(host_.out_activation());
  writer.Value(static_cast<uint64_t>(outputs_.size()));
  for (const auto& [attribute, value] : outputs_) {
    writer.Text(attribute);
    writer.Value(value);
  }
}

void NodeRunner::LoadState(myo_core::StateReader& reader) {
  const std::size_t points = output_.points.size();
  StateFields(reader, *this);
  std::vector<float> out_activation;
  reader.Array(out_activation);
  uint64_t count = 0;
  reader.Value(count);
  outputs_.clear();
  const std::vector<std::string> names = ValueOutputs();
  for (uint64_t k = 0; k < count && reader.ok(); ++k) {
    std::string attribute;
    double value = 0.0;
    reader.Text(attribute);
    reader.Value(value);
    if (reader.ok() && std::find(names.begin(), names.end(), attribute) == names.end())
      reader.Fail("\"" + attribute + "\" is no output of " + node_.type->name);
    outputs_[attribute] = value;
  }
  // A solver of another mesh would step out of its arrays.
  const myo_core::SolverData* solver = nullptr;
  if (muscle_) solver = &muscle_->solver();
  if (ribbon_) solver = &ribbon_->solver();
  if (skin_) solver = &skin_->solver();
  if (shape_) solver = &shape_->solver();
  const std::size_t solved = solver != nullptr && !solver->positions_.empty() ? solver->positions_.size() : points;
  if (reader.ok() && (output_.points.size() != points || solved != points))
    reader.Fail("the state of " + node_.name + " holds " + std::to_string(std::max(output_.points.size(), solved) / 3) +
                " points; its mesh has " + std::to_string(points / 3));
  if (reader.ok()) host_.WriteOutActivation(out_activation);
}

}  // namespace myo_app
