#include "maya/plugin/typed_readers.h"

#include <maya/MArrayDataHandle.h>
#include <maya/MDataHandle.h>
#include <maya/MFnNumericAttribute.h>
#include <maya/MFnNumericData.h>
#include <maya/MIntArray.h>
#include <maya/MPlug.h>

#include <algorithm>
#include <optional>

#include "core/plugin/map_elements.h"
#include "maya/plugin/maya_conversions.h"

namespace myo_maya {

using myo_core::ElementNumberKind;

namespace {

ElementNumberKind KindOf(MFnNumericData::Type type) {
  switch (type) {
    case MFnNumericData::kBoolean:
    case MFnNumericData::kByte:
    case MFnNumericData::kChar:
    case MFnNumericData::kShort:
    case MFnNumericData::kInt:
    case MFnNumericData::kInt64:
      return ElementNumberKind::kInteger;
    case MFnNumericData::kFloat: return ElementNumberKind::kFloat;
    case MFnNumericData::kDouble: return ElementNumberKind::kDouble;
    default: return ElementNumberKind::kUnsupported;
  }
}

// The per-vertex array of list[index].element in the data block; none when
// the list has no such element.
std::optional<MArrayDataHandle> ElementArray(MDataBlock& block, uint32_t index, const MObject& list,
                                             const MObject& element) {
  MStatus status;
  MArrayDataHandle lists = block.inputArrayValue(list, &status);
  if (!status || !lists.jumpToElement(index)) return std::nullopt;
  MDataHandle entry = lists.inputValue(&status);
  if (!status) return std::nullopt;
  MDataHandle child = entry.child(element);
  std::optional<MArrayDataHandle> values(std::in_place, child, &status);
  if (!status) return std::nullopt;
  return values;
}

class DataElements : public myo_core::NumericElementSource {
 public:
  explicit DataElements(MArrayDataHandle& values) : values_(values) {}

  bool JumpTo(uint32_t i) override {
    if (!values_.jumpToElement(i)) return false;
    MStatus status;
    current_ = values_.inputValue(&status);
    return static_cast<bool>(status);
  }
  ElementNumberKind Kind() override { return KindOf(current_.numericType()); }
  int64_t AsInteger() override {
    switch (current_.numericType()) {
      case MFnNumericData::kBoolean: return current_.asBool() ? 1 : 0;
      case MFnNumericData::kByte:
      case MFnNumericData::kChar: return current_.asChar();
      case MFnNumericData::kShort: return current_.asShort();
      case MFnNumericData::kInt64: return current_.asInt64();
      default: return current_.asInt();
    }
  }
  float AsFloat() override { return current_.asFloat(); }
  double AsDouble() override { return current_.asDouble(); }

 private:
  MArrayDataHandle& values_;
  MDataHandle current_;
};

class PlugElements : public myo_core::NumericElementSink {
 public:
  PlugElements(const MPlug& values, const MObject& element) : values_(values) {
    MFnNumericAttribute fn(element);
    type_ = fn.unitType();
  }

  ElementNumberKind Kind() override { return KindOf(type_); }
  void SetInteger(uint32_t i, int32_t value) override { values_.elementByLogicalIndex(i).setInt(value); }
  void SetFloat(uint32_t i, float value) override { values_.elementByLogicalIndex(i).setFloat(value); }
  void SetDouble(uint32_t i, double value) override { values_.elementByLogicalIndex(i).setDouble(value); }

