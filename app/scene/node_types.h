#pragma once
// The node types the standalone host evaluates, with their attribute tables:
// the tables the Maya plug-in creates its attributes from. Every deformer
// also has the "envelope" of Maya's deformers.

#include <string>
#include <vector>

#include "core/attributes/attribute_info.h"

namespace myo_app {

enum class NodeKind { kMuscle, kRibbonMuscle, kSkin, kShape, kSensorDistance, kSensorPosition, kSensorRotation, kRemapValue,
                      kEdgeEvaluator, kSkinMerge, kDataNode, kDebugLocator };

struct NodeType {
  std::string name;  // the Maya type name
  NodeKind kind;
  const myo_core::AttributeTable* attributes;
  std::string summary;
  // A deformer takes an input mesh and outputs it deformed; other nodes
  // compute values from their attributes and connections.
  bool deformer = true;
};

const std::vector<NodeType>& NodeTypes();
const NodeType* FindNodeType(const std::string& name);

// Whether a node of this type has a solver whose constraints "debug" shows,
// and so may feed a "MyoDataNode".
bool HasDebugLines(const NodeType& type);

// The attributes every deformer inherits: "envelope".
const myo_core::AttributeTable& DeformerAttributes();

// An attribute of a node type by long or short name, its own first, then,
// for a deformer, the deformer's; null when there is none.
const myo_core::AttributeInfo* FindNodeAttribute(const NodeType& type, const std::string& name);

// The list attribute that holds the per-point map `element` (a long name):
// the array compound with that child. Null when `element` is no map.
const myo_core::AttributeInfo* FindMapList(const NodeType& type, const std::string& element);

// Text of an attribute type as the listings and messages show it.
std::string TypeName(myo_core::AttributeType type);

}  // namespace myo_app
