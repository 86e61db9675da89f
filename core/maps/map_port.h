#pragma once
// Where per-point maps meet a host. A map is an array attribute `list` whose
// element `index` (the geometry index of the deformed mesh) holds an array
// `element` of per-point values; a vector map has one child per component.
// Readers first size the output and fill it with the default; every element
// the host holds then overwrites its slot, so a missing element reads as the
// default. Maya implements this with plugs and data handles, the standalone
// host and the tests with MapStore.

#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

class MapPort {
 public:
  virtual ~MapPort() = default;

  // Number of elements present in the array `element` of list[index].
  virtual uint32_t ElementCount(const std::string& list, const std::string& element,
                                uint32_t index) const = 0;

  // out: count values.
  virtual void ReadFloats(const std::string& list, const std::string& element, uint32_t index,
                          uint32_t count, float default_value, std::vector<float>& out) const = 0;

  // One block of a multi-set map: out is sized to total, [offset, offset +
  // count) gets the default and then element i at offset + i. Does nothing
  // when total is below offset + count.
  virtual void ReadFloatsAt(const std::string& list, const std::string& element, uint32_t index,
                            uint32_t offset, uint32_t count, uint32_t total, float default_value,
                            std::vector<float>& out) const = 0;

  // out: count times children.size() values, child j of element i at
  // i * width + j.
  virtual void ReadVectors(const std::string& list, const std::string& element,
                           const std::vector<std::string>& children, uint32_t index, uint32_t count,
                           float default_value, std::vector<float>& out) const = 0;

  // Replaces the whole array `element` of list[index] with `values`.
  virtual void WriteFloats(const std::string& list, const std::string& element, uint32_t index,
                           const std::vector<float>& values) = 0;

  // Replaces the whole vector array: values.size() / children.size() elements.
  virtual void WriteVectors(const std::string& list, const std::string& element,
                            const std::vector<std::string>& children, uint32_t index,
                            const std::vector<float>& values) = 0;
};

}  // namespace myo_core
