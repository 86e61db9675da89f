#pragma once
// FNV-1a, 64 bits: the checksum of a saved state and the fingerprint of the
// files a scene reads. Fast and simple; it detects damage, not tampering.

#include <cstddef>
#include <cstdint>
#include <string>

namespace myo_core {

constexpr uint64_t kFnvOffsetBasis = 14695981039346656037ull;

// Continues `hash` over `size` bytes; start from kFnvOffsetBasis.
uint64_t Fnv1a64(const void* data, std::size_t size, uint64_t hash = kFnvOffsetBasis);
inline uint64_t Fnv1a64(const std::string& bytes, uint64_t hash = kFnvOffsetBasis) {
  return Fnv1a64(bytes.data(), bytes.size(), hash);
}

// The hash as 16 lower-case hexadecimal digits.
std::string HashText(uint64_t hash);

}  // namespace myo_core
