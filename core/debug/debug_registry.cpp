#include "core/debug/debug_registry.h"

namespace myo_core {

uint64_t Fnv1a64(const std::string& text) {
  uint64_t hash = 0xCBF29CE484222325ull;
  for (const char c : text) {
    hash ^= static_cast<uint64_t>(static_cast<unsigned char>(c));
    hash *= 0x100000001B3ull;
  }
  return hash;
}

}  // namespace myo_core
