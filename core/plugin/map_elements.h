#pragma once
// The rules by which the host's map readers turn array elements into floats,
// apart from the host's handle types: the output is sized and filled with the
// default first, every element that can be read then overwrites its slot.
// Integer elements are converted, floats taken as they are, doubles
// narrowed; any other numeric type is not readable.

#include <cstdint>
#include <vector>

namespace myo_core {

// The numeric types of an element as the readers tell them apart.
enum class ElementNumberKind { kInteger, kFloat, kDouble, kUnsupported };

inline constexpr char kUnsupportedElementTypeMessage[] =
    "Data not accessible from array attribute as the type is not supported";

// One per-vertex array as the host holds it.
class NumericElementSource {
 public:
  virtual ~NumericElementSource() = default;
  // Moves to element i; false when the array has no such element.
  virtual bool JumpTo(uint32_t i) = 0;
  // The numeric type of the current element.
  virtual ElementNumberKind Kind() = 0;
  virtual int64_t AsInteger() = 0;
  virtual float AsFloat() = 0;
  virtual double AsDouble() = 0;
};

// One per-vertex array to write, element by element.
class NumericElementSink {
 public:
  virtual ~NumericElementSink() = default;
  // The numeric type of the array's elements.
  virtual ElementNumberKind Kind() = 0;
  virtual void SetInteger(uint32_t i, int32_t value) = 0;
  virtual void SetFloat(uint32_t i, float value) = 0;
  virtual void SetDouble(uint32_t i, double value) = 0;
};

// Sizes `out` to `total` and fills [offset, offset + count) with the default.
// False, with `out` untouched, when total is below offset + count.
bool PrepareMapRange(uint32_t offset, uint32_t count, uint32_t total, float default_value, std::vector<float>& out);

// The value of the current element, or false for an unsupported type.
bool ElementToFloat(NumericElementSource& source, float& value);

// ReadDataFloatsAt: out sized to total; elements 0 to count - 1 of `source`
// land at offset + i, missing ones keep the default. An element of an
// unsupported type logs kUnsupportedElementTypeMessage at debug level and
// ends the read with the defaults in place. Does nothing when total is below
// offset + count.
void ReadNumericElements(NumericElementSource& source, uint32_t offset, uint32_t count, uint32_t total,
                         float default_value, std::vector<float>& out);

// WritePlugFloats: integers are written truncated, floats as they are,
// doubles widened. Another type logs the same message and writes nothing.
void WriteNumericElements(NumericElementSink& sink, const std::vector<float>& values);

}  // namespace myo_core
