#include "maya/plugin/data_block_attributes.h"

#include <maya/MDataHandle.h>
#include <maya/MTime.h>

#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/node_helpers.h"

namespace myo_maya {

using myo_core::AttributeType;

DataBlockAttributes::DataBlockAttributes(const MObject& node, MDataBlock& block, const NodeAttributes& attributes)
    : node_(node), block_(block), attributes_(attributes) {}

double DataBlockAttributes::Number(const std::string& long_name) const {
  const myo_core::AttributeInfo* info =
      attributes_.table() == nullptr ? nullptr : myo_core::FindAttribute(*attributes_.table(), long_name);
  const MObject& attribute = attributes_[long_name];
  if (info == nullptr || attribute.isNull()) return info == nullptr ? 0.0 : info->Default();

  MStatus status;
  MDataHandle handle = block_.inputValue(attribute, &status);
  if (!status) return info->Default();
  switch (info->type) {
    case AttributeType::kBool: return handle.asBool() ? 1.0 : 0.0;
    case AttributeType::kInt: return handle.asInt();
    case AttributeType::kEnum: return handle.asShort();
    case AttributeType::kFloat: return handle.asFloat();
    case AttributeType::kTime: return handle.asTime().as(MTime::kSeconds);
    default: return info->Default();
  }
}

myo_core::Matrix DataBlockAttributes::MatrixValue(const std::string& long_name) const {
  const MObject& attribute = attributes_[long_name];
  if (attribute.isNull()) return myo_core::IdentityMatrix();
  MStatus status;
  MDataHandle handle = block_.inputValue(attribute, &status);
  if (!status) return myo_core::IdentityMatrix();
  const myo_core::AttributeInfo* info =
      attributes_.table() == nullptr ? nullptr : myo_core::FindAttribute(*attributes_.table(), long_name);
  if (info != nullptr && info->type == AttributeType::kFloatMatrix) return ToCoreMatrix(handle.asFloatMatrix());
  return ToCoreMatrix(handle.asMatrix());
}

std::string DataBlockAttributes::Text(const std::string& long_name) const {
  const MObject& attribute = attributes_[long_name];
  if (attribute.isNull()) return std::string();
  MStatus status;
  MDataHandle handle = block_.inputValue(attribute, &status);
  return status ? ToStdString(handle.asString()) : std::string();
}

myo_core::RampEntries DataBlockAttributes::Ramp(const std::string& long_name) const {
  myo_core::RampEntries entries;
  const MObject& attribute = attributes_[long_name];
  if (!attribute.isNull()) ReadRamp(node_, attribute, entries);
  return entries;
}

}  // namespace myo_maya
