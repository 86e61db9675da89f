#include "core/state/state_checksum.h"

#include <array>
#include <cstring>

namespace myo_core {

namespace {

// Table k gives the CRC of a byte followed by k zero bytes, so that eight
// bytes are folded in with eight look-ups and no dependency between them.
using CrcTables = std::array<std::array<uint32_t, 256>, 8>;

CrcTables MakeCrcTables() {
  CrcTables tables{};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    tables[0][byte] = crc;
  }
  for (uint32_t byte = 0; byte < 256; ++byte)
    for (std::size_t k = 1; k < 8; ++k)
      tables[k][byte] = (tables[k - 1][byte] >> 8) ^ tables[0][tables[k - 1][byte] & 0xffu];
  return tables;
}

}  // namespace

uint32_t Crc32(const void* data, std::size_t size, uint32_t crc) {
  static const CrcTables t = MakeCrcTables();
  const unsigned char* p = static_cast<const unsigned char*>(data);
  crc = ~crc;
  for (; size >= 8; size -= 8, p += 8) {
    uint32_t low, high;
    std::memcpy(&low, p, 4);  // little-endian words
    std::memcpy(&high, p + 4, 4);
    low ^= crc;
    crc = t[7][low & 0xffu] ^ t[6][(low >> 8) & 0xffu] ^ t[5][(low >> 16) & 0xffu] ^ t[4][low >> 24] ^
          t[3][high & 0xffu] ^ t[2][(high >> 8) & 0xffu] ^ t[1][(high >> 16) & 0xffu] ^ t[0][high >> 24];
  }
  for (; size > 0; --size, ++p) crc = (crc >> 8) ^ t[0][(crc ^ *p) & 0xffu];
  return ~crc;
}

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
