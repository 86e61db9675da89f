#pragma once
// What a debug view draws from: per deformer, keyed by the deformer's uuid
// string, a pointer to its solver's debug record and the path of the mesh it
// writes to. The record belongs to the solver; the registry only points at
// it, so an entry must go before its solver does. Generic over the path type
// so that a host keeps its own (Maya an MDagPath, the standalone host a
// name).

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "core/debug/debug_data.h"

namespace myo_core {

// FNV-1a over the bytes of `text`, 64 bits.
uint64_t Fnv1a64(const std::string& text);

struct UuidHash {
  std::size_t operator()(const std::string& key) const { return static_cast<std::size_t>(Fnv1a64(key)); }
};

// Both maps start with this many buckets and a maximum load factor of 1.
constexpr std::size_t kDebugRegistryBuckets = 16;

template <class Path>
class DebugRegistry {
 public:
  using Records = std::unordered_map<std::string, DebugData*, UuidHash>;
  using Paths = std::unordered_map<std::string, Path, UuidHash>;

  DebugRegistry() : records_(kDebugRegistryBuckets), paths_(kDebugRegistryBuckets) {
    records_.max_load_factor(1.0f);
    paths_.max_load_factor(1.0f);
  }

  // Points `key` at `record` and `path`, replacing what it pointed at: a
  // rebuilt solver registers its new record this way.
  void Register(const std::string& key, DebugData* record, const Path& path) {
    records_[key] = record;
    paths_[key] = path;
  }

  // Forgets `key` in both maps; nothing when it is unknown.
  void Unregister(const std::string& key) {
    records_.erase(key);
    paths_.erase(key);
  }

  // Whether entries can be stale: fewer inputs are connected than there are
  // records.
  bool MayHoldStale(std::size_t connected_inputs) const { return connected_inputs < records_.size(); }

  // Drops every entry whose key is not among `source_keys`, the uuids of the
  // nodes connected to the inputs.
  void KeepOnly(const std::unordered_set<std::string>& source_keys) {
    for (auto it = records_.begin(); it != records_.end();) {
      if (source_keys.count(it->first) != 0) {
        ++it;
        continue;
      }
      paths_.erase(it->first);
      it = records_.erase(it);
    }
  }

  // The prune of a registration or a deletion: with `connected_inputs`
  // inputs connected, nothing is done unless entries may be stale; then the
  // keys of the sources (asked only then, from `source_keys()`) are kept
  // and the rest dropped.
  template <class SourceKeys>
  void Prune(std::size_t connected_inputs, SourceKeys source_keys) {
    if (!MayHoldStale(connected_inputs)) return;
    const std::vector<std::string> keys = source_keys();
    KeepOnly(std::unordered_set<std::string>(keys.begin(), keys.end()));
  }

  const Records& records() const { return records_; }
  const Paths& paths() const { return paths_; }

 private:
  Records records_;
  Paths paths_;
};

}  // namespace myo_core
