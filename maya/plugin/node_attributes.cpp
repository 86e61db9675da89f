#include "maya/plugin/node_attributes.h"

#include <maya/MFnAttribute.h>
#include <maya/MFnCompoundAttribute.h>
#include <maya/MFnEnumAttribute.h>
#include <maya/MFnMatrixAttribute.h>
#include <maya/MFnMessageAttribute.h>
#include <maya/MFnNumericAttribute.h>
#include <maya/MFnNumericData.h>
#include <maya/MFnStringData.h>
#include <maya/MFnTypedAttribute.h>
#include <maya/MRampAttribute.h>
#include <maya/MFnUnitAttribute.h>
#include <maya/MTime.h>

#include <set>

#include "core/log/logger.h"
#include "maya/plugin/maya_conversions.h"

namespace myo_maya {

using myo_core::AttributeInfo;
using myo_core::AttributeType;

namespace {

void ApplyNumericLimits(const AttributeInfo& info, MFnNumericAttribute& fn) {
  if (info.min) fn.setMin(*info.min);
  if (info.max) fn.setMax(*info.max);
  if (info.soft_min) fn.setSoftMin(*info.soft_min);
  if (info.soft_max) fn.setSoftMax(*info.soft_max);
}

void ApplyFlags(const AttributeInfo& info, MFnAttribute& fn) {
  if (info.Has(myo_core::kKeyable)) fn.setKeyable(true);
  if (info.Has(myo_core::kArray)) {
    fn.setArray(true);
    fn.setUsesArrayDataBuilder(true);
  }
  if (info.Has(myo_core::kReadable)) fn.setReadable(true);
  if (info.Has(myo_core::kStorable)) fn.setStorable(true);
  if (info.Has(myo_core::kHidden)) fn.setHidden(true);
  if (info.Has(myo_core::kUsedAsColor)) fn.setUsedAsColor(true);
  if (info.Has(myo_core::kUsedAsFilename)) fn.setUsedAsFilename(true);
  if (info.Has(myo_core::kNotWritable)) fn.setWritable(false);
  if (info.Has(myo_core::kArrayDataBuilder)) fn.setUsesArrayDataBuilder(true);
  if (info.disconnect_behavior >= 0)
    fn.setDisconnectBehavior(static_cast<MFnAttribute::DisconnectBehavior>(info.disconnect_behavior));
}

MObject CreateNumeric(const AttributeInfo& info, MFnNumericData::Type type, MStatus& status) {
  MFnNumericAttribute fn;
  MObject attribute = fn.create(ToMString(info.long_name), ToMString(info.short_name), type, info.Default(), &status);
  if (status) ApplyNumericLimits(info, fn);
  return attribute;
}

}  // namespace

bool NodeAttributes::IsFloat3(const AttributeInfo& info) const {
  if (info.type != AttributeType::kCompound || info.Has(myo_core::kArray) || info.children.size() != 3) return false;
  for (const std::string& child : info.children) {
    const AttributeInfo* child_info = myo_core::FindAttribute(*table_, child);
    if (child_info == nullptr || child_info->type != AttributeType::kFloat || child_info->Has(myo_core::kArray))
      return false;
  }
  return true;
}

MStatus NodeAttributes::CreateOne(const AttributeInfo& info) {
  if (attributes_.count(info.long_name) != 0) return MS::kSuccess;
  const MString long_name = ToMString(info.long_name);
  const MString short_name = ToMString(info.short_name);
  MStatus status;
  MObject attribute;

  // A compound's children exist before the compound.
  for (const std::string& child : info.children) {
    const AttributeInfo* child_info = myo_core::FindAttribute(*table_, child);
    if (child_info == nullptr) {
      myo_core::LogError("Attribute " + info.long_name + " lists the unknown child " + child + ".");
      return MS::kFailure;
    }
    status = CreateOne(*child_info);
    if (!status) return status;
  }

  switch (info.type) {
    case AttributeType::kBool: attribute = CreateNumeric(info, MFnNumericData::kBoolean, status); break;
    case AttributeType::kInt: attribute = CreateNumeric(info, MFnNumericData::kInt, status); break;
    case AttributeType::kFloat: attribute = CreateNumeric(info, MFnNumericData::kFloat, status); break;
    case AttributeType::kEnum: {
      MFnEnumAttribute fn;
      attribute = fn.create(long_name, short_name, static_cast<short>(info.Default()), &status);
      for (const myo_core::EnumField& field : info.fields)
        if (status) status = fn.addField(ToMString(field.name), static_cast<short>(field.value));
      break;
    }
    case AttributeType::kTime: {
      MFnUnitAttribute fn;
      attribute = fn.create(long_name, short_name, MTime(info.Default(), MTime::kSeconds), &status);
      break;
    }
    case AttributeType::kMatrix:
    case AttributeType::kFloatMatrix: {
      MFnMatrixAttribute fn;
      const MFnMatrixAttribute::Type precision =
          info.type == AttributeType::kFloatMatrix ? MFnMatrixAttribute::kFloat : MFnMatrixAttribute::kDouble;
      attribute = fn.create(long_name, short_name, precision, &status);
      break;
    }
    case AttributeType::kMesh: {
      MFnTypedAttribute fn;
      attribute = fn.create(long_name, short_name, MFnData::kMesh, MObject::kNullObj, &status);
      break;
    }
    case AttributeType::kString: {
      MFnStringData text;
      MFnTypedAttribute fn;
      attribute = fn.create(long_name, short_name, MFnData::kString, text.create(""), &status);
      break;
    }
    case AttributeType::kRamp:
      attribute = MRampAttribute::createCurveRamp(long_name, short_name, &status);
      break;
    case AttributeType::kMessage: {
      MFnMessageAttribute fn;
      attribute = fn.create(long_name, short_name, &status);
      break;
    }
    case AttributeType::kCompound: {
      if (IsFloat3(info)) {
        // Three floats make a numeric compound, read and connected as one
        // vector, like a transform's translation or a point.
        MFnNumericAttribute numeric;
        attribute = numeric.create(long_name, short_name, attributes_[info.children[0]],
                                   attributes_[info.children[1]], attributes_[info.children[2]], &status);
        break;
      }
      MFnCompoundAttribute fn;
      attribute = fn.create(long_name, short_name, &status);
      for (const std::string& child : info.children)
        if (status) status = fn.addChild(attributes_[child]);
      break;
    }
    case AttributeType::kColor: {
      if (info.children.size() != 3) {
        status = MS::kFailure;
        break;
      }
      MFnNumericAttribute fn;
      attribute = fn.create(long_name, short_name, attributes_[info.children[0]], attributes_[info.children[1]],
                            attributes_[info.children[2]], &status);
      if (status && info.defaults.size() == 3)
        fn.setDefault(static_cast<float>(info.defaults[0]), static_cast<float>(info.defaults[1]),
                      static_cast<float>(info.defaults[2]));
      break;
    }
  }
  if (!status) {
    myo_core::LogError("Could not create the attribute " + info.long_name + ".");
    return status;
  }
  MFnAttribute fn(attribute);
  ApplyFlags(info, fn);
  attributes_[info.long_name] = attribute;
  return MS::kSuccess;
}

MStatus NodeAttributes::Create(const myo_core::AttributeTable& table, const AddFunction& add,
                               const AffectsFunction& affects, const MObject& output) {
  return CreateAndAffect(table, add, affects, [&output] { return output; });
}

MStatus NodeAttributes::Create(const myo_core::AttributeTable& table, const AddFunction& add,
                               const AffectsFunction& affects, const std::string& output_long_name) {
  return CreateAndAffect(table, add, affects, [this, &output_long_name] { return (*this)[output_long_name]; });
}

MStatus NodeAttributes::CreateAndAffect(const myo_core::AttributeTable& table, const AddFunction& add,
                                        const AffectsFunction& affects, const std::function<MObject()>& output_of) {
  table_ = &table;
  attributes_.clear();
  std::set<std::string> children;
  for (const AttributeInfo& info : table)
    for (const std::string& child : info.children) children.insert(child);

  for (const AttributeInfo& info : table) {
    MStatus status = CreateOne(info);
    if (!status) return status;
  }
  // Adding a compound adds its children with it.
  for (const AttributeInfo& info : table) {
    if (children.count(info.long_name) != 0) continue;
    MStatus status = add(attributes_[info.long_name]);
    if (!status) {
      myo_core::LogError("Could not add the attribute " + info.long_name + ".");
      return status;
    }
  }
  const MObject output = output_of();
  for (const AttributeInfo& info : table) {
    if (!info.Has(myo_core::kAffectsOutput)) continue;
    MStatus status = affects(attributes_[info.long_name], output);
    if (!status) {
      myo_core::LogError("Could not make the attribute " + info.long_name + " affect the output.");
      return status;
    }
  }
  return MS::kSuccess;
}

const MObject& NodeAttributes::operator[](const std::string& long_name) const {
  const auto found = attributes_.find(long_name);
  return found == attributes_.end() ? MObject::kNullObj : found->second;
}

}  // namespace myo_maya
