#pragma once
// A node's Maya attributes created from its core attribute table. Each node
// class keeps one NodeAttributes as a static member, filled in its
// initialize, and finds its attributes by long name.

#include <maya/MObject.h>
#include <maya/MStatus.h>

#include <functional>
#include <string>
#include <unordered_map>

#include "core/attributes/attribute_info.h"

namespace myo_maya {

class NodeAttributes {
 public:
  // The node class's MPxNode::addAttribute and attributeAffects, which only
  // the class itself may call.
  using AddFunction = std::function<MStatus(const MObject& attribute)>;
  using AffectsFunction = std::function<MStatus(const MObject& when_changes, const MObject& is_affected)>;

  // Creates every attribute of `table` with its type, default, limits and
  // flags; compounds get their children, which are created first, and a
  // compound of three floats is a numeric one, read as a float vector. The
  // attributes that are no compound's child are added in table order, and
  // those marked kAffectsOutput affect `output`. Stops at the first failure
  // with one error line naming the attribute.
  MStatus Create(const myo_core::AttributeTable& table, const AddFunction& add, const AffectsFunction& affects,
                 const MObject& output);
  // The same where the output is an attribute of the table itself.
  MStatus Create(const myo_core::AttributeTable& table, const AddFunction& add, const AffectsFunction& affects,
                 const std::string& output_long_name);

  // The attribute by long name; a null object when the table has none.
  const MObject& operator[](const std::string& long_name) const;
  const myo_core::AttributeTable* table() const { return table_; }

 private:
  MStatus CreateOne(const myo_core::AttributeInfo& info);
  // Creates and adds the attributes; then `output()` names what they affect.
  MStatus CreateAndAffect(const myo_core::AttributeTable& table, const AddFunction& add,
                          const AffectsFunction& affects, const std::function<MObject()>& output);
  // A compound of exactly three plain floats.
  bool IsFloat3(const myo_core::AttributeInfo& info) const;

  const myo_core::AttributeTable* table_ = nullptr;
  std::unordered_map<std::string, MObject> attributes_;  // by long name
};

}  // namespace myo_maya
