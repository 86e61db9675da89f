#include "core/state/state_checksum.h"

namespace myo_core {

uint64_t Fnv1a64(const void* data, std::size_t size, uint64_t hash) {
  constexpr uint64_t kPrime = 1099511628211ull;
  const unsigned char* bytes = static_cast<const unsigned char*>(data);
  for (std::size_t i = 0; i < size; ++i) {
    hash ^= bytes[i];
    hash *= kPrime;
  }
  return hash;
}

std::string HashText(uint64_t hash) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text(16, '0');
  for (int i = 15; i >= 0; --i, hash >>= 4) text[static_cast<std::size_t>(i)] = kDigits[hash & 15u];
  return text;
}

}  // namespace myo_core
