#pragma once
// Lookups over the shared tables (ordered maps from an integer key).

#include <map>
#include <optional>
#include <stdexcept>
#include <string>

namespace myo_core {

// The value stored under `key`; throws std::out_of_range("invalid map<K, T> key")
// when the table holds no such key.
template <typename Map>
const typename Map::mapped_type& CheckedLookup(const Map& table,
                                               const typename Map::key_type& key) {
  const auto found = table.find(key);
  if (found == table.end()) throw std::out_of_range("invalid map<K, T> key");
  return found->second;
}

// The first key, in ascending order, whose name is `name`; nothing when no
// entry carries it. A linear search: the tables are a few entries long.
inline std::optional<int> FindKeyByName(const std::map<int, std::string>& table,
                                        const std::string& name) {
  for (const auto& [key, entry_name] : table) {
    if (entry_name == name) return key;
  }
  return std::nullopt;
}

}  // namespace myo_core
