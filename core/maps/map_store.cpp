#include "core/maps/map_store.h"

#include <algorithm>

namespace myo_core {

void MapStore::SetElement(const std::string& list, const std::string& element, uint32_t index,
                          uint32_t position, const std::vector<float>& value) {
  SparseArray& array = maps_[Key{list, element, index}];
  if (array.elements.empty()) array.width = static_cast<uint32_t>(value.size());
  array.elements[position] = value;
}

void MapStore::SetAll(const std::string& list, const std::string& element, uint32_t index,
                      const std::vector<float>& values, uint32_t width) {
  SparseArray& array = maps_[Key{list, element, index}];
  array.width = width == 0 ? 1 : width;
  array.elements.clear();
  const uint32_t count = static_cast<uint32_t>(values.size() / array.width);
  for (uint32_t i = 0; i < count; ++i)
    array.elements[i].assign(values.begin() + i * array.width, values.begin() + (i + 1) * array.width);
}

const MapStore::SparseArray* MapStore::Find(const std::string& list, const std::string& element,
                                            uint32_t index) const {
  const auto found = maps_.find(Key{list, element, index});
  return found == maps_.end() ? nullptr : &found->second;
}

void MapStore::CopyInto(const SparseArray* array, uint32_t width, uint32_t offset, uint32_t count,
                        std::vector<float>& out) const {
  if (array == nullptr || array->width != width) return;
  for (const auto& [position, value] : array->elements) {
    if (position >= count) break;
    for (uint32_t k = 0; k < width; ++k) out[offset + position * width + k] = value[k];
  }
}

uint32_t MapStore::ElementCount(const std::string& list, const std::string& element,
                                uint32_t index) const {
  const SparseArray* array = Find(list, element, index);
  return array == nullptr ? 0 : static_cast<uint32_t>(array->elements.size());
}

void MapStore::ReadFloats(const std::string& list, const std::string& element, uint32_t index,
                          uint32_t count, float default_value, std::vector<float>& out) const {
  out.assign(count, default_value);
  CopyInto(Find(list, element, index), 1, 0, count, out);
}

void MapStore::ReadFloatsAt(const std::string& list, const std::string& element, uint32_t index,
                            uint32_t offset, uint32_t count, uint32_t total, float default_value,
                            std::vector<float>& out) const {
  if (static_cast<uint64_t>(total) < static_cast<uint64_t>(offset) + count) return;
  out.resize(total);
  std::fill(out.begin() + offset, out.begin() + offset + count, default_value);
  CopyInto(Find(list, element, index), 1, offset, count, out);
}

void MapStore::ReadVectors(const std::string& list, const std::string& element,
                           const std::vector<std::string>& children, uint32_t index, uint32_t count,
                           float default_value, std::vector<float>& out) const {
  const uint32_t width = static_cast<uint32_t>(children.size());
  out.assign(static_cast<std::size_t>(count) * width, default_value);
  CopyInto(Find(list, element, index), width, 0, count, out);
}

void MapStore::WriteFloats(const std::string& list, const std::string& element, uint32_t index,
                           const std::vector<float>& values) {
  SetAll(list, element, index, values, 1);
}

void MapStore::WriteVectors(const std::string& list, const std::string& element,
                            const std::vector<std::string>& children, uint32_t index,
                            const std::vector<float>& values) {
  SetAll(list, element, index, values, static_cast<uint32_t>(children.size()));
}

}  // namespace myo_core
