#include "maya/plugin/maya_map_port.h"

#include "core/plugin/map_elements.h"
#include "maya/plugin/typed_readers.h"

namespace myo_maya {

MayaMapPort::MayaMapPort(const MObject& node, MDataBlock* block, const NodeAttributes& attributes)
    : node_(node), block_(block), attributes_(attributes) {}

std::vector<MObject> MayaMapPort::Children(const std::vector<std::string>& names) const {
  std::vector<MObject> children;
  for (const std::string& name : names) children.push_back(attributes_[name]);
  return children;
}

uint32_t MayaMapPort::ElementCount(const std::string& list, const std::string& element, uint32_t index) const {
  const MObject& list_attribute = attributes_[list];
  const MObject& element_attribute = attributes_[element];
  if (list_attribute.isNull() || element_attribute.isNull()) return 0;
  if (block_ != nullptr) return DataElementCount(*block_, index, list_attribute, element_attribute);
  return PlugElementCount(node_, index, list_attribute, element_attribute);
}

void MayaMapPort::ReadFloats(const std::string& list, const std::string& element, uint32_t index, uint32_t count,
                             float default_value, std::vector<float>& out) const {
  ReadFloatsAt(list, element, index, 0, count, count, default_value, out);
}

void MayaMapPort::ReadFloatsAt(const std::string& list, const std::string& element, uint32_t index,
                               uint32_t offset, uint32_t count, uint32_t total, float default_value,
                               std::vector<float>& out) const {
  const MObject& list_attribute = attributes_[list];
  const MObject& element_attribute = attributes_[element];
  if (list_attribute.isNull() || element_attribute.isNull()) {
    myo_core::PrepareMapRange(offset, count, total, default_value, out);
    return;
  }
  if (block_ != nullptr)
    ReadDataFloatsAt(*block_, index, offset, count, total, list_attribute, element_attribute, default_value, out);
  else
    ReadPlugFloatsAt(node_, index, offset, count, total, list_attribute, element_attribute, default_value, out);
}

void MayaMapPort::ReadVectors(const std::string& list, const std::string& element,
                              const std::vector<std::string>& children, uint32_t index, uint32_t count,
                              float default_value, std::vector<float>& out) const {
  const MObject& list_attribute = attributes_[list];
  const MObject& element_attribute = attributes_[element];
  if (list_attribute.isNull() || element_attribute.isNull()) {
    out.assign(static_cast<size_t>(count) * children.size(), default_value);
    return;
  }
  if (block_ != nullptr)
    ReadDataVectors(*block_, index, count, Children(children), list_attribute, element_attribute, default_value,
                    out);
  else
    ReadPlugVectors(node_, index, count, static_cast<uint32_t>(children.size()), list_attribute, element_attribute,
                    default_value, out);
}

void MayaMapPort::WriteFloats(const std::string& list, const std::string& element, uint32_t index,
                              const std::vector<float>& values) {
  const MObject& list_attribute = attributes_[list];
  const MObject& element_attribute = attributes_[element];
  if (list_attribute.isNull() || element_attribute.isNull()) return;
  WritePlugFloats(node_, index, list_attribute, element_attribute, values);
}

void MayaMapPort::WriteVectors(const std::string& list, const std::string& element,
                               const std::vector<std::string>& children, uint32_t index,
                               const std::vector<float>& values) {
  const MObject& list_attribute = attributes_[list];
  const MObject& element_attribute = attributes_[element];
  if (list_attribute.isNull() || element_attribute.isNull()) return;
  WritePlugVectors(node_, index, list_attribute, element_attribute, Children(children), values);
}

}  // namespace myo_maya
