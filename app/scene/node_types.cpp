#include "app/scene/node_types.h"

#include "app/scene/remap_value.h"
#include "core/attributes/attribute_builders.h"
#include "core/debug/helper_node_attributes.h"
#include "core/evaluator/edge_evaluator_attributes.h"
#include "core/merge/skin_merge_attributes.h"
#include "core/muscle/muscle_attributes.h"
#include "core/plugin/registration_table.h"
#include "core/sensors/sensor_attributes.h"
#include "core/shape/shape_attributes.h"
#include "core/skin/skin_attributes.h"

namespace myo_app {

using myo_core::AttributeInfo;
using myo_core::AttributeTable;
using myo_core::AttributeType;

const std::vector<NodeType>& NodeTypes() {
  static const std::vector<NodeType> types = {
      {myo_core::kMyoMuscleTypeName, NodeKind::kMuscle, &myo_core::MuscleAttributes(),
       "closed muscle with fibers, activation, attachments, slides and volume"},
      {myo_core::kMyoRibbonMuscleTypeName, NodeKind::kRibbonMuscle, &myo_core::RibbonMuscleAttributes(),
       "open sheet of muscle, as MyoMuscle without volume"},
      {myo_core::kMyoSkinTypeName, NodeKind::kSkin, &myo_core::SkinAttributes(),
       "skin held on a reference mesh by hard, soft and slide constraints"},
      {myo_core::kMyoSimshapeTypeName, NodeKind::kShape, &myo_core::ShapeAttributes(),
       "soft mass that jiggles towards its animated shape and keeps off a collider"},
      {myo_core::kMyoSkinMergeTypeName, NodeKind::kSkinMerge, &myo_core::SkinMergeAttributes(),
       "one mesh put together from simulated and animated pieces, blended by a painted map"},
      {myo_core::kMyoEdgeEvaluatorTypeName, NodeKind::kEdgeEvaluator, &myo_core::EdgeEvaluatorAttributes(),
       "per-vertex compression of a deforming mesh against its rest shape", false},
      {myo_core::kMyoSensorDistanceTypeName, NodeKind::kSensorDistance, &myo_core::SensorDistanceAttributes(),
       "distance between two positions, with its velocity and acceleration", false},
      {myo_core::kMyoSensorPositionTypeName, NodeKind::kSensorPosition, &myo_core::SensorPositionAttributes(),
       "speed of one position, and its acceleration", false},
      {myo_core::kMyoSensorRotationTypeName, NodeKind::kSensorRotation, &myo_core::SensorRotationAttributes(),
       "angle at a middle position between two others, with its velocity and acceleration", false},
      {myo_core::kRemapValueTypeName, NodeKind::kRemapValue, &RemapValueAttributes(),
       "the host's value remap: an input range through a curve to an output range", false},
      {myo_core::kMyoDataNodeTypeName, NodeKind::kDataNode, &myo_core::DataNodeAttributes(),
       "gathers deformers (their message on \"inputs\") for a debug view", false},
      {myo_core::kMyoDebugLocatorTypeName, NodeKind::kDebugLocator, &myo_core::DebugLocatorAttributes(),
       "writes the debug lines of a data node's deformers together, one OBJ per frame", false},
  };
  return types;
}

const NodeType* FindNodeType(const std::string& name) {
  for (const NodeType& type : NodeTypes())
    if (type.name == name) return &type;
  return nullptr;
}

bool HasDebugLines(const NodeType& type) {
  return type.kind == NodeKind::kMuscle || type.kind == NodeKind::kRibbonMuscle || type.kind == NodeKind::kSkin ||
         type.kind == NodeKind::kShape;
}

const AttributeTable& DeformerAttributes() {
  static const AttributeTable table = {
      myo_core::attribute_builders::Scalar("envelope", "en", AttributeType::kFloat, 1, myo_core::kKeyable, 0.0, 1.0)};
  return table;
}

const AttributeInfo* FindNodeAttribute(const NodeType& type, const std::string& name) {
  if (const AttributeInfo* info = myo_core::FindAttribute(*type.attributes, name)) return info;
  return type.deformer ? myo_core::FindAttribute(DeformerAttributes(), name) : nullptr;
}

const AttributeInfo* FindMapList(const NodeType& type, const std::string& element) {
  const AttributeInfo* map = myo_core::FindAttribute(*type.attributes, element);
  if (map == nullptr || !map->Has(myo_core::kArray) || map->type == AttributeType::kMesh ||
      map->IsMatrix())
    return nullptr;
  for (const AttributeInfo& info : *type.attributes) {
    if (info.type != AttributeType::kCompound || !info.Has(myo_core::kArray)) continue;
    for (const std::string& child : info.children)
      if (child == map->long_name) return &info;
  }
  return nullptr;
}

std::string TypeName(AttributeType type) {
  switch (type) {
    case AttributeType::kBool: return "bool";
    case AttributeType::kInt: return "int";
    case AttributeType::kFloat: return "float";
    case AttributeType::kEnum: return "enum";
    case AttributeType::kTime: return "time";
    case AttributeType::kMatrix: return "matrix";
    case AttributeType::kFloatMatrix: return "float matrix";
    case AttributeType::kMesh: return "mesh";
    case AttributeType::kCompound: return "compound";
    case AttributeType::kColor: return "color";
    case AttributeType::kString: return "string";
    case AttributeType::kRamp: return "ramp";
    case AttributeType::kMessage: return "message";
  }
  return "unknown";
}

}  // namespace myo_app