 private:
  MPlug values_;
  MFnNumericData::Type type_ = MFnNumericData::kInvalid;
};

MPlug ElementPlug(const MObject& node, uint32_t index, const MObject& list, const MObject& element) {
  return ChildPlug(MPlug(node, list).elementByLogicalIndex(index), element);
}

// Logical indices below `count` that the array plug holds.
MIntArray ExistingIndices(MPlug& values) {
  MIntArray indices;
  values.getExistingArrayAttributeIndices(indices);
  return indices;
}

}  // namespace

void ReadPlugFloats(const MObject& node, uint32_t index, uint32_t count, const MObject& list, const MObject& element,
                    float default_value, std::vector<float>& out) {
  ReadPlugFloatsAt(node, index, 0, count, count, list, element, default_value, out);
}

void ReadPlugFloatsAt(const MObject& node, uint32_t index, uint32_t offset, uint32_t count, uint32_t total,
                      const MObject& list, const MObject& element, float default_value, std::vector<float>& out) {
  if (!myo_core::PrepareMapRange(offset, count, total, default_value, out)) return;
  MPlug values = ElementPlug(node, index, list, element);
  const MIntArray indices = ExistingIndices(values);
  for (unsigned k = 0; k < indices.length(); ++k) {
    const int i = indices[k];
    if (i < 0 || static_cast<uint32_t>(i) >= count) continue;
    out[offset + static_cast<uint32_t>(i)] = values.elementByLogicalIndex(static_cast<unsigned>(i)).asFloat();
  }
}

void ReadPlugVectors(const MObject& node, uint32_t index, uint32_t count, uint32_t width, const MObject& list,
                     const MObject& element, float default_value, std::vector<float>& out) {
  out.assign(static_cast<size_t>(count) * width, default_value);
  MPlug values = ElementPlug(node, index, list, element);
  const MIntArray indices = ExistingIndices(values);
  for (unsigned k = 0; k < indices.length(); ++k) {
    const int i = indices[k];
    if (i < 0 || static_cast<uint32_t>(i) >= count) continue;
    MPlug vector = values.elementByLogicalIndex(static_cast<unsigned>(i));
    const uint32_t children = std::min(width, vector.numChildren());
    for (uint32_t j = 0; j < children; ++j)
      out[static_cast<size_t>(i) * width + j] = vector.child(j).asFloat();
  }
}

void ReadDataFloats(MDataBlock& block, uint32_t index, uint32_t count, const MObject& list, const MObject& element,
                    float default_value, std::vector<float>& out) {
  ReadDataFloatsAt(block, index, 0, count, count, list, element, default_value, out);
}

void ReadDataFloatsAt(MDataBlock& block, uint32_t index, uint32_t offset, uint32_t count, uint32_t total,
                      const MObject& list, const MObject& element, float default_value, std::vector<float>& out) {
  std::optional<MArrayDataHandle> values = ElementArray(block, index, list, element);
  if (!values) {
    myo_core::PrepareMapRange(offset, count, total, default_value, out);
    return;
  }
  DataElements source(*values);
  myo_core::ReadNumericElements(source, offset, count, total, default_value, out);
}

void ReadDataVectors(MDataBlock& block, uint32_t index, uint32_t count, const std::vector<MObject>& children,
                     const MObject& list, const MObject& element, float default_value, std::vector<float>& out) {
  const size_t width = children.size();
  out.assign(count * width, default_value);
  std::optional<MArrayDataHandle> values = ElementArray(block, index, list, element);
  if (!values) return;
  for (uint32_t i = 0; i < count; ++i) {
    if (!values->jumpToElement(i)) continue;
    MStatus status;
    MDataHandle vector = values->inputValue(&status);
    if (!status) continue;
    for (size_t j = 0; j < width; ++j) out[i * width + j] = vector.child(children[j]).asFloat();
  }
}

void WritePlugFloats(const MObject& node, uint32_t index, const MObject& list, const MObject& element,
                     const std::vector<float>& values) {
  PlugElements sink(ElementPlug(node, index, list, element), element);
  myo_core::WriteNumericElements(sink, values);
}

void WritePlugVectors(const MObject& node, uint32_t index, const MObject& list, const MObject& element,
                      const std::vector<MObject>& children, const std::vector<float>& values) {
  if (children.empty()) return;
  MPlug plugs = ElementPlug(node, index, list, element);
  const size_t count = values.size() / children.size();
  for (size_t i = 0; i < count; ++i) {
    MPlug vector = plugs.elementByLogicalIndex(static_cast<unsigned>(i));
    for (size_t j = 0; j < children.size(); ++j)
      ChildPlug(vector, children[j]).setFloat(values[i * children.size() + j]);
  }
}

uint32_t DataElementCount(MDataBlock& block, uint32_t index, const MObject& list, const MObject& element) {
  std::optional<MArrayDataHandle> values = ElementArray(block, index, list, element);
  return values ? values->elementCount() : 0;
}

uint32_t PlugElementCount(const MObject& node, uint32_t index, const MObject& list, const MObject& element) {
  MPlug values = ElementPlug(node, index, list, element);
  return values.numElements();
}

}  // namespace myo_maya
