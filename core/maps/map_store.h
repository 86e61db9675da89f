#pragma once
// In-memory map port: sparse per-point arrays keyed by list, index and
// element, as a scene file or a test supplies them.

#include <map>
#include <string>
#include <tuple>

#include "core/maps/map_port.h"

namespace myo_core {

class StateReader;
class StateWriter;

class MapStore : public MapPort {
 public:
  // Sets one element; width is 1 for a scalar map, the child count for a
  // vector map. A map keeps the width of its first element.
  void SetElement(const std::string& list, const std::string& element, uint32_t index,
                  uint32_t position, const std::vector<float>& value);
  // Sets elements 0 to values.size() / width - 1 at once.
  void SetAll(const std::string& list, const std::string& element, uint32_t index,
              const std::vector<float>& values, uint32_t width = 1);
  void Clear() { maps_.clear(); }
  // Every map as it stands, saved to and restored from a checkpoint: a
  // build may write repaired maps back.
  void SaveState(StateWriter& writer) const;
  void LoadState(StateReader& reader);

  uint32_t ElementCount(const std::string& list, const std::string& element,
                        uint32_t index) const override;
  void ReadFloats(const std::string& list, const std::string& element, uint32_t index,
                  uint32_t count, float default_value, std::vector<float>& out) const override;
  void ReadFloatsAt(const std::string& list, const std::string& element, uint32_t index,
                    uint32_t offset, uint32_t count, uint32_t total, float default_value,
                    std::vector<float>& out) const override;
  void ReadVectors(const std::string& list, const std::string& element,
                   const std::vector<std::string>& children, uint32_t index, uint32_t count,
                   float default_value, std::vector<float>& out) const override;
  void WriteFloats(const std::string& list, const std::string& element, uint32_t index,
                   const std::vector<float>& values) override;
  void WriteVectors(const std::string& list, const std::string& element,
                    const std::vector<std::string>& children, uint32_t index,
                    const std::vector<float>& values) override;

 private:
  // One field list for SaveState and LoadState; Self is const to save.
  template <class Archive, class Self>
  static void StateFields(Archive& archive, Self& self);
  struct SparseArray {
    uint32_t width = 1;
    std::map<uint32_t, std::vector<float>> elements;  // position -> width values
  };
  using Key = std::tuple<std::string, std::string, uint32_t>;

  const SparseArray* Find(const std::string& list, const std::string& element, uint32_t index) const;
  // Copies elements below `count` into out[offset + i * width ...]; elements
  // of another width are not readable and leave the defaults.
  void CopyInto(const SparseArray* array, uint32_t width, uint32_t offset, uint32_t count,
                std::vector<float>& out) const;

  std::map<Key, SparseArray> maps_;
};

}  // namespace myo_core
