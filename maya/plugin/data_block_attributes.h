#pragma once
// The attribute source port answered from a node's data block, by the long
// names of the node's attribute table, so that Maya fills frame values with
// the same readers as the standalone host.

#include <maya/MDataBlock.h>
#include <maya/MObject.h>

#include "core/attributes/attribute_source.h"
#include "maya/plugin/node_attributes.h"

namespace myo_maya {

class DataBlockAttributes : public myo_core::AttributeSource {
 public:
  DataBlockAttributes(const MObject& node, MDataBlock& block, const NodeAttributes& attributes);

  // Bools, integers, enums and floats as they are, times in seconds; the
  // table's default for a name the node does not have.
  double Number(const std::string& long_name) const override;
  myo_core::Matrix MatrixValue(const std::string& long_name) const override;
  std::string Text(const std::string& long_name) const override;
  myo_core::RampEntries Ramp(const std::string& long_name) const override;

 private:
  MObject node_;
  MDataBlock& block_;
  const NodeAttributes& attributes_;
};

}  // namespace myo_maya
