// Every map of a store as it stands, for a checkpoint: a build may have
// written repaired maps back, and a later build reads them.

#include "core/maps/map_store.h"
#include "core/state/state_archive.h"

namespace myo_core {

template <class Archive, class Self>
void MapStore::StateFields(Archive& a, Self& self) {
  a.Section("maps");
  if constexpr (!Archive::kLoading) {
    a.Value(static_cast<uint64_t>(self.maps_.size()));
    for (const auto& [key, array] : self.maps_) {
      a.Text(std::get<0>(key));
      a.Text(std::get<1>(key));
      a.Value(std::get<2>(key));
      a.Value(array.width);
      a.Value(static_cast<uint64_t>(array.elements.size()));
      for (const auto& [position, values] : array.elements) {
        a.Value(position);
        a.Array(values);
      }
    }
  } else {
    self.maps_.clear();
    uint64_t count = 0;
    a.Value(count);
    for (uint64_t m = 0; m < count && a.ok(); ++m) {
      std::string list, element;
      uint32_t index = 0;
      a.Text(list);
      a.Text(element);
      a.Value(index);
      SparseArray& array = self.maps_[Key(list, element, index)];
      a.Value(array.width);
      uint64_t elements = 0;
      a.Value(elements);
      for (uint64_t e = 0; e < elements && a.ok(); ++e) {
        uint32_t position = 0;
        a.Value(position);
        a.Array(array.elements[position]);
      }
    }
  }
}

void MapStore::SaveState(StateWriter& writer) const { StateFields(writer, *this); }

void MapStore::LoadState(StateReader& reader) { StateFields(reader, *this); }

}  // namespace myo_core
