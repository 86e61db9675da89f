#pragma once
// Checksums written here: CRC-32 (the polynomial of zip and PNG), the
// checksum of a saved state, computed eight bytes at a time; and FNV-1a,
// 64 bits, the fingerprint of the files a scene reads. Both detect damage,
// not tampering.

#include <cstddef>
#include <cstdint>
#include <string>

namespace myo_core {

// Continues `crc` over `size` bytes; start from 0. Crc32("123456789") is
// 0xcbf43926.
uint32_t Crc32(const void* data, std::size_t size, uint32_t crc = 0);

constexpr uint64_t kFnvOffsetBasis = 14695981039346656037ull;

// Continues `hash` over `size` bytes; start from kFnvOffsetBasis.
uint64_t Fnv1a64(const void* data, std::size_t size, uint64_t hash = kFnvOffsetBasis);
inline uint64_t Fnv1a64(const std::string& bytes, uint64_t hash = kFnvOffsetBasis) {
  return Fnv1a64(bytes.data(), bytes.size(), hash);
}

// The hash as 16 lower-case hexadecimal digits.
std::string HashText(uint64_t hash);

}  // namespace myo_core
